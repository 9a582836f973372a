// The entries of the instance MI.
#include "runtime/cmpi_delivery.h"
#include "runtime/cmpi_entry.h"

#include <cmpimacs.h>

namespace cimple {

namespace {

constexpr Status_Answer get_answers[] = {
    {GET_INSTANCE_NOT_FOUND, CMPI_RC_ERR_NOT_FOUND},
    {GET_INSTANCE_UNSUPPORTED, CMPI_RC_ERR_FAILED},
    {GET_INSTANCE_INVALID_PARAMETER, CMPI_RC_ERR_INVALID_PARAMETER},
    {GET_INSTANCE_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
    {GET_INSTANCE_FAILED, CMPI_RC_ERR_FAILED},
};
constexpr Status_Answer enum_answers[] = {
    {ENUM_INSTANCES_FAILED, CMPI_RC_ERR_FAILED},
    {ENUM_INSTANCES_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
};
constexpr Status_Answer create_answers[] = {
    {CREATE_INSTANCE_DUPLICATE, CMPI_RC_ERR_ALREADY_EXISTS},
    {CREATE_INSTANCE_UNSUPPORTED, CMPI_RC_ERR_NOT_SUPPORTED},
    {CREATE_INSTANCE_INVALID_PARAMETER, CMPI_RC_ERR_INVALID_PARAMETER},
    {CREATE_INSTANCE_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
    {CREATE_INSTANCE_FAILED, CMPI_RC_ERR_FAILED},
};
constexpr Status_Answer delete_answers[] = {
    {DELETE_INSTANCE_NOT_FOUND, CMPI_RC_ERR_NOT_FOUND},
    {DELETE_INSTANCE_UNSUPPORTED, CMPI_RC_ERR_NOT_SUPPORTED},
    {DELETE_INSTANCE_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
    {DELETE_INSTANCE_FAILED, CMPI_RC_ERR_FAILED},
};
constexpr Status_Answer modify_answers[] = {
    {MODIFY_INSTANCE_NOT_FOUND, CMPI_RC_ERR_NOT_FOUND},
    {MODIFY_INSTANCE_UNSUPPORTED, CMPI_RC_ERR_NOT_SUPPORTED},
    {MODIFY_INSTANCE_INVALID_PARAMETER, CMPI_RC_ERR_INVALID_PARAMETER},
    {MODIFY_INSTANCE_ACCESS_DENIED, CMPI_RC_ERR_ACCESS_DENIED},
    {MODIFY_INSTANCE_FAILED, CMPI_RC_ERR_FAILED},
};

bool deliver_name(Instance* instance, int /*status*/, void* client_data) {
    const Ref<> owned(instance);
    auto& to = *static_cast<Delivery*>(client_data);
    return to.wants(instance) && to.send_path(*instance, to.name_space());
}

bool deliver_instance(Instance* instance, int /*status*/, void* client_data) {
    const Ref<> owned(instance);
    auto& to = *static_cast<Delivery*>(client_data);
    return to.wants(instance) && to.send_instance(*instance);
}

// What a request is about: of the class that the path names, with the path's keys, and with the
// properties of the CMPI instance if one came.
Made requested(const CMPI_Adapter& adapter, const CMPIObjectPath* path) {
    const Meta_Class* meta_class = find_class(adapter, path);
    return meta_class == nullptr ? Made{{}, CMPI_RC_ERR_FAILED}
                                 : make_model(adapter, meta_class, path);
}
Made requested(const CMPI_Adapter& adapter, const CMPIObjectPath* path,
               const CMPIInstance* cmpi_instance) {
    const Meta_Class* meta_class = find_class(adapter, path);
    if (meta_class == nullptr) {
        return {{}, CMPI_RC_ERR_FAILED};
    }
    Instance* instance = nullptr;
    const CMPIrc rc =
        make_cimple_instance(adapter.broker(), meta_class, path, cmpi_instance, instance);
    return {Ref<>(instance), rc};
}

CMPIStatus cleanup(CMPIInstanceMI* mi, const CMPIContext* context, CMPIBoolean terminating) {
    return clean_up("cleanup", mi, context, terminating);
}

CMPIStatus enumInstanceNames(CMPIInstanceMI* mi, const CMPIContext* context,
                             const CMPIResult* result, const CMPIObjectPath* path) {
    return in_frame("enumInstanceNames", mi, context, [&](CMPI_Adapter& adapter) {
        const Made model = requested(adapter, path);
        if (model.rc != CMPI_RC_OK) {
            return model.rc;
        }
        set_null_flags(model.instance.get(), false, true, 1);

        Delivery delivery{adapter.broker(), result, name_space_of(path)};
        const int status = adapter.enum_instances(model.instance.get(), deliver_name, &delivery);
        if (status == ENUM_INSTANCES_OK) {
            CMReturnDone(result);
        }
        return answer_to(enum_answers, status);
    });
}

CMPIStatus enumInstances(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                         const CMPIObjectPath* path, const char** properties) {
    return in_frame("enumInstances", mi, context, [&](CMPI_Adapter& adapter) {
        const Made model = requested(adapter, path);
        if (model.rc != CMPI_RC_OK) {
            return model.rc;
        }
        if (properties != nullptr) {
            filter_properties(model.instance.get(), properties, true);
        }

        Delivery delivery{adapter.broker(), result, name_space_of(path), properties};
        const int status =
            adapter.enum_instances(model.instance.get(), deliver_instance, &delivery);
        const CMPIrc rc = answer_to(enum_answers, status);
        if (rc == CMPI_RC_OK) {
            CMReturnDone(result);
        }
        return rc;
    });
}

CMPIStatus getInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                       const CMPIObjectPath* path, const char** properties) {
    return in_frame("getInstance", mi, context, [&](CMPI_Adapter& adapter) {
        const Made model = requested(adapter, path);
        if (model.rc != CMPI_RC_OK) {
            return model.rc;
        }
        set_null_flags(model.instance.get(), true, true, 0);
        if (properties != nullptr) {
            filter_properties(model.instance.get(), properties, true);
        }

        Instance* found = nullptr;
        const int status = adapter.get_instance(model.instance.get(), found);
        const Ref<> owned(found);
        if (const CMPIrc rc = answer_to(get_answers, status); rc != CMPI_RC_OK) {
            return rc;
        }
        CMPIInstance* cmpi_instance = nullptr;
        const CMPIrc rc = make_CMPI_instance(adapter.broker(), found, name_space_of(path), path,
                                             properties, cmpi_instance);
        if (rc == CMPI_RC_OK) {
            CMReturnInstance(result, cmpi_instance);
            CMReturnDone(result);
        }
        return rc;
    });
}

CMPIStatus createInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                          const CMPIObjectPath* path, const CMPIInstance* cmpi_instance) {
    return in_frame("createInstance", mi, context, [&](CMPI_Adapter& adapter) {
        const Made made = requested(adapter, path, cmpi_instance);
        if (made.rc != CMPI_RC_OK) {
            return made.rc;
        }
        const int status = adapter.call(OPERATION_CREATE_INSTANCE, made.instance.get());
        if (status != CREATE_INSTANCE_OK) {
            return answer_to(create_answers, status);
        }
        CMPIObjectPath* created = nullptr;
        const CMPIrc rc = make_CMPI_object_path(adapter.broker(), made.instance.get(),
                                                name_space_of(path), created);
        if (rc == CMPI_RC_OK) {
            CMReturnObjectPath(result, created);
            CMReturnDone(result);
        }
        return rc;
    });
}

CMPIStatus modifyInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                          const CMPIObjectPath* path, const CMPIInstance* cmpi_instance,
                          const char** properties) {
    return in_frame("modifyInstance", mi, context, [&](CMPI_Adapter& adapter) {
        const Made made = requested(adapter, path, cmpi_instance);
        if (made.rc != CMPI_RC_OK) {
            return made.rc;
        }
        const Ref<> model(clone(made.instance.get()));
        filter_properties(model.get(), properties, true);

        const int status =
            adapter.call(OPERATION_MODIFY_INSTANCE, model.get(), made.instance.get());
        if (status == MODIFY_INSTANCE_OK) {
            CMReturnObjectPath(result, path);
            CMReturnDone(result);
        }
        return answer_to(modify_answers, status);
    });
}

CMPIStatus deleteInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                          const CMPIObjectPath* path) {
    return in_frame("deleteInstance", mi, context, [&](CMPI_Adapter& adapter) {
        const Made model = requested(adapter, path);
        if (model.rc != CMPI_RC_OK) {
            return model.rc;
        }
        const int status = adapter.call(OPERATION_DELETE_INSTANCE, model.instance.get());
        const CMPIrc rc = answer_to(delete_answers, status);
        if (rc == CMPI_RC_OK) {
            CMReturnDone(result);
        }
        return rc;
    });
}

CMPIStatus execQuery(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*,
                     const char*, const char*) {
    return reply("execQuery", CMPI_RC_ERR_NOT_SUPPORTED);
}

} // namespace

// Later editions have members behind these, which a table of this version doesn't reach.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

CMPIInstanceMIFT instance_table(const char* name) noexcept {
    return {table_version,     table_version,  name,        cleanup,
            enumInstanceNames, enumInstances,  getInstance, createInstance,
            modifyInstance,    deleteInstance, execQuery};
}

} // namespace cimple
