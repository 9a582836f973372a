// World wide names and virtual ports as the RM library is asked for them.
#include "access/method_wrapper.h"
#include "tests/access/fake_fixture.h"
#include "tests/runtime/test_clock.h"

#include <gmock/gmock.h>

#include <cstring>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using W = TVR_MethodWrapper;

constexpr HBA_WWN port_a{{0x10, 0, 0, 0, 0, 0, 0, 0x0A}};
constexpr HBA_WWN port_b{{0x10, 0, 0, 0, 0, 0, 0, 0x0B}};
constexpr HBA_WWN node{{0x20, 0, 0, 0, 0, 0, 0, 0xCD}};
constexpr HBA_WWN foreign{{0x10, 0, 0, 0, 0, 0, 0, 0x0F}};
constexpr HBA_WWN new_port{{0x10, 0, 0, 0, 0, 0, 0, 0x31}};
constexpr HBA_WWN new_node{{0x20, 0, 0, 0, 0, 0, 0, 0x32}};
constexpr RM_VPORTENTRY other_entry{{{1}}, {{2}}, 7, 0};

class World_Wide_Names : public WithFakeLibraries {
protected:
    void SetUp() override {
        WithFakeLibraries::SetUp();
        *libraries = {};
        libraries->adapters.resize(2);
        for (const std::size_t i : {0, 1}) {
            libraries->adapters[i].ports.resize(1);
            port(i).record.PortWWN = i == 0 ? port_a : port_b;
            port(i).record.NodeWWN = node;
        }
    }
    ~World_Wide_Names() override { *libraries = {}; }

    fake::Port& port(std::size_t index) { return libraries->adapters[index].ports[0]; }
    void change(uint32 bank = 1) { W::ChangeWWN(port_a, new_port, new_node, bank, state, result); }

    Test_Clock clock{1'000'000};
    Property<uint16> state{0, 1};
    Property<uint32> result{0, 1};
};

TEST_F(World_Wide_Names, TellTheirCapabilityInWords) {
    struct Row {
        uint32 word;
        std::vector<std::string> lines;
    };
    const Row rows[] = {
        {0x000C, {"Can change Non-Volatile WWNs", "Can change Volatile WWNs"}},
        {0xB000,
         {"Read Only mode: World Wide Name Management is not supported in this mode",
          "Cannot change Non-Volatile WWNs", "Cannot change Volatile WWNs",
          "Activation requirement: Reboot", "Activation requirement: Reset HBA"}},
    };
    Property<uint32> capability{0, 1};
    for (const Row& row : rows) {
        libraries->number = row.word;
        W::GetWWNCapability(port_a, capability, result);
        EXPECT_EQ(log.take(), row.lines);
        EXPECT_EQ(capability.value, row.word);
        EXPECT_EQ(result.value, 0u);
    }
    libraries->statuses["LRM_GetWWNCapability"] = {92};
    W::GetWWNCapability(port_a, capability, result);
    EXPECT_EQ(result.value, 40092u);
    EXPECT_EQ(capability.value, 0xB000u);
    EXPECT_THAT(log.take(),
                ElementsAre("WWN Management is not available on this HBA",
                            "GetWWNCapability: RM_ReadWWNCapability call failed with error: 92"));
}

TEST_F(World_Wide_Names, AreReadFromTheirBanks) {
    struct Row {
        uint32 bank;
        uint32 told; // state, or status from 80 on
        uint32 result;
        uint16 state;
        const char* line;
        bool has_names;
    };
    const Row rows[] = {
        {0, 1, 0, 1, "Volatile WWNs are active", true},
        {0, 9, 0, 9, "Volatile WWNs DO NOT EXIST on this adapter", true},
        {0, 89, 40089, 0, "Volatile WWNs are NOT SUPPORTED on this adapter", false},
        {1, 5, 0, 0, "Non-Volatile WWNs read successfully", true},
        {1, 89, 40089, 0, "ReadWWN: RM_ReadWWN call failed with error: 89", false},
        {2, 1, 0, 0, "Factory Default WWNs read successfully", true},
        {3, 4, 0, 4, "Current WWNs: Non-Volatile", true},
        {3, 92, 40092, 0, "WWN Management is NOT AVAILABLE on this adapter", false},
        {4, 9, 0, 9, "Configured WWNs DO NOT EXIST", false},
        {4, 7, 0, 7, "Configured WWNs: Volatile (Activation required: adapter restart)", true},
        {4, 6, 0, 6, "Configured WWNs: Non-Volatile (Activation required: warm reboot)", true},
    };
    for (const Row& row : rows) {
        Property<String> wwpn{{}, 1};
        Property<String> wwnn{{}, 1};
        libraries->number = row.told;
        libraries->statuses["LRM_ReadWWN"] = {row.told >= 80 ? row.told : 0};
        W::ReadWWN(port_a, row.bank, wwpn, wwnn, state, result);
        EXPECT_EQ(result.value, row.result) << row.line;
        EXPECT_EQ(state.value, row.state) << row.line;
        const auto lines = log.take();
        EXPECT_EQ(lines.front(), row.line);
        EXPECT_EQ(wwpn.is_null(), !row.has_names) << row.line;
        if (row.has_names) {
            EXPECT_EQ(wwpn.value, "10:00:00:00:00:00:00:0a");
            EXPECT_EQ(wwnn.value, "20:00:00:00:00:00:00:cd");
            EXPECT_THAT(lines, Contains("WWNN: 20:00:00:00:00:00:00:cd"));
        } else {
            EXPECT_EQ(lines.size(), 1u);
        }
    }
}

