// Up-calls: instances of other providers, through the object manager that called this one.
#ifndef TVR_RUNTIME_CIMOM_H
#define TVR_RUNTIME_CIMOM_H

#include "runtime/instance.h"
#include "runtime/thread.h"

namespace cimple {

// A running enumeration at the object manager; the destructor ends it. Used on the thread that
// started it. A failure while reading looks like the end of the data.
class Instance_Enumerator {
public:
    Instance_Enumerator() noexcept = default;
    Instance_Enumerator(const Instance_Enumerator&) = delete;
    Instance_Enumerator& operator=(const Instance_Enumerator&) = delete;
    ~Instance_Enumerator();

    // True if there is a current instance.
    bool more() const;
    void next();
    // The current instance, counted; empty if there is none.
    Ref<Instance> get() const;

private:
    friend class cimom;
    Instance_Enumerator_State* _state = nullptr;
};

class cimom {
public:
    // Starts an enumeration of the class of `model`, and of the model's keys, in `name_space`. What
    // `enumerator` was at before is ended first. 0, or -1 without a thread context (the enumerator
    // stays as it was) or when it can't start. Results are of the model's class.
    static int enum_instances(const char* name_space, const Instance* model,
                              Instance_Enumerator& enumerator);
};

} // namespace cimple

#endif
