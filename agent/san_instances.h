// The instances of targets.
#ifndef TVR_AGENT_SAN_INSTANCES_H
#define TVR_AGENT_SAN_INSTANCES_H

#include "agent/instance_maps.h"
#include "model/data.h"

namespace cimple {

// Makes them all anew from the targets of the ports; without data there are none. 0, or TVR_FAILURE
// for a rebuild that ended early: the maps keep what was made up to there. On the refresh thread,
// under m_ProviderDataMutex.
uint32 updateSANMaps(Instance_Maps& maps, const Data* data);

} // namespace cimple

#endif
