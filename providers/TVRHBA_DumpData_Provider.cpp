#include "providers/TVRHBA_DumpData_Provider.h"

#include "agent/provider_calls.h"

namespace cimple {

Load_Status TVRHBA_DumpData_Provider::load() {
    return load_agent();
}

Unload_Status TVRHBA_DumpData_Provider::unload() {
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_DumpData_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    enumerate<TVRHBA_DumpData>(handler);
    TVR_LOG("TVRHBA_DumpData_Provider::enum_instances()");
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
