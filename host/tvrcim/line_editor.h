// Lines from a person at a terminal.
#ifndef TVR_HOST_TVRCIM_LINE_EDITOR_H
#define TVR_HOST_TVRCIM_LINE_EDITOR_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvrcim {

// Reads lines from standard input, which is a terminal, with editing, completion by the tabulator
// and a history that is kept in the user's state directory, where there is one. Ctrl-C drops the
// line, Ctrl-D on an empty one ends the input. ~/.editrc is obeyed. One exists at a time.
class Line_Editor {
public:
    // Tells what the last word of a line may become.
    using Complete = std::function<std::vector<std::string>(const std::string& line)>;

    explicit Line_Editor(Complete complete);
    ~Line_Editor();
    Line_Editor(const Line_Editor&) = delete;
    Line_Editor& operator=(const Line_Editor&) = delete;

    // The next line without its end; nothing at the end of the input.
    std::optional<std::string> read();

private:
    struct Rep;
    std::unique_ptr<Rep> _rep;
};

} // namespace tvrcim

#endif
