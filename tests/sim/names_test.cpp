#include "tests/sim/simulated_host.h"

#include <vector>

namespace {

constexpr HBA_WWN firstNode = {{0x20, 0, 2, 0x54, 0x56, 0, 0, 0}};
constexpr HBA_WWN newPort = {{0x10, 0, 2, 0x54, 0x56, 7, 7, 7}};
constexpr HBA_WWN newNode = {{0x20, 0, 2, 0x54, 0x56, 7, 7, 7}};

bool isSame(const HBA_WWN& a, const HBA_WWN& b) {
    return std::memcmp(a.wwn, b.wwn, sizeof a.wwn) == 0;
}

/// Each case starts from an adapter with one port whose names are managed, and another one.
class NamesTest : public SimulatedHost {
protected:
    void manage(const char* fields) {
        change(std::string(R"({"scenario": {"adapters": [{"name": "A", "staleness":
               "afterChanges", "ports": [{"wwnManagement": )") +
               fields + "}]}, {}]}}");
        m_handle = open("A");
        CALL(m_library, HBA_RefreshInformation)(m_handle);
    }

    /// A status times 100 and the state that came with it.
    uint32_t run(char call, uint32_t bank, const HBA_WWN& wwpn = newPort) {
        uint32_t state = 77;
        const RM_STATUS status =
            call == 'c'   ? CALL(m_library, LRM_ChangeWWN)(m_now, wwpn, newNode, bank, &state)
            : call == 'r' ? CALL(m_library, LRM_RestoreWWN)(m_now, bank, &state)
                          : CALL(m_library, LRM_ReadWWN)(m_now, bank, &m_wwpn, &m_wwnn, &state);
        EXPECT_EQ(status == RM_STATUS_OK, state != 77) << call << bank;
        return status * 100 + (state == 77 ? 0 : state);
    }

    HBA_HANDLE m_handle = 0;
    HBA_WWN m_now = firstPort; ///< the name that calls give
    HBA_WWN m_wwpn = {};
    HBA_WWN m_wwnn = {};
};

} // namespace

TEST_F(NamesTest, StatesOfBanksStepByStep) {
    struct Step {
        char call; ///< c change, r restore, 0 to 4 nothing but the reads; R, B, P start again
        uint32_t bank;
        uint32_t answer;
        const char* reads; ///< states of the banks 0, 3 and 4 afterwards; 0 for status 89
        bool isNew;        ///< whether the port has the new names
    };
    const struct {
        const char* fields;
        std::vector<Step> steps;
    } cases[] = {
        {"{}",
         {{'r', 0, 1, "949", false},
          {'c', 1, 8, "948", false},
          {'R', 0, 0, "949", true},
          {'r', 1, 1, "949", true},
          {'r', 0, 8, "948", true},
          {'R', 0, 0, "949", false},
          {'c', 0, 7, "747", false},
          {'r', 1, 1, "949", false},
          {'c', 0, 7, "747", false},
          {'R', 0, 0, "139", true},
          {'r', 1, 8, "138", true},
          {'P', 0, 0, "949", false},
          {'c', 2, 8900, "949", false},
          {'r', 2, 8900, "949", false}}},
        {R"({"activation": "reboot"})",
         {{'c', 0, 5, "545", false},
          {'R', 0, 0, "545", false},
          {'P', 0, 0, "949", false},
          {'c', 0, 5, "545", false},
          {'B', 0, 0, "139", true},
          {'c', 1, 6, "136", true},
          {'B', 0, 0, "949", true}}},
        {R"({"capability": "changeVolatile", "factoryDefault": {"portWWN": "1000025456070707",
             "nodeWWN": "2000025456070707"}})",
         {{'c', 1, 8900, "949", false},
          {'r', 0, 7, "747", false},
          {'R', 0, 0, "139", true},
          {'r', 0, 1, "139", true}}},
        {R"({"capability": "changeNonVolatile", "busyTimes": 2})",
         {{'c', 0, 8900, "049", false},
          {'c', 1, 9700, "049", false},
          {'r', 0, 9700, "049", false},
          {'c', 1, 8, "048", false}}},
        {R"({"capability": ["readOnly", "changeVolatile"]})", {{'c', 0, 9200, "949", false}}},
        {"null", {{'c', 0, 9200, nullptr, false}, {'r', 0, 9200, nullptr, false}}},
    };
    for (const auto& each : cases) {
        manage(each.fields);
        m_now = firstPort;
        int number = 0;
        for (const Step& step : each.steps) {
            const testing::Message where = testing::Message()
                                           << each.fields << " step " << number++;
            if (step.call == 'R') {
                EXPECT_EQ(CALL(m_library, LRM_ResetHBA)(m_now, 1), RM_STATUS_OK) << where;
            } else if (step.call == 'B' || step.call == 'P') {
                change(step.call == 'B' ? R"({"reboot": true})" : R"({"powerCycle": true})");
            } else {
                EXPECT_EQ(run(step.call, step.bank), step.answer) << where;
            }
            m_now = step.isNew ? newPort : firstPort;
            if (step.reads == nullptr) {
                EXPECT_EQ(run('0', RM_WWN_CURRENT), 9200U) << where;
                continue;
            }
            std::string states;
            for (const uint32_t bank : {RM_WWN_VOLATILE, RM_WWN_CONFIGURED, RM_WWN_CURRENT}) {
                const uint32_t answer = run('0', bank);
                states += answer == 8900 ? "0" : std::to_string(answer);
            }
            std::swap(states[1], states[2]);
            EXPECT_EQ(states, step.reads) << where;
            EXPECT_TRUE(isSame(m_wwpn, m_now)) << where;
            EXPECT_TRUE(isSame(m_wwnn, step.isNew ? newNode : firstNode)) << where;
        }
    }
}

