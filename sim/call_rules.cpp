#include "sim/call_rules.h"

#include <algorithm>
#include <numeric>
#include <thread>

namespace tvrsim {

namespace {

/// The status that one rule forces on the call that it just met.
std::optional<uint32_t> verdict(const Rule& rule) {
    if (rule.failCall != 0 && rule.seen >= rule.failCall &&
        rule.seen - rule.failCall < rule.failTimes) {
        return rule.failStatus;
    }
    return rule.status;
}

} // namespace

std::optional<uint32_t> CallRules::enter(EntryPoint entryPoint, const Subject& subject) {
    std::chrono::microseconds latency{0};
    std::optional<uint32_t> forced;
    {
        const std::lock_guard lock(m_mutex);
        ++m_calls[static_cast<size_t>(entryPoint)];
        for (const EntryPoint each : {entryPoint, EntryPoint::count}) {
            const auto rules = m_rules.find(each);
            if (rules == m_rules.end()) {
                continue;
            }
            for (Rule& rule : rules->second) {
                if (!rule.where.empty() && rule.where != subject.adapter &&
                    rule.where != subject.port) {
                    continue;
                }
                ++rule.seen;
                latency = std::max(latency, rule.latency);
                if (!forced) {
                    forced = verdict(rule);
                }
            }
        }
    }
    if (latency.count() > 0) {
        std::this_thread::sleep_for(latency);
    }
    return forced;
}

void CallRules::replace(Rules rules) {
    const std::lock_guard lock(m_mutex);
    m_rules = std::move(rules);
}

Rules CallRules::current() const {
    const std::lock_guard lock(m_mutex);
    return m_rules;
}

uint64_t CallRules::calls(EntryPoint entryPoint) const {
    const std::lock_guard lock(m_mutex);
    return m_calls.at(static_cast<size_t>(entryPoint));
}

uint64_t CallRules::allCalls() const {
    const std::lock_guard lock(m_mutex);
    return std::accumulate(m_calls.begin(), m_calls.end(), uint64_t{0});
}

void CallRules::resetCalls() {
    const std::lock_guard lock(m_mutex);
    m_calls.fill(0);
}

} // namespace tvrsim
