// Driver parameters, to be set.
#ifndef TVR_PROVIDERS_TVRHBA_FCHBADRIVERPARAMSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCHBADRIVERPARAMSERVICE_PROVIDER_H

#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCHBADriverParamService_Provider {
public:
    using Class = TVRHBA_FCHBADriverParamService;

    Load_Status load();
    Unload_Status unload();
    Get_Instance_Status get_instance(const Class*, Class*&) { return GET_INSTANCE_UNSUPPORTED; }
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    Create_Instance_Status create_instance(Class*) { return CREATE_INSTANCE_UNSUPPORTED; }
    Delete_Instance_Status delete_instance(const Class*) { return DELETE_INSTANCE_UNSUPPORTED; }
    Modify_Instance_Status modify_instance(const Class*, const Class*) {
        return MODIFY_INSTANCE_UNSUPPORTED;
    }

    // Not carried out.
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method SetDriverParameter{};

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