TEST_F(NamesTest, NamesInEffectAreThePortsEverywhere) {
    manage("{}");
    HBA_ADAPTERATTRIBUTES adapter;
    HBA_PORTATTRIBUTES port;
    RM_LOCALHBAARGUMENT argument = {};
    RM_LOCALHBAINFO info;
    EXPECT_EQ(run('c', RM_WWN_NON_VOLATILE), 8U);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(m_handle, &adapter), HBA_STATUS_OK)
        << "nothing has changed before the reset";
    EXPECT_EQ(CALL(m_library, LRM_ResetHBA)(firstPort, 1), RM_STATUS_OK);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(m_handle, &adapter),
              HBA_STATUS_ERROR_STALE_DATA);
    CALL(m_library, HBA_RefreshInformation)(m_handle);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(m_handle, &adapter), HBA_STATUS_OK);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterPortAttributes)(m_handle, 0, &port), HBA_STATUS_OK);
    EXPECT_EQ(CALL(m_library, RM_GetLocalHBAInfo)(&argument, &info), RM_STATUS_OK);
    EXPECT_TRUE(isSame(adapter.NodeWWN, newNode) && isSame(port.NodeWWN, newNode));
    EXPECT_TRUE(isSame(port.PortWWN, newPort) && isSame(info.port, newPort));
    uint32_t word = 0;
    EXPECT_EQ(CALL(m_library, LRM_GetWWNCapability)(firstPort, &word), RM_STATUS_ILLEGAL_WWN);
    EXPECT_EQ(CALL(m_library, LRM_GetWWNCapability)(newPort, &word), RM_STATUS_OK);
    EXPECT_EQ(word, 0x200CU);

    m_now = newPort;
    EXPECT_EQ(run('c', RM_WWN_VOLATILE, HBA_WWN{}), 500U);
    EXPECT_EQ(CALL(m_library, LRM_ChangeWWN)(newPort, newPort, newNode, 0, nullptr), 1U);
    EXPECT_EQ(CALL(m_library, LRM_RestoreWWN)(newPort, 0, nullptr), 1U);
    EXPECT_EQ(CALL(m_library, LRM_ReadWWN)(newPort, 0, nullptr, nullptr, nullptr), 1U);
    EXPECT_EQ(CALL(m_library, LRM_GetWWNCapability)(newPort, nullptr), 1U);
    EXPECT_EQ(run('0', 5), 8900U);
}
