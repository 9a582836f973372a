// A rebuild of the adapter maps: its order, and what it does where a step fails.
#include "tests/agent/agent_fixture.h"

#include "agent/locks.h"
#include "agent/port_lookup.h"

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class Rebuild : public With_Agent {};

TEST_F(Rebuild, GoesFromTheHostDownToThePorts) {
    libraries.adapters.resize(1);
    directory.write("etc/tvr_smis.conf", "https://fleet.example/\n");
    load();
    refresh();
    const std::vector<std::string> order = {
        "PERF: updateAdapterMaps: Entry",
        "PERF: Entered clearAdapterMaps()",
        "up-call to enumerate CIM_ComputerSystem started",
        "up-call to enumerate CIM_RegisteredProfile started",
        "up-call method failed",
        "Generating TVRHBA_RegisteredProfile (FCHBA Diagnostics)",
        "Generating TVRHBA_InstalledSoftwareIdentity (Tavrin CMPI HBA Provider v2.5.11-1)",
        "Starting the SoftwareInstallationService",
        "Generating TVRHBA_RegisteredProfile (Software Update)",
        "Searching for /lib Curl on the machine",
        "Starting the WWN Management Service",
        "Starting the BootBIOSService",
        "Starting the FCHBASetDriverParamService",
        "Ending the FCHBASetDriverSetParamService",
        "Generating TVRHBA_RegisteredProfile (Record Log)",
        "Remote Hosted Service Access Point",
        "driverName: tvfc, driverVersion: 1.2.3, driverManufacturer: Tavrin Corporation",
        "Generating TVRHBA_InstalledSoftwareIdentity (TVRHBA: Diagnostics v5)",
        "Creating classes for port 0.",
        "MAC address in std::string format = 1000AABBCCDD0100 and size = 16",
        "RM_DiagReadPCIRegistersV2 status = 1 ",
        "RM_DiagReadPCIRegistersV2 call failed",
        "Inside CreateVPD",
        "FC port 1000AABBCCDD0100 CreateVPD failed",
        "Failed Creating TVRXCNA_Transceiver",
        "***************Port Status: 2******************",
        "Firmware- Parsing VersionString",
        "Firmware- Parsing Success",
        "Firmware- Parsing Done",
        "FirmwareKernel- Parsing VersionString",
        "FirmwareKernel- Parsing Done",
        "BootCodeExpansionROM- Parsing Done",
        "FunctionalFirmware- Parsing Done",
        "Ending of Software Installation Service",
        "Checking driver TimeOut...",
        "Done with the Driver Parameter fetching",
        "PERF: updateAdapterMaps: cleanExit",
    };
    EXPECT_THAT(sequence(order), ElementsAreArray(order));
}

// Without the libraries' answers a port has what the HBA API tells.
TEST_F(Rebuild, SkipsWhatItCantReadOfAPort) {
    libraries.adapters.resize(1);
    load();
    refresh();
    auto device = describe(enumerated<TVRHBA_PCIDevice>()[0]);
    EXPECT_EQ(device["DeviceID"], "1000AABBCCDD0100:0x0000");
    EXPECT_EQ(device["VendorID"], "0");
    EXPECT_EQ(device["BaseAddresses5"], "0");
    EXPECT_EQ(device["EnabledState"], "5");
    EXPECT_EQ(enumerated<TVRHBA_ElementVPD>().size(), 0u);
    EXPECT_EQ(enumerated<TVRHBA_TransceiverComponent>().size(), 0u);
    EXPECT_EQ(enumerated<TVRHBA_SAPAvailableForElement>().size(), 0u);

    // A board without a sensor tells no temperatures, only their unit.
    auto package = describe(enumerated<TVRHBA_PhysicalPackage>()[0]);
    EXPECT_EQ(package.count("BoardTemperature"), 0u);
    EXPECT_EQ(package.count("ThresholdCriticalTemp"), 0u);
    EXPECT_EQ(package["TemperatureUnit"], "Celsius");

    // Versions that don't parse leave their numbers unset.
    auto kernel = describe(enumerated<TVRHBA_SoftwareIdentity>()[4]);
    EXPECT_EQ(kernel["InstanceID"], "Firmware Kernel v TV1 1000AABBCCDD0100");
    EXPECT_EQ(kernel.count("MajorVersion"), 0u);
    auto statistics = describe(agent->maps.m_TVRHBA_FCPortStatistics_map.get(0));
    EXPECT_EQ(statistics.size(), 4u) << "namespace, key and two texts";
}

