// Call counts of the entry points and the rules that disturb calls.
#pragma once

#include "sim/scenario.h"

#include <array>
#include <mutex>

namespace tvrsim {

/// What a call is about, for rules that are limited to one adapter or port. Either may be empty.
struct Subject {
    std::string adapter; ///< adapter name
    std::string port;    ///< WWPN in 16 upper-case digits
};

/// Counts and rules of all entry points. Threads may share one object.
class CallRules {
public:
    /// Counts a call, waits its latency without holding any lock, and answers the status that the
    /// call must end with at once, or nothing when it is to do its work. When several rules meet,
    /// the longest latency and the first status count.
    std::optional<uint32_t> enter(EntryPoint entryPoint, const Subject& subject);

    /// Puts rules in place of the present ones.
    void replace(Rules rules);

    Rules current() const;

    uint64_t calls(EntryPoint entryPoint) const;
    uint64_t allCalls() const;
    void resetCalls();

private:
    mutable std::mutex m_mutex;
    Rules m_rules;
    std::array<uint64_t, entryPointCount> m_calls = {};
};

} // namespace tvrsim
