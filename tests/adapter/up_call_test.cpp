// Up-calls to the object manager, and the contexts of threads.
#include "runtime/cimom.h"
#include "runtime/cmpi_thread_context.h"
#include "tests/adapter/fixture.h"

#include <pthread.h>

#include <cerrno>
#include <string>
#include <vector>

namespace cimple {
namespace {

class Up_Call_Test : public ::testing::Test {
protected:
    Up_Call_Test() {
        for (const char* id : {"a", "b", "c"}) {
            broker.instances["Part"].push_back(fake::instance(part_inst("Part", id)));
        }
    }
    ~Up_Call_Test() override {
        set_thread_create(nullptr);
        EXPECT_EQ(Thread_Context::top(), nullptr);
    }
    static fake::Inst part_inst(const char* class_name, const char* id) {
        fake::Inst inst{{"root/up", class_name, {}}, {}};
        inst.properties.set("Id", fake::string(id));
        return inst;
    }
    static std::vector<std::string> ids(Instance_Enumerator& enumerator) {
        std::vector<std::string> found;
        for (; enumerator.more(); enumerator.next()) {
            const Ref<Instance> one = enumerator.get();
            EXPECT_EQ(class_of(one.get()), &Part::static_meta_class);
            found.emplace_back(static_cast<Part*>(one.get())->Id.value.c_str());
        }
        EXPECT_FALSE(enumerator.get());
        return found;
    }

    fake::Broker broker;
    CMPIContext* context = broker.context();
    const Ref<Part> model = make<Part>();
};

using Ids = std::vector<std::string>;

TEST_F(Up_Call_Test, InstancesComeInTheModelsClass) {
    const Runtime_Log log;
    fake::Inst special = part_inst("Special_Part", "special");
    special.properties.set("Extra", fake::string("x"));
    broker.instances["Part"].push_back(fake::instance(special));

    const CMPI_Context_Scope scope(broker.get(), context);
    const std::size_t before = broker.live();
    {
        Instance_Enumerator enumerator;
        ASSERT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
        EXPECT_TRUE(enumerator.get()->__name_space.equal("root/up"));
        EXPECT_EQ(ids(enumerator), (Ids{"a", "b", "c", "special"}));
        enumerator.next();
        EXPECT_FALSE(enumerator.more());
    }
    EXPECT_EQ(log.count("unknown feature: Part.Extra"), 1);
    ASSERT_EQ(broker.asked.size(), 1u);
    EXPECT_EQ(broker.asked[0].name_space, "root/up");
    EXPECT_TRUE(broker.asked[0].keys.empty());
    EXPECT_GT(broker.live(), before); // what was got belongs to the scope
}

TEST_F(Up_Call_Test, KeysOfTheModelGoAlong) {
    const CMPI_Context_Scope scope(broker.get(), context);
    Instance_Enumerator enumerator;
    ASSERT_EQ(cimom::enum_instances("root/up", part("b").get(), enumerator), 0);
    EXPECT_EQ(broker.asked[0].keys.find("Id")->text(), "b");
}

TEST_F(Up_Call_Test, WithoutContextTheEnumeratorStaysAsItWas) {
    Instance_Enumerator enumerator;
    EXPECT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), -1);
    EXPECT_FALSE(enumerator.more());
    EXPECT_FALSE(enumerator.get());
    enumerator.next();

    const CMPI_Context_Scope scope(broker.get(), context);
    ASSERT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    EXPECT_TRUE(enumerator.more());
}

TEST_F(Up_Call_Test, ANewStartEndsTheOld) {
    const CMPI_Context_Scope scope(broker.get(), context);
    Instance_Enumerator enumerator;
    ASSERT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    enumerator.next();
    ASSERT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    EXPECT_EQ(ids(enumerator), (Ids{"a", "b", "c"}));
    EXPECT_EQ(cimom::enum_instances("root/up", nullptr, enumerator), -1);
    EXPECT_FALSE(enumerator.more());
    EXPECT_EQ(cimom::enum_instances(nullptr, model.get(), enumerator), -1);
}

TEST_F(Up_Call_Test, FailuresLookLikeTheEnd) {
    const CMPI_Context_Scope scope(broker.get(), context);
    Instance_Enumerator enumerator;
    broker.fail_element = 2;
    ASSERT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    EXPECT_EQ(ids(enumerator), (Ids{"a"}));
    broker.fail_element = 0;

    broker.instances["Part"][1] = fake::reference({"root/up", "Part", {}});
    ASSERT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    EXPECT_EQ(ids(enumerator), (Ids{"a"}));
    broker.instances["Part"][1] = {CMPI_instance, CMPI_goodValue, {}, {}}; // null pointer
    ASSERT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    EXPECT_EQ(ids(enumerator), (Ids{"a"}));

    broker.instances["Part"].clear();
    EXPECT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    EXPECT_FALSE(enumerator.more());

    for (const char* call : {"newObjectPath", "enumerateInstances"}) {
        broker.failing = {call};
        EXPECT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), -1) << call;
        EXPECT_FALSE(enumerator.more());
    }
}

