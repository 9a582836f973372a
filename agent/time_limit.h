// How often the adapters' driver is asked.
#ifndef TVR_AGENT_TIME_LIMIT_H
#define TVR_AGENT_TIME_LIMIT_H

#include "common/logger.h"
#include "runtime/datetime.h"

namespace cimple {

// Lets an operation run when its last run was at least 5 seconds ago. An object of static duration
// keeps the limit over the end of an agent. Used under m_ProviderDataMutex.
class Time_Limit {
public:
    // True if the operation runs, which counts as its last run from now on. After a clock that was
    // set back it runs at once.
    bool lets_run() {
        TVR_LOG("Checking driver TimeOut...");
        const uint64 now = Datetime::now().get_usec();
        if (now >= _last_run && now - _last_run < limit) {
            TVR_LOG("PERF: Refresh Not yet required");
            return false;
        }
        TVR_LOG("PERF: update driver map");
        _last_run = now;
        return true;
    }

    // Lets the next run come at once: the last one did nothing.
    void take_back() noexcept { _last_run = 0; }

private:
    static constexpr uint64 limit = 5'000'000;

    uint64 _last_run = 0; // microseconds since the epoch
};

} // namespace cimple

#endif
