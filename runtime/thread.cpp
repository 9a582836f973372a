#include "runtime/thread.h"

#include "runtime/cancellation.h"
#include "runtime/clock.h"
#include "runtime/log.h"
#include "runtime/until_closed.h"

// The checks of this file hold in every build.
#undef NDEBUG
#include <cassert>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <limits>
#include <memory>
#include <new>

pthread_key_t _thread_context_key;
pthread_once_t _thread_context_key_once = PTHREAD_ONCE_INIT;

namespace cimple {

namespace {

#define TVR_CHECK(condition, text)                                                                 \
    ((condition) ? static_cast<void>(0)                                                            \
                 : __assert_fail(text, base_name(__FILE__), __LINE__, __func__))

constinit std::atomic<bool> key_created{false};

// Serves when the process has no key left.
thread_local Thread_Context* keyless_top = nullptr;

extern "C" void create_key() {
    key_created = ::pthread_key_create(&_thread_context_key, nullptr) == 0;
}

bool have_key() noexcept {
    ::pthread_once(&_thread_context_key_once, create_key);
    return key_created.load(std::memory_order_relaxed);
}

// Gives the key back when the module is closed.
struct Key_End {
    ~Key_End() {
        if (key_created.exchange(false)) {
            ::pthread_key_delete(_thread_context_key);
        }
    }
};
Until_Closed<Key_End> key_end;

void set_top(Thread_Context* context) noexcept {
    if (have_key()) {
        ::pthread_setspecific(_thread_context_key, context);
    } else {
        keyless_top = context;
    }
}

constinit std::atomic<Thread_Create> thread_create{&::pthread_create};

// How long a wait for a mutex lasts before it looks for a cancellation, in microseconds.
constexpr uint64 cancellation_pause = 50'000;

// The time that lies `usec` microseconds ahead. Beyond some decades it is as good as none and would
// run over the end of the time.
timespec deadline(clockid_t clock, uint64 usec) noexcept {
    usec = std::min(usec, uint64{std::numeric_limits<sint32>::max()} * 1'000'000);
    timespec time{};
    ::clock_gettime(clock, &time);
    time.tv_sec += static_cast<time_t>(usec / 1'000'000);
    time.tv_nsec += static_cast<long>(usec % 1'000'000) * 1000;
    if (time.tv_nsec >= 1'000'000'000) {
        time.tv_nsec -= 1'000'000'000;
        ++time.tv_sec;
    }
    return time;
}

struct Start_Record {
    Thread::Proc proc;
    void* arg;
    std::unique_ptr<Thread_Context> context;
};

extern "C" void* thread_proc(void* arg) {
    std::unique_ptr<Start_Record> record(static_cast<Start_Record*>(arg));
    const Thread::Proc proc = record->proc;
    void* const proc_arg = record->arg;
    const std::unique_ptr<Thread_Context> context = std::move(record->context);
    record.reset();

    void* result = nullptr;
    if (context) {
        Thread_Context::push(context.get());
        context->thread_start_hook();
        result = proc(proc_arg);
        context->thread_exit_hook();
    } else {
        result = proc(proc_arg);
    }
    TVR_CHECK(context.get() == Thread_Context::top(), "context == Thread_Context::top()");
    if (context) {
        Thread_Context::pop();
    }
    return result;
}

} // namespace

Mutex::Mutex(bool recursive) : _mutex{} {
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    if (recursive) {
        ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    }
    ::pthread_mutex_init(&_mutex, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
}

Mutex::~Mutex() {
    ::pthread_mutex_destroy(&_mutex);
}

void Mutex::lock() {
    TVR_CHECK(::pthread_mutex_lock(&_mutex) == 0,
              "pthread_mutex_lock(&((MutexRep*)_rep)->mutex) == 0");
}

void Mutex::lock_cancellably() {
    while (!try_lock_for(cancellation_pause)) {
        const Cancel_Here here;
        ::pthread_testcancel();
    }
}

bool Mutex::try_lock() {
    return ::pthread_mutex_trylock(&_mutex) == 0;
}

bool Mutex::try_lock_for(uint64 usec) {
    if (try_lock()) {
        return true;
    }
    const timespec until = deadline(CLOCK_REALTIME, usec);
    const int error = ::pthread_mutex_timedlock(&_mutex, &until);
    TVR_CHECK(error == 0 || error == ETIMEDOUT, "pthread_mutex_timedlock(&_mutex, &until) == 0");
    return error == 0;
}

void Mutex::unlock() {
    ::pthread_mutex_unlock(&_mutex);
}

Cond::Cond() : _cond{} {
    pthread_condattr_t attributes;
    ::pthread_condattr_init(&attributes);
    ::pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    ::pthread_cond_init(&_cond, &attributes);
    ::pthread_condattr_destroy(&attributes);
}

Cond::~Cond() {
    ::pthread_cond_destroy(&_cond);
}

void Cond::wait(Mutex& mutex) {
    ::pthread_cond_wait(&_cond, &mutex._mutex);
}

bool Cond::wait(Mutex& mutex, uint64 usec) {
    const timespec until = deadline(CLOCK_MONOTONIC, usec);
    return ::pthread_cond_timedwait(&_cond, &mutex._mutex, &until) != ETIMEDOUT;
}

void Cond::signal() {
    ::pthread_cond_signal(&_cond);
}

void Cond::broadcast() {
    ::pthread_cond_broadcast(&_cond);
}

Thread_Context* Thread_Context::top() noexcept {
    return have_key() ? static_cast<Thread_Context*>(::pthread_getspecific(_thread_context_key))
                      : keyless_top;
}

void Thread_Context::push(Thread_Context* context) noexcept {
    context->_prev = top();
    set_top(context);
}

void Thread_Context::pop() noexcept {
    if (Thread_Context* context = top()) {
        set_top(context->_prev);
        context->_prev = nullptr;
    }
}

int Thread::create_joinable(Thread& thread, Proc proc, void* arg) {
    std::unique_ptr<Start_Record> record(new (std::nothrow) Start_Record{proc, arg, nullptr});
    if (!record) {
        return ENOMEM;
    }
    if (Thread_Context* context = Thread_Context::top()) {
        try {
            record->context.reset(context->thread_create_hook());
        } catch (const std::bad_alloc&) {
            return ENOMEM;
        }
    }

    pthread_attr_t attributes;
    int result = ::pthread_attr_init(&attributes);
    if (result != 0) {
        return result;
    }
    ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_JOINABLE);
    pthread_t created{};
    result = thread_create.load()(&created, &attributes, thread_proc, record.get());
    ::pthread_attr_destroy(&attributes);
    if (result != 0) {
        return result;
    }
    static_cast<void>(record.release()); // the new thread frees it
    thread._thread = created;
    thread._joinable = true;
    return 0;
}

int Thread::join(Thread& thread, void*& result) {
    result = nullptr;
    if (!thread._joinable) {
        return EINVAL;
    }
    const int error = ::pthread_join(thread._thread, &result);
    if (error == 0) {
        thread._joinable = false;
    }
    return error;
}

void Thread::sleep(uint64 usec) {
    Clock::get().sleep(usec);
}

void set_thread_create(Thread_Create create) noexcept {
    thread_create = create != nullptr ? create : &::pthread_create;
}

} // namespace cimple
