// Thin forms of POSIX threads, and the per-thread context that tells provider code which broker to
// use when no call has handed it one.
#ifndef TVR_RUNTIME_THREAD_H
#define TVR_RUNTIME_THREAD_H

#include "runtime/type.h"

#include <pthread.h>

namespace cimple {

class Instance_Enumerator_State;
struct Instance;
class String;

// A lock that fails on a live mutex is a coding error and ends the process.
class Mutex {
public:
    explicit Mutex(bool recursive = false);
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock();
    // As `lock`; while it waits the thread may be cancelled (runtime/cancellation.h).
    void lock_cancellably();
    bool try_lock();
    // False if the mutex could not be had within `usec` microseconds; a clock that is set back
    // makes them longer.
    bool try_lock_for(uint64 usec);
    void unlock();

private:
    friend class Cond;
    pthread_mutex_t _mutex;
};

// Waits are on a monotonic clock.
class Cond {
public:
    Cond();
    ~Cond();
    Cond(const Cond&) = delete;
    Cond& operator=(const Cond&) = delete;

    void wait(Mutex& mutex);
    // False if `usec` microseconds passed without a signal.
    bool wait(Mutex& mutex, uint64 usec);
    void signal();
    void broadcast();

private:
    pthread_cond_t _cond;
};

// Scoped lock of a `Mutex`.
class Lock {
public:
    explicit Lock(Mutex& mutex) : _mutex(mutex) { _mutex.lock(); }
    ~Lock() { _mutex.unlock(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    Mutex& _mutex;
};

// Broker and context of a thread. Contexts form a stack per thread: pushed at the entry of a call,
// popped at its end. A context isn't owned by the stack.
class Thread_Context {
public:
    virtual ~Thread_Context() = default;

    // Called in the creating thread: the context for a new one, which will own it; null if the
    // broker gives none.
    virtual Thread_Context* thread_create_hook() = 0;
    // Called in the new thread, first and last.
    virtual void thread_start_hook() = 0;
    virtual void thread_exit_hook() = 0;

    // An enumeration at the object manager (see `cimom::enum_instances`); null if it can't start.
    virtual Instance_Enumerator_State* instance_enumerator_create(const char* name_space,
                                                                  const Instance* model) = 0;
    virtual void instance_enumerator_destroy(Instance_Enumerator_State* state) = 0;
    virtual bool instance_enumerator_more(Instance_Enumerator_State* state) = 0;
    virtual void instance_enumerator_next(Instance_Enumerator_State* state) = 0;
    // The instance read last with a count for the caller, or null.
    virtual Instance* instance_enumerator_get(Instance_Enumerator_State* state) = 0;

    // Name of the user behind the call; false if it isn't known.
    virtual bool get_username(String& user_name) = 0;

    // Whose services the context gives, as an identity to compare: contexts of one broker answer
    // the same. Null if it depends on nobody.
    virtual const void* origin() const noexcept { return nullptr; }

    static Thread_Context* top() noexcept;
    static void push(Thread_Context* context) noexcept;
    static void pop() noexcept;

private:
    Thread_Context* _prev = nullptr;
};

// A joinable thread. It has a context of its own if its creator has one.
class Thread {
public:
    using Proc = void* (*)(void* arg);

    // The result of pthread_create: 0, or an error number; then nothing runs and `thread` is
    // unchanged.
    static int create_joinable(Thread& thread, Proc proc, void* arg);
    // The result of pthread_join; `result` gets what the body returned. EINVAL for a thread that
    // doesn't run or was joined.
    static int join(Thread& thread, void*& result);
    // Blocks the calling thread, by the clock of the runtime.
    static void sleep(uint64 usec);

private:
    pthread_t _thread{};
    bool _joinable = false;
};

// What creates threads; tests put a function in place that fails. Null puts pthread_create back.
using Thread_Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
void set_thread_create(Thread_Create create) noexcept;

} // namespace cimple

// The slot of the context stack, created once and exported for the module's loaders.
extern "C" {
__attribute__((visibility("default"))) extern pthread_key_t _thread_context_key;
__attribute__((visibility("default"))) extern pthread_once_t _thread_context_key_once;
}

#endif
