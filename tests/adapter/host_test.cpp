// The adapter under the strict object manager: a client's view of each operation, with the rules of
// ownership watched over.
#include "host/object_manager.h"
#include "runtime/cimom.h"
#include "tests/adapter/fixture.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

namespace cimple {
namespace {

using tvrhost::Answer;
using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;
using tvrhost::Cim_Value;

CMPI_Static_Data host_block;

template <class MI, char kind>
MI* factory(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus*) {
    void* mi = nullptr;
    cimple_cmpi_adapter(host_block, &fixture_registration, broker, context, provider_name, kind,
                        mi);
    return static_cast<MI*>(mi);
}

tvrhost::Any_Function find_factory(const std::string& name) {
    const auto any = [](auto* function) {
        return reinterpret_cast<tvrhost::Any_Function>(function);
    };
    if (name == "Widget_Create_InstanceMI") {
        return any(factory<CMPIInstanceMI, 'I'>);
    }
    if (name == "Widget_Create_MethodMI") {
        return any(factory<CMPIMethodMI, 'M'>);
    }
    if (name == "Widget_Create_AssociationMI") {
        return any(factory<CMPIAssociationMI, 'A'>);
    }
    return nullptr;
}

// Runs each test with tables of the newest edition and with such as end at version 100.
class Host_Test : public ::testing::TestWithParam<int> {
protected:
    Host_Test() { script = Script(); }
    ~Host_Test() override {
        manager.shutdown();
        for (const tvrhost::Fault& fault : manager.take_faults()) {
            ADD_FAILURE() << fault.text;
        }
        EXPECT_EQ(manager.live_objects(), 0u);
        EXPECT_EQ(script.alive, 0);
        script = Script();
    }

    static tvrhost::Options options() {
        tvrhost::Options options;
        options.factories = find_factory;
        options.name_spaces = {"root/test"};
        options.broker_version = GetParam();
        for (const char* id : {"a", "b"}) {
            options.instances.push_back(
                Cim_Instance(Cim_Path("root/up", "Part", {{"Id", id}}),
                             {{"Id", id}, {"Slot", std::uint32_t{3}}, {"Extra", "e"}}));
        }
        return options;
    }
    static Cim_Path path(const char* name, std::uint32_t index = 1) {
        return Cim_Path("root/test", "Widget", {{"Name", name}, {"Index", index}});
    }

