// Requests: which class is asked, what comes back, up-calls.
#include "tests/host/host_fixture.h"

namespace tvrtest {
namespace {

using ::testing::ElementsAre;

class Requests : public Host_Fixture {
protected:
    static CMPIObjectPath* path_to(const Request& r, const char* name) {
        return CMGetObjectPath(new_thing(r, name, 3), nullptr);
    }
    static std::string name_of(const CMPIInstance* instance) {
        return CMGetCharPtr(CMGetProperty(instance, "Name", nullptr).value.string);
    }
};

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
    // In a namespace where the module's classes aren't registered only the class itself is asked.
    EXPECT_THAT(names(om().enumerate_instances("root/y", "Test_Thing")), ElementsAre("thing", ""));
    EXPECT_EQ(om().enumerate_instances("root/z", "Test_Base").rc, CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(Requests, given_instances_are_read_changed_and_deleted) {
    const Cim_Path path = thing_path("given", 3);
    options.instances = {Cim_Instance(path, {{"Name", "given"},
                                             {"Slot", std::uint16_t{3}},
                                             {"Count", std::uint32_t{1}},
                                             {"Ready", true}})};
    const Cim_Instance change(path, {{"Count", std::uint32_t{2}}, {"Ready", false}});
    EXPECT_TRUE(om().modify_instance(path, change, std::vector<std::string>{"Count"}).ok());
    Answer answer = om().get_instance(path);
    EXPECT_EQ(answer.instance()["Count"], Cim_Value(std::uint32_t{2}));
    EXPECT_EQ(answer.instance()["Ready"], Cim_Value(true));
    answer = om().get_instance(path, std::vector<std::string>{"Count"});
    EXPECT_EQ(answer.instance().properties.size(), 3u) << "the keys come along";
    EXPECT_TRUE(om().delete_instance(path).ok());
    EXPECT_EQ(om().get_instance(path).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(om().get_instance(Cim_Path("root/x", "Test_Other")).rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(Requests, methods_take_and_give) {
    Scripted_Class& thing = module.add("Test_Thing", "M");
    thing.invoke = [](Request& r) { // what the declaration doesn't have
        const CMPIUint16 code = 9;
        CMAddArg(r.out, "Steps", &code, CMPI_uint16);
        CMAddArg(r.out, "Total", &code, CMPI_uint16);
        CMReturnData(r.result, &code, CMPI_uint16);
        return CMPI_RC_OK;
    };
    om().invoke_method(thing_path("a", 1), "Turn");
    EXPECT_EQ(faults(), std::vector(3, Fault_Kind::schema_mismatch));

    thing.invoke = [](Request& r) { // a NULL result
        CMPIValue zero{};
        CMReturnData(r.result, &zero, 0);
        return CMPI_RC_OK;
    };
    EXPECT_TRUE(om().invoke_method(thing_path("a", 1), "Turn").return_value().is_null());
    EXPECT_EQ(om().enumerate_instances("root/x", "Test_Thing").rc, CMPI_RC_ERR_INVALID_CLASS)
        << "the class has methods alone";
}

TEST_F(Requests, associations_are_asked_where_their_ends_fit) {
    std::vector<std::string> asked;
    module.add("Test_Link", "A").associator_names = [&](Request& r) {
        asked.push_back("link " + r.words[2]);
        CMReturnObjectPath(r.result, path_to(r, "a"));
        return CMPI_RC_OK;
    };
    module.add("Test_Far_Link", "A").associator_names = [&](Request&) {
        asked.push_back("far");
        return CMPI_RC_ERR_FAILED;
    };
    const Answer answer =
        om().associator_names(thing_path("s", 1, "Test_Special"), {"", "", "Left", ""});
    EXPECT_THAT(answer.paths, ElementsAre(thing_path("a", 3)));
    EXPECT_FALSE(answer.done) << "an association may end without CMReturnDone";
    EXPECT_EQ(om().associator_names(Cim_Path("root/x", "Test_Other")).rc, CMPI_RC_ERR_FAILED);
    EXPECT_TRUE(om().associator_names(thing_path("a", 1), {"Test_Far_Link", "", "", ""}).ok());
    EXPECT_THAT(asked, ElementsAre("link Left", "far"));
    for (const Association_Filter& none : std::initializer_list<Association_Filter>{
             {"", "Test_Other", "", ""}, {"", "", "Nope", ""}, {"", "", "Left", "Left"}}) {
        EXPECT_TRUE(om().associator_names(thing_path("a", 1), none).paths.empty());
    }
    EXPECT_EQ(asked.size(), 2u) << "no other reference takes the result";
    EXPECT_EQ(om().associators(thing_path("a", 1), {"", "Nope", "", ""}).rc,
              CMPI_RC_ERR_INVALID_PARAMETER);
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
        while (CMHasNext(all, nullptr)) {
            seen.push_back(name_of(CMGetNext(all, nullptr).value.inst));
        }
        CMSetNameSpace(path, "root/y");
        EXPECT_EQ(CBEnumInstances(r.broker, r.context, path, nullptr, &rc), nullptr);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_INVALID_CLASS);
        seen.push_back(
            name_of(CBGetInstance(r.broker, r.context, path_to(r, "given"), nullptr, &rc)));
        EXPECT_EQ(CBGetInstance(r.broker, r.context, path_to(r, "nobody"), nullptr, &rc), nullptr);
        EXPECT_EQ(rc.rc, CMPI_RC_ERR_NOT_FOUND);
        return CMPI_RC_OK;
    };
    EXPECT_TRUE(om().enumerate_instances("root/x", "Test_Other").ok());
    EXPECT_THAT(seen, ElementsAre("given", "special", "given"));
}

TEST_F(Requests, an_up_call_comes_back_into_the_same_class_on_the_callers_behalf) {
    Scripted_Class& thing = module.add("Test_Thing");
    thing.invoke = [](Request& r) {
        const CMPIData principal = CMGetContextEntry(r.context, CMPIPrincipal, nullptr);
        EXPECT_STREQ(CMGetCharPtr(principal.value.string), "guest");
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

} // namespace
} // namespace tvrtest
