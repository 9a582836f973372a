// The commands, for the command line and the shell alike.
#ifndef TVR_HOST_TVRCIM_COMMANDS_H
#define TVR_HOST_TVRCIM_COMMANDS_H

#include "host/tvrcim/session.h"

#include <functional>

namespace CLI {
class App;
}

namespace tvrcim {

// Adds the commands to a parser. The one that was read goes into `chosen`; run it with a session.
using Command = std::function<void(Session&)>;
void add_commands(CLI::App& app, Command& chosen);

// `tvrcim list`
void list_ports(Session& session);

} // namespace tvrcim

#endif