    tvrhost::Object_Manager manager{options()};
};
INSTANTIATE_TEST_SUITE_P(Versions, Host_Test, ::testing::Values(100, 210));

TEST_P(Host_Test, EnumeratesAndGetsInstances) {
    script.status[OPERATION_GET_INSTANCE] = GET_INSTANCE_UNSUPPORTED;
    script.add(full_widget());
    for (uint32 i = 0; i < 100; ++i) {
        script.add(widget("w", i));
    }
    const Answer all = manager.enumerate_instances("root/test", "Widget");
    EXPECT_EQ(all.rc, 0);
    EXPECT_TRUE(all.done);
    ASSERT_EQ(all.instances.size(), 101u);
    const Cim_Instance& full = all.instances[0];
    EXPECT_EQ(full.properties.size(), 34u);
    EXPECT_EQ(full["U64"], Cim_Value(std::uint64_t{18000000000000000000u}));
    EXPECT_EQ(full["Texts"], Cim_Value::array_of({"", "two"}));
    EXPECT_EQ(full["Owner"].as_path(), Cim_Path("root/test", "Part", {{"Id", "owner"}}));
    EXPECT_EQ(full["Inner"].as_instance()["Slot"], Cim_Value(std::uint32_t{2}));
    EXPECT_EQ(all.instances[100]["Index"], Cim_Value(std::uint32_t{99}));
    EXPECT_FALSE(all.instances[100].has("Text"));

    EXPECT_EQ(manager.enumerate_instance_names("root/test", "Widget").paths.size(), 101u);
    const Answer one = manager.get_instance(path("w", 7), tvrhost::Properties{{"Text"}});
    EXPECT_EQ(one.rc, 0);
    EXPECT_EQ(one.instance()["Index"], Cim_Value(std::uint32_t{7}));
    EXPECT_EQ(manager.get_instance(path("nobody")).rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_P(Host_Test, CreatesModifiesAndDeletes) {
    const Cim_Instance sent(path("a"), {{"Name", "a"}, {"Text", "t"}});
    const Answer created = manager.create_instance(path("a"), sent);
    EXPECT_EQ(created.rc, 0);
    ASSERT_EQ(created.paths.size(), 1u);
    EXPECT_EQ(created.paths[0].keys["Name"], Cim_Value("a"));

    const Answer modified = manager.modify_instance(path("a"), sent, tvrhost::Properties{{"Text"}});
    EXPECT_EQ(modified.rc, 0);
    EXPECT_EQ(static_cast<Widget*>(script.model.get())->Text.null, 0);
    EXPECT_EQ(static_cast<Widget*>(script.model.get())->Flag.null, 1);

    script.status[OPERATION_DELETE_INSTANCE] = DELETE_INSTANCE_UNSUPPORTED;
    EXPECT_EQ(manager.delete_instance(path("a")).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(manager.exec_query("root/test", "Widget", "select * from Widget").rc,
              CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_P(Host_Test, InvokesMethods) {
    script.turn = [](Widget_Turn& turn) {
        EXPECT_EQ(turn.Angle.value, 90);
        turn.Mode.set("done");
        turn.Detail = part("d", 4).release();
        turn.return_value.set(7u);
    };
    const Answer answer = manager.invoke_method(
        path("a"), "turn", {{"Angle", "90"}, {"Target", Cim_Path("", "Part", {{"Id", "p"}})}});
    EXPECT_EQ(answer.rc, 0);
    EXPECT_EQ(answer.return_value(), Cim_Value(std::uint32_t{7}));
    EXPECT_EQ(answer.out["Mode"], Cim_Value("done"));
    EXPECT_EQ(answer.out["Detail"].as_instance()["Slot"], Cim_Value(std::uint32_t{4}));
    EXPECT_EQ(manager.invoke_method(path("a"), "Twist").rc, CMPI_RC_ERR_METHOD_NOT_FOUND);
}

TEST_P(Host_Test, KindsAreLoadedOnceAndUnloadedWithTheLast) {
    for (const auto kind :
         {tvrhost::Kind::instance, tvrhost::Kind::method, tvrhost::Kind::association}) {
        EXPECT_NE(manager.load("Widget", kind), nullptr);
    }
    EXPECT_EQ(script.calls[OPERATION_LOAD], 1);
    EXPECT_EQ(manager.unload("Widget"), 0);
    EXPECT_EQ(script.calls[OPERATION_UNLOAD], 1);
    EXPECT_EQ(script.alive, 0);
    EXPECT_EQ(manager.enumerate_instances("root/test", "Widget").rc, 0);
    EXPECT_EQ(script.calls[OPERATION_LOAD], 2);
}

TEST_P(Host_Test, ProvidersAndTheirThreadsCallUp) {
    const auto count_parts = [] {
        const Ref<Part> model = make<Part>();
        Instance_Enumerator enumerator;
        int found = 0;
        if (cimom::enum_instances("root/up", model.get(), enumerator) == 0) {
            for (; enumerator.more(); enumerator.next()) {
                EXPECT_EQ(static_cast<Part*>(enumerator.get().get())->Slot.value, 3u);
                ++found;
            }
        }
        return found;
    };
    int in_request = 0;
    int in_thread = 0;
    script.hook = [&](int operation) {
        if (operation != OPERATION_ENUM_INSTANCES) {
            return;
        }
        in_request = count_parts();
        const auto body = [&] { in_thread = count_parts(); };
        Thread thread;
        ASSERT_EQ(Thread::create_joinable(
                      thread,
                      [](void* arg) -> void* {
                          (*static_cast<decltype(body)*>(arg))();
                          return nullptr;
                      },
                      const_cast<void*>(static_cast<const void*>(&body))),
                  0);
        void* ignored = nullptr;
        EXPECT_EQ(Thread::join(thread, ignored), 0);
    };
    EXPECT_EQ(manager.enumerate_instances("root/test", "Widget").rc, 0);
    EXPECT_EQ(in_request, 2);
    EXPECT_EQ(in_thread, 2);
}

TEST_P(Host_Test, ThreadsShareTheClass) {
    script.add(full_widget());
    std::vector<std::thread> clients;
    for (int i = 0; i < 4; ++i) {
        clients.emplace_back([&] {
            for (int n = 0; n < 25; ++n) {
                const Answer answer = manager.enumerate_instances("root/test", "Widget");
                EXPECT_EQ(answer.rc, 0);
                EXPECT_EQ(answer.instances.size(), 1u);
            }
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(script.calls[OPERATION_LOAD], 1);
}

} // namespace
} // namespace cimple
