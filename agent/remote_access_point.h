// The web portal that manages the host.
#ifndef TVR_AGENT_REMOTE_ACCESS_POINT_H
#define TVR_AGENT_REMOTE_ACCESS_POINT_H

#include "agent/instance_maps.h"

namespace cimple {

// Where the host's administrator has named one. Throws Rebuild_Ended.
void create_remote_access_point(Instance_Maps& maps);

} // namespace cimple

#endif
