#include "runtime/thread.h"

#include "tests/runtime/plain_context.h"

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
class Test_Context : public Plain_Context {
public:
    ~Test_Context() override { events.emplace_back("delete"); }

    Thread_Context* thread_create_hook() override {
        events.emplace_back("create");
        if (memory_is_lacking) {
            throw std::bad_alloc();
        }
        return new Test_Context;
    }

    bool memory_is_lacking = false;
    static inline std::vector<std::string> events;
};

TEST(Thread_Context, is_a_stack_of_its_thread) {
    EXPECT_EQ(Thread_Context::top(), nullptr);
    Thread_Context::pop();
    Test_Context outer;
    Test_Context inner;
    Thread_Context::push(&outer);
    Thread_Context::push(&inner);
    EXPECT_EQ(::pthread_getspecific(_thread_context_key), &inner);
    Thread_Context::pop();
    EXPECT_EQ(Thread_Context::top(), &outer);
    std::thread([] { EXPECT_EQ(Thread_Context::top(), nullptr); }).join();
    Thread_Context::pop();
    EXPECT_EQ(Thread_Context::top(), nullptr);
}

TEST(Thread, a_failed_start_leaves_the_callers_context_on_top) {
    Test_Context context;
    Test_Context::events.clear();
    Thread_Context::push(&context);
    const auto body = [](void* arg) { return arg; };
    Thread thread;
    set_thread_create(
        [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) { return EAGAIN; });
    EXPECT_EQ(Thread::create_joinable(thread, body, nullptr), EAGAIN);
    set_thread_create(nullptr);
    EXPECT_EQ(Thread_Context::top(), &context);
    context.memory_is_lacking = true;
    EXPECT_EQ(Thread::create_joinable(thread, body, nullptr), ENOMEM);
    EXPECT_EQ(Thread_Context::top(), &context);
    EXPECT_THAT(Test_Context::events, ElementsAre("create", "delete", "create"));
    void* result = &context;
    EXPECT_EQ(Thread::join(thread, result), EINVAL);
    EXPECT_EQ(result, nullptr);
    Thread_Context::pop();
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
