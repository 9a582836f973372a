// Profiles that the provider conforms to.
#ifndef TVR_PROVIDERS_TVRHBA_REGISTEREDPROFILE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_REGISTEREDPROFILE_PROVIDER_H

#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

// Answers from a fixed list, without the agent and its locks: the agent itself asks the object
// manager for registered profiles while it holds them, and so comes in here. Instances carry no
// namespace; they belong to the one in which the client asks.
class TVRHBA_RegisteredProfile_Provider {
public:
    using Class = TVRHBA_RegisteredProfile;

    Load_Status load() { return LOAD_OK; }
    Unload_Status unload() { return UNLOAD_OK; }
    Get_Instance_Status get_instance(const Class*, Class*&) { return GET_INSTANCE_UNSUPPORTED; }
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    Create_Instance_Status create_instance(Class*) { return CREATE_INSTANCE_UNSUPPORTED; }
    Delete_Instance_Status delete_instance(const Class*) { return DELETE_INSTANCE_UNSUPPORTED; }
    Modify_Instance_Status modify_instance(const Class*, const Class*) {
        return MODIFY_INSTANCE_UNSUPPORTED;
    }

    static constexpr Unsupported_Method CloseConformantInstances{};
    static constexpr Unsupported_Method OpenConformantInstances{};
    static constexpr Unsupported_Method PullConformantInstances{};
};

} // namespace cimple

#endif
