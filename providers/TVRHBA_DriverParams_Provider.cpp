#include "providers/TVRHBA_DriverParams_Provider.h"

#include "agent/driver_parameters.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_DriverParams_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    const Enum_Instances_Status status =
        enumerate_active<TVRHBA_DriverParams>(handler, UpdateDriverParams);
    TVR_LOG("TVRHBA_DriverParams_Provider::enum_instances()");
    return status;
}

} // namespace cimple
