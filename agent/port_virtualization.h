// Virtual ports and the pools that they are taken from.
#ifndef TVR_AGENT_PORT_VIRTUALIZATION_H
#define TVR_AGENT_PORT_VIRTUALIZATION_H

#include "agent/instance_maps.h"

namespace cimple {

// Makes a pool for each port that has virtual ports, and these with what joins them, in place of
// those in the maps. 0, or 33068 without a port; TVR_FAILURE for an instance whose key is there
// already and a port without a name, 32774 for one that can't be made: both end the work, and what
// was made stays. 40001 if the virtual ports of a port, or what one of them is called, could not be
// had; the work goes on.
uint32 CreatePortVirtualizationClasses(Instance_Maps& maps);

} // namespace cimple

#endif
