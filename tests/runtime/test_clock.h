// A clock that tests drive: time stands still until a sleeper or the test moves it.
#ifndef TVR_TESTS_RUNTIME_TEST_CLOCK_H
#define TVR_TESTS_RUNTIME_TEST_CLOCK_H

#include "runtime/clock.h"

#include <atomic>

namespace cimple {

class Test_Clock final : public Clock {
public:
    explicit Test_Clock(uint64 usec, sint32 utc_offset = 0)
        : time(usec), offset(utc_offset), _previous(Clock::set(this)) {}
    Test_Clock(const Test_Clock&) = delete;
    Test_Clock& operator=(const Test_Clock&) = delete;
    ~Test_Clock() override { Clock::set(_previous); }

    bool now(uint64& usec, sint32& utc_offset) override {
        usec = time;
        utc_offset = offset;
        return works;
    }
    void sleep(uint64 usec) override { time += usec; }

    std::atomic<uint64> time;
    std::atomic<sint32> offset;
    std::atomic<bool> works{true};

private:
    Clock* _previous;
};

} // namespace cimple

#endif
