// Every call into the object manager fails once, in turn: no entry crashes, leaks, or leaves a lock
// or a context behind, and each call goes through again afterwards.
#include "runtime/cimom.h"
#include "tests/adapter/fixture.h"

#include <thread>

namespace cimple {
namespace {

class Fault_Test : public Adapter_Test {
protected:
    Fault_Test() {
        Ref<Widget> w = widget("a");
        w->Text.set("text");
        w->When.set(Datetime::interval(5));
        w->Texts.set(Array<String>{"x", "y"});
        w->U8s.set(Array<uint8>{1, 2});
        w->Owner = part("owner").release();
        w->Inner = part("inner").release();
        w->Owners.value.append(part("o").release());
        w->Owners.null = 0;
        w->Inners.value.append(part("i").release());
        w->Inners.null = 0;
        script.add(w);
        script.find(w);
        script.turn = [](Widget_Turn& turn) {
            turn.Mode.set("m");
            turn.Detail = part("d").release();
            turn.return_value.set(0u);
        };
        script.hook = [](int operation) {
            if (operation == OPERATION_ENUM_INSTANCES) { // an up-call within the request
                Instance_Enumerator enumerator;
                const Ref<Part> model = part("a");
                if (cimom::enum_instances("root/up", model.get(), enumerator) == 0) {
                    for (; enumerator.more(); enumerator.next()) {
                        EXPECT_TRUE(enumerator.get());
                    }
                }
            }
        };
        fake::Inst inst{{"root/up", "Part", {}}, {}};
        inst.properties.set("Id", fake::string("up"));
        broker.instances["Part"] = {fake::instance(inst), fake::instance(inst)};
        load('M');
    }

    // What a client sends for a widget: one of everything.
    fake::Inst sent() const {
        fake::Inst inst{fake_path("a"), {}};
        fake::Path p{"root/test", "Part", {}};
        p.keys.set("Id", fake::string("p"));
        inst.properties.set("Name", fake::string("a"));
        inst.properties.set("When", fake::datetime("00000001020304.000005:000"));
        inst.properties.set("Texts", fake::list(CMPI_string, {fake::string("x")}));
        inst.properties.set(
            "Whens", fake::list(CMPI_dateTime, {fake::datetime("00000001020304.000005:000")}));
        inst.properties.set("Owner", fake::reference(p));
        inst.properties.set("Inner", fake::instance({p, p.keys}));
        inst.properties.set("Owners", fake::list(CMPI_ref, {fake::reference(p)}));
        inst.properties.set("Inners", fake::list(CMPI_instance, {fake::instance({p, p.keys})}));
        return inst;
    }

    std::vector<CMPIrc> run_all() {
        const CMPIInstanceMIFT& i = *mi->ft;
        const char* some[] = {"Text", "Owner", nullptr};
        fake::Args args;
        args.arguments.set("Angle", fake::string("5"));
        args.arguments.set("Mode", fake::string("slow"));
        return {
            i.enumerateInstanceNames(mi, context, result, class_path()).rc,
            i.enumerateInstances(mi, context, result, class_path(), nullptr).rc,
            i.enumerateInstances(mi, context, result, class_path(), some).rc,
            i.getInstance(mi, context, result, widget_path("a"), some).rc,
            i.createInstance(mi, context, result, class_path(), broker.instance(sent())).rc,
            i.modifyInstance(mi, context, result, widget_path("a"), broker.instance(sent()), some)
                .rc,
            i.deleteInstance(mi, context, result, widget_path("a")).rc,
            block.method_ft
                .invokeMethod(&block.method_mi, context, result, widget_path("a"), "Turn",
                              broker.args(args), broker.args({}))
                .rc,
        };
    }

    CMPIInstanceMI* mi = instance_mi();
};

TEST_F(Fault_Test, EachCallFailsOnceInTurn) {
    const long before = broker.calls();
    const std::vector<CMPIrc> good(8, CMPI_RC_OK);
    ASSERT_EQ(run_all(), good);
    const long calls = broker.calls() - before;
    ASSERT_GT(calls, 200);

    for (long n = 1; n <= calls; ++n) {
        SCOPED_TRACE("call " + std::to_string(n));
        broker.fail_at = broker.calls() + n;
        const std::vector<CMPIrc> answers = run_all();
        int failures = 0;
        for (const CMPIrc rc : answers) {
            EXPECT_TRUE(rc == CMPI_RC_OK || rc == CMPI_RC_ERR_FAILED) << rc;
            failures += rc != CMPI_RC_OK;
        }
        EXPECT_LE(failures, 1);
        EXPECT_EQ(Thread_Context::top(), nullptr);
        broker.end_scope();
        context = broker.context();
        result = broker.result();
    }
    broker.fail_at = 0;
    std::thread([&] { EXPECT_EQ(run_all(), good); }).join();
}

TEST_F(Fault_Test, EachKindOfCallFailsEachTime) {
    for (const char* call : {"getCharPtr",   "getStringFormat",      "getSize",
                             "getElementAt", "setElementAt",         "getNext",
                             "hasNext",      "getPropertyAt",        "getPropertyCount",
                             "setProperty",  "getObjectPath",        "setPropertyFilter",
                             "getNameSpace", "getClassName",         "addKey",
                             "getKeyAt",     "getKeyCount",          "addArg",
                             "getArgAt",     "getArgCount",          "returnData",
                             "newInstance",  "newObjectPath",        "newString",
                             "newArray",     "newDateTimeFromChars", "enumerateInstances"}) {
        SCOPED_TRACE(call);
        broker.failing = {call};
        for (const CMPIrc rc : run_all()) {
            EXPECT_TRUE(rc == CMPI_RC_OK || rc == CMPI_RC_ERR_FAILED) << rc;
        }
        EXPECT_EQ(Thread_Context::top(), nullptr);
    }
}

} // namespace
} // namespace cimple