TEST_F(World_Wide_Names, AreChangedAndRestoredAsTheLibraryTells) {
    struct Row {
        bool restored;
        uint32 told;
        std::vector<std::string> lines;
    };
    const char until[] = "Volatile names will be active until system power-down or HBA power-cycle";
    const char reset[] = "Reset required to activate the new setting";
    const char reboot[] = "Reboot required to activate the new setting";
    const char written[] = "New WWNs written successfully";
    const char done[] = "WWNs restored successfully";
    const Row rows[] = {
        {false, 5, {written, reboot, until}},
        {false, 6, {written, reboot}},
        {false, 7, {written, reset, until}},
        {false, 8, {written, reset}},
        {true, 1, {"WWNs already active. No Restore needed"}},
        {true, 5, {done, reboot, until}},
        {true, 7, {done, "Reset the HBA to activate the new setting", until}},
        {true, 8, {done, "Please reset the HBA to activate the new setting"}},
    };
    for (const Row& row : rows) {
        libraries->number = row.told;
        if (row.restored) {
            W::RestoreWWN(port_a, 0, state, result);
        } else {
            change();
        }
        auto lines = log.take();
        lines.erase(lines.begin());
        EXPECT_EQ(lines, row.lines) << row.told;
        EXPECT_EQ(state.value, row.told);
        EXPECT_EQ(result.value, 0u);
    }
    libraries->number = 3;
    change();
    EXPECT_EQ(state.value, 8u) << "a state that means nothing here";
}

TEST_F(World_Wide_Names, AreNotChangedToBadOrUsedOnes) {
    libraries->statuses["RM_ValidateWwn"] = {5};
    change();
    EXPECT_EQ(log.take(), std::vector<std::string>{"The supplied 'New WWPN' is not valid"});
    EXPECT_EQ(result.value, 40005u);
    libraries->statuses["RM_ValidateWwn"] = {9, 5};
    change();
    EXPECT_EQ(log.take(), std::vector<std::string>{"The supplied 'New WWNN' is not valid"});

    // On the second port, behind others; the first has the other name, but the last match counts.
    port(0).virtualPorts = {{{{1}}, new_node, 0, 0}};
    port(1).virtualPorts = {other_entry, {new_port, {{2}}, 0, 0}};
    change();
    EXPECT_THAT(log.take(), Contains("ChangeWWN: Duplication of vport WWPN detected."));
    EXPECT_EQ(result.value, 91u);
    EXPECT_EQ(state.value, 1u);
    port(1).virtualPorts.pop_back();
    change();
    EXPECT_THAT(log.take(), Contains("ChangeWWN: Duplication of vport WWNN detected."));
    EXPECT_EQ(state.value, 2u);
    EXPECT_EQ(libraries->calls["LRM_ChangeWWN"], 0);

    // What can't be searched is passed over: failing ports, wild counts, a name met before.
    port(1).record.PortWWN = port_a;
    for (const uint32 count : {0u, 1024u, 0xFFFFFFFFu}) {
        libraries->toldVirtualPorts = count;
        change();
        EXPECT_EQ(result.value, 0u) << count;
    }
    libraries->toldVirtualPorts.reset();
    libraries->calls.clear();
    libraries->statuses["RM_GetLocalHBAInfo"] = {9};
    libraries->statuses["LRM_VPList"] = {128};
    change();
    EXPECT_EQ(result.value, 0u);
    EXPECT_EQ(libraries->calls["LRM_VPList"], 1);
}

