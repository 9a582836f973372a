#include "sim/call_rules.h"

#include <gtest/gtest.h>

#include <thread>

using namespace tvrsim;

namespace {

constexpr EntryPoint statistics = EntryPoint::LRM_GetPortStatistics;
constexpr EntryPoint inquiry = EntryPoint::HBA_SendScsiInquiry;

void apply(CallRules& rules, std::string_view text) {
    Rules fresh = rules.current();
    readRules(parseJson(text), "", fresh);
    rules.replace(std::move(fresh));
}

/// The statuses of calls in a row, -1 where the call goes to work.
std::vector<int64_t> statuses(CallRules& rules, EntryPoint entryPoint, size_t calls,
                              const Subject& subject = {}) {
    std::vector<int64_t> result;
    for (size_t i = 0; i < calls; ++i) {
        const auto status = rules.enter(entryPoint, subject);
        result.push_back(status ? int64_t{*status} : -1);
    }
    return result;
}

using Statuses = std::vector<int64_t>;

} // namespace

TEST(CallRules, NthCallFails) {
    CallRules rules;
    apply(rules, R"({"LRM_GetPortStatistics": {"failCall": 3, "failTimes": 2, "failStatus": 8}})");
    EXPECT_EQ(statuses(rules, inquiry, 3), (Statuses{-1, -1, -1}));
    EXPECT_EQ(statuses(rules, statistics, 6), (Statuses{-1, -1, 8, 8, -1, -1}));
    EXPECT_EQ(rules.calls(statistics), 6U);
    EXPECT_EQ(rules.calls(EntryPoint::RM_GetPortStatistics), 0U);
    EXPECT_EQ(rules.allCalls(), 9U);
    rules.resetCalls();
    EXPECT_EQ(rules.allCalls(), 0U);

    // A call counts from the rule on.
    apply(rules, R"({"LRM_GetPortStatistics": null, "*": {"failCall": 2, "failStatus": 12}})");
    EXPECT_EQ(statuses(rules, inquiry, 1), (Statuses{-1}));
    EXPECT_EQ(statuses(rules, statistics, 2), (Statuses{12, -1}));
}

TEST(CallRules, WhereLimitsARule) {
    CallRules rules;
    apply(rules, R"({"LRM_GetPortStatistics": [{"where": "1000025456000001", "status": 5},
                                               {"where": "Tavrin-B", "status": 0}]})");
    EXPECT_EQ(statuses(rules, statistics, 1, {"Tavrin-A", "1000025456000000"}), (Statuses{-1}));
    EXPECT_EQ(statuses(rules, statistics, 1, {"Tavrin-A", "1000025456000001"}), (Statuses{5}));
    EXPECT_EQ(statuses(rules, statistics, 1, {"Tavrin-B", "1000025456000002"}), (Statuses{0}));
}

TEST(CallRules, LatencyHoldsNoLock) {
    constexpr int threads = 20;
    constexpr auto latency = std::chrono::milliseconds(40);
    CallRules rules;
    apply(rules, R"({"LRM_GetPortStatistics": {"latencyMs": 40}})");
    const auto start = std::chrono::steady_clock::now();
    {
        std::vector<std::jthread> callers;
        callers.reserve(threads);
        for (int i = 0; i < threads; ++i) {
            callers.emplace_back([&rules] { rules.enter(statistics, {}); });
        }
    }
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, latency);
    EXPECT_LT(elapsed, latency * threads / 2);
    EXPECT_EQ(rules.calls(statistics), uint64_t{threads});
}
