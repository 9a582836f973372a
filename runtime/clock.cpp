#include "runtime/clock.h"

#include "runtime/undestroyed.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <sys/time.h>

namespace cimple {

namespace {

class Host_Clock final : public Clock {
public:
    constexpr Host_Clock() noexcept = default;

    bool now(uint64& usec, sint32& utc_offset) override {
        struct timeval time {};
        struct timezone zone {};
        if (::gettimeofday(&time, &zone) != 0) {
            return false;
        }
        usec = static_cast<uint64>(time.tv_sec) * 1'000'000 + static_cast<uint64>(time.tv_usec);
        utc_offset = -zone.tz_minuteswest;
        return true;
    }

    void sleep(uint64 usec) override {
        struct timespec rest {};
        rest.tv_sec = static_cast<time_t>(usec / 1'000'000);
        rest.tv_nsec = static_cast<long>(usec % 1'000'000) * 1000;
        while (::nanosleep(&rest, &rest) != 0 && errno == EINTR) {
        }
    }
};

// Destructors of other static objects may still ask for the time.
constinit Undestroyed<Host_Clock> host;
constinit std::atomic<Clock*> current{&host.object};

} // namespace

Clock& Clock::get() noexcept {
    return *current.load(std::memory_order_acquire);
}

Clock* Clock::set(Clock* clock) noexcept {
    return current.exchange(clock != nullptr ? clock : &host.object, std::memory_order_acq_rel);
}

} // namespace cimple
