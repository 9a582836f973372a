// The dispatcher's table of operations, with providers that note what reaches them.
#include "module/dispatcher.h"
#include "schema/classes.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using namespace cimple;
using testing::ElementsAre;

namespace {

std::vector<std::string> notes;

void note(std::string text) {
    notes.push_back(std::move(text));
}

// What an enumeration delivered; null instances are closing calls.
struct Sink {
    std::vector<std::string> events;

    static bool take(Instance* instance, int status, void* sink) {
        const std::string what = instance != nullptr ? instance->__meta_class->name : "end";
        static_cast<Sink*>(sink)->events.push_back(what + ' ' + std::to_string(status));
        unref(instance);
        return true;
    }
};

// The members that every provider has.
template <class C> struct Noting {
    Noting() { note("made"); }
    ~Noting() { note("ended"); }

    Load_Status load() { return LOAD_FAILED; }
    Unload_Status unload() { return UNLOAD_FAILED; }
    Get_Instance_Status get_instance(const C* model, C*& instance) {
        note(model != nullptr ? "get" : "get foreign");
        instance = C::create(true);
        return GET_INSTANCE_OK;
    }
    Enum_Instances_Status enum_instances(const C* model, const Enum_Instances_Handler& handler) {
        note(model != nullptr ? "enum" : "enum foreign");
        handler.handle(C::create(true));
        return status;
    }
    Create_Instance_Status create_instance(C* instance) {
        note(instance != nullptr ? "create" : "create foreign");
        return CREATE_INSTANCE_DUPLICATE;
    }
    Delete_Instance_Status delete_instance(const C* instance) {
        note(instance != nullptr ? "delete" : "delete foreign");
        return DELETE_INSTANCE_NOT_FOUND;
    }
    Modify_Instance_Status modify_instance(const C* model, const C* instance) {
        note(model != nullptr && instance != nullptr ? "modify" : "modify foreign");
        return MODIFY_INSTANCE_FAILED;
    }

    Enum_Instances_Status status = ENUM_INSTANCES_OK;
};

struct Service : Noting<TVRHBA_FCHBAWWNService> {
    Invoke_Method_Status ReadWWN(const TVRHBA_FCHBAWWNService* self, const TVRHBA_FCPort* target,
                                 const Property<uint16>& type, Property<String>& wwpn,
                                 Property<String>& wwnn, Property<uint16>& status_out,
                                 Property<uint32>& return_value) {
        note("read " + std::string(self->Name.value.c_str()) + ' ' +
             std::string(target->DeviceID.value.c_str()) + ' ' + std::to_string(type.value));
        wwpn.set("port");
        wwnn.set("node");
        status_out.set(uint16{7});
        return_value.set(5u);
        return INVOKE_METHOD_OK;
    }
    Invoke_Method_Status RequestStateChange(const TVRHBA_FCHBAWWNService*, const Property<uint16>&,
                                            CIM_ConcreteJob*& job, const Property<Datetime>&,
                                            Property<uint32>&) {
        unref(job);
        job = CIM_ConcreteJob::create(true);
        return INVOKE_METHOD_FAILED;
    }
};

using Served = TVRHBA_FCHBAWWNService;
using Read_Call = TVRHBA_FCHBAWWNService_ReadWWN_method;
using State_Call = CIM_EnabledLogicalElement_RequestStateChange_method;

constexpr Provider_Method<Service, Served> methods[] = {
    {&State_Call::static_meta_method,
     [](Service& provider, const Served* self, Instance* fields) -> int {
         auto& call = *static_cast<State_Call*>(fields);
         return provider.RequestStateChange(self, call.RequestedState, call.Job, call.TimeoutPeriod,
                                            call.return_value);
     }},
    {&Read_Call::static_meta_method,
     [](Service& provider, const Served* self, Instance* fields) -> int {
         auto& call = *static_cast<Read_Call*>(fields);
         return provider.ReadWWN(self, call.Target, call.Type, call.WWPN, call.WWNN,
                                 call.WWNOperationStatus, call.return_value);
     }},
};
int invoke_service(Service& provider, const Instance* self, Instance* call) {
    return invoke_member(methods, provider, self, call);
}

struct Association : Noting<TVRHBA_ControlledBy> {
    Enum_Associator_Names_Status
    enum_associator_names(const Instance* instance, const String& result_class, const String& role,
                          const String& result_role, const Enum_Associator_Names_Handler& handler) {
        note("names " + std::string(instance->__meta_class->name) + ' ' + result_class.c_str() +
             ' ' + role.c_str() + ' ' + result_role.c_str());
        handler.handle(TVRHBA_FCPort::create(true));
        return names_status;
    }
    Enum_References_Status enum_references(const Instance*, const TVRHBA_ControlledBy* model,
                                           const String& role,
                                           const Enum_References_Handler& handler) {
        note(std::string("references ") + (model != nullptr ? "" : "foreign ") + role.c_str());
        handler.handle(TVRHBA_ControlledBy::create(true));
        return references_status;
    }
    Enum_Associators_Status enum_associators(const Instance*, const String& result_class,
                                             const String&, const String&,
                                             const Enum_Associators_Handler& handler) {
        note(std::string("associators ") + result_class.c_str());
        handler.handle(TVRHBA_FCPort::create(true));
        return associators_status;
    }

