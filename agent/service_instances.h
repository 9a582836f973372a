// The services of the host, whose methods change its adapters.
#ifndef TVR_AGENT_SERVICE_INSTANCES_H
#define TVR_AGENT_SERVICE_INSTANCES_H

#include "agent/host_facts.h"
#include "agent/instance_maps.h"

namespace cimple {

// Software installation, world wide names, boot BIOS and driver parameters, with what joins them to
// the computer system. Throws Rebuild_Ended.
void create_services(Instance_Maps& maps, const Host_Facts& host);

} // namespace cimple

#endif
