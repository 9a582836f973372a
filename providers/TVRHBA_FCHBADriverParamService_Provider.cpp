#include "providers/TVRHBA_FCHBADriverParamService_Provider.h"

#include "agent/provider_calls.h"

namespace cimple {

Load_Status TVRHBA_FCHBADriverParamService_Provider::load() {
    return load_agent();
}

Unload_Status TVRHBA_FCHBADriverParamService_Provider::unload() {
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCHBADriverParamService_Provider::enum_instances(const Class*,
                                                        const Enum_Instances_Handler& handler) {
    enumerate<TVRHBA_FCHBADriverParamService>(handler);
    TVR_LOG("TVRHBA_FCHBADriverParamService_Provider::enum_instances()");
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
