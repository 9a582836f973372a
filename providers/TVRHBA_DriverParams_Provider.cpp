#include "providers/TVRHBA_DriverParams_Provider.h"

#include "agent/driver_parameters.h"
#include "agent/provider_calls.h"

namespace cimple {

Load_Status TVRHBA_DriverParams_Provider::load() {
    return load_agent();
}

Unload_Status TVRHBA_DriverParams_Provider::unload() {
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_DriverParams_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    if (TVR_IS_AGENT_LOADED()) {
        enumerate_active<TVRHBA_DriverParams>(handler, UpdateDriverParams);
        TVR_LOG("TVRHBA_DriverParams_Provider::enum_instances()");
    }
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
