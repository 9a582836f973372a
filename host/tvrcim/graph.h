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
    // Where more associations of a class than this lead from an instance to instances that are not
    // drawn yet, these stand in one box with their number, and are not gone on from. 0: never.
    unsigned fold = 0;
};

// Writes a directed graph in the DOT language: a box per instance, and an arrow per association
// from its first end to its second with the association's class and the ends' roles; an association
// of more ends has a shape of its own in the middle. As JSON it writes "nodes" and "edges".
// Instances and associations come in the order in which the object manager gives them, so that the
// same host gives the same text.
void draw_graph(Session& session, const Graph_Request& request);

} // namespace tvrcim

#endif
