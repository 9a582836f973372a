// The adapter under the strict object manager, with the rules of ownership watched over.
#include "host/object_manager.h"
#include "tests/adapter/fixture.h"

#include <string>

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
    if (name == "Widget_Create_InstanceMI") {
        return reinterpret_cast<tvrhost::Any_Function>(factory<CMPIInstanceMI, 'I'>);
    }
    if (name == "Widget_Create_IndicationMI") {
        return reinterpret_cast<tvrhost::Any_Function>(factory<CMPIIndicationMI, 'N'>);
    }
    return name == "Widget_Create_MethodMI"
               ? reinterpret_cast<tvrhost::Any_Function>(factory<CMPIMethodMI, 'M'>)
               : nullptr;
}

// How the object manager is: the version at which its tables end, and what its setters keep.
struct Surroundings {
    int version;
    tvrhost::Keeps keeps;
};

class Host_Test : public ::testing::TestWithParam<Surroundings> {
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
        options.name_spaces = {"root/test", "root/other"};
        options.broker_version = GetParam().version;
        options.keeps = GetParam().keeps;
        // Headers that end at the first version have its argument lists.
        options.older_indication_arguments = CMPI_VERSION == 100;
        return options;
    }

    const Cim_Path path{"root/test", "Widget", {{"Name", "w"}, {"Index", std::uint32_t{7}}}};
    tvrhost::Object_Manager manager{options()};
};
INSTANTIATE_TEST_SUITE_P(Managers, Host_Test,
                         ::testing::Values(Surroundings{100, tvrhost::Keeps::everything},
                                           Surroundings{210, tvrhost::Keeps::everything},
                                           Surroundings{210, tvrhost::Keeps::elements}));

