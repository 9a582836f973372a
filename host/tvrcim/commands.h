// The commands, for the command line and the shell alike. Each throws Usage_Error or Cim_Error.
#ifndef TVR_HOST_TVRCIM_COMMANDS_H
#define TVR_HOST_TVRCIM_COMMANDS_H

#include "host/tvrcim/session.h"

#include <string>
#include <vector>

namespace tvrcim {

// `list` and `tree`, of the ports whose WWPN begins with `port`, or of all
void list_ports(Session& session, const std::string& port);
void show_tree(Session& session, const std::string& port);

// `classes`: those that match the pattern, with `all` also such as the module doesn't serve; one
// class in full where the pattern is a name.
void show_classes(Session& session, const std::string& pattern, bool all);

// `enum`, `get`, `set` and `call`
void show_instances(Session& session, const std::string& class_name,
                    const std::vector<std::string>& properties, bool names);
void show_instance(Session& session, const std::string& path,
                   const std::vector<std::string>& properties);
void change_instance(Session& session, const std::string& path,
                     const std::vector<std::string>& values);
void call_method(Session& session, const std::string& path, const std::string& method,
                 const std::vector<std::string>& arguments);

// `assoc` and `refs`
struct Traversal {
    std::string path;
    tvrhost::Association_Filter filter;
    std::vector<std::string> properties;
    bool names = false;
};
void show_associators(Session& session, Traversal traversal);
void show_references(Session& session, const Traversal& traversal);

// `graph`; Graph_Request tells what these are.
struct Graph_Words {
    std::string path;
    unsigned depth = 1;
    unsigned fold = 5;
    std::vector<std::string> leaves;
    std::vector<std::string> hidden;
};
void show_graph(Session& session, const Graph_Words& words);

// `watch`, of an indication class, until `count` alerts have come, or without end if that is 0.
void watch_alerts(Session& session, const std::string& class_name, unsigned count);

} // namespace tvrcim

#endif
