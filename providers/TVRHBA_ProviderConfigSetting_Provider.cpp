#include "providers/TVRHBA_ProviderConfigSetting_Provider.h"

#include "providers/service_call.h"

namespace cimple {

namespace {

// What the instances of the map stand for, by their position.
struct Config_Setting {
    // False for a value that is not allowed, with everything as it was.
    bool (*set)(ProviderAgent& agent, uint32 value);
    const char* refused;
    const char* accepted;
};
constexpr Config_Setting config_settings[] = {
    {[](ProviderAgent& agent, uint32 value) {
         if (value > INT32_MAX || agent.m_Config.setCacheTimeout(static_cast<sint32>(value)) != 0) {
             return false;
         }
         agent.m_CacheTimeout = value;
         return true;
     },
     "The value provided for cache time-out is out of range",
     "Cache time-out is modified successfully"},
    {[](ProviderAgent& agent, uint32 value) {
         if (agent.m_Config.setRefreshAdapterData(value) != 0) {
             return false;
         }
         agent.m_bRefreshAdapterData = value != 0;
         return true;
     },
     "The value provided for adapter refresh out is out of range",
     "Adapter refresh is modified successfully"},
    {[](ProviderAgent& agent, uint32 value) {
         if (agent.m_Config.setRefreshSANData(value) != 0) {
             return false;
         }
         agent.m_bRefreshSANData = value != 0;
         return true;
     },
     "The value provided for SAN refresh out is out of range",
     "SAN refresh is modified successfully"},
};

Modify_Instance_Status modify_setting(ProviderAgent& agent,
                                      const TVRHBA_ProviderConfigSetting* model,
                                      const TVRHBA_ProviderConfigSetting* instance) {
    if (model == nullptr || instance == nullptr) {
        TVR_LOG("TVRHBA_ProviderConfigSetting_Provider::modify_instance invalid parameter");
        return MODIFY_INSTANCE_INVALID_PARAMETER;
    }
    const auto& settings = agent.maps.m_TVRHBA_ProviderConfigSetting_map;
    const long position = model->current.is_null() ? -1 : settings.find(instance);
    if (position < 0) {
        TVR_LOG("Instance does not exist");
        return MODIFY_INSTANCE_FAILED;
    }
    const uint32 value = instance->current.value;
    const auto index = static_cast<std::size_t>(position);
    if (index < std::size(config_settings)) {
        const Config_Setting& setting = config_settings[index];
        if (!setting.set(agent, value)) {
            TVR_LOG("%s", setting.refused);
            return MODIFY_INSTANCE_INVALID_PARAMETER;
        }
        TVR_LOG("%s", setting.accepted);
    }
    settings.get(index)->current.set(value);
    return MODIFY_INSTANCE_OK;
}

} // namespace

Enum_Instances_Status
TVRHBA_ProviderConfigSetting_Provider::enum_instances(const Class*,
                                                      const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_ProviderConfigSetting>(handler);
    TVR_LOG("TVRHBA_ProviderConfigSetting_Provider::enum_instances()");
    return status;
}

Modify_Instance_Status
TVRHBA_ProviderConfigSetting_Provider::modify_instance(const Class* model, const Class* instance) {
    TVR_LOG("TVRHBA_ProviderConfigSetting_Provider::modify_instance()");
    return modify([=](ProviderAgent& agent) { return modify_setting(agent, model, instance); });
}

} // namespace cimple