    Enum_Associator_Names_Status names_status = ENUM_ASSOCIATOR_NAMES_OK;
    Enum_References_Status references_status = ENUM_REFERENCES_OK;
    Enum_Associators_Status associators_status = ENUM_ASSOCIATORS_OK;
};

struct Alerts : Noting<TVRHBA_AlertIndication> {
    Enable_Indications_Status
    enable_indications(std::unique_ptr<Enable_Indications_Handler> given) {
        handler = std::move(given);
        return ENABLE_INDICATIONS_FAILED;
    }
    Disable_Indications_Status disable_indications() { return DISABLE_INDICATIONS_FAILED; }

    std::unique_ptr<Enable_Indications_Handler> handler;
};

// Calls an operation as the adapter does, with the words that it needs: through a pointer that the
// compiler doesn't see through.
template <Provider_Proc proc> struct Caller {
    template <class... Words> [[gnu::noipa]] int operator()(int operation, Words... words) const {
        void* w[8] = {const_cast<void*>(static_cast<const void*>(words))...};
        return proc(nullptr, operation, w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7]);
    }
};

void* sink_proc() {
    return reinterpret_cast<void*>(&Sink::take);
}

constexpr Caller<dispatch<Service, Served, Provider_Kind::instance, invoke_service>> call_service;
constexpr Caller<dispatch<Association, TVRHBA_ControlledBy, Provider_Kind::association,
                          invoke_nothing<Association>>>
    call_association;
constexpr Caller<
    dispatch<Alerts, TVRHBA_AlertIndication, Provider_Kind::indication, invoke_nothing<Alerts>>>
    call_alerts;
constexpr Caller<
    dispatch<Noting<TVRHBA_PortController>, TVRHBA_PortController, Provider_Kind::instance,
             invoke_unsupported<Noting<TVRHBA_PortController>, TVRHBA_PortController>>>
    call_family;

class Dispatcher : public testing::Test {
protected:
    Dispatcher() { notes.clear(); }

    Service service;
    const Ref<Served> own{Served::create(true)};
    const Ref<TVRHBA_FCPort> foreign{TVRHBA_FCPort::create(true)};
    Sink sink;
};

TEST_F(Dispatcher, MakesAndEndsProviders) {
    void* provider = nullptr;
    notes.clear();
    EXPECT_EQ(call_service(OPERATION_CREATE_PROVIDER, &provider), 0);
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(call_service(OPERATION_LOAD, provider), LOAD_FAILED);
    EXPECT_EQ(call_service(OPERATION_UNLOAD, provider), UNLOAD_FAILED);
    EXPECT_EQ(call_service(OPERATION_DESTROY_PROVIDER, provider), 0);
    EXPECT_THAT(notes, ElementsAre("made", "ended"));
    EXPECT_EQ(call_service(OPERATION_DESTROY_PROVIDER, nullptr), 0);

    const Meta_Class* meta_class = nullptr;
    EXPECT_EQ(call_service(OPERATION_GET_META_CLASS, &meta_class), 0);
    EXPECT_EQ(meta_class, &Served::static_meta_class);
    const Meta_Repository* repository = nullptr;
    EXPECT_EQ(call_service(OPERATION_GET_REPOSITORY, &repository), 0);
    EXPECT_EQ(repository, &meta_repository);
}

