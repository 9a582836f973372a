#include "runtime/thread.h"

#include "tests/runtime/plain_context.h"

#include <gtest/gtest.h>
#include <thread>

namespace cimple {
namespace {

TEST(Thread_Context, is_a_stack_of_its_thread) {
    EXPECT_EQ(Thread_Context::top(), nullptr);
    Thread_Context::pop();
    Plain_Context outer;
    Plain_Context inner;
    Thread_Context::push(&outer);
    Thread_Context::push(&inner);
    EXPECT_EQ(::pthread_getspecific(_thread_context_key), &inner);
    Thread_Context::pop();
    EXPECT_EQ(Thread_Context::top(), &outer);
    std::thread([] { EXPECT_EQ(Thread_Context::top(), nullptr); }).join();
    Thread_Context::pop();
    EXPECT_EQ(Thread_Context::top(), nullptr);
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
