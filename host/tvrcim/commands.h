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

// The name by which `diag` knows a test: "external-loopback" of "TVR:FCHBA External Loopback Test".
std::string short_name_of(const std::string& test);
// `diag list`: the tests of the adapters; of a port with what they last came to there
void list_diagnostics(Session& session, const std::string& port);
// `diag run`, with NAME=VALUE of the test's settings or of the job's. It goes on until the test is
// over, which can take minutes. The status is that of a failure unless the test has passed.
void run_diagnostic(Session& session, const std::string& port, const std::string& test,
                    const std::vector<std::string>& settings);

// `watch`, of an indication class, until `count` alerts have come, or without end if that is 0.
void watch_alerts(Session& session, const std::string& class_name, unsigned count);

} // namespace tvrcim

#endif
