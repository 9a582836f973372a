// Reading command lines, and turning what goes wrong into one line and a status.
#ifndef TVR_HOST_TVRCIM_COMMAND_LINE_H
#define TVR_HOST_TVRCIM_COMMAND_LINE_H

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tvrcim {

// One command is wanted, and no more.
void prepare(CLI::App& app);
// Adds the command `help`, which `parse` carries out; the last of all commands.
void add_help(CLI::App& app);

// The commands' names, in order.
std::vector<std::string> command_names(const CLI::App& app);

// Reads `words`, last first. Returns a status if there is nothing left to do, as after --help and
// help.
// Throws Usage_Error.
std::optional<int> parse(CLI::App& app, std::vector<std::string> words, std::ostream& out);

// Runs `work` and returns its status; an error is told in one line on standard error, behind
// `place`.
int guarded(const std::function<int()>& work, const std::string& place = {}) noexcept;

} // namespace tvrcim

#endif
