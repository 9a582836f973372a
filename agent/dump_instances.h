// The dump service and, for each port controller, how its dumps are kept.
#ifndef TVR_AGENT_DUMP_INSTANCES_H
#define TVR_AGENT_DUMP_INSTANCES_H

#include "agent/instance_maps.h"

namespace cimple {

// 0; 40008 for an instance that can't be made; TVR_FAILURE for one whose key is there already, and
// for a controller without a name. What was made before stays. An adapter that doesn't tell of its
// dumps has data without directory or count.
uint32 FC_CreateDumpClasses(Instance_Maps& maps);

// Empties the maps of the former. 0.
uint32 FC_ClearDumpClasses(Instance_Maps& maps);

} // namespace cimple

#endif
