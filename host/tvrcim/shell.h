// The commands one a line, against one loaded module.
#ifndef TVR_HOST_TVRCIM_SHELL_H
#define TVR_HOST_TVRCIM_SHELL_H

#include "host/tvrcim/session.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tvrcim {

// Splits a line into words: blanks separate, quotes of either kind and a backslash hold together.
// Quotes within a word stay if it is a path's, so that `A.b="c d"` is one word with its quotes.
// Throws Usage_Error for a quotation mark that is never closed.
std::vector<std::string> split_words(const std::string& line);

// Gives the next line, or nothing at the end of the input.
using Next_Line = std::function<std::optional<std::string>()>;

// Reads and runs commands until the end of the input, "exit" or "quit". A failed command doesn't
// end it; its error names the line if `tell_lines`. Returns the exit status of the last command.
int run_shell(Session& session, const Next_Line& next, bool tell_lines);

// From a person at the terminal, or from a script in standard input.
int run_shell(Session& session);

} // namespace tvrcim

#endif
