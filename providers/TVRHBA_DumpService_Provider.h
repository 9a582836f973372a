// Dumps of the adapters.
#ifndef TVR_PROVIDERS_TVRHBA_DUMPSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DUMPSERVICE_PROVIDER_H

#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DumpService_Provider {
public:
    using Class = TVRHBA_DumpService;

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
    static constexpr Unsupported_Method GenerateDump{};
    static constexpr Unsupported_Method GetDumpFileNames{};
    static constexpr Unsupported_Method DeleteDump{};

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
