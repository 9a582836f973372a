// The commands one a line, against one loaded module.
#ifndef TVR_HOST_TVRCIM_SHELL_H
#define TVR_HOST_TVRCIM_SHELL_H

#include "host/tvrcim/session.h"

#include <istream>

namespace tvrcim {

// Splits a line into words: blanks separate, quotes of either kind and a backslash hold together.
// Quotes within a word stay if it is a path's, so that `A.b="c d"` is one word with its quotes.
// Throws Usage_Error for a quotation mark that is never closed.
std::vector<std::string> split_words(const std::string& line);

// Reads and runs commands until the end of the input, "exit" or "quit". A failed command doesn't
// end it. Returns the exit status of the last command.
int run_shell(Session& session, std::istream& in, bool prompt);

} // namespace tvrcim

#endif
