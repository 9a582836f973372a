// The answers of a provider that enumerates and leaves the rest to the runtime.
#ifndef TVR_RUNTIME_ENUMERATING_PROVIDER_H
#define TVR_RUNTIME_ENUMERATING_PROVIDER_H

#include "runtime/provider.h"

namespace cimple {

// Base of a provider of class C, which declares what it does itself: load, unload, enum_instances,
// its methods, and any operation of these that it carries out after all. A get and the traversals
// of an association are made of the enumeration, which is what their statuses ask for; no client
// creates, changes or deletes an instance. Traversals of a class that is no association are never
// called. No state.
template <class C> class Enumerating_Provider {
public:
    using Class = C;

    Get_Instance_Status get_instance(const C*, C*&) { return GET_INSTANCE_UNSUPPORTED; }
    Create_Instance_Status create_instance(C*) { return CREATE_INSTANCE_UNSUPPORTED; }
    Delete_Instance_Status delete_instance(const C*) { return DELETE_INSTANCE_UNSUPPORTED; }
    Modify_Instance_Status modify_instance(const C*, const C*) {
        return MODIFY_INSTANCE_UNSUPPORTED;
    }

    Enum_Associator_Names_Status enum_associator_names(const Instance*, const String&,
                                                       const String&, const String&,
                                                       const Enum_Associator_Names_Handler&) {
        return ENUM_ASSOCIATOR_NAMES_UNSUPPORTED;
    }
    Enum_References_Status enum_references(const Instance*, const C*, const String&,
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
