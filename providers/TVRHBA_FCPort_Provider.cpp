#include "providers/TVRHBA_FCPort_Provider.h"

#include "agent/port_refresh.h"

namespace cimple {

Unload_Status TVRHBA_FCPort_Provider::unload() {
    TVR_LOG("TVRHBA_FCPort_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCPort_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    const Enum_Instances_Status status =
        enumerate_active<TVRHBA_FCPort>(handler, UpdateFCPortStatus);
    TVR_LOG("TVRHBA_FCPort_Provider::enum_instances()");
    return status;
}

} // namespace cimple