TEST_F(Rebuild, EndsAtTheFirstInstanceThatIsThereAlready) {
    struct Case {
        std::vector<fake::Adapter> adapters;
        const char* map;
        std::size_t packages;
        std::vector<std::string> ports;
    };
    std::vector<fake::Adapter> same_node = {adapter(1), adapter(2), adapter(3)};
    same_node[1].record.NodeWWN = same_node[0].record.NodeWWN;
    std::vector<fake::Adapter> same_port = {adapter(1), adapter(2), adapter(3)};
    same_port[1].ports[0].record.PortWWN = same_port[0].ports[0].record.PortWWN;
    const Case cases[] = {
        {{adapter(1, 2), adapter(2)},
         "m_TVRHBA_ProductPhysicalComponent_map",
         1,
         {"1000AABBCCDD0100", "1000AABBCCDD0101"}},
        {same_node, "m_TVRHBA_PhysicalPackage_map", 1, {"1000AABBCCDD0100"}},
        {same_port, "m_TVRHBA_PCIDevice_map", 2, {"1000AABBCCDD0100"}},
    };
    load();
    std::size_t done = logged("Done with the Driver Parameter fetching");
    for (const Case& failure : cases) {
        libraries.adapters = failure.adapters;
        refresh();
        EXPECT_EQ(logged(std::string("Insert Failed : ") + failure.map), 1u);
        EXPECT_EQ(enumerated<TVRHBA_PhysicalPackage>().size(), failure.packages) << failure.map;
        EXPECT_EQ(enumerated<TVRHBA_FCPort>().texts("DeviceID"), failure.ports) << failure.map;
        EXPECT_TRUE(agent->m_bIsAdapterMapsReady);
    }
    EXPECT_EQ(logged("Done with the Driver Parameter fetching"), done);
    EXPECT_EQ(logged("PERF: updateAdapterMaps: cleanExit"), 0u);

    libraries.adapters = {adapter(1), adapter(2)};
    refresh();
    EXPECT_THAT(enumerated<TVRHBA_FCPort>().texts("DeviceID"),
                ElementsAre("1000AABBCCDD0100", "1000AABBCCDD0200"));
    EXPECT_EQ(logged("PERF: updateAdapterMaps: cleanExit"), 1u);
}

TEST_F(Rebuild, MakesPortsThatAreKnownByTheirIdInAnyCase) {
    load();
    refresh();
    const Full_Guard guard(*agent);
    const struct {
        bool (*is_valid)(const Instance_Maps& maps, const String& device_id);
        const char* id;
        bool valid;
        const char* line;
    } cases[] = {
        {IsValidFCPort, "1000aabbccdd0200", true, "Valid FCPort WWPN Passed"},
        {IsValidFCPort, "1000AABBCCDD0", false, "Could not find the passed FCPort in the map"},
        {IsValidLogicalPort, "1000AABBCCDD0200", true, "Valid WWPN Passed"},
        {IsValidLogicalPort, "", false,
         "Could not find the passed LogicalPort in the provider resource map"},
    };
    for (const auto& [is_valid, id, valid, line] : cases) {
        EXPECT_EQ(is_valid(agent->maps, id), valid) << line;
        EXPECT_EQ(logged(line), 1u) << line;
    }
}

} // namespace
} // namespace cimple
