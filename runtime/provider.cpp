#include "runtime/provider.h"

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
    if (enum_instances(model, take_match, &search) != ENUM_INSTANCES_OK || !search.found) {
        return GET_INSTANCE_NOT_FOUND;
    }
    instance = search.found.release();
    return GET_INSTANCE_OK;
}

Enum_Instances_Status Provider_Handle::enum_instances(const Instance* model,
                                                      Instance_Enumerator_Proc proc,
                                                      void* client_data) const {
    return static_cast<Enum_Instances_Status>(
        call(OPERATION_ENUM_INSTANCES, model, reinterpret_cast<const void*>(proc), client_data));
}

} // namespace cimple