TEST_F(Dispatcher, PassesInstanceOperations) {
    notes.clear();
    Instance* instance = nullptr;
    EXPECT_EQ(call_service(OPERATION_GET_INSTANCE, &service, own.get(), &instance), 0);
    EXPECT_TRUE(is_a<Served>(instance));
    unref(instance);
    EXPECT_EQ(call_service(OPERATION_CREATE_INSTANCE, &service, own.get()),
              CREATE_INSTANCE_DUPLICATE);
    EXPECT_EQ(call_service(OPERATION_DELETE_INSTANCE, &service, own.get()),
              DELETE_INSTANCE_NOT_FOUND);
    EXPECT_EQ(call_service(OPERATION_MODIFY_INSTANCE, &service, own.get(), own.get()),
              MODIFY_INSTANCE_FAILED);
    EXPECT_THAT(notes, ElementsAre("get", "create", "delete", "modify"));
}

// A request may name any class of the module; its instance never passes for one of another class.
TEST_F(Dispatcher, HidesInstancesOfOtherClasses) {
    notes.clear();
    Instance* instance = nullptr;
    call_service(OPERATION_GET_INSTANCE, &service, foreign.get(), &instance);
    unref(instance);
    call_service(OPERATION_ENUM_INSTANCES, &service, foreign.get(), sink_proc(), &sink);
    call_service(OPERATION_CREATE_INSTANCE, &service, foreign.get());
    call_service(OPERATION_DELETE_INSTANCE, &service, foreign.get());
    call_service(OPERATION_MODIFY_INSTANCE, &service, own.get(), foreign.get());
    EXPECT_THAT(notes, ElementsAre("get foreign", "enum foreign", "create foreign",
                                   "delete foreign", "modify foreign"));
}

TEST_F(Dispatcher, ClosesEveryEnumeration) {
    for (const Enum_Instances_Status status :
         {ENUM_INSTANCES_OK, ENUM_INSTANCES_FAILED, ENUM_INSTANCES_ACCESS_DENIED}) {
        service.status = status;
        sink.events.clear();
        EXPECT_EQ(call_service(OPERATION_ENUM_INSTANCES, &service, own.get(), sink_proc(), &sink),
                  status);
        EXPECT_THAT(sink.events,
                    ElementsAre("TVRHBA_FCHBAWWNService 0", "end " + std::to_string(status)));
    }
}

TEST_F(Dispatcher, LeavesUnsupportedTraversalsOpen) {
    Association provider;
    const String result_class("C"), role("R"), result_role("Q");
    const auto names = [&] {
        return call_association(OPERATION_ENUM_ASSOCIATOR_NAMES, &provider, foreign.get(),
                                &result_class, &role, &result_role, sink_proc(), &sink);
    };
    const auto references = [&](const Instance* model) {
        return call_association(OPERATION_ENUM_REFERENCES, &provider, foreign.get(), model, &role,
                                sink_proc(), &sink);
    };
    const auto associators = [&] {
        return call_association(OPERATION_ENUM_ASSOCIATORS, &provider, foreign.get(), &result_class,
                                &role, &result_role, sink_proc(), &sink);
    };
    const Ref<TVRHBA_ControlledBy> model(TVRHBA_ControlledBy::create(true));
    notes.clear();
    EXPECT_EQ(names(), 0);
    EXPECT_EQ(references(model.get()), 0);
    EXPECT_EQ(references(foreign.get()), 0);
    EXPECT_EQ(associators(), 0);
    EXPECT_THAT(notes, ElementsAre("names TVRHBA_FCPort C R Q", "references R",
                                   "references foreign R", "associators C"));
    EXPECT_THAT(sink.events,
                ElementsAre("TVRHBA_FCPort 0", "end 0", "TVRHBA_ControlledBy 0", "end 0",
                            "TVRHBA_ControlledBy 0", "end 0", "TVRHBA_FCPort 0", "end 0"));

    sink.events.clear();
    provider.names_status = ENUM_ASSOCIATOR_NAMES_UNSUPPORTED;
    provider.references_status = ENUM_REFERENCES_UNSUPPORTED;
    provider.associators_status = ENUM_ASSOCIATORS_UNSUPPORTED;
    EXPECT_EQ(names(), 111);
    EXPECT_EQ(references(model.get()), 121);
    EXPECT_EQ(associators(), 171);
    EXPECT_THAT(sink.events,
                ElementsAre("TVRHBA_FCPort 0", "TVRHBA_ControlledBy 0", "TVRHBA_FCPort 0"));

    sink.events.clear();
    provider.references_status = ENUM_REFERENCES_FAILED;
    EXPECT_EQ(references(model.get()), 120);
    EXPECT_THAT(sink.events, ElementsAre("TVRHBA_ControlledBy 0", "end 120"));
}

