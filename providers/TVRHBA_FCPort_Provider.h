// FC ports.
#ifndef TVR_PROVIDERS_TVRHBA_FCPORT_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCPORT_PROVIDER_H

#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCPort_Provider {
public:
    using Class = TVRHBA_FCPort;

    Load_Status load();
    Unload_Status unload();
    Get_Instance_Status get_instance(const Class*, Class*&) { return GET_INSTANCE_UNSUPPORTED; }
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    Create_Instance_Status create_instance(Class*) { return CREATE_INSTANCE_UNSUPPORTED; }
    Delete_Instance_Status delete_instance(const Class*) { return DELETE_INSTANCE_UNSUPPORTED; }
    Modify_Instance_Status modify_instance(const Class*, const Class*) {
        return MODIFY_INSTANCE_UNSUPPORTED;
    }

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method SetPowerState{};
    static constexpr Unsupported_Method Reset{};
    static constexpr Unsupported_Method EnableDevice{};
    static constexpr Unsupported_Method OnlineDevice{};
    static constexpr Unsupported_Method QuiesceDevice{};
    static constexpr Unsupported_Method SaveProperties{};
    static constexpr Unsupported_Method RestoreProperties{};
};

} // namespace cimple

#endif
