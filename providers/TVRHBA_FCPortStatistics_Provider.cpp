#include "providers/TVRHBA_FCPortStatistics_Provider.h"

#include "agent/port_refresh.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_FCPortStatistics_Provider::enum_instances(const Class*,
                                                 const Enum_Instances_Handler& handler) {
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    return enumerate_active<TVRHBA_FCPortStatistics>(handler, GetFCPortStats);
}

} // namespace cimple
