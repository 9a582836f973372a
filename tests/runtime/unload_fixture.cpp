// A library that brings its own copy of the runtime, as the module does.
#include "runtime/clock.h"
#include "runtime/instance.h"
#include "runtime/log.h"
#include "runtime/thread.h"

// Uses what the runtime keeps for as long as it is loaded; the number of things that failed.
extern "C" __attribute__((visibility("default"))) int use_runtime() {
    using namespace cimple;
    TVR_RUNTIME_LOG(LL_ERR, "loaded");
    Thread_Context::pop(); // creates the key
    Thread thread;
    void* result = nullptr;
    const auto body = [](void* arg) { return arg; };
    int failed = Thread::create_joinable(thread, body, &thread) == 0 ? 0 : 1;
    failed += Thread::join(thread, result) == 0 && result == &thread ? 0 : 1;
    const Ref<Instance> instance(create(&Instance::static_meta_class, true));
    return failed + (instance ? 0 : 1);
}
