#include "providers/TVRHBA_FCPortStatistics_Provider.h"

#include "agent/port_refresh.h"
#include "agent/provider_calls.h"

namespace cimple {

Load_Status TVRHBA_FCPortStatistics_Provider::load() {
    return load_agent();
}

Unload_Status TVRHBA_FCPortStatistics_Provider::unload() {
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCPortStatistics_Provider::enum_instances(const Class*,
                                                 const Enum_Instances_Handler& handler) {
    if (TVR_IS_AGENT_LOADED()) {
        enumerate_active<TVRHBA_FCPortStatistics>(handler, GetFCPortStats);
    }
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
