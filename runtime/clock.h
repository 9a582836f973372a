// The one clock of the system: "now", sleeps and time limits go through it, so that tests can drive
// time.
#ifndef TVR_RUNTIME_CLOCK_H
#define TVR_RUNTIME_CLOCK_H

#include "runtime/type.h"

namespace cimple {

// Threads: all operations may be called from any thread.
class Clock {
public:
    virtual ~Clock() = default;

    // Wall time in microseconds since the epoch and the host's offset from UTC in minutes. False if
    // the host can't tell.
    virtual bool now(uint64& usec, sint32& utc_offset) = 0;

    // Blocks the calling thread for so long.
    virtual void sleep(uint64 usec) = 0;

    // The clock in use: the host's, unless a test has put another in its place.
    static Clock& get() noexcept;

    // Puts `clock` in place for the whole process and returns what was there; null puts the host's
    // back. The caller keeps the object alive while it is in place.
    static Clock* set(Clock* clock) noexcept;
};

} // namespace cimple

#endif