TEST_F(World_Wide_Names, WaitForABusyLibrary) {
    auto& statuses = libraries->statuses["LRM_ChangeWWN"];
    statuses = {97, 97};
    libraries->number = 8;
    change();
    EXPECT_EQ(result.value, 0u);
    EXPECT_EQ(libraries->calls["LRM_ChangeWWN"], 3);
    EXPECT_EQ(clock.time, 3'000'000u);
    EXPECT_THAT(log.take(), Contains("Validating new WWNs...").Times(1));

    statuses.assign(301, 97);
    libraries->calls.clear();
    change();
    EXPECT_EQ(result.value, 40097u);
    EXPECT_EQ(libraries->calls["LRM_ChangeWWN"], 301);
    EXPECT_THAT(log.take(), Contains("ChanngeWWN: RM_ChangeWWN call failed with error: 97"));

    libraries->statuses["LRM_RestoreWWN"] = {97, 89};
    W::RestoreWWN(port_a, 1, state, result);
    EXPECT_EQ(result.value, 40089u);
    EXPECT_THAT(log.take(), ElementsAre("RestoreWWN operation initiated.", "Restoring WWNs..."));

    libraries->entered = [](const std::string& entered) {
        if (entered == "LRM_ChangeWWN") {
            throw 1;
        }
    };
    change();
    EXPECT_EQ(result.value, 40001u);
    EXPECT_THAT(log.take(), Contains("Error in RM_ChangeWWN"));
}

TEST_F(World_Wide_Names, OfVirtualPortsAreListed) {
    std::vector<RM_VPORTENTRY> list;
    EXPECT_EQ(W::ListVPorts(foreign, nullptr), 1u);
    EXPECT_EQ(log.take().back(), "INVALID wwpn");
    EXPECT_EQ(W::ListVPorts(port_a, nullptr), 4u);
    EXPECT_EQ(log.take().back(), "Invalid input pointer");
    EXPECT_EQ(libraries->calls["LRM_VPList"], 0);
    EXPECT_EQ(W::ListVPorts(port_a, &list), 0u);
    EXPECT_EQ(list.size(), 0u);
    port(0).virtualPorts.assign(3, other_entry);
    EXPECT_EQ(W::ListVPorts(port_a, &list), 0u);
    EXPECT_EQ(list.size(), 3u);
    EXPECT_EQ(log.take().back(), "Exit the ListVPorts method");
    libraries->toldVirtualPorts = 0xFFFFFFFF;
    EXPECT_EQ(W::ListVPorts(port_a, &list), 1u) << "no such list is asked for";
    EXPECT_EQ(log.take().back(), "TVRCMD_ListVPorts: Unable to allocate buffer");
    port(0).virtualPorts.resize(1);
    EXPECT_EQ(W::ListVPorts(port_a, &list), 0u);
    EXPECT_EQ(list.size(), 1u) << "no more than there is room for";
    libraries->statuses["LRM_VPList"] = {128, 9};
    EXPECT_EQ(W::ListVPorts(port_a, &list), 1u);
    EXPECT_EQ(log.take().back(), "TVRCMD does not support listing virtual ports on this host.");
    EXPECT_EQ(W::ListVPorts(port_a, &list), 1u);
    EXPECT_THAT(log.take(),
                IsSupersetOf({"Status: <9>:text of 9", "Unable to list virtual ports!!"}));

    RM_VPORTATTRIBUTES attributes{};
    EXPECT_EQ(W::ListVPortAttributes(port_a, {{0, 0, 0, 0, 0, 0, 0, 1}}, &attributes), 0u);
    EXPECT_THAT(log.take(), Contains("VPort Name " + std::string(256, 'b') + " "));
    libraries->statuses["LRM_VPListTargets"] = {7, 128};
    EXPECT_EQ(W::ListVPortTargets(port_a, port_b), 1u);
    EXPECT_EQ(log.take().back(),
              "TVRCMD does not support listing virtual port targets on this host.");
}

TEST_F(World_Wide_Names, OfVirtualPortsLeadToMachines) {
    std::vector<RM_VMINFO> machines;
    EXPECT_EQ(W::ListVMfromVPort(port_a, other_entry, &machines), 0u) << "without such a mapping";
    EXPECT_EQ(libraries->calls["LRM_GetVMFromVPort"], 0);
    libraries->adapters[0].attributes[265] = fake::valueOf(uint32{0x102});
    libraries->machines.resize(2);
    std::memset(&libraries->machines[1], 'x', sizeof(RM_VMENTRY));
    EXPECT_EQ(W::ListVMfromVPort(port_a, other_entry, &machines), 0u);
    ASSERT_EQ(machines.size(), 2u);
    EXPECT_THAT(log.take(), IsSupersetOf({"Virtual Machine Name:  " + std::string(256, 'x'),
                                          std::string("Memory Size:  512"),
                                          std::string("Exit the ListVMs method")}));
    libraries->statuses["LRM_GetVMInfo"] = {0, 9};
    EXPECT_EQ(W::ListVMfromVPort(port_a, other_entry, &machines), 1u);
}

} // namespace
} // namespace cimple
