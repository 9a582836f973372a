// Method invocation: arguments in, outputs and the return value out.
#include "tests/adapter/fixture.h"
#include "tests/common/session.h"

namespace cimple {
namespace {

class Method_Entries_Test : public Adapter_Test {
protected:
    Method_Entries_Test() {
        // The return code for a status of the provider's, and what the client gets.
        session.on("status", [this](const auto& words, std::ostream& told) {
            script.status[OPERATION_INVOKE_METHOD] = std::stoi(words.at(0));
            answer() = fake::Result();
            told << invoke("Turn", broker.args({})) << ", data " << answer().data.size()
                 << ", done " << answer().done << '\n';
        });
        // What the method gets of one argument.
        session.on("turn", [this](const auto& words, std::ostream& answer) {
            fake::Args args;
            args.arguments.set(words.at(0), datum(words.at(1)));
            EXPECT_EQ(invoke("Turn", broker.args(args)), CMPI_RC_OK);
            answer << told(script.instance.get()) << '\n' << told(log, position);
        });
    }
    CMPIrc invoke(const char* method, CMPIArgs* in, CMPIObjectPath* path = nullptr) {
        return mi->ft
            ->invokeMethod(mi, context, result, path ? path : widget_path("a"), method, in, out)
            .rc;
    }
    fake::Result& answer() { return fake::Broker::of(result); }
    fake::Entries& outputs() { return fake::Broker::of(out).arguments; }

    const Runtime_Log log;
    std::size_t position = 0; // in it
    Text_Session session;
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

TEST_F(Method_Entries_Test, UnknownClassesAndMethodsDontReachTheProvider) {
    EXPECT_EQ(invoke("Turn", broker.args({}), class_path("Nobody")), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(invoke("Twist", broker.args({})), CMPI_RC_ERR_METHOD_NOT_FOUND);
    EXPECT_TRUE(log.has("return: invokeMethod(): CMPI_RC_ERR_METHOD_NOT_FOUND: Twist"));
    EXPECT_EQ(invoke("Name", broker.args({})), CMPI_RC_ERR_METHOD_NOT_FOUND); // a property
    EXPECT_EQ(invoke(nullptr, broker.args({})), CMPI_RC_ERR_METHOD_NOT_FOUND);
    EXPECT_EQ(script.calls[OPERATION_INVOKE_METHOD], 0);
    EXPECT_EQ(answer().done, 0);
}

TVR_SESSIONS(Method_Entries_Test, "method_entries.txt");

} // namespace
} // namespace cimple
