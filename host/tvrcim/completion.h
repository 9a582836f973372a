// What a line of the shell may go on with.
#ifndef TVR_HOST_TVRCIM_COMPLETION_H
#define TVR_HOST_TVRCIM_COMPLETION_H

#include "host/tvrcim/session.h"

#include <string>
#include <vector>

namespace tvrcim {

// The words that the last word of `line` may become, sorted: commands, options, classes, keys with
// their values, ports, properties, methods and arguments, as the command wants them. A word that
// something has to follow at once ends with '.' or '='. Names are found in any case. Never throws:
// where the module doesn't answer, nothing is offered.
std::vector<std::string> completions(Session& session, const std::string& line) noexcept;

} // namespace tvrcim

#endif
