// The provider's own settings.
#ifndef TVR_PROVIDERS_TVRHBA_PROVIDERCONFIGSETTING_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_PROVIDERCONFIGSETTING_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_ProviderConfigSetting_Provider : public Agent_Provider<TVRHBA_ProviderConfigSetting> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    // `current` is the one property that can be changed. What it says counts from the next refresh
    // decision on, and comes into the settings file when the agent ends.
    Modify_Instance_Status modify_instance(const Class* model, const Class* instance);
};

} // namespace cimple

#endif
