// When a thread that comes into the module may be cancelled (`pthread_cancel`).
//
// A request holds locks and library handles, and calls functions that end in nothing but a return.
// So whoever comes in from outside is not cancelled for the duration, but where it does no more
// than wait. A cancelled wait unwinds the whole request: what lies between it and the entry keeps
// nothing that a destructor doesn't give back, is not noexcept, and calls pass_cancellation() where
// it catches whatever comes.
#ifndef TVR_RUNTIME_CANCELLATION_H
#define TVR_RUNTIME_CANCELLATION_H

#include <exception>

namespace cimple {

// In a handler for all exceptions: goes on with the unwinding if it is that of a cancelled thread,
// which is no exception of the language.
inline void pass_cancellation() {
    if (std::current_exception() == nullptr) {
        throw;
    }
}

// A scope in which the calling thread isn't cancelled; a cancellation that comes waits for its end.
// Scopes nest.
class Cancel_Later {
public:
    Cancel_Later() noexcept;
    ~Cancel_Later();
    Cancel_Later(const Cancel_Later&) = delete;
    Cancel_Later& operator=(const Cancel_Later&) = delete;

private:
    friend class Cancel_Here;
    const Cancel_Later* _outer;
    int _before = 0;
};

// A scope within the innermost Cancel_Later in which the thread may be cancelled all the same, if
// it could be before that one. Without one nothing changes.
class Cancel_Here {
public:
    Cancel_Here() noexcept;
    ~Cancel_Here();
    Cancel_Here(const Cancel_Here&) = delete;
    Cancel_Here& operator=(const Cancel_Here&) = delete;

private:
    bool _changed;
    int _before = 0;
};

} // namespace cimple

#endif
