// The provider's own log as an instance.
#ifndef TVR_AGENT_RECORD_LOG_H
#define TVR_AGENT_RECORD_LOG_H

#include "agent/host_facts.h"
#include "agent/instance_maps.h"

namespace cimple {

// With its capabilities and its use by the provider; nothing if there is no memory for it. Throws
// Rebuild_Ended.
void create_record_log(Instance_Maps& maps, const Host_Facts& host, const TVR_FileLogger& file_log,
                       const TVRHBA_SoftwareIdentity& provider);

} // namespace cimple

#endif
