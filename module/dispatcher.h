// The dispatcher of a class provider: one function that turns an operation code and untyped words
// into a call of a member.
//
// A provider is a plain class with a default constructor and these members; C is the class served.
//
//     Load_Status load();
//     Unload_Status unload();
//     Get_Instance_Status get_instance(const C* model, C*& instance);
//     Enum_Instances_Status enum_instances(const C* model, const Enum_Instances_Handler& handler);
//     Create_Instance_Status create_instance(C* instance);
//     Delete_Instance_Status delete_instance(const C* instance);
//     Modify_Instance_Status modify_instance(const C* model, const C* instance);
//
// of an association class also
//
//     Enum_Associator_Names_Status enum_associator_names(
//         const Instance* instance, const String& result_class, const String& role,
//         const String& result_role, const Enum_Associator_Names_Handler& handler);
//     Enum_References_Status enum_references(
//         const Instance* instance, const C* model, const String& role,
//         const Enum_References_Handler& handler);
//     Enum_Associators_Status enum_associators(
//         const Instance* instance, const String& result_class, const String& role,
//         const String& result_role, const Enum_Associators_Handler& handler);
//
// of the indication class also
//
//     Enable_Indications_Status enable_indications(
//         std::unique_ptr<Enable_Indications_Handler> handler);
//     Disable_Indications_Status disable_indications();
//
// and for each method of the class, inherited ones among them,
//
//     Invoke_Method_Status METHOD(const C* self, PARAMETER..., Property<R>& return_value);
//
// where R is the method's own result, uint32 but for a few. A parameter is handed over as the field
// of the call that holds it:
//
//     scalar or array         const Property<T>&, const Property<Array<T>>&
//       with Out              Property<T>&, Property<Array<T>>&
//     reference or instance   const T*
//       with Out              T*&
//     array of these          const Property<Array<Instance*>>&, with Out not const
//
// where T is the class of the reference or embedded instance, `Instance` if any class may come.
// A pointer is null where the client sent nothing. All is borrowed, but what a member stores into
// a `T*&`: the call owns one count of it, and what stood there before the member drops. In and Out
// at once is passed as Out.
//
// runtime/enumerating_provider.h has a base with all but load, unload, enum_instances and methods.
// `tvr_generate signatures` prints these members for every provider written by hand.
//
// A request may name another class of the module than the one served. `model`, and the instance of
// create, delete and modify, are null then; a method is answered with INVOKE_METHOD_FAILED and not
// called.
#ifndef TVR_MODULE_DISPATCHER_H
#define TVR_MODULE_DISPATCHER_H

#include "runtime/provider.h"

#include <cstddef>
#include <memory>
#include <strings.h>

