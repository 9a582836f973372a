// The dispatcher's table of operations, with providers that note what reaches them.
#include "module/dispatcher.h"
#include "schema/classes.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using namespace cimple;
using testing::ElementsAre;

namespace {

std::vector<std::string> notes; // what reached the providers, and what they delivered

// Takes what an enumeration delivers; null instances are closing calls.
bool take(Instance* instance, int status, void* list) {
    const std::string what = instance != nullptr ? "instance " : "end ";
    static_cast<std::vector<std::string>*>(list)->push_back(what + std::to_string(status));
    unref(instance);
    return true;
}

// The members that every provider has; each answers a status of its own.
template <class C> struct Noting {
    int load() { return 0; }
    int unload() { return 0; }
    int get_instance(const C* model, C*& instance) {
        instance = C::create(true);
        return noted("get", model, 33);
    }
    int enum_instances(const C* model, const Enum_Instances_Handler& handler) {
        noted("enum", model, 0);
        handler.handle(C::create(true));
        return status;
    }
    int create_instance(C* instance) { return noted("create", instance, 34); }
    int delete_instance(const C* instance) { return noted("delete", instance, 35); }
    int modify_instance(const C* model, const C* instance) {
        return noted(model != nullptr ? "modify" : "none", instance, 36);
    }
    int noted(const std::string& what, const C* given, int answer) {
        notes.push_back(what + (given != nullptr ? "" : " foreign"));
        return answer;
    }

    int status = 0; // of an enumeration
};

using Served = TVRHBA_FCHBAWWNService;
using Read_Call = TVRHBA_FCHBAWWNService_ReadWWN_method;
using Service = Noting<Served>;

constexpr Provider_Method<Service, Served> methods[] = {
    {&CIM_EnabledLogicalElement_RequestStateChange_method::static_meta_method,
     [](Service&, const Served*, Instance*) -> int { return -2; }},
    {&Read_Call::static_meta_method,
     [](Service& service, const Served* self, Instance*) -> int {
         return service.noted("read", self, 37);
     }},
};
int invoke_service(Service& provider, const Instance* self, Instance* call) {
    return invoke_member(methods, provider, self, call);
}

// Calls an operation as the adapter does, with the words that it needs: through a pointer that the
// compiler doesn't see through.
template <class... Words> [[gnu::noipa]] int call_service(int operation, Words... words) {
    void* w[8] = {const_cast<void*>(static_cast<const void*>(words))...};
    return dispatch<Service, Served, Provider_Kind::instance, invoke_service>(
        nullptr, operation, w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7]);
}

class Dispatcher : public testing::Test {
protected:
    Service service;
    const Ref<Served> own{Served::create(true)};
    const Ref<TVRHBA_FCPort> foreign{TVRHBA_FCPort::create(true)};
    void* const taker = reinterpret_cast<void*>(&take);
};

// A request may name any class of the module; its instance never passes for one of another class.
TEST_F(Dispatcher, HidesInstancesOfOtherClasses) {
    const std::pair<const Instance*, std::string> cases[] = {{own.get(), ""},
                                                             {foreign.get(), " foreign"}};
    for (const auto& [given, mark] : cases) {
        notes.clear();
        Instance* instance = nullptr;
        EXPECT_EQ(call_service(OPERATION_GET_INSTANCE, &service, given, &instance), 33);
        EXPECT_TRUE(is_a<Served>(instance));
        unref(instance);
        EXPECT_EQ(call_service(OPERATION_CREATE_INSTANCE, &service, given), 34);
        EXPECT_EQ(call_service(OPERATION_DELETE_INSTANCE, &service, given), 35);
        EXPECT_EQ(call_service(OPERATION_MODIFY_INSTANCE, &service, own.get(), given), 36);
        EXPECT_EQ(call_service(OPERATION_ENUM_INSTANCES, &service, given, taker, &notes),
                  service.status);
        EXPECT_THAT(notes, ElementsAre("get" + mark, "create" + mark, "delete" + mark,
                                       "modify" + mark, "enum" + mark, "instance 0",
                                       "end " + std::to_string(service.status)));
        service.status = ENUM_INSTANCES_FAILED; // and the second enumeration is closed as well
    }
}

TEST_F(Dispatcher, FindsMethodsByName) {
    const auto invoke = [&](const Meta_Method& method, const Instance* self) {
        const Ref<> call(create(&method, false));
        return call_service(OPERATION_INVOKE_METHOD, &service, self, call.get());
    };
    EXPECT_EQ(invoke(Read_Call::static_meta_method, own.get()), 37);
    // A method that the class doesn't have.
    EXPECT_EQ(invoke(CIM_Log_ClearLog_method::static_meta_method, own.get()), -1);
    // Case doesn't count, but the fields of a call must be those of the class's own method.
    Meta_Method renamed = Read_Call::static_meta_method;
    renamed.name = "READwwn";
    EXPECT_EQ(invoke(renamed, own.get()), INVOKE_METHOD_FAILED);
    EXPECT_EQ(invoke(Read_Call::static_meta_method, foreign.get()), INVOKE_METHOD_FAILED);
}

} // namespace
