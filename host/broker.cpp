// The broker's own table: up-calls, threads, indications.
#include "host/broker.h"

namespace tvrhost {

namespace {

void set(CMPIStatus* to, int rc) noexcept {
    if (to != nullptr) {
        *to = {static_cast<CMPIrc>(rc), nullptr};
    }
}

std::string text_of(const char* chars) {
    return chars == nullptr ? std::string() : chars;
}

Properties properties_of(const char** list) {
    if (list == nullptr) {
        return std::nullopt;
    }
    Properties properties(std::in_place);
    for (; *list != nullptr; ++list) {
        properties->emplace_back(*list);
    }
    return properties;
}

// The request behind an up-call: on behalf of whoever the context names.
struct Request {
    Request(const CMPIBroker* broker, const CMPIContext* context, const CMPIObjectPath* object_path,
            const char* operation)
        : side(side_of(broker)) {
        const auto* entries = argument<Context_Object>(side.books, context, operation);
        auto* named = argument<Path_Object>(side.books, object_path, operation);
        if (entries == nullptr || named == nullptr) {
            return;
        }
        valid = true;
        path = side.books.copy(*named, operation);
        const Cim_Value& principal = (*entries->content)[CMPIPrincipal];
        if (principal.type() == Cim_Type::string && !principal.is_null()) {
            call.principal = principal.as_string();
        }
    }

