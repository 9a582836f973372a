#include "runtime/thread.h"

#include "runtime/instance.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace cimple {
namespace {

using testing::ElementsAre;

// A context that notes what happens to it.
class Test_Context : public Thread_Context {
public:
    ~Test_Context() override { events.emplace_back("delete"); }

    Thread_Context* thread_create_hook() override {
        events.emplace_back("create");
        if (memory_is_lacking) {
            throw std::bad_alloc();
        }
        return new Test_Context;
    }
    void thread_start_hook() override { events.emplace_back(top() == this ? "on top" : "start"); }
    void thread_exit_hook() override { events.emplace_back("exit"); }

    Instance_Enumerator_State* instance_enumerator_create(const char*, const Instance*) override {
        return nullptr;
    }
    void instance_enumerator_destroy(Instance_Enumerator_State*) override {}
    bool instance_enumerator_more(Instance_Enumerator_State*) override { return false; }
    void instance_enumerator_next(Instance_Enumerator_State*) override {}
    Instance* instance_enumerator_get(Instance_Enumerator_State*) override { return nullptr; }
    bool get_username(String&) override { return false; }

    bool memory_is_lacking = false;
    static inline std::vector<std::string> events;
};

void* look(void* arg) {
    Test_Context::events.emplace_back("run");
    *static_cast<Thread_Context**>(arg) = Thread_Context::top();
    return arg;
}

TEST(Thread_Context, is_a_stack_of_its_thread) {
    EXPECT_EQ(Thread_Context::top(), nullptr);
    Thread_Context::pop();
    Test_Context outer;
    Test_Context inner;
    Thread_Context::push(&outer);
    Thread_Context::push(&inner);
    EXPECT_EQ(Thread_Context::top(), &inner);
    EXPECT_EQ(::pthread_getspecific(_thread_context_key), &inner);
    Thread_Context::pop();
    EXPECT_EQ(Thread_Context::top(), &outer);
    std::thread([] { EXPECT_EQ(Thread_Context::top(), nullptr); }).join();
    Thread_Context::pop();
    EXPECT_EQ(Thread_Context::top(), nullptr);
}

TEST(Thread, runs_under_a_context_of_its_own) {
    Test_Context context;
    Test_Context::events.clear();
    Thread_Context::push(&context);
    Thread_Context* seen = &context;
    Thread thread;
    void* result = nullptr;
    ASSERT_EQ(Thread::create_joinable(thread, look, &seen), 0);
    EXPECT_EQ(Thread::join(thread, result), 0);
    EXPECT_EQ(result, &seen);
    EXPECT_TRUE(seen != nullptr && seen != &context);
    EXPECT_EQ(Thread_Context::top(), &context);
    EXPECT_THAT(Test_Context::events, ElementsAre("create", "on top", "run", "exit", "delete"));
    EXPECT_EQ(Thread::join(thread, result), EINVAL) << "joined already";
    Thread_Context::pop();
}

TEST(Thread, a_failed_start_leaves_the_callers_context_on_top) {
    Test_Context context;
    Test_Context::events.clear();
    Thread_Context::push(&context);
    Thread_Context* seen = nullptr;
    Thread thread;
    set_thread_create(
        [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) { return EAGAIN; });
    EXPECT_EQ(Thread::create_joinable(thread, look, &seen), EAGAIN);
    set_thread_create(nullptr);
    EXPECT_EQ(Thread_Context::top(), &context);
    context.memory_is_lacking = true;
    EXPECT_EQ(Thread::create_joinable(thread, look, &seen), ENOMEM);
    EXPECT_EQ(Thread_Context::top(), &context);
    EXPECT_THAT(Test_Context::events, ElementsAre("create", "delete", "create"));
    void* result = &seen;
    EXPECT_EQ(Thread::join(thread, result), EINVAL);
    EXPECT_EQ(result, nullptr);
    Thread_Context::pop();
}

TEST(Thread, an_unbalanced_stack_ends_the_process) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            Test_Context context;
            Thread_Context::push(&context);
            Thread thread;
            void* result = nullptr;
            const auto body = [](void*) -> void* {
                Thread_Context::pop();
                return nullptr;
            };
            Thread::create_joinable(thread, body, nullptr);
            Thread::join(thread, result);
        },
        "context == Thread_Context::top\\(\\)");
}

TEST(Cond, wait_ends_with_a_signal_or_in_time) {
    struct Shared {
        Mutex mutex;
        Cond asked;
        Cond answered;
        int stage = 0;
    } shared;
    const auto body = [](void* arg) -> void* {
        Shared& s = *static_cast<Shared*>(arg);
        const Lock lock(s.mutex);
        while (s.stage != 1) {
            s.asked.wait(s.mutex);
        }
        s.stage = 2;
        s.answered.broadcast();
        return nullptr;
    };
    Thread thread;
    ASSERT_EQ(Thread::create_joinable(thread, body, &shared), 0);
    {
        const Lock lock(shared.mutex);
        EXPECT_FALSE(shared.answered.wait(shared.mutex, 1000)) << "nobody answers yet";
        EXPECT_FALSE(shared.answered.wait(shared.mutex, 0));
        shared.stage = 1;
        shared.asked.signal();
        while (shared.stage != 2) {
            EXPECT_TRUE(shared.answered.wait(shared.mutex, UINT64_MAX)) << "as good as no limit";
        }
    }
    void* result = nullptr;
    EXPECT_EQ(Thread::join(thread, result), 0);
}

} // namespace
} // namespace cimple
