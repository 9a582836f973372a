// The tables of FC ports: types, states, classes of service, FC-4 types, speeds.
#include "tests/agent/agent_fixture.h"

#include "agent/locks.h"
#include "agent/port_tables.h"

#include <cstring>

namespace cimple {
namespace {

using testing::ElementsAre;

template <class T> std::vector<T> elements(const Array<T>& array) {
    return {array.begin(), array.end()};
}

class Ports : public With_Agent {
protected:
    fake::Port& first_port() { return libraries.adapters[0].ports[0]; }
    std::map<std::string, std::string> first_instance() {
        refresh();
        return describe(enumerated<TVRHBA_FCPort>()[0]);
    }
    void set_state(uint32 state) {
        first_port().attributes[RM_PA_PHYSICAL_STATE] = {
            std::string(reinterpret_cast<const char*>(&state), sizeof state)};
    }
};

TEST_F(Ports, TellTypesAndStatesOfTheVendor) {
    load();
    first_port().record.PortType = 20;
    first_port().record.PortSpeed = 0x18;
    first_port().record.PortSupportedSpeed = 0x1B;
    std::memset(first_port().record.PortActiveFc4Types.bits, 0, 32);
    set_state(21);
    auto port = first_instance();
    EXPECT_EQ(port["PortType"], "1");
    EXPECT_EQ(port["OtherPortType"], "Private Loop");
    EXPECT_EQ(port["OtherNetworkPortType"], "Private Loop");
    EXPECT_EQ(port["OperationalStatus"], "{32789}");
    EXPECT_EQ(port["StatusDescriptions"], "{Link down. Need RESET}");
    EXPECT_EQ(port["ActiveFC4Types"], "{0}");
    EXPECT_EQ(port["SupportedFC4Types"], "{8}");
    EXPECT_EQ(port["Speed"], "0");
    EXPECT_EQ(port["MaxSpeed"], "8000000000");
    EXPECT_EQ(logged("***************Port Status: 21******************"), 1u);
}

TEST_F(Ports, AreKnownByTheirIdInAnyCase) {
    load();
    refresh();
    const Full_Guard guard(*agent);
    EXPECT_TRUE(agent->IsValidFCPort("1000aabbccdd0200"));
    EXPECT_TRUE(agent->IsValidLogicalPort("1000AABBCCDD0200"));
    EXPECT_FALSE(agent->IsValidFCPort("1000AABBCCDD0"));
    EXPECT_FALSE(agent->IsValidLogicalPort(""));
    for (const char* line :
         {"Valid FCPort WWPN Passed", "Valid WWPN Passed",
          "Could not find the passed FCPort in the map",
          "Could not find the passed LogicalPort in the provider resource map"}) {
        EXPECT_EQ(logged(line), 1u) << line;
    }
}

TEST(Port_Tables, Types) {
    struct Row {
        uint32 from;
        uint16 type;
        const char* text;
    };
    for (const Row& row :
         {Row{0, 0, ""}, Row{1, 0, ""}, Row{2, 1, "Other"}, Row{3, 0, ""}, Row{4, 0, ""},
          Row{5, 10, ""}, Row{6, 11, ""}, Row{7, 16, ""}, Row{8, 15, ""}, Row{9, 14, ""},
          Row{10, 18, ""}, Row{11, 0, ""}, Row{19, 0, ""}, Row{20, 1, "Private Loop"},
          Row{21, 1, "Point to Point"}, Row{22, 0, ""}, Row{0xFFFFFFFF, 0, ""}}) {
        const Port_Type type = port_type(row.from);
        EXPECT_EQ(type.type, row.type) << row.from;
        EXPECT_STREQ(type.text == nullptr ? "" : type.text, row.text) << row.from;
    }
}

TEST(Port_Tables, States) {
    struct Row {
        uint32 from;
        uint16 port;
        const char* port_text;
        uint16 controller;
        const char* controller_text;
    };
    for (const Row& row :
         {Row{0, 0, "Unknown", 0, "Unknown"}, Row{1, 0, "Unknown", 0, "Unknown"},
          Row{2, 2, "OK", 2, "OK"}, Row{3, 10, "Stopped", 10, "Stopped"},
          Row{4, 1, "Other", 1, "Other"}, Row{5, 11, "InService", 11, "InService"},
          Row{6, 1, "Other", 1, "Other"}, Row{7, 6, "Error", 6, "Error"},
          Row{8, 0x8008, "InService", 11, "InService"}, Row{9, 0, "Unknown", 0, "Unknown"},
          Row{20, 0x8014, "Operational. Need RESET", 0, "Unknown"},
          Row{21, 0x8015, "Link down. Need RESET", 0, "Unknown"},
          Row{22, 0x8016, "Disable", 0, "Unknown"}, Row{23, 0, "Unknown", 0, "Unknown"}}) {
        EXPECT_EQ(port_status(row.from).operational_status, row.port) << row.from;
        EXPECT_STREQ(port_status(row.from).description, row.port_text) << row.from;
        EXPECT_EQ(controller_status(row.from).operational_status, row.controller) << row.from;
        EXPECT_STREQ(controller_status(row.from).description, row.controller_text) << row.from;
    }
}

TEST(Port_Tables, ClassesOfService) {
    EXPECT_THAT(elements(classes_of_service(0)), ElementsAre(0));
    EXPECT_THAT(elements(classes_of_service(0x20)), ElementsAre(0));
    EXPECT_THAT(elements(classes_of_service(0x80)), ElementsAre(0));
    EXPECT_THAT(elements(classes_of_service(0x5F)), ElementsAre(7, 1, 2, 3, 4, 5));
    EXPECT_THAT(elements(classes_of_service(0xFFFFFFFF)), ElementsAre(7, 1, 2, 3, 4, 5));
    EXPECT_THAT(elements(classes_of_service(0x48)), ElementsAre(3, 5));
}

TEST(Port_Tables, FC4Types) {
    using Entries = std::array<uint32, 32>;
    // By entry, the value of each bit from the lowest; 1 where it has none of its own.
    std::map<std::size_t, std::array<uint16, 8>> named = {
        {0, {1, 25, 26, 27, 28, 1, 1, 1}}, {1, {1, 17, 18, 19, 1, 21, 22, 23}},
        {2, {8, 9, 1, 1, 1, 1, 1, 1}},     {3, {1, 1, 1, 1, 4, 5, 1, 1}},
        {7, {32, 1, 34, 1, 36, 1, 1, 1}},  {8, {88, 1, 1, 1, 1, 1, 1, 1}},
        {9, {80, 81, 82, 1, 1, 1, 1, 1}},  {11, {64, 1, 1, 1, 1, 1, 1, 1}},
        {15, {96, 1, 1, 1, 1, 1, 1, 1}}};
    for (std::size_t entry = 0; entry < 32; ++entry) {
        for (std::size_t bit = 0; bit < 8; ++bit) {
            Entries entries{};
            entries[entry] = 1u << bit;
            const auto row = named.find(entry);
            const uint16 value = row == named.end() ? uint16{1} : row->second[bit];
            if (entry == 8 && bit == 0) {
                EXPECT_THAT(elements(fc4_types(entries)), ElementsAre(88, 1));
            } else {
                EXPECT_THAT(elements(fc4_types(entries)), ElementsAre(value))
                    << entry << ' ' << bit;
            }
        }
    }
    EXPECT_THAT(elements(fc4_types(Entries{})), ElementsAre(0));
    Entries all;
    all.fill(0xFF);
    EXPECT_THAT(elements(fc4_types(all)),
                ElementsAre(4, 5, 8, 9, 17, 18, 19, 21, 22, 23, 25, 26, 27, 28, 32, 34, 36, 64, 80,
                            81, 82, 88, 96, 1));
}

TEST(Port_Tables, Speeds) {
    constexpr uint64 gigabit = 1'000'000'000;
    const std::map<uint32, uint64> speeds = {{0x01, 1}, {0x02, 2}, {0x04, 10},
                                             {0x08, 4}, {0x10, 8}, {0x20, 16}};
    for (uint32 mask = 0; mask < 0x100; ++mask) {
        const auto exact = speeds.find(mask);
        EXPECT_EQ(port_speed(mask), exact == speeds.end() ? 0 : exact->second * gigabit) << mask;
        uint64 highest = 0;
        for (const auto& [bit, speed] : speeds) {
            highest = (mask & bit) != 0 ? std::max(highest, speed) : highest;
        }
        EXPECT_EQ(highest_speed(mask), highest * gigabit) << mask;
    }
}

} // namespace
} // namespace cimple
