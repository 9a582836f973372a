#include "runtime/provider.h"

#include "runtime/association.h"

namespace cimple {

namespace {

struct Search {
    const Instance* model;
    Ref<Instance> found;
};

// Keeps the first instance with the model's keys and drops all others.
bool take_match(Instance* instance, int, void* client_data) {
    Search& search = *static_cast<Search*>(client_data);
    Ref<Instance> current(instance);
    if (current && !search.found && key_eq(search.model, instance)) {
        search.found = std::move(current);
    }
    return !search.found;
}

// Walks over associations, of which those with the source at an end are passed on, or their other
// ends.
struct Traversal {
    const Instance* source;
    const String& result_class;
    const String& role;
    const String& result_role;
    Instance_Enumerator_Proc proc;
    void* client_data;
    Array<Instance*> ends{};
};

bool pass_ends(Instance* instance, int, void* client_data) {
    if (instance == nullptr) {
        return false;
    }
    Traversal& traversal = *static_cast<Traversal*>(client_data);
    const Ref<> association(instance);
    get_association_ends(traversal.source, instance, traversal.result_class, traversal.role,
                         traversal.result_role, traversal.ends);
    for (Instance* end : traversal.ends) {
        ref(end);
        traversal.proc(end, ENUM_ASSOCIATOR_NAMES_OK, traversal.client_data);
    }
    return true;
}

bool pass_reference(Instance* instance, int, void* client_data) {
    if (instance == nullptr) {
        return false;
    }
    const Traversal& traversal = *static_cast<Traversal*>(client_data);
    Ref<> association(instance);
    if (is_reference_end(traversal.source, instance, traversal.role)) {
        traversal.proc(association.release(), ENUM_REFERENCES_OK, traversal.client_data);
    }
    return true;
}

// The model of an enumeration whose caller wants no more than names.
Ref<> names_model(const Meta_Class* meta_class) {
    Ref<> model(create(meta_class, false));
    set_null_flags(model.get(), false, true, 1);
    return model;
}

int call_with(Provider_Proc proc, const Registration* registration, Operation operation,
              void* arg0) {
    return proc(registration, operation, arg0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                nullptr);
}

} // namespace

Provider_Handle::Provider_Handle(const Registration* registration)
    : _registration(registration), _proc(registration->proc) {
    call_with(_proc, _registration, OPERATION_CREATE_PROVIDER, &_provider);
}

Provider_Handle::~Provider_Handle() {
    call_with(_proc, _registration, OPERATION_DESTROY_PROVIDER, _provider);
}

int Provider_Handle::call(Operation operation, const void* arg1, const void* arg2, const void* arg3,
                          const void* arg4, const void* arg5, const void* arg6) const {
    const auto word = [](const void* arg) { return const_cast<void*>(arg); };
    return _proc(_registration, operation, _provider, word(arg1), word(arg2), word(arg3),
                 word(arg4), word(arg5), word(arg6), nullptr);
}

const Meta_Class* Provider_Handle::get_meta_class() const {
    const Meta_Class* meta_class = nullptr;
    call_with(_proc, _registration, OPERATION_GET_META_CLASS, &meta_class);
    return meta_class;
}

const Meta_Repository* Provider_Handle::get_repository() const {
    const Meta_Repository* repository = nullptr;
    call_with(_proc, _registration, OPERATION_GET_REPOSITORY, &repository);
    return repository;
}

Get_Instance_Status Provider_Handle::get_instance(const Instance* model,
                                                  Instance*& instance) const {
    Instance* got = nullptr;
    const int status = call(OPERATION_GET_INSTANCE, model, &got);
    if (status != GET_INSTANCE_UNSUPPORTED) {
        if (status == GET_INSTANCE_OK && got == nullptr) {
            return GET_INSTANCE_FAILED;
        }
        instance = got;
        return static_cast<Get_Instance_Status>(status);
    }

    Search search{model, {}};
    const Instance_Selector selector = Instance_Selector::by_key(*model);
    if (enum_instances(model, take_match, &search, &selector) != ENUM_INSTANCES_OK ||
        !search.found) {
        return GET_INSTANCE_NOT_FOUND;
    }
    instance = search.found.release();
    return GET_INSTANCE_OK;
}

Enum_Instances_Status Provider_Handle::enum_instances(const Instance* model,
                                                      Instance_Enumerator_Proc proc,
                                                      void* client_data,
                                                      const Instance_Selector* selector) const {
    return static_cast<Enum_Instances_Status>(call(OPERATION_ENUM_INSTANCES, model,
                                                   reinterpret_cast<const void*>(proc), client_data,
                                                   selector));
}

Enum_Associator_Names_Status
Provider_Handle::enum_associator_names(const Instance* instance, const String& result_class,
                                       const String& role, const String& result_role,
                                       Instance_Enumerator_Proc proc, void* client_data) const {
    const Meta_Class* meta_class = get_meta_class();
    if (!meta_class->has(FLAG_ASSOCIATION)) {
        return ENUM_ASSOCIATOR_NAMES_FAILED;
    }
    switch (call(OPERATION_ENUM_ASSOCIATOR_NAMES, instance, &result_class, &role, &result_role,
                 reinterpret_cast<const void*>(proc), client_data)) {
    case ENUM_ASSOCIATOR_NAMES_OK:
        return ENUM_ASSOCIATOR_NAMES_OK;
    case ENUM_ASSOCIATOR_NAMES_FAILED:
    case ENUM_ASSOCIATOR_NAMES_ACCESS_DENIED:
        return ENUM_ASSOCIATOR_NAMES_FAILED;
    default:
        break;
    }
    const Ref<> model = names_model(meta_class);
    Traversal traversal{instance, result_class, role, result_role, proc, client_data};
    const Instance_Selector selector = Instance_Selector::by_end(*instance, role);
    const int status = enum_instances(model.get(), pass_ends, &traversal, &selector);
    proc(nullptr, ENUM_ASSOCIATOR_NAMES_OK, client_data);
    switch (status) {
    case ENUM_INSTANCES_FAILED:
        return ENUM_ASSOCIATOR_NAMES_FAILED;
    case ENUM_INSTANCES_ACCESS_DENIED:
        return ENUM_ASSOCIATOR_NAMES_ACCESS_DENIED;
    default:
        return ENUM_ASSOCIATOR_NAMES_OK;
    }
}

Enum_References_Status Provider_Handle::enum_references(const Instance* instance,
                                                        const Instance* model, const String& role,
                                                        Instance_Enumerator_Proc proc,
                                                        void* client_data) const {
    if (!get_meta_class()->has(FLAG_ASSOCIATION)) {
        return ENUM_REFERENCES_FAILED;
    }
    switch (const int status = call(OPERATION_ENUM_REFERENCES, instance, model, &role,
                                    reinterpret_cast<const void*>(proc), client_data)) {
    case ENUM_REFERENCES_OK:
    case ENUM_REFERENCES_FAILED:
    case ENUM_REFERENCES_ACCESS_DENIED:
        return static_cast<Enum_References_Status>(status);
    default:
        break;
    }
    const String any;
    Traversal traversal{instance, any, role, any, proc, client_data};
    const Instance_Selector selector = Instance_Selector::by_end(*instance, role);
    const int status = enum_instances(model, pass_reference, &traversal, &selector);
    proc(nullptr, ENUM_REFERENCES_OK, client_data);
    switch (status) {
    case ENUM_INSTANCES_FAILED:
        return ENUM_REFERENCES_FAILED;
    case ENUM_INSTANCES_ACCESS_DENIED:
        return ENUM_REFERENCES_ACCESS_DENIED;
    default:
        return ENUM_REFERENCES_OK;
    }
}

} // namespace cimple
