// Requests: which class is asked, what comes back, up-calls.
#include "tests/host/bare_provider.h"
#include "tests/host/host_fixture.h"

namespace tvrtest {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Requests : public Host_Fixture {};

TEST_F(Requests, a_deep_enumeration_asks_each_served_class_and_the_given_instances) {
    module.add("Test_Thing", "I").enumerate = hand_out("thing", 1);
    module.add("Test_Special", "I").enumerate = hand_out("special", 2, "Test_Special");
    module.add("Test_Other", "I").enumerate = [](Request&) {
        ADD_FAILURE() << "not below Test_Base";
        return CMPI_RC_OK;
    };
    options.instances = {
        Cim_Instance(thing_path("given", 3), {{"Name", "given"}}),
        Cim_Instance(Cim_Path("root/y", "Test_Thing", {{"Name", "elsewhere"}}), {})};
    EXPECT_THAT(names(om().enumerate_instances("root/x", "test_base")),
                ElementsAre("thing", "given", "special"));
    EXPECT_THAT(names(om().enumerate_instances("root/x", "Test_Special")), ElementsAre("special"));
    // In a namespace where the module's classes aren't registered only the class itself is asked.
    EXPECT_THAT(names(om().enumerate_instances("root/y", "Test_Thing")), ElementsAre("thing", ""));
    EXPECT_EQ(om().enumerate_instances("root/z", "Test_Base").rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(om().enumerate_instances("root/x", "Nope").rc, CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(Requests, a_call_may_name_the_provider_to_go_through) {
    std::string asked;
    module.add("Test_Thing", "I").enumerate = [&](Request& r) {
        asked = CMGetCharPtr(CMGetClassName(r.path, nullptr));
        return CMPI_RC_ERR_FAILED;
    };
    const Answer answer =
        om().enumerate_instances("root/x", "Unheard_Of", {}, {"Test_Thing", {}, 0});
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(asked, "Unheard_Of");
    EXPECT_EQ(om().get_instance(Cim_Path("root/x", "X"), {}, {"Nope", {}, 0}).rc,
              CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(Requests, an_answer_tells_code_done_and_order) {
    Scripted_Class& thing = module.add("Test_Thing");
    thing.enumerate = [](Request& r) {
        CMReturnInstance(r.result, new_thing(r, "b", 2));
        CMReturnInstance(r.result, new_thing(r, "a", 1));
        return CMPI_RC_ERR_ACCESS_DENIED;
    };
    Answer answer = om().enumerate_instances("root/x", "Test_Thing");
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_FALSE(answer.done);
    EXPECT_THAT(names(answer), ElementsAre("b", "a"));
    EXPECT_THROW(answer.instance(), Value_Error);

    thing.enumerate_names = [](Request& r) {
        CMReturnObjectPath(r.result, CMGetObjectPath(new_thing(r, "a", 1), nullptr));
        CMReturnDone(r.result);
        return CMPI_RC_OK;
    };
    answer = om().enumerate_instance_names("root/x", "Test_Thing");
    EXPECT_TRUE(answer.done);
    EXPECT_THAT(answer.paths, ElementsAre(thing_path("a", 1)));
}

TEST_F(Requests, the_instance_operations_carry_their_arguments) {
    Scripted_Class& thing = module.add("Test_Thing");
    const auto slot = [](const CMPIInstance* instance) {
        return CMGetProperty(instance, "Slot", nullptr).value.uint16;
    };
    thing.get = [](Request& r) {
        const CMPIData key = CMGetKey(r.path, "slot", nullptr);
        EXPECT_EQ(key.state, CMPI_keyValue);
        CMReturnInstance(r.result, new_thing(r, "a", key.value.uint16));
        return CMPI_RC_OK;
    };
    const Answer got = om().get_instance(thing_path("a", 7), std::vector<std::string>{"Count"});
    EXPECT_EQ(got.instance()["Count"], Cim_Value(std::uint32_t{70}));
    EXPECT_EQ(got.instance().path, thing_path("a", 7));

    thing.create = [&](Request& r) {
        EXPECT_EQ(slot(r.instance), 7);
        CMReturnObjectPath(r.result, CMGetObjectPath(r.instance, nullptr));
        return CMPI_RC_OK;
    };
    const Cim_Instance instance(thing_path("a", 7), {{"Slot", std::uint16_t{7}}});
    EXPECT_THAT(om().create_instance(Cim_Path("root/x", "Test_Thing"), instance).paths,
                ElementsAre(thing_path("a", 7)));

    thing.modify = [&](Request& r) {
        EXPECT_EQ(slot(r.instance), 7);
        EXPECT_STREQ(r.properties[0], "Slot");
        EXPECT_EQ(r.properties[1], nullptr);
        return CMPI_RC_ERR_NOT_SUPPORTED;
    };
    EXPECT_EQ(
        om().modify_instance(thing_path("a", 7), instance, std::vector<std::string>{"Slot"}).rc,
        CMPI_RC_ERR_NOT_SUPPORTED);

    thing.remove = [](Request& r) {
        EXPECT_EQ(CMGetKeyCount(r.path, nullptr), 2u);
        return CMPI_RC_ERR_NOT_FOUND;
    };
    EXPECT_EQ(om().delete_instance(thing_path("a", 7)).rc, CMPI_RC_ERR_NOT_FOUND);

    thing.query = [](Request& r) {
        EXPECT_EQ(r.word, "SELECT * FROM Test_Thing");
        return CMPI_RC_ERR_INVALID_QUERY;
    };
    EXPECT_EQ(om().exec_query("root/x", "Test_Thing", "SELECT * FROM Test_Thing").rc,
              CMPI_RC_ERR_INVALID_QUERY);

    EXPECT_EQ(om().get_instance(Cim_Path("root/x", "Test_Other")).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(om().delete_instance(Cim_Path("root/x", "Test_Other")).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(om().delete_instance(Cim_Path("root/x", "Nope")).rc, CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(Requests, given_instances_are_read_changed_and_deleted) {
    options.instances = {Cim_Instance(thing_path("given", 3), {{"Name", "given"},
                                                               {"Slot", std::uint16_t{3}},
                                                               {"Count", std::uint32_t{1}},
                                                               {"Ready", true}})};
    const Cim_Path path = thing_path("given", 3);
    Answer answer = om().get_instance(path, std::vector<std::string>{"Count"});
    EXPECT_EQ(answer.instance().properties.size(), 3u) << "the keys come along";
    EXPECT_FALSE(answer.instance().has("Ready"));
    const Cim_Instance change(path, {{"Count", std::uint32_t{2}}, {"Ready", false}});
    EXPECT_TRUE(om().modify_instance(path, change, std::vector<std::string>{"Count"}).ok());
    answer = om().get_instance(path);
    EXPECT_EQ(answer.instance()["Count"], Cim_Value(std::uint32_t{2}));
    EXPECT_EQ(answer.instance()["Ready"], Cim_Value(true));
    EXPECT_TRUE(om().delete_instance(path).ok());
    EXPECT_EQ(om().get_instance(path).rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(Requests, methods_take_and_give) {
    Scripted_Class& thing = module.add("Test_Thing", "M");
    thing.invoke = [](Request& r) {
        EXPECT_EQ(r.word, "turn");
        EXPECT_EQ(CMGetArg(r.in, "Steps", nullptr).value.uint16, 4);
        const CMPIUint32 code = 9;
        CMAddArg(r.out, "Said", "hello", CMPI_chars);
        CMReturnData(r.result, &code, CMPI_uint32);
        CMReturnDone(r.result);
        return CMPI_RC_OK;
    };
    Answer answer = om().invoke_method(thing_path("a", 1), "turn", {{"Steps", std::uint16_t{4}}});
    EXPECT_EQ(answer.return_value(), Cim_Value(std::uint32_t{9}));
    EXPECT_EQ(answer.out["Said"], Cim_Value("hello"));
    EXPECT_THAT(faults(), IsEmpty());

    thing.invoke = [](Request& r) { // what the declaration doesn't have
        const CMPIUint16 code = 9;
        CMAddArg(r.out, "Steps", &code, CMPI_uint16);
        CMAddArg(r.out, "Total", &code, CMPI_uint16);
        CMReturnData(r.result, &code, CMPI_uint16);
        return CMPI_RC_OK;
    };
    om().invoke_method(thing_path("a", 1), "Turn");
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::schema_mismatch, Fault_Kind::schema_mismatch,
                                      Fault_Kind::schema_mismatch));

    thing.invoke = [](Request& r) { // a NULL result
        CMPIValue zero{};
        CMReturnData(r.result, &zero, 0);
        return CMPI_RC_OK;
    };
    answer = om().invoke_method(thing_path("a", 1), "Turn");
    EXPECT_TRUE(answer.return_value().is_null());
    EXPECT_EQ(om().enumerate_instances("root/x", "Test_Thing").rc, CMPI_RC_ERR_INVALID_CLASS)
        << "the class has methods alone";
}

TEST_F(Requests, associations_are_asked_where_an_end_fits) {
    Scripted_Class& link = module.add("Test_Link", "A");
    Scripted_Class& far_link = module.add("Test_Far_Link", "A");
    std::vector<std::string> asked;
    link.associator_names = [&](Request& r) {
        asked.push_back("link " + r.word);
        CMReturnObjectPath(r.result, CMGetObjectPath(new_thing(r, "a", 1), nullptr));
        return CMPI_RC_OK;
    };
    far_link.associator_names = [&](Request&) {
        asked.push_back("far");
        return CMPI_RC_ERR_FAILED;
    };
    Answer answer = om().associator_names(thing_path("s", 1, "Test_Special"), {"", "", "Left", ""});
    EXPECT_THAT(names(answer), ElementsAre("a"));
    EXPECT_THAT(asked, ElementsAre("link Left"));
    EXPECT_FALSE(answer.done) << "an association may end without CMReturnDone";

    asked.clear();
    answer = om().associator_names(Cim_Path("root/x", "Test_Other"));
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
    EXPECT_THAT(asked, ElementsAre("far"));

    asked.clear();
    answer = om().associator_names(thing_path("a", 1), {"Test_Far_Link", "", "", ""});
    EXPECT_TRUE(answer.ok());
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_EQ(om().references(thing_path("a", 1), "Test_Link").rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(om().references(thing_path("a", 1), "Nope").rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(om().reference_names(Cim_Path("root/x", "Nope")).rc, CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(Requests, an_up_call_reaches_other_classes_and_given_instances) {
    module.add("Test_Special", "I").enumerate = hand_out("special", 2, "Test_Special");
    options.instances = {Cim_Instance(thing_path("given", 3), {{"Name", "given"}})};
    std::vector<std::string> seen;
    module.add("Test_Other").enumerate = [&](Request& r) {
        CMPIStatus rc;
        CMPIObjectPath* const path = CMNewObjectPath(r.broker, "root/x", "Test_Thing", nullptr);
        CMPIEnumeration* const all = CBEnumInstances(r.broker, r.context, path, nullptr, &rc);
        EXPECT_EQ(rc.rc, CMPI_RC_OK);
        while (CMHasNext(all, nullptr)) {
            const CMPIData data = CMGetNext(all, &rc);
            EXPECT_EQ(data.type, CMPI_instance);
            seen.push_back(
                CMGetCharPtr(CMGetProperty(data.value.inst, "Name", nullptr).value.string));
        }
        CMGetNext(all, &rc);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_FAILED) << "beyond the end";

        CMPIEnumeration* const none = CBEnumInstances(
            r.broker, r.context, CMNewObjectPath(r.broker, "root/y", "Test_Base", nullptr), nullptr,
            &rc);
        EXPECT_EQ(none, nullptr);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_CLASS);

        CMPIInstance* const given = CBGetInstance(
            r.broker, r.context, CMGetObjectPath(new_thing(r, "given", 3), nullptr), nullptr, &rc);
        EXPECT_STREQ(CMGetCharPtr(CMGetProperty(given, "Name", nullptr).value.string), "given");
        EXPECT_EQ(CBGetInstance(r.broker, r.context,
                                CMGetObjectPath(new_thing(r, "nobody", 3), nullptr), nullptr, &rc),
                  nullptr);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);
        return CMPI_RC_OK;
    };
    EXPECT_TRUE(om().enumerate_instances("root/x", "Test_Other").ok());
    EXPECT_THAT(seen, ElementsAre("given", "special"));
}

TEST_F(Requests, an_up_call_comes_back_into_the_same_class_on_the_callers_behalf) {
    Scripted_Class& thing = module.add("Test_Thing");
    thing.invoke = [](Request& r) {
        EXPECT_STREQ(
            CMGetCharPtr(CMGetContextEntry(r.context, CMPIPrincipal, nullptr).value.string),
            "guest");
        CMPIValue five;
        five.uint32 = 5;
        CMAddArg(r.out, "Total", &five, CMPI_uint32);
        CMReturnData(r.result, &five, CMPI_uint32);
        return CMPI_RC_OK;
    };
    thing.get = [](Request& r) {
        CMPIArgs* const in = CMNewArgs(r.broker, nullptr);
        CMPIArgs* const out = CMNewArgs(r.broker, nullptr);
        CMPIStatus rc;
        const CMPIData value = CBInvokeMethod(r.broker, r.context, r.path, "Turn", in, out, &rc);
        EXPECT_EQ(value.value.uint32, 5u);
        EXPECT_EQ(CMGetArg(out, "Total", nullptr).value.uint32, 5u);
        CMReturnInstance(r.result, new_thing(r, "a", 1));
        return CMPI_RC_OK;
    };
    EXPECT_TRUE(om().get_instance(thing_path("a", 1), {}, {"", "guest", 0}).ok());
}

TEST_F(Requests, indications_are_delivered_and_filters_counted) {
    Scripted_Class& alert = module.add("Test_Alert", "N");
    std::vector<bool> edges;
    alert.activate = [&](Request& r) {
        edges.push_back(r.edge);
        EXPECT_STREQ(CMGetCharPtr(CMGetNameSpace(r.path, nullptr)), "root/x");
        EXPECT_STREQ(CMGetCharPtr(r.filter->ft->getString(r.filter, nullptr)),
                     "SELECT * FROM Test_Alert");
        return CMPI_RC_OK;
    };
    alert.deactivate = alert.activate;
    alert.enable = [](Request& r) {
        CMPIObjectPath* const path = CMNewObjectPath(r.broker, "root/x", "Test_Alert", nullptr);
        CMPIInstance* const instance = CMNewInstance(r.broker, path, nullptr);
        CMSetProperty(instance, "Text", "link down", CMPI_chars);
        return CBDeliverIndication(r.broker, r.context, "root/x", instance).rc;
    };
    int called = 0;
    options.on_indication = [&](const Indication&) { ++called; };
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(om().activate_filter("root/x", "Test_Alert").ok());
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(om().deactivate_filter("root/x", "Test_Alert").ok());
    EXPECT_THAT(edges, ElementsAre(true, false, false, true));

    EXPECT_FALSE(om().next_indication(std::chrono::milliseconds(0)));
    EXPECT_TRUE(om().enable_indications("Test_Alert").ok());
    const auto delivered = om().next_indication(std::chrono::milliseconds(0));
    ASSERT_TRUE(delivered);
    EXPECT_EQ(delivered->name_space, "root/x");
    EXPECT_EQ(delivered->instance["Text"], Cim_Value("link down"));
    EXPECT_EQ(called, 1);
    EXPECT_EQ(om().authorize_filter("root/x", "Test_Alert").rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(om().must_poll("root/x", "Test_Alert").rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(om().enable_indications("Test_Thing").rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

// The provider whose cost is the floor hands out exactly what it was given.
TEST_F(Requests, the_bare_provider_hands_out_what_it_is_given) {
    std::vector<Cim_Instance> given;
    for (std::uint16_t slot = 0; slot < 3; ++slot)
        given.emplace_back(thing_path("t", slot),
                           Named_Values{{"Name", "t"},
                                        {"Slot", slot},
                                        {"Count", std::uint32_t{4000000000u}},
                                        {"Offset", std::int8_t{-5}},
                                        {"Ready", true},
                                        {"Ratio", 0.25},
                                        {"Words", Cim_Value::array_of<const char*>({"a", "b"})},
                                        {"Since", Cim_Datetime("20240229133059.000007+060")}});
    const Bare_Provider bare("Test_Thing", given);
    options.factories = bare.factories();
    EXPECT_EQ(om().enumerate_instances("root/x", "Test_Thing").instances, given);
    EXPECT_EQ(om().enumerate_instance_names("root/x", "Test_Thing").paths.size(), 3u);
    const Answer some =
        om().enumerate_instances("root/x", "Test_Thing", std::vector<std::string>{"Ready"});
    EXPECT_EQ(some.instances[0].properties.size(), 3u);
    om().shutdown(); // before the provider ends
}

TEST_F(Requests, keys_make_a_path) {
    EXPECT_EQ(om().path_of("root/x", "test_thing",
                           {{"Slot", std::uint16_t{1}}, {"Name", "a"}, {"Count", 5}}),
              thing_path("a", 1));
    EXPECT_THROW(om().path_of("root/x", "Test_Thing", {{"Name", "a"}}), Value_Error);
    EXPECT_THROW(om().path_of("root/x", "Nope", {}), Value_Error);
}

} // namespace
} // namespace tvrtest
