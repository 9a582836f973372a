#include "providers/TVRHBA_ProviderConfigSetting_Provider.h"

#include "agent/provider_calls.h"

namespace cimple {

Load_Status TVRHBA_ProviderConfigSetting_Provider::load() {
    return load_agent();
}

Unload_Status TVRHBA_ProviderConfigSetting_Provider::unload() {
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_ProviderConfigSetting_Provider::enum_instances(const Class*,
                                                      const Enum_Instances_Handler& handler) {
    enumerate<TVRHBA_ProviderConfigSetting>(handler);
    TVR_LOG("TVRHBA_ProviderConfigSetting_Provider::enum_instances()");
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
