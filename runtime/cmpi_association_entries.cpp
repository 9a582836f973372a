// The entries of the association MI. Each serves the adapter's own class only, so that what the
// client says of the association's class isn't looked at.
#include "runtime/cmpi_delivery.h"
#include "runtime/cmpi_entry.h"

namespace cimple {

namespace {

constexpr Status_Answer associators_answers[] = {
    {ENUM_ASSOCIATORS_FAILED, CMPI_RC_ERR_FAILED},
    {ENUM_ASSOCIATORS_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
};
constexpr Status_Answer associator_names_answers[] = {
    {ENUM_ASSOCIATOR_NAMES_FAILED, CMPI_RC_ERR_FAILED},
    {ENUM_ASSOCIATOR_NAMES_UNSUPPORTED, CMPI_RC_ERR_NOT_SUPPORTED},
    {ENUM_ASSOCIATOR_NAMES_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
};
constexpr Status_Answer references_answers[] = {
    {ENUM_REFERENCES_FAILED, CMPI_RC_ERR_FAILED},
    {ENUM_REFERENCES_UNSUPPORTED, CMPI_RC_ERR_NOT_SUPPORTED},
    {ENUM_REFERENCES_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
};

// Ends, as names. A failure is noticed at the next call.
bool deliver_end_name(Instance* end, int /*status*/, void* client_data) {
    const Ref<> owned(end);
    auto& to = *static_cast<Delivery*>(client_data);
    if (!to.wants(end)) {
        return false;
    }
    to.send_path(*end, to.own_name_space(*end));
    return true;
}

// Complete instances from a provider that has them.
bool deliver_associator(Instance* instance, int /*status*/, void* client_data) {
    const Ref<> owned(instance);
    auto& to = *static_cast<Delivery*>(client_data);
    return to.wants(instance) && to.send_pathless(*instance, to.own_name_space(*instance));
}

// Ends, as instances in their current state: an end in an association is what it was when the
// association was made, and perhaps another provider's.
struct Up_Call_Delivery {
    Delivery to;
    const CMPIContext* context;
};

bool deliver_end(Instance* end, int /*status*/, void* client_data) {
    const Ref<> owned(end);
    auto& up_call = *static_cast<Up_Call_Delivery*>(client_data);
    Delivery& to = up_call.to;
    if (!to.wants(end)) {
        return false;
    }
    return to.send_current(*end, to.own_name_space(*end), up_call.context);
}

bool deliver_reference_name(Instance* association, int /*status*/, void* client_data) {
    const Ref<> owned(association);
    auto& to = *static_cast<Delivery*>(client_data);
    if (!to.wants(association)) {
        return false;
    }
    set_null_flags(association, false, true, 1);
    return to.send_path(*association, to.name_space());
}

bool deliver_reference(Instance* association, int /*status*/, void* client_data) {
    const Ref<> owned(association);
    auto& to = *static_cast<Delivery*>(client_data);
    return to.wants(association) && to.send_instance(*association, true);
}

CMPIStatus cleanup(CMPIAssociationMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    return clean_up("cleanup", mi, context, terminating);
}

// The frame of the four entries. `body` gets the adapter and the source, the instance that the path
// names; a class that nobody knows has no associations, which is no error.
template <class Body>
CMPIStatus from_source(const char* function, const CMPIAssociationMI* mi,
                       const CMPIContext* context, const CMPIObjectPath* path,
                       CMPIrc logged_if_unknown, Body&& body, Call_Site where = Call_Site::here()) {
    return in_frame(
        function, mi, context,
        [&](CMPI_Adapter& adapter) -> Outcome {
            const Meta_Class* meta_class = find_class(adapter, path);
            if (meta_class == nullptr) {
                return Outcome::logged_as(logged_if_unknown, CMPI_RC_OK);
            }
            const Made source = make_model(adapter, meta_class, path);
            return source.rc != CMPI_RC_OK ? source.rc : body(adapter, source.instance.get());
        },
        where);
}

CMPIStatus associators(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                       const CMPIObjectPath* path, const char* /*association_class*/,
                       const char* result_class, const char* role, const char* result_role,
                       const char** properties) {
    const auto body = [&](const CMPI_Adapter& adapter, const Instance* source) {
        const String of_class(result_class);
        const String in_role(role);
        const String of_role(result_role);
        Up_Call_Delivery delivery{{adapter.broker(), result, name_space_of(path), properties},
                                  context};

        const int status =
            adapter.call(OPERATION_ENUM_ASSOCIATORS, source, &of_class, &in_role, &of_role,
                         reinterpret_cast<const void*>(deliver_associator), &delivery.to);
        if (status == ENUM_ASSOCIATORS_OK || status == ENUM_ASSOCIATORS_FAILED ||
            status == ENUM_ASSOCIATORS_ACCESS_DENIED) {
            return answer_to(associators_answers, status);
        }
        return answer_to(associator_names_answers,
                         adapter.enum_associator_names(source, of_class, in_role, of_role,
                                                       deliver_end, &delivery));
    };
    return from_source("associators", mi, context, path, CMPI_RC_OK, body);
}

CMPIStatus associatorNames(CMPIAssociationMI* mi, const CMPIContext* context,
                           const CMPIResult* result, const CMPIObjectPath* path,
                           const char* /*association_class*/, const char* result_class,
                           const char* role, const char* result_role) {
    const auto body = [&](const CMPI_Adapter& adapter, const Instance* source) {
        Delivery delivery(adapter.broker(), result, name_space_of(path));
        return answer_to(associator_names_answers,
                         adapter.enum_associator_names(source, String(result_class), String(role),
                                                       String(result_role), deliver_end_name,
                                                       &delivery));
    };
    return from_source("associatorNames", mi, context, path, CMPI_RC_ERR_INVALID_CLASS, body);
}

CMPIrc answer_references(const CMPI_Adapter& adapter, const Instance* source, const char* role,
                         Instance_Enumerator_Proc proc, Delivery& delivery) {
    const Ref<> model(create(adapter.get_meta_class(), false));
    set_null_flags(model.get(), false, true, 1);
    return answer_to(references_answers,
                     adapter.enum_references(source, model.get(), String(role), proc, &delivery));
}

CMPIStatus references(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                      const CMPIObjectPath* path, const char* /*association_class*/,
                      const char* role, const char** properties) {
    const auto body = [&](const CMPI_Adapter& adapter, const Instance* source) {
        Delivery delivery(adapter.broker(), result, name_space_of(path), properties);
        return answer_references(adapter, source, role, deliver_reference, delivery);
    };
    return from_source("references", mi, context, path, CMPI_RC_ERR_INVALID_CLASS, body);
}

CMPIStatus referenceNames(CMPIAssociationMI* mi, const CMPIContext* context,
                          const CMPIResult* result, const CMPIObjectPath* path,
                          const char* /*association_class*/, const char* role) {
    const auto body = [&](const CMPI_Adapter& adapter, const Instance* source) {
        Delivery delivery(adapter.broker(), result, name_space_of(path));
        return answer_references(adapter, source, role, deliver_reference_name, delivery);
    };
    return from_source("referenceNames", mi, context, path, CMPI_RC_ERR_INVALID_CLASS, body);
}

} // namespace

// Later editions have members behind these, which a table of this version doesn't reach.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

CMPIAssociationMIFT association_table(const char* name) noexcept {
    return {table_version, table_version,   name,       cleanup,
            associators,   associatorNames, references, referenceNames};
}

} // namespace cimple
