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

using Ids = std::vector<std::string>;

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
        return {{"root/up", class_name, {}}, {{{"Id", fake::string(id)}}}};
    }
    int start(Instance_Enumerator& enumerator) {
        return cimom::enum_instances("root/up", model.get(), enumerator);
    }
    // What an enumeration gives to its end.
    static Ids rest(Instance_Enumerator& enumerator) {
        Ids found;
        for (; enumerator.more(); enumerator.next()) {
            const Ref<Instance> one = enumerator.get();
            EXPECT_EQ(class_of(one.get()), &Part::static_meta_class);
            found.emplace_back(static_cast<Part*>(one.get())->Id.value.c_str());
        }
        EXPECT_FALSE(enumerator.get());
        enumerator.next();
        return found;
    }

    fake::Broker broker;
    CMPIContext* context = broker.context();
    const Ref<Part> model = make<Part>();
};

TEST_F(Up_Call_Test, InstancesComeInTheModelsClass) {
    const Runtime_Log log;
    fake::Inst special = part_inst("Special_Part", "special");
    special.properties.set("Extra", fake::string("x"));
    broker.instances["Part"].push_back(fake::instance(special));

    Instance_Enumerator enumerator;
    EXPECT_EQ(start(enumerator), -1) << "no context";
    EXPECT_EQ(rest(enumerator), Ids());
    const CMPI_Context_Scope scope(broker.get(), context);
    ASSERT_EQ(start(enumerator), 0);
    EXPECT_TRUE(enumerator.get()->__name_space.equal("root/up"));
    EXPECT_EQ(rest(enumerator), (Ids{"a", "b", "c", "special"}));
    EXPECT_EQ(log.count("unknown feature: Part.Extra"), 1);
    ASSERT_EQ(broker.asked.size(), 1u);
    EXPECT_TRUE(broker.asked[0].keys.empty());

    ASSERT_EQ(cimom::enum_instances("root/up", part("b").get(), enumerator), 0);
    EXPECT_EQ(broker.asked[1].keys.find("Id")->text(), "b") << "keys of the model go along";
    enumerator.next();
    ASSERT_EQ(start(enumerator), 0) << "a new start ends the old";
    EXPECT_EQ(cimom::enum_instances("root/up", nullptr, enumerator), -1);
    EXPECT_FALSE(enumerator.more());
}

TEST_F(Up_Call_Test, FailuresLookLikeTheEnd) {
    const CMPI_Context_Scope scope(broker.get(), context);
    Instance_Enumerator enumerator;
    broker.fail_element = 2;
    ASSERT_EQ(start(enumerator), 0);
    EXPECT_EQ(rest(enumerator), (Ids{"a"}));
    broker.fail_element = 0;
    for (const fake::Datum& odd : {fake::reference({"root/up", "Part", {}}),
                                   fake::Datum{CMPI_instance, CMPI_goodValue, {}, {}}}) {
        broker.instances["Part"][1] = odd;
        ASSERT_EQ(start(enumerator), 0);
        EXPECT_EQ(rest(enumerator), (Ids{"a"}));
    }
    for (const char* call : {"newObjectPath", "enumerateInstances"}) {
        broker.failing = {call};
        EXPECT_EQ(start(enumerator), -1) << call;
        EXPECT_FALSE(enumerator.more());
    }
}

TEST_F(Up_Call_Test, UserNamesComeFromThePrincipal) {
    const Runtime_Log log;
    String name;
    const auto found = [&](fake::Context content) {
        CMPI_Thread_Context of(broker.get(), broker.context(std::move(content)));
        return of.get_username(name);
    };
    EXPECT_FALSE(found({}));
    EXPECT_TRUE(log.has("username not OK cmpirc=6"));
    EXPECT_FALSE(found({{{{"CMPIPrincipal", fake::uint32(1)}}}}));
    EXPECT_TRUE(found({{{{"CMPIPrincipal", fake::string("root")}}}}));
    EXPECT_TRUE(name.equal("root"));
}

class Thread_Context_Test : public Up_Call_Test {
protected:
    // Runs a thread under a context; its body makes an up-call and notes what it found.
    int run() {
        const CMPI_Context_Scope scope(broker.get(), context);
        const Thread_Context* own = Thread_Context::top();
        Thread thread;
        const int created = Thread::create_joinable(
            thread,
            [](void* arg) -> void* {
                auto& self = *static_cast<Thread_Context_Test*>(arg);
                self.had_context = Thread_Context::top() != nullptr;
                Instance_Enumerator enumerator;
                if (self.start(enumerator) == 0) {
                    self.found = rest(enumerator);
                }
                return nullptr;
            },
            this);
        void* ignored = nullptr;
        EXPECT_EQ(Thread::join(thread, ignored), created == 0 ? 0 : EINVAL);
        EXPECT_EQ(Thread_Context::top(), own);
        return created;
    }

    bool had_context = false;
    Ids found;
};

TEST_F(Thread_Context_Test, ThreadsAreAttachedAndCanCallUp) {
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(had_context);
    EXPECT_EQ(found, (Ids{"a", "b", "c"}));
    EXPECT_EQ(broker.prepared, 1);
    EXPECT_EQ(broker.detached, 1);
}

TEST_F(Thread_Context_Test, WhatFailsReleasesTheContext) {
    const std::size_t before = broker.live();
    set_thread_create(
        [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) { return EAGAIN; });
    EXPECT_EQ(run(), EAGAIN);
    EXPECT_EQ(broker.prepared, 1);
    set_thread_create(nullptr);
    broker.failing = {"attachThread", "newObjectPath"};
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(had_context);
    EXPECT_EQ(broker.detached, 0);
    EXPECT_EQ(broker.live(), before);

    broker.failing = {"prepareAttachThread"};
    EXPECT_EQ(run(), 0);
    EXPECT_FALSE(had_context);
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
    EXPECT_EQ(start(enumerator), 0);
    EXPECT_EQ(rest(enumerator), (Ids{"a", "b", "c"}));
    of_thread->thread_exit_hook();
    Thread_Context::pop();
}

} // namespace
} // namespace cimple
