// The provider's own settings as instances. Their positions in the map tell which is which.
#include "agent/settings_instances.h"

#include "agent/creation.h"

namespace cimple {

namespace {

struct Setting {
    const char* name;
    const char* description;
    uint32 lowest;
    uint32 highest;
    uint32 initial;
    uint32 (*current)(const TvrConfigFile& config);
};

// `lowest` is what is advertised; the file and a modification may go down to 1 minute.
constexpr Setting provider_settings[] = {
    {"cachetimeout",
     "This setting defines the timeout value of Tavrin CIM Provider's internal cache", 5, 30, 10,
     [](const TvrConfigFile& config) { return static_cast<uint32>(config.getCacheTimeout()); }},
    {"adapterrefresh",
     "This setting represents the Adapter data refresh setting value of Tavrin CIM Provider's "
     "internal cache",
     0, 1, 0, [](const TvrConfigFile& config) -> uint32 { return config.getRefreshAdapterData(); }},
    {"sanrefresh",
     "This setting represents the SAN data refresh setting value of Tavrin CIM Provider's "
     "internal cache",
     0, 1, 1, [](const TvrConfigFile& config) -> uint32 { return config.getRefreshSANData(); }},
};

} // namespace

void create_settings(Instance_Maps& maps, const TvrConfigFile& config) {
    for (const Setting& setting : provider_settings) {
        auto row = make<TVRHBA_ProviderConfigSetting>();
        row->InstanceID.set(std::string("Tavrin HBA Provider:") + setting.name);
        row->paramname.set(setting.name);
        row->lowRange.set(setting.lowest);
        row->highRange.set(setting.highest);
        row->def.set(setting.initial);
        row->current.set(setting.current(config));
        row->Description.set(setting.description);
        add_or_end(maps, std::move(row));
    }
}

} // namespace cimple
