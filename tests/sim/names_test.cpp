#include "tests/sim/simulated_host.h"

#include <sstream>

namespace {

constexpr HBA_WWN firstNode = {{0x20, 0, 2, 0x54, 0x56, 0, 0, 0}};
constexpr HBA_WWN newPort = {{0x10, 0, 2, 0x54, 0x56, 7, 7, 7}};
constexpr HBA_WWN newNode = {{0x20, 0, 2, 0x54, 0x56, 7, 7, 7}};

bool isSame(const HBA_WWN& a, const HBA_WWN& b) {
    return std::memcmp(a.wwn, b.wwn, sizeof a.wwn) == 0;
}

class NamesTest : public SimulatedHost {
protected:
    void manage(const std::string& fields) {
        change(R"({"scenario": {"adapters": [{"name": "A", "staleness": "afterChanges",
                                              "ports": [{"wwnManagement": )" +
               fields + "}]}, {}]}}");
        m_now = firstPort;
    }

    /// The state that a call answers: c changes, r restores, others read; or its status, if any.
    uint32_t run(char call, uint32_t bank, const HBA_WWN& wwpn = newPort) {
        uint32_t state = 0;
        const RM_STATUS status =
            call == 'c'   ? CALL(m_library, LRM_ChangeWWN)(m_now, wwpn, newNode, bank, &state)
            : call == 'r' ? CALL(m_library, LRM_RestoreWWN)(m_now, bank, &state)
                          : CALL(m_library, LRM_ReadWWN)(m_now, bank, &m_wwpn, &m_wwnn, &state);
        return status == RM_STATUS_OK ? state : status;
    }

    HBA_WWN m_now = firstPort; ///< the name that calls give
    HBA_WWN m_wwpn = {};
    HBA_WWN m_wwnn = {};
};

} // namespace

TEST_F(NamesTest, StatesOfBanksStepByStep) {
    // Each step is a call with its bank, or R reset, B reboot, P power cycle; then what it answers,
    // what reads of banks 0, 4 and 3 answer behind it, and whether the port has the new names.
    const std::pair<const char*, const char*> cases[] = {
        {"{}", "r0 1 9 9 4 old  c1 8 9 8 4 old  R0 0 9 9 4 new  r1 1 9 9 4 new  r0 8 9 8 4 new "
               "R0 0 9 9 4 old  c0 7 7 7 4 old  c1 8 9 8 4 old  R0 0 9 9 4 new  r0 8 9 8 4 new "
               "R0 0 9 9 4 old  c0 7 7 7 4 old  r1 1 9 9 4 old  c0 7 7 7 4 old  R0 0 1 9 3 new "
               "r1 8 1 8 3 new  P0 0 9 9 4 old  c2 89 9 9 4 old r2 89 9 9 4 old"},
        {R"({"activation": "reboot"})",
         "c0 5 5 5 4 old  R0 0 5 5 4 old  P0 0 9 9 4 old  c0 5 5 5 4 old  B0 0 1 9 3 new "
         "c1 6 1 6 3 new  B0 0 9 9 4 new"},
        {R"({"capability": "changeVolatile", "factoryDefault": {"portWWN": "1000025456070707",
             "nodeWWN": "2000025456070707"}})",
         "c1 89 9 9 4 old r0 7 7 7 4 old  R0 0 1 9 3 new  r0 1 1 9 3 new"},
        {R"({"capability": "changeNonVolatile", "busyTimes": 2})",
         "c0 89 89 9 4 old c1 97 89 9 4 old r0 97 89 9 4 old c1 8 89 8 4 old"},
        {R"({"capability": ["readOnly", "changeVolatile"]})", "c0 92 9 9 4 old r1 92 9 9 4 old"},
        {"null", "c0 92 92 92 92 none r0 92 92 92 92 none"},
    };
    for (const auto& [fields, text] : cases) {
        manage(fields);
        std::istringstream steps(text);
        char call = 0;
        uint32_t bank = 0;
        uint32_t answer = 0;
        uint32_t states[3];
        std::string names;
        for (int n = 0;
             steps >> call >> bank >> answer >> states[0] >> states[1] >> states[2] >> names; ++n) {
            const testing::ScopedTrace trace(__FILE__, __LINE__,
                                             fields + (" step " + std::to_string(n)));
            if (call == 'R') {
                EXPECT_EQ(CALL(m_library, LRM_ResetHBA)(m_now, 1), RM_STATUS_OK);
            } else if (call == 'B' || call == 'P') {
                change(call == 'B' ? R"({"reboot": true})" : R"({"powerCycle": true})");
            } else {
                EXPECT_EQ(run(call, bank), answer);
            }
            m_now = names == "new" ? newPort : firstPort;
            EXPECT_EQ(run('?', RM_WWN_VOLATILE), states[0]);
            EXPECT_EQ(run('?', RM_WWN_CONFIGURED), states[1]);
            EXPECT_EQ(run('?', RM_WWN_CURRENT), states[2]);
            EXPECT_TRUE(names == "none" || isSame(m_wwpn, m_now));
            EXPECT_TRUE(names == "none" || isSame(m_wwnn, names == "new" ? newNode : firstNode));
        }
    }
}

TEST_F(NamesTest, NamesInEffectAreThePortsEverywhere) {
    manage("{}");
    HBA_ADAPTERATTRIBUTES adapter;
    HBA_PORTATTRIBUTES port;
    RM_LOCALHBAARGUMENT argument = {};
    RM_LOCALHBAINFO info;
    const HBA_HANDLE handle = open("A");
    auto& read = CALL(m_library, HBA_GetAdapterAttributes);
    CALL(m_library, HBA_RefreshInformation)(handle);
    EXPECT_EQ(run('c', RM_WWN_NON_VOLATILE), 8U);
    EXPECT_EQ(read(handle, &adapter), HBA_STATUS_OK) << "nothing has changed yet";
    EXPECT_EQ(CALL(m_library, LRM_ResetHBA)(firstPort, 1), RM_STATUS_OK);
    EXPECT_EQ(read(handle, &adapter), HBA_STATUS_ERROR_STALE_DATA);
    CALL(m_library, HBA_RefreshInformation)(handle);
    EXPECT_EQ(read(handle, &adapter), HBA_STATUS_OK);
    EXPECT_EQ(CALL(m_library, HBA_GetAdapterPortAttributes)(handle, 0, &port), HBA_STATUS_OK);
    EXPECT_EQ(CALL(m_library, RM_GetLocalHBAInfo)(&argument, &info), RM_STATUS_OK);
    EXPECT_TRUE(isSame(adapter.NodeWWN, newNode) && isSame(port.NodeWWN, newNode));
    EXPECT_TRUE(isSame(port.PortWWN, newPort) && isSame(info.port, newPort));
    uint32_t word = 0;
    EXPECT_EQ(CALL(m_library, LRM_GetWWNCapability)(firstPort, &word), RM_STATUS_ILLEGAL_WWN);
    EXPECT_EQ(CALL(m_library, LRM_GetWWNCapability)(newPort, &word), RM_STATUS_OK);
    EXPECT_EQ(word, 0x200CU);
    m_now = newPort;
    EXPECT_EQ(run('c', RM_WWN_VOLATILE, HBA_WWN{}), RM_STATUS_ILLEGAL_WWN);
    EXPECT_EQ(CALL(m_library, LRM_ReadWWN)(newPort, 0, nullptr, nullptr, nullptr), 1U);
}