namespace cimple {

// What a class is decides which operations its dispatcher has.
enum class Provider_Kind { instance, association, indication };

// One method of a provider: its record, and the call of the member with the fields of the call.
template <class P, class C> struct Provider_Method {
    const Meta_Method* record;
    int (*call)(P& provider, const C* self, Instance* fields);
};

// Calls the first method, in metadata order, whose name is that of the call's metadata.
template <class P>
using Method_Invoker = int (*)(P& provider, const Instance* self, Instance* call);

// The instance as one of class C; null if it is of a class that is neither C nor below it.
template <class C> C* narrow(Instance* instance) noexcept {
    return is_a<C>(instance) ? static_cast<C*>(instance) : nullptr;
}
template <class C> const C* narrow(const Instance* instance) noexcept {
    return is_a<C>(instance) ? static_cast<const C*>(instance) : nullptr;
}

template <class P, class C, std::size_t count>
int invoke_member(const Provider_Method<P, C> (&methods)[count], P& provider, const Instance* self,
                  Instance* call) {
    const Meta_Structure* record = call->__meta_class;
    for (const Provider_Method<P, C>& method : methods) {
        if (strcasecmp(method.record->name, record->name) == 0) {
            // A method of the same name in another class has other fields.
            const C* served = narrow<C>(self);
            if (method.record != record || served == nullptr) {
                return INVOKE_METHOD_FAILED;
            }
            return method.call(provider, served, call);
        }
    }
    return OPERATION_UNKNOWN;
}

// For classes without methods.
template <class P> int invoke_nothing(P&, const Instance*, Instance*) noexcept {
    return OPERATION_UNKNOWN;
}

// For classes whose methods all do nothing: one answer to each name that the class has.
template <class P, class C> int invoke_unsupported(P&, const Instance*, Instance* call) {
    for (const Meta_Feature* feature : C::static_meta_class) {
        if (feature->has(FLAG_METHOD) && strcasecmp(feature->name, call->__meta_class->name) == 0) {
            return INVOKE_METHOD_UNSUPPORTED;
        }
    }
    return OPERATION_UNKNOWN;
}

namespace dispatcher {

constexpr int nothing_left = OPERATION_UNKNOWN;

// An enumeration that ends with its closing call, but for the status by which an association
// provider leaves the answer, and so the closing call, to the caller.
template <class Call>
int enumerate(void* proc, void* client_data, int left_to_caller, Call&& call,
              const void* selector = nullptr) {
    const Enum_Instances_Handler handler{reinterpret_cast<Instance_Enumerator_Proc>(proc),
                                         client_data,
                                         static_cast<const Instance_Selector*>(selector)};
    const int status = call(handler);
    if (status != left_to_caller) {
        handler.proc(nullptr, status, client_data);
    }
    return status;
}

inline const String& text(const void* argument) {
    return *static_cast<const String*>(argument);
}

template <class C> C* instance_of(void* argument) noexcept {
    return narrow<C>(static_cast<Instance*>(argument));
}

template <class P, class C>
int association(P* provider, int operation, void* arg1, void* arg2, void* arg3, void* arg4,
                void* arg5, void* arg6) {
    const auto* instance = static_cast<const Instance*>(arg1);
    switch (operation) {
    case OPERATION_ENUM_ASSOCIATOR_NAMES:
        return enumerate(arg5, arg6, ENUM_ASSOCIATOR_NAMES_UNSUPPORTED, [&](const auto& handler) {
            return provider->enum_associator_names(instance, text(arg2), text(arg3), text(arg4),
                                                   handler);
        });
    case OPERATION_ENUM_REFERENCES:
        return enumerate(arg4, arg5, ENUM_REFERENCES_UNSUPPORTED, [&](const auto& handler) {
            return provider->enum_references(instance, instance_of<const C>(arg2), text(arg3),
                                             handler);
        });
    case OPERATION_ENUM_ASSOCIATORS:
        return enumerate(arg5, arg6, ENUM_ASSOCIATORS_UNSUPPORTED, [&](const auto& handler) {
            return provider->enum_associators(instance, text(arg2), text(arg3), text(arg4),
                                              handler);
        });
    default:
        return OPERATION_UNKNOWN;
    }
}

template <class P> int indication(P* provider, int operation, void* arg1, void* arg2) {
    switch (operation) {
    case OPERATION_ENABLE_INDICATIONS:
        return provider->enable_indications(std::unique_ptr<Enable_Indications_Handler>(
            new Enable_Indications_Handler{reinterpret_cast<Indication_Proc>(arg1), arg2}));
    case OPERATION_DISABLE_INDICATIONS:
        return provider->disable_indications();
    default:
        return OPERATION_UNKNOWN;
    }
}

} // namespace dispatcher

// The `Provider_Proc` of provider P for class C.
template <class P, class C, Provider_Kind kind, Method_Invoker<P> invoke>
int dispatch(const Registration*, int operation, void* arg0, void* arg1, void* arg2, void* arg3,
             void* arg4, void* arg5, void* arg6, void*) {
    using dispatcher::instance_of;
    P* const provider = static_cast<P*>(arg0); // but for operations 0, 1 and 13
    switch (operation) {
    case OPERATION_GET_META_CLASS:
        *static_cast<const Meta_Class**>(arg0) = &C::static_meta_class;
        return 0;
    case OPERATION_CREATE_PROVIDER:
        *static_cast<void**>(arg0) = std::make_unique<P>().release();
        return 0;
    case OPERATION_DESTROY_PROVIDER:
        delete provider; // NOLINT(clang-analyzer-cplusplus.NewDelete): made by operation 1
        return 0;
    case OPERATION_LOAD:
        return provider->load();
    case OPERATION_UNLOAD:
        return provider->unload();
    case OPERATION_GET_INSTANCE: {
        C* instance = nullptr;
        const int status = provider->get_instance(instance_of<const C>(arg1), instance);
        if (instance != nullptr) {
            *static_cast<Instance**>(arg2) = instance;
        }
        return status;
    }
    case OPERATION_ENUM_INSTANCES:
        return dispatcher::enumerate(
            arg2, arg3, dispatcher::nothing_left,
            [&](const auto& handler) {
                return provider->enum_instances(instance_of<const C>(arg1), handler);
            },
            arg4);
    case OPERATION_CREATE_INSTANCE:
        return provider->create_instance(instance_of<C>(arg1));
    case OPERATION_DELETE_INSTANCE:
        return provider->delete_instance(instance_of<const C>(arg1));
    case OPERATION_MODIFY_INSTANCE:
        return provider->modify_instance(instance_of<const C>(arg1), instance_of<const C>(arg2));
    case OPERATION_INVOKE_METHOD:
        return invoke(*provider, static_cast<const Instance*>(arg1), static_cast<Instance*>(arg2));
    case OPERATION_GET_REPOSITORY:
        *static_cast<const Meta_Repository**>(arg0) = C::static_meta_class.meta_repository;
        return 0;
    default:
        if constexpr (kind == Provider_Kind::association) {
            return dispatcher::association<P, C>(provider, operation, arg1, arg2, arg3, arg4, arg5,
                                                 arg6);
        } else if constexpr (kind == Provider_Kind::indication) {
            return dispatcher::indication(provider, operation, arg1, arg2);
        } else {
            return OPERATION_UNKNOWN;
        }
    }
}

} // namespace cimple

#endif
