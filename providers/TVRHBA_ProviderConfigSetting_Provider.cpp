#include "providers/TVRHBA_ProviderConfigSetting_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_ProviderConfigSetting_Provider::enum_instances(const Class*,
                                                      const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_ProviderConfigSetting>(handler);
    TVR_LOG("TVRHBA_ProviderConfigSetting_Provider::enum_instances()");
    return status;
}

} // namespace cimple
