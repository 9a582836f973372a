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

// `list` and `tree`, of the ports whose WWPN begins with `port`, or of all
void list_ports(Session& session, const std::string& port);
void show_tree(Session& session, const std::string& port);

// `assoc`, `refs` and `graph`
void add_association_commands(CLI::App& app, Command& chosen);

} // namespace tvrcim

#endif
