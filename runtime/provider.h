// The contract between the runtime and class providers: registrations, the uniform dispatcher call,
// operation codes and statuses.
#ifndef TVR_RUNTIME_PROVIDER_H
#define TVR_RUNTIME_PROVIDER_H

#include "runtime/instance.h"

namespace cimple {

class Instance_Selector;
struct Registration;

// The dispatcher of a class: operation code and up to eight untyped words. Callers pad with null.
using Provider_Proc = int (*)(const Registration* registration, int operation, void* arg0,
                              void* arg1, void* arg2, void* arg3, void* arg4, void* arg5,
                              void* arg6, void* arg7);

// One static record a class provider, linked into the module's list.
struct Registration {
    const char* module_name;
    const char* provider_name; // the class name with "_Provider"
    Provider_Proc proc;
    const Meta_Class* meta_class;
    const Registration* next;
};

enum Operation : int {
    OPERATION_GET_META_CLASS = 0,
    OPERATION_CREATE_PROVIDER = 1,
    OPERATION_DESTROY_PROVIDER = 2,
    OPERATION_LOAD = 3,
    OPERATION_UNLOAD = 4,
    OPERATION_GET_INSTANCE = 5,
    OPERATION_ENUM_INSTANCES = 6,
    OPERATION_CREATE_INSTANCE = 7,
    OPERATION_DELETE_INSTANCE = 8,
    OPERATION_MODIFY_INSTANCE = 9,
    OPERATION_INVOKE_METHOD = 10,
    OPERATION_ENABLE_INDICATIONS = 11,
    OPERATION_DISABLE_INDICATIONS = 12,
    OPERATION_GET_REPOSITORY = 13,
    OPERATION_ENUM_ASSOCIATOR_NAMES = 14,
    OPERATION_ENUM_REFERENCES = 15,
    OPERATION_ENUM_ASSOCIATORS = 16,
};

// What a dispatcher answers to an operation that its class doesn't have.
constexpr int OPERATION_UNKNOWN = -1;

// Statuses; each operation has its own decade, so that a status explains itself in a log.
enum Load_Status : int { LOAD_OK = 0, LOAD_FAILED = 30 };
enum Unload_Status : int { UNLOAD_OK = 0, UNLOAD_FAILED = 40 };
enum Get_Instance_Status : int {
    GET_INSTANCE_OK = 0,
    GET_INSTANCE_NOT_FOUND = 60,
    GET_INSTANCE_UNSUPPORTED = 61,
    GET_INSTANCE_INVALID_PARAMETER = 62,
    GET_INSTANCE_ACCESS_DENIED = 63,
    GET_INSTANCE_FAILED = 64,
};
enum Enum_Instances_Status : int {
    ENUM_INSTANCES_OK = 0,
    ENUM_INSTANCES_FAILED = 70,
    ENUM_INSTANCES_ACCESS_DENIED = 71,
};
enum Create_Instance_Status : int {
    CREATE_INSTANCE_OK = 0,
    CREATE_INSTANCE_DUPLICATE = 80,
    CREATE_INSTANCE_UNSUPPORTED = 81,
    CREATE_INSTANCE_INVALID_PARAMETER = 82,
    CREATE_INSTANCE_ACCESS_DENIED = 83,
    CREATE_INSTANCE_FAILED = 84,
};
enum Delete_Instance_Status : int {
    DELETE_INSTANCE_OK = 0,
    DELETE_INSTANCE_NOT_FOUND = 90,
    DELETE_INSTANCE_UNSUPPORTED = 91,
    DELETE_INSTANCE_ACCESS_DENIED = 92,
    DELETE_INSTANCE_FAILED = 93,
};
enum Modify_Instance_Status : int {
    MODIFY_INSTANCE_OK = 0,
    MODIFY_INSTANCE_NOT_FOUND = 100,
    MODIFY_INSTANCE_UNSUPPORTED = 101,
    MODIFY_INSTANCE_INVALID_PARAMETER = 102,
    MODIFY_INSTANCE_ACCESS_DENIED = 103,
    MODIFY_INSTANCE_FAILED = 104,
};
enum Enum_Associator_Names_Status : int {
    ENUM_ASSOCIATOR_NAMES_OK = 0,
    ENUM_ASSOCIATOR_NAMES_FAILED = 110,
    ENUM_ASSOCIATOR_NAMES_UNSUPPORTED = 111,
    ENUM_ASSOCIATOR_NAMES_ACCESS_DENIED = 112,
};
enum Enum_References_Status : int {
    ENUM_REFERENCES_OK = 0,
    ENUM_REFERENCES_FAILED = 120,
    ENUM_REFERENCES_UNSUPPORTED = 121,
    ENUM_REFERENCES_ACCESS_DENIED = 122,
};
enum Invoke_Method_Status : int {
    INVOKE_METHOD_OK = 0,
    INVOKE_METHOD_FAILED = 130,
    INVOKE_METHOD_UNSUPPORTED = 131,
    INVOKE_METHOD_ACCESS_DENIED = 132,
};
enum Enable_Indications_Status : int { ENABLE_INDICATIONS_OK = 0, ENABLE_INDICATIONS_FAILED = 140 };
enum Disable_Indications_Status : int {
    DISABLE_INDICATIONS_OK = 0,
    DISABLE_INDICATIONS_FAILED = 150,
};
enum Enum_Associators_Status : int {
    ENUM_ASSOCIATORS_OK = 0,
    ENUM_ASSOCIATORS_FAILED = 170,
    ENUM_ASSOCIATORS_UNSUPPORTED = 171,
    ENUM_ASSOCIATORS_ACCESS_DENIED = 172,
};

// Takes one instance of an enumeration, whose count becomes the callee's; null with the final
// status closes the enumeration. True asks for more; a provider may go on after false, so a callee
// bears further calls.
using Instance_Enumerator_Proc = bool (*)(Instance* instance, int status, void* client_data);

// What an enumerating provider hands its instances to; valid during the call.
struct Enum_Instances_Handler {
    Instance_Enumerator_Proc proc;
    void* client_data;
    // Null, or which instances the caller will keep: a provider may leave out what the selector
    // rejects, the caller drops it anyway. See runtime/association.h.
    const Instance_Selector* selector = nullptr;

