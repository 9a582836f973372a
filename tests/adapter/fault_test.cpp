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
        script.add(full_widget());
        script.find(full_widget());
        script.turn = [](Widget_Turn& turn) {
            turn.Mode.set("m");
            turn.Detail = part("d").release();
            turn.return_value.set(0u);
        };
        script.hook = [](int operation) {
            if (operation == OPERATION_ENUM_INSTANCES) { // an up-call within the request
                Instance_Enumerator enumerator;
                const Ref<Part> model = part("a");
                cimom::enum_instances("root/up", model.get(), enumerator);
                for (; enumerator.more(); enumerator.next()) {
                    EXPECT_TRUE(enumerator.get());
                }
            }
        };
        broker.instances["Part"] = {fake::instance({p, p.keys}), fake::instance({p, p.keys})};
        load('M');

        // What a client sends for a widget: one of everything.
        sent.properties = {{{"Name", fake::string("a")},
                            {"When", fake::datetime("00000001020304.000005:000")},
                            {"Texts", fake::list(CMPI_string, {fake::string("x")})},
                            {"Owner", fake::reference(p)},
                            {"Owners", fake::list(CMPI_ref, {fake::reference(p)})},
                            {"Inners", fake::list(CMPI_instance, {fake::instance({p, p.keys})})}}};
    }

    std::vector<CMPIrc> run_all() {
        const CMPIInstanceMIFT& i = *mi->ft;
        const char* some[] = {"Text", "Owner", nullptr};
        const fake::Args args{{{{"Angle", fake::string("5")}, {"Mode", fake::string("slow")}}}};
        CMPIObjectPath* path = widget_path("a");
        return {
            i.enumerateInstanceNames(mi, context, result, path).rc,
            i.enumerateInstances(mi, context, result, path, nullptr).rc,
            i.enumerateInstances(mi, context, result, path, some).rc,
            i.getInstance(mi, context, result, path, some).rc,
            i.createInstance(mi, context, result, path, broker.instance(sent)).rc,
            i.modifyInstance(mi, context, result, path, broker.instance(sent), some).rc,
            i.deleteInstance(mi, context, result, path).rc,
            block.method_ft
                .invokeMethod(&block.method_mi, context, result, path, "Turn", broker.args(args),
                              broker.args({}))
                .rc,
        };
    }

    fake::Path p{"root/test", "Part", {{{"Id", fake::string("p")}}}};
    fake::Inst sent{fake_path("a"), {}};
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
        int failures = 0;
        for (const CMPIrc rc : run_all()) {
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
    run_all();
    for (const std::string& call : std::set<std::string>(broker.seen)) {
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
