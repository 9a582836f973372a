// The associations around an instance as a drawing for Graphviz.
#ifndef TVR_HOST_TVRCIM_GRAPH_H
#define TVR_HOST_TVRCIM_GRAPH_H

#include "host/tvrcim/session.h"

namespace tvrcim {

struct Graph_Request {
    tvrhost::Cim_Path root;
    unsigned depth = 1;                       // associations from the root on
    std::vector<const tvrmof::Class*> leaves; // instances of these are drawn and not gone on from
    std::vector<const tvrmof::Class*>
        hidden; // those of these are left out, with what leads to them
};

// Writes a directed graph in the DOT language: a box per instance, an arrow per association from
// its first end to each other one, with the association's class and the ends' roles. Instances and
// associations come in the order in which the object manager gives them, so that the same host
// gives the same text.
void draw_graph(Session& session, const Graph_Request& request);

} // namespace tvrcim

#endif
