// The logs of the diagnostic tests.
#ifndef TVR_PROVIDERS_TVRHBA_DIAGNOSTICSLOG_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DIAGNOSTICSLOG_PROVIDER_H

#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DiagnosticsLog_Provider {
public:
    using Class = TVRHBA_DiagnosticsLog;

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
    static constexpr Unsupported_Method ClearLog{};

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
};

} // namespace cimple

#endif
