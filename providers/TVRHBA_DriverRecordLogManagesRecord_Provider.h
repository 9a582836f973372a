// Which records the driver's log has.
#ifndef TVR_PROVIDERS_TVRHBA_DRIVERRECORDLOGMANAGESRECORD_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DRIVERRECORDLOGMANAGESRECORD_PROVIDER_H

#include "runtime/provider.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DriverRecordLogManagesRecord_Provider {
public:
    using Class = TVRHBA_DriverRecordLogManagesRecord;

    Load_Status load();
    Unload_Status unload();
    Get_Instance_Status get_instance(const Class*, Class*&) { return GET_INSTANCE_UNSUPPORTED; }
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    Create_Instance_Status create_instance(Class*) { return CREATE_INSTANCE_UNSUPPORTED; }
    Delete_Instance_Status delete_instance(const Class*) { return DELETE_INSTANCE_UNSUPPORTED; }
    Modify_Instance_Status modify_instance(const Class*, const Class*) {
        return MODIFY_INSTANCE_UNSUPPORTED;
    }

    Enum_Associator_Names_Status enum_associator_names(const Instance*, const String&,
                                                       const String&, const String&,
                                                       const Enum_Associator_Names_Handler&) {
        return ENUM_ASSOCIATOR_NAMES_UNSUPPORTED;
    }
    Enum_References_Status enum_references(const Instance*, const Class*, const String&,
                                           const Enum_References_Handler&) {
        return ENUM_REFERENCES_UNSUPPORTED;
    }
    Enum_Associators_Status enum_associators(const Instance*, const String&, const String&,
                                             const String&, const Enum_Associators_Handler&) {
        return ENUM_ASSOCIATORS_UNSUPPORTED;
    }
};

} // namespace cimple

#endif