TEST_P(Host_Test, InstancesAndArgumentsGoOutAndComeIn) {
    script.status[OPERATION_GET_INSTANCE] = GET_INSTANCE_UNSUPPORTED;
    script.add(full_widget());
    for (uint32 i = 0; i < 100; ++i) {
        script.add(widget("w", i));
    }
    const Answer all = manager.enumerate_instances("root/test", "Widget");
    ASSERT_EQ(all.instances.size(), 101u);
    const Cim_Instance& full = all.instances[0];
    EXPECT_EQ(full.properties.size(), 34u);
    EXPECT_EQ(full["U64"], Cim_Value(std::uint64_t{18000000000000000000u}));
    EXPECT_EQ(full["Texts"], Cim_Value::array_of({"text", ""}));
    EXPECT_EQ(full["Owner"].as_path(), Cim_Path("root/test", "Part", {{"Id", "owner"}}));
    EXPECT_EQ(full["Inner"].as_instance()["Slot"], Cim_Value(std::uint32_t{2}));
    EXPECT_FALSE(all.instances[100].has("Text"));
    EXPECT_EQ(manager.enumerate_instance_names("root/test", "Widget").paths.size(), 101u);
    const Answer one = manager.get_instance(path, tvrhost::Properties{{"Text"}});
    EXPECT_EQ(one.instance()["Index"], Cim_Value(std::uint32_t{7}));
    const Cim_Path other_case{"root/test", "Widget", {{"Name", "W"}, {"Index", std::uint32_t{7}}}};
    EXPECT_EQ(manager.get_instance(other_case).rc, CMPI_RC_ERR_NOT_FOUND);
    script.status[OPERATION_ENUM_INSTANCES] = ENUM_INSTANCES_FAILED;
    EXPECT_EQ(manager.get_instance(path).rc, CMPI_RC_ERR_NOT_FOUND);

    script.created = [](Instance& made) { static_cast<Widget&>(made).Index.set(99u); };
    const Answer created = manager.create_instance(path, full);
    ASSERT_EQ(created.paths.size(), 1u);
    EXPECT_EQ(created.paths[0].keys["Name"], Cim_Value("full"));
    EXPECT_EQ(created.paths[0].keys["Index"], Cim_Value(std::uint32_t{99}));
    const Ref<Widget> sent = full_widget();
    const Ref<Widget> back(static_cast<Widget*>(script.instance.release()));
#define X(name, type, code, sample, other)                                                         \
    EXPECT_TRUE(back->name.value == sent->name.value) << #name;                                    \
    EXPECT_TRUE(back->name##s.value == sent->name##s.value) << #name;
    WIDGET_TYPES(X)
#undef X
    EXPECT_EQ(back->Owner->Slot.null, 1) << "a reference has keys alone";
    ASSERT_EQ(back->Owners.value.size(), 2u);
    EXPECT_TRUE(static_cast<Part*>(back->Owners.value[1])->Id.value.equal("o2"));
    EXPECT_EQ(static_cast<Part*>(back->Inners.value[0])->Slot.value, 11u);
    EXPECT_EQ(manager.modify_instance(path, full, tvrhost::Properties{{"Text"}}).rc, 0);
    EXPECT_EQ(static_cast<Widget*>(script.instance.get())->Inner->Slot.value, 2u);
    EXPECT_EQ(manager.delete_instance(path).rc, 0);

    script.turn = [](Widget_Turn& turn) {
        EXPECT_EQ(turn.Angle.value, 90);
        EXPECT_TRUE(turn.Turned.is_null() && turn.Fast.is_null());
        turn.Mode.set("done");
        turn.Detail = part("d", 4).release();
        turn.return_value.set(7u);
    };
    const Answer answer = manager.invoke_method(path, "turn",
                                                {{"aNGLE", "90"},
                                                 {"Target", Cim_Path("", "Part", {{"Id", "p"}})},
                                                 {"Turned", std::uint32_t{7}}, // an output only
                                                 {"Unknown", std::uint32_t{7}}});
    EXPECT_EQ(answer.return_value(), Cim_Value(std::uint32_t{7}));
    EXPECT_EQ(answer.out["Mode"], Cim_Value("done"));
    EXPECT_EQ(answer.out["Detail"].as_instance()["Slot"], Cim_Value(std::uint32_t{4}));
}

// Widgets as indications: the provider sends one whenever it is asked for an instance.
TEST_P(Host_Test, EachNamespaceWithAFilterGetsOneCopy) {
    bool heard = false;
    script.add(widget("w", 7));
    script.hook = [&](int operation) {
        if (operation == OPERATION_GET_INSTANCE) {
            heard = script.indicate(full_widget().release(), script.indication_data);
        }
    };
    const auto raise = [&] {
        manager.get_instance(path);
        std::string name_spaces;
        for (const tvrhost::Indication& each : manager.take_indications()) {
            EXPECT_EQ(each.instance.properties.size(), 34u);
            EXPECT_EQ(each.instance["Inner"].as_instance()["Slot"], Cim_Value(std::uint32_t{2}));
            name_spaces += each.name_space + " ";
        }
        return name_spaces;
    };
    const auto activate = [&](const char* name_space) {
        EXPECT_TRUE(manager.activate_filter(name_space, "Widget").ok());
    };
    const auto deactivate = [&](const char* name_space) {
        EXPECT_TRUE(manager.deactivate_filter(name_space, "Widget").ok());
    };
    EXPECT_TRUE(manager.disable_indications("Widget").ok()) << "nothing to do";
    EXPECT_TRUE(manager.authorize_filter("root/test", "Widget").ok());
    EXPECT_TRUE(manager.must_poll("root/test", "Widget").ok());
    EXPECT_TRUE(manager.enable_indications("Widget").ok());
    EXPECT_TRUE(manager.enable_indications("Widget").ok());
    EXPECT_EQ(script.calls[OPERATION_ENABLE_INDICATIONS], 1) << "it is enabled already";
    EXPECT_EQ(raise(), "");
    EXPECT_TRUE(heard) << "dropped, and the provider goes on";
    deactivate("root/other");
    activate("root/other");
    activate("root/test");
    activate("root/other");
    EXPECT_EQ(raise(), "root/other root/test ");
    deactivate("root/other");
    EXPECT_EQ(raise(), "root/other root/test ") << "it has another filter";
    deactivate("root/other");
    EXPECT_EQ(raise(), "root/test ");
    deactivate("root/test");
    EXPECT_EQ(raise(), "");
    EXPECT_FALSE(script.indicate(nullptr, script.indication_data)) << "the provider stops";

    EXPECT_TRUE(manager.disable_indications("Widget").ok());
    script.status = {{OPERATION_ENABLE_INDICATIONS, ENABLE_INDICATIONS_FAILED},
                     {OPERATION_DISABLE_INDICATIONS, DISABLE_INDICATIONS_FAILED}};
    EXPECT_EQ(manager.enable_indications("Widget").rc, CMPI_RC_ERR_FAILED);
    EXPECT_TRUE(manager.enable_indications("Widget").ok()) << "it was asked once";
    EXPECT_EQ(manager.disable_indications("Widget").rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(script.calls[OPERATION_DISABLE_INDICATIONS], 2);
}

// A thread of the provider's without a context has no way to deliver, and harms nobody.
TEST_P(Host_Test, AnIndicationNeedsAThreadContext) {
    EXPECT_TRUE(manager.enable_indications("Widget").ok());
    EXPECT_TRUE(manager.activate_filter("root/test", "Widget").ok());
    const Runtime_Log log;
    EXPECT_TRUE(script.indicate(widget("w").release(), script.indication_data));
    EXPECT_EQ(log.count("thread_context != 0"), 1);
    EXPECT_TRUE(manager.take_indications().empty());
    EXPECT_TRUE(manager.deactivate_filter("root/test", "Widget").ok());
}

} // namespace
} // namespace cimple