TEST_F(Dispatcher, HandsTheIndicationHandlerOver) {
    Alerts provider;
    const auto proc = [](Instance* indication, void* count) {
        unref(indication);
        ++*static_cast<int*>(count);
        return true;
    };
    int delivered = 0;
    EXPECT_EQ(call_alerts(OPERATION_ENABLE_INDICATIONS, &provider,
                          reinterpret_cast<void*>(static_cast<Indication_Proc>(proc)), &delivered),
              ENABLE_INDICATIONS_FAILED);
    ASSERT_NE(provider.handler, nullptr);
    EXPECT_TRUE(provider.handler->handle(TVRHBA_AlertIndication::create(true)));
    EXPECT_EQ(delivered, 1);
    EXPECT_EQ(call_alerts(OPERATION_DISABLE_INDICATIONS, &provider), DISABLE_INDICATIONS_FAILED);
}

TEST_F(Dispatcher, RefusesOperationsOfOtherKinds) {
    Association association;
    Alerts alerts;
    for (const int operation : {14, 15, 16, 11, 12, 17, -1, 1000}) {
        EXPECT_EQ(call_service(operation, &service), -1) << operation;
    }
    for (const int operation : {11, 12, 17}) {
        EXPECT_EQ(call_association(operation, &association), -1) << operation;
    }
    for (const int operation : {14, 15, 16, 17}) {
        EXPECT_EQ(call_alerts(operation, &alerts), -1) << operation;
    }
    // Classes without methods don't look at the call.
    EXPECT_EQ(call_alerts(OPERATION_INVOKE_METHOD, &alerts, nullptr, nullptr), -1);
    EXPECT_EQ(call_association(OPERATION_INVOKE_METHOD, &association, nullptr, nullptr), -1);
}

TEST_F(Dispatcher, PassesTypedParameters) {
    own->Name.set("service");
    foreign->DeviceID.set("1000025456000001");
    const Ref<Read_Call> call(Read_Call::create(false));
    call->Target = foreign->clone();
    call->Type.set(uint16{2});
    notes.clear();
    EXPECT_EQ(call_service(OPERATION_INVOKE_METHOD, &service, own.get(), call.get()), 0);
    EXPECT_THAT(notes, ElementsAre("read service 1000025456000001 2"));
    EXPECT_STREQ(call->WWPN.value.c_str(), "port");
    EXPECT_STREQ(call->WWNN.value.c_str(), "node");
    EXPECT_EQ(call->WWNOperationStatus.value, 7);
    EXPECT_EQ(call->return_value.value, 5u);

    const Ref<State_Call> state(State_Call::create(false));
    EXPECT_EQ(call_service(OPERATION_INVOKE_METHOD, &service, own.get(), state.get()), 130);
    EXPECT_TRUE(is_a<CIM_ConcreteJob>(state->Job)) << "the call owns what the member stored";
}

TEST_F(Dispatcher, FindsMethodsByName) {
    const auto invoke = [&](const auto& caller, void* provider, const Meta_Method& method,
                            const Instance* self) {
        const Ref<> call(create(&method, false));
        return caller(OPERATION_INVOKE_METHOD, provider, self, call.get());
    };
    // A method that the class doesn't have.
    EXPECT_EQ(
        invoke(call_service, &service, CIM_Log_ClearLog_method::static_meta_method, own.get()), -1);
    // Case doesn't count, but the fields of a call must be those of the class's own method.
    Meta_Method renamed = Read_Call::static_meta_method;
    renamed.name = "READwwn";
    notes.clear();
    EXPECT_EQ(invoke(call_service, &service, renamed, own.get()), INVOKE_METHOD_FAILED);
    EXPECT_EQ(invoke(call_service, &service, Read_Call::static_meta_method, foreign.get()),
              INVOKE_METHOD_FAILED);
    EXPECT_THAT(notes, ElementsAre());

    Noting<TVRHBA_PortController> family;
    Meta_Method reset = CIM_LogicalDevice_Reset_method::static_meta_method;
    reset.name = "rESET";
    EXPECT_EQ(invoke(call_family, &family, reset, nullptr), INVOKE_METHOD_UNSUPPORTED);
    EXPECT_EQ(invoke(call_family, &family, Read_Call::static_meta_method, nullptr), -1);
}

} // namespace