    Broker_Side& side;
    bool valid = false;
    Cim_Path path;
    Call call;
};

CMPIEnumeration* enumeration(Request& request, Answer& answer, Cim_Type type, CMPIStatus* rc) {
    set(rc, answer.rc);
    if (!answer.ok()) {
        return nullptr;
    }
    Enumeration_Content content{type, {}};
    for (Cim_Instance& instance : answer.instances) {
        content.items.emplace_back(std::move(instance));
    }
    for (Cim_Path& path : answer.paths) {
        content.items.emplace_back(std::move(path));
    }
    return request.side.books.make(std::move(content));
}

// Runs an up-call that answers with an enumeration.
template <class Operation>
CMPIEnumeration* enumerate(Request request, Cim_Type type, CMPIStatus* rc, Operation operation) {
    if (!request.valid) {
        set(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    Answer answer = operation(request.side.manager, request.path, request.call);
    return enumeration(request, answer, type, rc);
}

// ---- threads and indications

CMPIContext* prepare_attach(const CMPIBroker* broker, const CMPIContext* context) {
    Books& books = side_of(broker).books;
    const auto* entries = argument<Context_Object>(books, context, "prepareAttachThread");
    if (entries == nullptr) {
        return nullptr;
    }
    Context_Object* const prepared = books.make_context(*entries->content, true);
    books.set_broker(*prepared, broker);
    return prepared;
}

CMPIStatus attach(const CMPIBroker* broker, const CMPIContext* context) {
    Books& books = side_of(broker).books;
    Context_Object* const object = argument<Context_Object>(books, context, "attachThread");
    return object == nullptr ? CMPIStatus{CMPI_RC_ERR_INVALID_HANDLE, nullptr}
                             : books.attach(*object);
}

CMPIStatus detach(const CMPIBroker* broker, const CMPIContext* context) {
    Books& books = side_of(broker).books;
    Context_Object* const object = argument<Context_Object>(books, context, "detachThread");
    return object == nullptr ? CMPIStatus{CMPI_RC_ERR_INVALID_HANDLE, nullptr}
                             : books.detach(*object);
}

CMPIStatus deliver(const CMPIBroker* broker, const CMPIContext* context, const char* name_space,
                   const CMPIInstance* indication) {
    Broker_Side& side = side_of(broker);
    const auto* entries = argument<Context_Object>(side.books, context, "deliverIndication");
    auto* object = argument<Instance_Object>(side.books, indication, "deliverIndication");
    if (entries == nullptr || object == nullptr) {
        return {CMPI_RC_ERR_INVALID_PARAMETER, nullptr};
    }
    if (Scope_Frame::top(side.books) == nullptr) {
        side.books.fault(Fault_Kind::outside_scope,
                         "deliverIndication on a thread that is neither in a call nor attached" +
                             side.books.place());
        return {CMPI_RC_ERR_FAILED, nullptr};
    }
    Indication delivered{text_of(name_space), side.books.copy(*object, "deliverIndication")};
    const std::string what = delivered.instance.class_name() + " in " + delivered.name_space;
    if (!side.deliver(std::move(delivered))) {
        side.books.fault(Fault_Kind::no_filter, "deliverIndication of " + what +
                                                    ", for which no filter is active" +
                                                    side.books.place());
        return {CMPI_RC_ERR_FAILED, nullptr};
    }
    return {CMPI_RC_OK, nullptr};
}

// ---- instances

CMPIEnumeration* enumerate_names(const CMPIBroker* broker, const CMPIContext* context,
                                 const CMPIObjectPath* path, CMPIStatus* rc) {
    return enumerate({broker, context, path, "enumerateInstanceNames"}, Cim_Type::reference, rc,
                     [](Object_Manager& manager, const Cim_Path& of, const Call& call) {
                         return manager.enumerate_instance_names(of.name_space, of.class_name,
                                                                 call);
                     });
}

CMPIEnumeration* enumerate_instances(const CMPIBroker* broker, const CMPIContext* context,
                                     const CMPIObjectPath* path, const char** properties,
                                     CMPIStatus* rc) {
    return enumerate({broker, context, path, "enumerateInstances"}, Cim_Type::instance, rc,
                     [&](Object_Manager& manager, const Cim_Path& of, const Call& call) {
                         return manager.enumerate_instances(of.name_space, of.class_name,
                                                            properties_of(properties), call);
                     });
}

CMPIInstance* get_instance(const CMPIBroker* broker, const CMPIContext* context,
                           const CMPIObjectPath* path, const char** properties, CMPIStatus* rc) {
    Request request(broker, context, path, "getInstance");
    if (!request.valid) {
        set(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    Answer answer =
        request.side.manager.get_instance(request.path, properties_of(properties), request.call);
    if (answer.ok() && answer.instances.empty()) {
        answer.rc = CMPI_RC_ERR_NOT_FOUND;
    }
    set(rc, answer.rc);
    return answer.ok() ? request.side.books.make(std::move(answer.instances.front())) : nullptr;
}

CMPIObjectPath* create_instance(const CMPIBroker* broker, const CMPIContext* context,
                                const CMPIObjectPath* path, const CMPIInstance* instance,
                                CMPIStatus* rc) {
    Request request(broker, context, path, "createInstance");
    auto* made = argument<Instance_Object>(request.side.books, instance, "createInstance");
    if (!request.valid || made == nullptr) {
        set(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    Answer answer = request.side.manager.create_instance(
        request.path, request.side.books.read(*made, "createInstance").instance, request.call);
    set(rc, answer.rc);
    if (!answer.ok() || answer.paths.empty()) {
        return nullptr;
    }
    return request.side.books.make(std::move(answer.paths.front()));
}

CMPIStatus modify_instance(const CMPIBroker* broker, const CMPIContext* context,
                           const CMPIObjectPath* path, const CMPIInstance* instance,
                           const char** properties) {
    Request request(broker, context, path, "modifyInstance");
    auto* with = argument<Instance_Object>(request.side.books, instance, "modifyInstance");
    if (!request.valid || with == nullptr) {
        return {CMPI_RC_ERR_INVALID_PARAMETER, nullptr};
    }
    const Answer answer = request.side.manager.modify_instance(
        request.path, request.side.books.read(*with, "modifyInstance").instance,
        properties_of(properties), request.call);
    return {static_cast<CMPIrc>(answer.rc), nullptr};
}

CMPIStatus delete_instance(const CMPIBroker* broker, const CMPIContext* context,
                           const CMPIObjectPath* path) {
    Request request(broker, context, path, "deleteInstance");
    if (!request.valid) {
        return {CMPI_RC_ERR_INVALID_PARAMETER, nullptr};
    }
    return {
        static_cast<CMPIrc>(request.side.manager.delete_instance(request.path, request.call).rc),
        nullptr};
}

CMPIEnumeration* exec_query(const CMPIBroker* broker, const CMPIContext* context,
                            const CMPIObjectPath* path, const char* query, const char* language,
                            CMPIStatus* rc) {
    return enumerate({broker, context, path, "execQuery"}, Cim_Type::instance, rc,
                     [&](Object_Manager& manager, const Cim_Path& of, const Call& call) {
                         return manager.exec_query(of.name_space, of.class_name, text_of(query),
                                                   text_of(language), call);
                     });
}

// ---- associations

CMPIEnumeration* associators(const CMPIBroker* broker, const CMPIContext* context,
                             const CMPIObjectPath* path, const char* association_class,
                             const char* result_class, const char* role, const char* result_role,
                             const char** properties, CMPIStatus* rc) {
    return enumerate({broker, context, path, "associators"}, Cim_Type::instance, rc,
                     [&](Object_Manager& manager, const Cim_Path& of, const Call& call) {
                         return manager.associators(of,
                                                    {text_of(association_class),
                                                     text_of(result_class), text_of(role),
                                                     text_of(result_role)},
                                                    properties_of(properties), call);
                     });
}

CMPIEnumeration* associator_names(const CMPIBroker* broker, const CMPIContext* context,
                                  const CMPIObjectPath* path, const char* association_class,
                                  const char* result_class, const char* role,
                                  const char* result_role, CMPIStatus* rc) {
    return enumerate({broker, context, path, "associatorNames"}, Cim_Type::reference, rc,
                     [&](Object_Manager& manager, const Cim_Path& of, const Call& call) {
                         return manager.associator_names(of,
                                                         {text_of(association_class),
                                                          text_of(result_class), text_of(role),
                                                          text_of(result_role)},
                                                         call);
                     });
}

CMPIEnumeration* references(const CMPIBroker* broker, const CMPIContext* context,
                            const CMPIObjectPath* path, const char* result_class, const char* role,
                            const char** properties, CMPIStatus* rc) {
    return enumerate({broker, context, path, "references"}, Cim_Type::instance, rc,
                     [&](Object_Manager& manager, const Cim_Path& of, const Call& call) {
                         return manager.references(of, text_of(result_class), text_of(role),
                                                   properties_of(properties), call);
                     });
}

CMPIEnumeration* reference_names(const CMPIBroker* broker, const CMPIContext* context,
                                 const CMPIObjectPath* path, const char* result_class,
                                 const char* role, CMPIStatus* rc) {
    return enumerate({broker, context, path, "referenceNames"}, Cim_Type::reference, rc,
                     [&](Object_Manager& manager, const Cim_Path& of, const Call& call) {
                         return manager.reference_names(of, text_of(result_class), text_of(role),
                                                        call);
                     });
}

// ---- methods and single properties

constexpr CMPIData no_data() noexcept {
    CMPIData data{};
    data.state = CMPI_nullValue;
    return data;
}

CMPIData invoke_method(const CMPIBroker* broker, const CMPIContext* context,
                       const CMPIObjectPath* path, const char* method, const CMPIArgs* in,
                       CMPIArgs* out, CMPIStatus* rc) {
    Request request(broker, context, path, "invokeMethod");
    Args_Object* const given = argument<Args_Object>(request.side.books, in, "invokeMethod");
    Args_Object* const taken = argument<Args_Object>(request.side.books, out, "invokeMethod");
    if (!request.valid || method == nullptr || (in != nullptr && given == nullptr)) {
        set(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return no_data();
    }
    Answer answer = request.side.manager.invoke_method(
        request.path, method,
        given == nullptr ? Arguments() : request.side.books.read(*given, "invokeMethod"),
        request.call);
    set(rc, answer.rc);
    if (!answer.ok()) {
        return no_data();
    }
    if (taken != nullptr) {
        for (Named_Value& value : answer.out) {
            taken->content->values.set(value.name, std::move(value.value));
        }
    }
    return request.side.books.data(answer.return_value());
}

CMPIStatus set_property(const CMPIBroker* broker, const CMPIContext* context,
                        const CMPIObjectPath* path, const char* name, const CMPIValue* value,
                        CMPIType type) {
    Request request(broker, context, path, "setProperty");
    Cim_Value plain;
    if (!request.valid || name == nullptr ||
        request.side.books.plain(value, type, plain, "setProperty") != CMPI_RC_OK) {
        return {CMPI_RC_ERR_INVALID_PARAMETER, nullptr};
    }
    Cim_Instance instance(request.path, request.path.keys);
    instance.properties.set(name, std::move(plain));
    const Answer answer = request.side.manager.modify_instance(
        request.path, instance, std::vector<std::string>{name}, request.call);
    return {static_cast<CMPIrc>(answer.rc), nullptr};
}

CMPIData get_property(const CMPIBroker* broker, const CMPIContext* context,
                      const CMPIObjectPath* path, const char* name, CMPIStatus* rc) {
    Request request(broker, context, path, "getProperty");
    if (!request.valid || name == nullptr) {
        set(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return no_data();
    }
    const Answer answer = request.side.manager.get_instance(
        request.path, std::vector<std::string>{name}, request.call);
    if (!answer.ok() || answer.instances.empty()) {
        set(rc, answer.ok() ? CMPI_RC_ERR_NOT_FOUND : answer.rc);
        return no_data();
    }
    const Cim_Value* const value = answer.instances.front().properties.find(name);
    set(rc, value == nullptr ? CMPI_RC_ERR_NO_SUCH_PROPERTY : CMPI_RC_OK);
    return value == nullptr ? no_data() : request.side.books.data(*value);
}

// ---- the filtered forms, without a filter

bool filtered(const char* query, CMPIStatus* rc) {
    if (query != nullptr) {
        set(rc, CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED);
    }
    return query != nullptr;
}

CMPIEnumeration* instances_filtered(const CMPIBroker* broker, const CMPIContext* context,
                                    const CMPIObjectPath* path, const char** properties,
                                    const char*, const char* query, CMPIStatus* rc) {
    return filtered(query, rc) ? nullptr
                               : enumerate_instances(broker, context, path, properties, rc);
}

CMPIEnumeration* associators_filtered(const CMPIBroker* broker, const CMPIContext* context,
                                      const CMPIObjectPath* path, const char* association_class,
                                      const char* result_class, const char* role,
                                      const char* result_role, const char** properties, const char*,
                                      const char* query, CMPIStatus* rc) {
    return filtered(query, rc) ? nullptr
                               : associators(broker, context, path, association_class, result_class,
                                             role, result_role, properties, rc);
}

CMPIEnumeration* references_filtered(const CMPIBroker* broker, const CMPIContext* context,
                                     const CMPIObjectPath* path, const char* result_class,
                                     const char* role, const char** properties, const char*,
                                     const char* query, CMPIStatus* rc) {
    return filtered(query, rc)
               ? nullptr
               : references(broker, context, path, result_class, role, properties, rc);
}

} // namespace

void fill_broker(Tables& tables, int version) {
    CMPIBrokerFT& t = tables.broker;
    t = {0,
         version,
         "tvrhost",
         prepare_attach,
         attach,
         detach,
         deliver,
         enumerate_names,
         get_instance,
         create_instance,
         modify_instance,
         delete_instance,
         exec_query,
         enumerate_instances,
         associators,
         associator_names,
         references,
         reference_names,
         invoke_method,
         set_property,
         get_property,
         instances_filtered,
         associators_filtered,
         references_filtered};
    if (version < 210) {
        t.enumerateInstancesFiltered = nullptr;
        t.associatorsFiltered = nullptr;
        t.referencesFiltered = nullptr;
    }
}

Broker::Broker(Broker_Side side)
    : _side(std::move(side)), _cmpi{&_side, &_side.books.ft.broker, &_side.books.ft.makers, nullptr,
                                    nullptr} {}

} // namespace tvrhost
