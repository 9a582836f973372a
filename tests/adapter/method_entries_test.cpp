// Method invocation: arguments in, outputs and the return value out.
#include "tests/adapter/fixture.h"

namespace cimple {
namespace {

class Method_Entries_Test : public Adapter_Test {
protected:
    CMPIrc invoke(const char* method, CMPIArgs* in, CMPIObjectPath* path = nullptr) {
        return mi->ft
            ->invokeMethod(mi, context, result, path ? path : widget_path("a"), method, in, out)
            .rc;
    }
    // What the method got of one argument.
    const Widget_Turn& sent(const char* name, fake::Datum datum) {
        fake::Args args;
        args.arguments.set(name, std::move(datum));
        EXPECT_EQ(invoke("Turn", broker.args(args)), CMPI_RC_OK);
        return *static_cast<Widget_Turn*>(script.instance.get());
    }

    fake::Result& answer() { return fake::Broker::of(result); }
    fake::Entries& outputs() { return fake::Broker::of(out).arguments; }

    CMPIMethodMI* mi = method_mi();
    CMPIArgs* out = broker.args({});
};

TEST_F(Method_Entries_Test, WhatIsMissingIsNull) {
    EXPECT_EQ(invoke("Turn", broker.args({}), class_path()), CMPI_RC_OK);
    EXPECT_EQ(static_cast<Widget*>(script.model.get())->Name.null, 1);
    EXPECT_TRUE(outputs().empty());
    ASSERT_EQ(answer().data.size(), 1u);
    EXPECT_EQ(answer().data[0].type, CMPI_null);

    out = nullptr; // no argument lists at all
    script.turn = [](Widget_Turn& turn) { turn.Turned.set(1u); };
    EXPECT_EQ(invoke("Turn", nullptr), CMPI_RC_OK);
    EXPECT_EQ(answer().data.size(), 2u);
}

TEST_F(Method_Entries_Test, StatusesBecomeReturnCodes) {
    constexpr struct {
        int status;
        CMPIrc rc;
    } cases[] = {{130, CMPI_RC_ERR_FAILED},
                 {131, CMPI_RC_ERR_NOT_SUPPORTED},
                 {132, CMPI_RC_ERR_ACCESS_DENIED},
                 {OPERATION_UNKNOWN, CMPI_RC_OK},
                 {133, CMPI_RC_OK}};
    for (const auto& c : cases) {
        script.status[OPERATION_INVOKE_METHOD] = c.status;
        answer() = fake::Result();
        EXPECT_EQ(invoke("Turn", broker.args({})), c.rc) << c.status;
        EXPECT_EQ(answer().done, c.rc == CMPI_RC_OK) << c.status;
        EXPECT_EQ(answer().data.size(), c.rc == CMPI_RC_OK ? 1u : 0u) << c.status;
    }
}

TEST_F(Method_Entries_Test, UnknownClassesAndMethodsDontReachTheProvider) {
    const Runtime_Log log;
    EXPECT_EQ(invoke("Turn", broker.args({}), class_path("Nobody")), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(invoke("Twist", broker.args({})), CMPI_RC_ERR_METHOD_NOT_FOUND);
    EXPECT_TRUE(log.has("return: invokeMethod(): CMPI_RC_ERR_METHOD_NOT_FOUND: Twist"));
    EXPECT_EQ(invoke("Name", broker.args({})), CMPI_RC_ERR_METHOD_NOT_FOUND); // a property
    EXPECT_EQ(invoke(nullptr, broker.args({})), CMPI_RC_ERR_METHOD_NOT_FOUND);
    EXPECT_EQ(script.calls[OPERATION_INVOKE_METHOD], 0);
    EXPECT_EQ(answer().done, 0);
}

TEST_F(Method_Entries_Test, StringsAreCastToTheScalarWanted) {
    const Runtime_Log log;
    EXPECT_EQ(sent("Angle", fake::string("65537")).Angle.value, 1); // truncated
    EXPECT_EQ(log.count("WARN: CMPI_Containers("), 1);
    EXPECT_TRUE(log.has("converting string to registered parameter type"));
    EXPECT_EQ(sent("Angle", fake::string("x")).Angle.value, 0);
    for (const char* text : {"TRUE", "trueish", "FALSE", "falsehood"}) {
        const Widget_Turn& turn = sent("Fast", fake::string(text));
        EXPECT_EQ(turn.Fast.null, 0) << text;
        EXPECT_EQ(turn.Fast.value, (text[0] | 0x20) == 't') << text;
    }
    EXPECT_EQ(log.count("type mismatch"), 0);
}

TEST_F(Method_Entries_Test, WhatIsNotCastLeavesTheParameterNull) {
    const Runtime_Log log;
    const std::tuple<const char*, fake::Datum, const char*> cases[] = {
        {"Fast", fake::string("yes"), "type mismatch on Fast: string/boolean"},
        {"Fast", fake::string("yes"), "conversion error: Turn.Fast"},
        {"Wide", fake::string("5"), "Default case - unsupported type"},
        {"Start", fake::string("20240101120000.000000+060"),
         "cast_cmpi_string_to_scalar(): Not supported"},
        {"Angle", {CMPI_string, CMPI_goodValue, {}, {}}, "ignored null CMPI string"},
        {"Angle", fake::null_of(CMPI_string), ""},
        {"Angle", fake::uint64(5), "type mismatch on Angle"}, // integers are not narrowed
    };
    for (const auto& [name, datum, line] : cases) {
        const Widget_Turn& turn = sent(name, datum);
        EXPECT_TRUE(turn.Fast.is_null() && turn.Wide.is_null() && turn.Start.is_null() &&
                    turn.Angle.is_null())
            << line;
        EXPECT_TRUE(log.has(line)) << line;
    }
}

TEST_F(Method_Entries_Test, ReferencesAndEmbeddedInstancesAreChecked) {
    const Runtime_Log log;
    fake::Path part_path{"", "Part", {}};
    part_path.keys.set("Id", fake::string("p"));
    const Widget_Turn& turn = sent("Target", fake::reference(part_path));
    ASSERT_NE(turn.Target, nullptr);
    EXPECT_TRUE(turn.Target->Id.value.equal("p"));
    EXPECT_TRUE(turn.Target->__name_space.equal("root/test"));
    part_path.name_space = "root/other";
    EXPECT_TRUE(
        sent("Target", fake::reference(part_path)).Target->__name_space.equal("root/other"));
    EXPECT_EQ(log.count("failed"), 0);

    EXPECT_EQ(sent("Target", fake::reference(fake_path("w"))).Target, nullptr);
    EXPECT_TRUE(log.has("failed to assign instance of Widget to Turn.Target"));

    fake::Inst details{part_path, {}};
    details.properties.set("Slot", fake::uint32(3));
    EXPECT_EQ(sent("Detail", fake::instance(details)).Detail->Slot.value, 3u);
    EXPECT_EQ(sent("Details", fake::boolean(false)).Details.null, 1);
    EXPECT_EQ(log.count("type mismatch"), 0);
}

} // namespace
} // namespace cimple