    // Passes a fresh instance on, with its count.
    bool handle(Instance* instance) const { return proc(instance, ENUM_INSTANCES_OK, client_data); }
};
using Enum_Associator_Names_Handler = Enum_Instances_Handler;
using Enum_References_Handler = Enum_Instances_Handler;
using Enum_Associators_Handler = Enum_Instances_Handler;

// Delivers one indication, whose count becomes the callee's; null tells that the provider stops.
// May be called from any thread that has a context.
using Indication_Proc = bool (*)(Instance* indication, void* client_data);

// Made on the heap for `enable_indications`, whose provider owns and deletes it.
struct Enable_Indications_Handler {
    Indication_Proc proc;
    void* client_data;

    bool handle(Instance* indication) const { return proc(indication, client_data); }
};
static_assert(sizeof(Enable_Indications_Handler) == 16);

// The caller's side of a provider: makes the provider object and ends it.
class Provider_Handle {
public:
    // Throws what the provider's constructor throws.
    explicit Provider_Handle(const Registration* registration);
    ~Provider_Handle();
    Provider_Handle(const Provider_Handle&) = delete;
    Provider_Handle& operator=(const Provider_Handle&) = delete;

    // Calls the dispatcher with this provider as `arg0`.
    int call(Operation operation, const void* arg1 = nullptr, const void* arg2 = nullptr,
             const void* arg3 = nullptr, const void* arg4 = nullptr, const void* arg5 = nullptr,
             const void* arg6 = nullptr) const;

    const Meta_Class* get_meta_class() const;
    const Meta_Repository* get_repository() const;

    // Asks the provider; where it has no get of its own, enumerates and takes the first instance
    // whose keys equal the model's. `instance` gets what the provider made, with a count for the
    // caller: an instance on success, and whatever goes with a status of the provider's own.
    Get_Instance_Status get_instance(const Instance* model, Instance*& instance) const;

    // `proc` bears what the selector rejects too.
    Enum_Instances_Status enum_instances(const Instance* model, Instance_Enumerator_Proc proc,
                                         void* client_data,
                                         const Instance_Selector* selector = nullptr) const;

    // Traversals of the provider's association class from one of its ends. They ask the provider;
    // where it has no traversal of its own they enumerate its class and choose by the ends. What is
    // found goes to `proc` with its count, each with status 0, and at last a null. Names of classes
    // and roles are as for the functions of runtime/association.h. Of another class than an
    // association nothing is asked: that is a failure without a closing call.

    // The other ends of the associations that have `instance` at an end.
    Enum_Associator_Names_Status
    enum_associator_names(const Instance* instance, const String& result_class, const String& role,
                          const String& result_role, Instance_Enumerator_Proc proc,
                          void* client_data) const;
    // The associations themselves. The null flags of `model` tell which properties are wanted.
    Enum_References_Status enum_references(const Instance* instance, const Instance* model,
                                           const String& role, Instance_Enumerator_Proc proc,
                                           void* client_data) const;

    const Registration* registration() const noexcept { return _registration; }

private:
    const Registration* _registration;
    Provider_Proc _proc;
    void* _provider = nullptr;
};

} // namespace cimple

// Head of the module's list of registrations.
extern "C" __attribute__((visibility("default"))) const cimple::Registration* cimple_module();

#endif