TEST_F(Up_Call_Test, TheTopContextDecides) {
    fake::Broker inner_broker;
    const CMPI_Context_Scope outer(broker.get(), context);
    Thread_Context* outer_context = Thread_Context::top();
    const CMPI_Context_Scope inner(inner_broker.get(), inner_broker.context());
    Instance_Enumerator_State* state =
        outer_context->instance_enumerator_create("root/up", model.get());
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(inner_broker.asked.size(), 1u);
    EXPECT_TRUE(broker.asked.empty());
    outer_context->instance_enumerator_destroy(state);
}

TEST_F(Up_Call_Test, UserNamesComeFromThePrincipal) {
    const Runtime_Log log;
    String name = "nobody";
    CMPI_Thread_Context without(broker.get(), context);
    EXPECT_FALSE(without.get_username(name));
    EXPECT_TRUE(log.has("username not OK cmpirc=6"));
    fake::Context content;
    content.entries.set("CMPIPrincipal", fake::uint32(1));
    CMPI_Thread_Context odd(broker.get(), broker.context(content));
    EXPECT_FALSE(odd.get_username(name));
    EXPECT_TRUE(name.equal("nobody"));
    content.entries.set("CMPIPrincipal", fake::string("root"));
    CMPI_Thread_Context with(broker.get(), broker.context(content));
    EXPECT_TRUE(with.get_username(name));
    EXPECT_TRUE(name.equal("root"));
}

class Thread_Context_Test : public Up_Call_Test {
protected:
    // Runs a thread under a context; its body makes an up-call and returns what it found.
    struct Outcome {
        int created = -1;
        bool had_context = false;
        Ids found;
    };
    Outcome run() {
        const CMPI_Context_Scope scope(broker.get(), context);
        Thread_Context* own = Thread_Context::top();
        struct Job {
            const Part* model;
            Outcome outcome;
        } job{model.get(), {}};
        Thread thread;
        job.outcome.created = Thread::create_joinable(
            thread,
            [](void* arg) -> void* {
                Job& self = *static_cast<Job*>(arg);
                self.outcome.had_context = Thread_Context::top() != nullptr;
                Instance_Enumerator enumerator;
                if (cimom::enum_instances("root/up", self.model, enumerator) == 0) {
                    self.outcome.found = ids(enumerator);
                }
                return nullptr;
            },
            &job);
        if (job.outcome.created == 0) {
            void* ignored = nullptr;
            EXPECT_EQ(Thread::join(thread, ignored), 0);
        }
        EXPECT_EQ(Thread_Context::top(), own);
        return job.outcome;
    }
};

TEST_F(Thread_Context_Test, ThreadsAreAttachedAndCanCallUp) {
    const Outcome outcome = run();
    EXPECT_TRUE(outcome.had_context);
    EXPECT_EQ(outcome.found, (Ids{"a", "b", "c"}));
    EXPECT_EQ(broker.prepared, 1);
    EXPECT_EQ(broker.detached, 1);
}

TEST_F(Thread_Context_Test, AThreadThatNeverRanReleasesItsContext) {
    const std::size_t before = broker.live();
    set_thread_create(
        [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) { return EAGAIN; });
    EXPECT_EQ(run().created, EAGAIN);
    EXPECT_EQ(broker.prepared, 1);
    EXPECT_EQ(broker.detached, 0);
    EXPECT_EQ(broker.live(), before);
}

TEST_F(Thread_Context_Test, AThreadThatCantBeAttachedRunsAndReleasesItsContext) {
    broker.instances.clear();
    const std::size_t before = broker.live();
    broker.failing = {"attachThread", "newObjectPath"};
    EXPECT_TRUE(run().had_context);
    EXPECT_EQ(broker.detached, 0);
    EXPECT_EQ(broker.live(), before);
}

TEST_F(Thread_Context_Test, WithoutAPreparedContextTheThreadHasNone) {
    broker.failing = {"prepareAttachThread"};
    const Outcome outcome = run();
    EXPECT_EQ(outcome.created, 0);
    EXPECT_FALSE(outcome.had_context);
}

TEST_F(Thread_Context_Test, ContextsOutliveTheirAdapter) {
    CMPI_Static_Data block{};
    void* mi = nullptr;
    script = Script();
    cimple_cmpi_adapter(block, &fixture_registration, broker.get(), context, provider_name, 'I',
                        mi);
    std::unique_ptr<Thread_Context> of_thread;
    {
        const CMPI_Context_Scope scope(block.adapter.load()->broker(), context);
        of_thread.reset(Thread_Context::top()->thread_create_hook());
    }
    block.adapter.load()->cleanup(true);
    Thread_Context::push(of_thread.get());
    of_thread->thread_start_hook();
    Instance_Enumerator enumerator;
    EXPECT_EQ(cimom::enum_instances("root/up", model.get(), enumerator), 0);
    EXPECT_EQ(ids(enumerator), (Ids{"a", "b", "c"}));
    of_thread->thread_exit_hook();
    Thread_Context::pop();
}

} // namespace
} // namespace cimple
