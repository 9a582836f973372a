// Profiles that the provider conforms to.
#ifndef TVR_PROVIDERS_TVRHBA_REGISTEREDPROFILE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_REGISTEREDPROFILE_PROVIDER_H

#include "providers/unsupported_method.h"
#include "runtime/enumerating_provider.h"
#include "schema/classes.h"

namespace cimple {

// Answers from a fixed list, without the agent and its locks: the agent itself asks the object
// manager for registered profiles while it holds them, and so comes in here. Instances carry no
// namespace; they belong to the one in which the client asks.
class TVRHBA_RegisteredProfile_Provider : public Enumerating_Provider<TVRHBA_RegisteredProfile> {
public:
    Load_Status load() { return LOAD_OK; }
    Unload_Status unload() { return UNLOAD_OK; }
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    static constexpr Unsupported_Method CloseConformantInstances{};
    static constexpr Unsupported_Method OpenConformantInstances{};
    static constexpr Unsupported_Method PullConformantInstances{};
};

} // namespace cimple

#endif
