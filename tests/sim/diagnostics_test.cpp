// Diagnostic tests as callers meet them.
#include "tests/sim/simulated_host.h"

class DiagnosticsTest : public SimulatedHost {
protected:
    /// The status of a start: echo, internal, external or host loopback, or self test.
    std::string start(char kind, uint32_t halts = 0) {
        constexpr HBA_WWN target = {{0x50, 0, 0, 0, 0, 0, 0, 1}};
        const char pattern[RM_DIAG_PATTERN_SIZE] = "";
        const auto echo = &CALL(m_library, LRM_DiagEchoTestV2);
        const auto wire = &CALL(m_library, LRM_DiagLoopBackTestV3);
        const auto host = &CALL(m_library, LRM_DiagPciLoopBackTestV2);
        return std::to_string(kind == 'S'   ? CALL(m_library, LRM_DiagRunPOST)(firstPort, &m_test)
                              : kind == 'E' ? echo(firstPort, target, 5, halts, &m_test, 0, pattern)
                              : kind == 'H'
                                  ? host(firstPort, 5, halts, &m_test, 0, pattern)
                                  : wire(firstPort, kind == 'I', 5, halts, &m_test, 0, pattern));
    }
    /// Status and state of answers until the end, or of so many; of the last the other numbers.
    std::string poll(int times = 99) {
        RM_DIAGRESULT record = {};
        std::string seen;
        for (bool runs = true; runs && times > 0; --times) {
            const auto status = CALL(m_library, LRM_DiagGetResults)(firstPort, m_test, &record);
            seen += ' ' + std::to_string(status) + '/' + std::to_string(record.state);
            runs = status == 60 || record.state == 1 || record.state == 2;
        }
        for (auto number : {record.resultCode, record.completedCycles, record.loopsFailed}) {
            seen += '-' + std::to_string(number);
        }
        return seen + ' ' + std::to_string(record.timeToExecute);
    }
    RM_STATUS cancel() { return CALL(m_library, LRM_DiagCancelDiagnostic)(firstPort, m_test); }
    uint32_t m_test = 0;
};

TEST_F(DiagnosticsTest, VerdictsComeOfThePortOrTheScenario) {
    const std::string plug = R"({"loopbackPlug": true})";
    const char* const chosen = R"({"diagnostics": {"selfTest": {"polls": 4, "finalState": 9,
        "statesWhileRunning": [2, "pending", 0], "statusWhileRunning": 60, "resultCode": 11,
        "completedCycles": 8, "loopsFailed": 7, "timeToExecute": 6}, "echo": null}})";
    for (const auto& [fields, kind, halts, expected] :
         {std::tuple("{}", 'E', 0, "0 0/1 0/6-0-5-0 1"),
          {"{}", 'I', 0, "0 0/1 0/6-0-5-0 1"},
          {"{}", 'H', 1, "0 0/1 0/6-0-5-0 1"},
          {"{}", 'S', 0, "0 0/1 0/6-0-1-0 1"},
          {"{}", 'X', 0, "0 0/1 0/6-6-5-5 1"},
          {plug.c_str(), 'X', 0, "0 0/1 0/6-0-5-0 1"},
          {plug.c_str(), 'E', 1, "0 0/1 0/6-10-1-1 1"},
          {R"({"state": "linkDown"})", 'E', 1, "0 0/1 0/6-2-1-1 1"},
          {R"({"state": "linkDown"})", 'X', 1, "0 0/1 0/6-2-1-1 1"},
          {R"({"state": "disabled"})", 'S', 0, "0 0/1 0/6-19-1-1 1"},
          {chosen, 'S', 0, "0 60/2 60/1 60/0 60/0 0/9-11-8-7 6"},
          {chosen, 'E', 0, "63 1/0-0-0-0 0"},
          {R"({"diagnostics": null})", 'S', 0, "63 63/0-0-0-0 0"}}) {
        change(R"({"scenario": {"adapters": [{"ports": [{"targets": [
            {"portWWN": "5000000000000001"}]}]}]}})");
        changePort(fields);
        const std::string status = start(kind, halts);
        EXPECT_EQ(status + poll(), expected) << fields << ' ' << kind;
        EXPECT_EQ(attribute(RM_PA_TOPOLOGY), fields == plug ? 20U : 5U);
        changePort(R"({"loopbackPlug": false})");
        EXPECT_EQ(attribute(RM_PA_TOPOLOGY), 5U);
    }
}

TEST_F(DiagnosticsTest, CancelResetAndIdentifiers) {
    change(R"({"scenario": {"adapters": [{"ports": [{"diagnostics": {"echo": {"hangs": true,
        "cancelPolls": 1}}}]}]}})");
    EXPECT_EQ(start('E'), "0");
    EXPECT_EQ(poll(3), " 0/1 0/2 0/2-0-3-0 3");
    const uint32_t running = m_test;
    EXPECT_EQ(start('S'), "62");
    EXPECT_EQ(cancel(), RM_STATUS_OK);
    EXPECT_EQ(poll(), " 0/2 0/5-0-4-0 4");
    EXPECT_EQ(start('E'), "0");
    EXPECT_EQ(CALL(m_library, LRM_ResetHBA)(firstPort, 1), RM_STATUS_OK);
    EXPECT_EQ(poll(), " 0/6-15-0-0 0");
    EXPECT_EQ(cancel(), RM_STATUS_ERROR) << "at its end";
    m_test = running;
    EXPECT_EQ(poll(), " 1/0-0-0-0 0");
}
