// Records of the provider's own log.
#ifndef TVR_PROVIDERS_TVRHBA_LOGENTRY_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_LOGENTRY_PROVIDER_H

#include "runtime/provider.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_LogEntry_Provider {
public:
    using Class = TVRHBA_LogEntry;

    Load_Status load();
    Unload_Status unload();
    Get_Instance_Status get_instance(const Class*, Class*&) { return GET_INSTANCE_UNSUPPORTED; }
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    Create_Instance_Status create_instance(Class*) { return CREATE_INSTANCE_UNSUPPORTED; }
    Delete_Instance_Status delete_instance(const Class*) { return DELETE_INSTANCE_UNSUPPORTED; }
    Modify_Instance_Status modify_instance(const Class*, const Class*) {
        return MODIFY_INSTANCE_UNSUPPORTED;
    }
};

} // namespace cimple

#endif
