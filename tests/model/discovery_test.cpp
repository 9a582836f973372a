#include "tests/model/fake_host.h"

#include <gmock/gmock.h>

#include <optional>
#include <ostream>
#include <stdexcept>

namespace cimple {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using namespace std::string_literals;

class Discovery : public FakeHost {};

TEST_F(Discovery, ReadsAllOfAnAdapter) {
    fake::Adapter& adapter = add();
    put(adapter.record.Manufacturer, "Tavrin");
    put(adapter.record.SerialNumber, "SN1");
    put(adapter.record.Model, "M1");
    put(adapter.record.ModelDescription, "Model one");
    put(adapter.record.NodeSymbolicName, "node");
    put(adapter.record.HardwareVersion, "hw");
    put(adapter.record.DriverVersion, "dv");
    put(adapter.record.OptionROMVersion, "rom");
    put(adapter.record.FirmwareVersion, "fw");
    put(adapter.record.DriverName, "tvfc");
    adapter.record.VendorSpecificID = 0x1F54;
    adapter.attributes = {
        {551, valueOf<uint32>(0x00465A2D)},
        {526, valueOf<uint32>(0x5602)},
        {527, valueOf<uint32>(7)},
        {544, valueOf<uint32>(8)},
        {556, valueOf<uint32>(0)},
        {531, textOf("\x02\x54\x56\x01\x02\xFF"s)},
        {534, textOf("bb")},
        {546, textOf("kv")},
        {545, textOf("ifl")},
        {528, textOf("of")},
        {532, valueOf<uint32>(256)},
        {553, valueOf<uint32>(1)},
        {549, valueOf<uint32>(4)},
        {587, textOf("uv")},
        {588, textOf("x86")},
        {589, textOf("efi")},
        {590, textOf("fc")},
        {565, textOf("uv2")},
        {566, textOf("un")},
        {563, textOf("sv")},
        {564, textOf("sn")},
    };
    build();
    ASSERT_EQ(data->getAdapters().size(), 1u);
    const Adapter& built = *data->getAdapters()[0];
    EXPECT_EQ(built.getAdapterName(), "Tavrin-F16-0");
    EXPECT_EQ(built.getAdapterNumber(), 0);
    EXPECT_EQ(built.getAdapterType(), 1);
    EXPECT_NE(built.getStatistics(), nullptr);

    const FCAdapterAttributes& facts = adapterFacts(0);
    EXPECT_THAT((std::vector{facts.Manufacturer,
                             facts.SerialNumber,
                             facts.Model,
                             facts.ModelDescription,
                             facts.NodeSymbolicName,
                             facts.HardwareVersion,
                             facts.DriverVersion,
                             facts.OptionROMVersion,
                             facts.FirmwareVersion,
                             facts.DriverName,
                             facts.NodeWWN,
                             facts.ieeeAddress,
                             facts.bootBiosVersion,
                             facts.kernelVersion,
                             facts.initialFirmwareLoad,
                             facts.operationalFirmware,
                             facts.fcUniversalVersion,
                             facts.fcX86BiosVersion,
                             facts.fcEfiVersion,
                             facts.fcFcodeVersion,
                             facts.ulpFirmwareVersion,
                             facts.ulpFirmwareName,
                             facts.spFirmwareVersion,
                             facts.spFirmwareName}),
                ElementsAre("Tavrin", "SN1", "M1", "Model one", "node", "hw", "dv", "rom", "fw",
                            "tvfc", "2000025456AB0000", "02:54:56:01:02:ff", "bb", "kv", "ifl",
                            "of", "uv", "x86", "efi", "fc", "uv2", "un", "sv", "sn"));
    EXPECT_THAT((std::vector{facts.VendorSpecificID, facts.NumberOfPorts, facts.boardTemperature,
                             facts.thresholdCriticalTemp, facts.thresholdWarningTemp,
                             facts.deviceID, facts.modelID, facts.driverType, facts.diagVersion,
                             facts.portNumber, facts.functionType, facts.sliMode}),
                ElementsAre(0x1F54u, 1u, 0x2Du, 0x5Au, 0x46u, 0x5602u, 7u, 3u, 8u, 1u, 0u, 4u));
    EXPECT_TRUE(facts.bootCodeEnabled);
}

TEST_F(Discovery, ReadsAllOfAPort) {
    HBA_PORTATTRIBUTES& record = add().ports[0].record;
    record.PortFcId = 0x010203;
    record.PortType = 5;
    record.PortState = 7;
    record.PortSupportedClassofService = 8;
    record.PortSupportedFc4Types.bits[2] = 1;
    record.PortSupportedFc4Types.bits[31] = 255;
    record.PortActiveFc4Types.bits[7] = 9;
    put(record.PortSymbolicName, "symbolic");
    put(record.OSDeviceName, "/sys/host0");
    record.PortSupportedSpeed = 0x38;
    record.PortSpeed = 0x20;
    record.PortMaxFrameSize = 2112;
    record.FabricName = nameOf(0x30, 9, 9);
    record.NumberofDiscoveredPorts = 12;
    libraries->adapters[0].ports[0].attributes[802] = valueOf<uint32>(22);
    build();
    ASSERT_EQ(data->getPorts().size(), 1u);
    const auto& port = static_cast<const FCPort&>(*data->getPorts()[0]);
    EXPECT_EQ(port.getPortName(), "1000025456AB0000");
    EXPECT_EQ(port.getNodeName(), "2000025456AB0000");
    EXPECT_EQ(port.getPortIndex(), 0u);
    EXPECT_EQ(port.getAdapter(), data->getAdapters()[0].get());
    EXPECT_EQ(port.heldStatistics(), nullptr);
    EXPECT_EQ(port.getTargetCount(), 0u);
    EXPECT_THROW(port.getTarget(0), std::out_of_range);

    const FCPortAttributes& facts = portFacts(0);
    EXPECT_THAT((std::vector{facts.PortFcId, facts.PortType, facts.PortState,
                             facts.PortSupportedClassofService, facts.PortSupportedFc4Types[2],
                             facts.PortSupportedFc4Types[31], facts.PortActiveFc4Types[7],
                             facts.PortSupportedSpeed, facts.PortSpeed, facts.PortMaxFrameSize,
                             facts.NumberofDiscoveredPorts}),
                ElementsAre(0x010203u, 5u, 22u, 8u, 1u, 255u, 9u, 0x38u, 0x20u, 2112u, 12u));
    EXPECT_EQ(facts.PortSymbolicName, "symbolic");
    EXPECT_EQ(facts.OSDeviceName, "/sys/host0");
    EXPECT_EQ(facts.FabricName, "3000025456AB0909");
}

TEST_F(Discovery, TellsEachStep) {
    fake::Adapter& adapter = add();
    adapter.attributes = {{556, valueOf<uint32>(4)}, {531, textOf("\x41\x42\x43\x44\x45\x46"s)}};
    put(adapter.record.NodeSymbolicName, "node");
    const std::string missing = "ERROR: RM_GetHBAAttributeValue HA_";
    const auto noText = [](const std::string& label) {
        return "ERROR: " + label + ": RM_GetHBAAttributes call failed (2)";
    };
    EXPECT_THAT(
        build(),
        ElementsAreArray({"buildAdapterData"s,
                          "freeAllData: Entry"s,
                          "freeAllData: cleanExit"s,
                          "buildAdapterData - with hbaapi"s,
                          "Number of Adapters detected = 1"s,
                          "FC AdapterName : [Tavrin-F16-0]"s,
                          "Adapter( adapterName[Tavrin-F16-0], adapterNumber[0], adapterType[1] )"s,
                          "FCAdapterName:Tavrin-F16-0"s,
                          "_NodeSymbolicName=node"s,
                          "Port 0's WWPN: 1000025456AB0000"s,
                          missing + "_BoardTemperature call failed (2)",
                          missing + "_DeviceID call failed (2)",
                          missing + "_ModelID call failed (2)",
                          missing + "_DiagVersion call failed (2)",
                          "_DriverType: [ 3 ]"s,
                          "_FunctionType: [ 4 ]"s,
                          "Adapter _FunctionType: [ 4 ]"s,
                          "_IEEE_ADDRESS : [ ABCDEF ]"s,
                          noText("_BOOTBIOS_VERSION"),
                          noText("_KERNEL_VERSION"),
                          noText("INITIAL_FW_LOAD"),
                          noText("Operational Firmware"),
                          missing + "_BootCodeEnabled call failed (2)",
                          missing + "_PortNumber call failed (2)",
                          missing + "_SLIMode call failed (2)",
                          noText("_FCUniversalVersion"),
                          noText("FC_X86_BIOSVersion"),
                          noText("_FC_EFIVersion"),
                          noText("_FC_FCODEVersion"),
                          noText("_ULPFirmwareVersion"),
                          noText("_ULPFirmwareName"),
                          noText("_SPFirmwareVersion"),
                          noText("_SPFirmwareName"),
                          "Port 0's WWPN: 1000025456AB0000"s,
                          "_PortState: [ 2 ]"s,
                          "Physical port state for FC Port: 2"s,
                          "Adapter Function type : 4"s}));
}

TEST_F(Discovery, MissingAttributesKeepTheirStartValues) {
    fake::Adapter& adapter = add();
    adapter.ports[0].attributes.clear();
    adapter.ports[0].record.PortState = 2;
    adapter.ports.push_back(makePort(0, 1));
    adapter.record.NumberOfPorts = 2;
    adapter.ports[1].attributes[802] = valueOf<uint32>(0);
    libraries->statuses["LRM_GetDriverType"] = {9};
    EXPECT_THAT(build(), Contains("ERROR: RM_GetDriverType call failed (9)"));
    const FCAdapterAttributes& facts = adapterFacts(0);
    EXPECT_EQ(facts.driverType, 0u);
    EXPECT_EQ(facts.ieeeAddress, "");
    EXPECT_EQ(facts.boardTemperature, 0u);
    EXPECT_FALSE(facts.bootCodeEnabled);
    EXPECT_EQ(portFacts(0).PortState, 1u) << "the HBA API's state does not count";
    EXPECT_EQ(portFacts(1).PortState, 0u);
}

// ---- adapters that are left out ----

struct LeftOutCase {
    const char* what;
    void (*disturb)(fake::Libraries&);
    std::vector<const char*> messages;
    friend void PrintTo(const LeftOutCase& c, std::ostream* out) { *out << c.what; }
};

// Three adapters, of which the second is disturbed by what `disturb` sets.
class LeftOut : public FakeHost, public testing::WithParamInterface<LeftOutCase> {};

TEST_P(LeftOut, TheOthersStay) {
    add();
    add(2);
    add();
    GetParam().disturb(*libraries);
    const std::vector<std::string> lines = build();
    std::size_t from = 0;
    for (const std::string message : GetParam().messages) {
        while (from < lines.size() && lines[from] != message) {
            ++from;
        }
        EXPECT_LT(from, lines.size()) << "in this order: " << message;
    }
    EXPECT_TRUE(data->isBuilt());
    EXPECT_EQ(data->getAdapterCount(), 2u);
    ASSERT_EQ(data->getAdapters().size(), 2u);
    EXPECT_EQ(data->getAdapters()[1]->getAdapterNumber(), 2);
    ASSERT_EQ(data->getPorts().size(), 2u);
    EXPECT_EQ(data->getPorts()[1]->getAdapter(), data->getAdapters()[1].get());
}

constexpr char skipped[] = "Catch ALL error during creating adapter..., Skipping Adapter# 1";

INSTANTIATE_TEST_SUITE_P(
    Failures, LeftOut,
    testing::Values(
        LeftOutCase{"name",
                    [](fake::Libraries& l) {
                        l.statuses["HBA_GetAdapterName"] = {0, 4};
                    },
                    {"Error hbaStatus=4, Skipping Adapter# 1", "FC AdapterName : [Tavrin-F16-2]"}},
        LeftOutCase{"open",
                    [](fake::Libraries& l) {
                        l.statuses["HBA_OpenAdapter"] = {0, 0, 1};
                    },
                    {"HBA_OpenAdapter failed, skipping Adapter Tavrin-F16-1", skipped}},
        LeftOutCase{"attributes",
                    [](fake::Libraries& l) {
                        l.statuses["HBA_GetAdapterAttributes"] = {0, 12};
                    },
                    {"Error hbaStatus=12, skipping Adapter Tavrin-F16-1", "~Adapter", skipped}},
        LeftOutCase{"attributes_stale_twice",
                    [](fake::Libraries& l) {
                        l.statuses["HBA_GetAdapterAttributes"] = {0, 8, 8};
                    },
                    {"Error hbaStatus=8, skipping Adapter Tavrin-F16-1", skipped}},
        LeftOutCase{"port_0",
                    [](fake::Libraries& l) {
                        l.statuses["HBA_GetAdapterPortAttributes"] = {0, 0, 6};
                    },
                    {"(portIndex=0) failed with hbaStatus 6", skipped}},
        LeftOutCase{"rm_attributes",
                    [](fake::Libraries& l) {
                        l.statuses["LRM_GetHBAAttributes"] = {0, 7};
                    },
                    {"ERROR: RM_GetHBAAttributes call failed (7)", skipped}},
        LeftOutCase{"converged_name_O",
                    [](fake::Libraries& l) { l.adapters[1].name = "Tavrin-OCe11102"; },
                    {"Found XCNA Card, AdapterName = Tavrin-OCe11102. skipping this card"}},
        LeftOutCase{"converged_name_N",
                    [](fake::Libraries& l) { l.adapters[1].name = "Tavrin-N"; },
                    {"Found XCNA Card, AdapterName = Tavrin-N. skipping this card"}},
        LeftOutCase{"function_1",
                    [](fake::Libraries& l) { l.adapters[1].attributes[556] = valueOf<uint32>(1); },
                    {"Adapter Function type : 1",
                     "Found XCNA Card, AdapterName = Tavrin-F16-1. skipping this card",
                     "~FCAdapter", "Freeing Port: 1000025456AB0100"}},
        LeftOutCase{"function_2",
                    [](fake::Libraries& l) { l.adapters[1].attributes[556] = valueOf<uint32>(2); },
                    {"Adapter Function type : 2"}},
        LeftOutCase{"function_3",
                    [](fake::Libraries& l) { l.adapters[1].attributes[556] = valueOf<uint32>(3); },
                    {"Adapter Function type : 3"}}),
    [](const auto& test) { return std::string(test.param.what); });

TEST_F(Discovery, AConvergedNameIsSkippedBeforeAnyFetch) {
    add().name = "Tavrin-Nxyz";
    build();
    EXPECT_EQ(libraries->calls["HBA_OpenAdapter"], 0);
    EXPECT_EQ(data->getAdapterCount(), 0u);
    EXPECT_FALSE(data->isBuilt());
}

TEST_F(Discovery, OtherNamesAndFunctionTypesStay) {
    add().name = "Tavrin-M";
    add().name = "Tavrin-";
    add().name = "tavrin-O";
    add().attributes[556] = valueOf<uint32>(0);
    add().attributes[556] = valueOf<uint32>(4);
    build();
    EXPECT_EQ(data->getAdapters().size(), 5u);
}

TEST_F(Discovery, StaleDataIsReadAgainOnce) {
    add();
    libraries->statuses["HBA_GetAdapterAttributes"] = {8};
    libraries->statuses["HBA_GetAdapterPortAttributes"] = {8, 0, 8};
    build();
    ASSERT_EQ(data->getPorts().size(), 1u);
    EXPECT_EQ(adapterFacts(0).Manufacturer, "") << "nothing of the failed call stays";
    EXPECT_EQ(libraries->calls["HBA_RefreshInformation"], 3);
}

// ---- ports that are left out ----

struct PortCase {
    const char* what;
    void (*disturb)(fake::Libraries&);
    const char* message;
    friend void PrintTo(const PortCase& c, std::ostream* out) { *out << c.what; }
};

// One adapter with three ports, of which the second is disturbed.
class LeftOutPort : public FakeHost, public testing::WithParamInterface<PortCase> {};

TEST_P(LeftOutPort, TheOthersKeepTheirIndex) {
    add(3);
    GetParam().disturb(*libraries);
    EXPECT_THAT(build(), AllOf(Contains(GetParam().message),
                               Contains("Failed to fetch information for port: [1] on adapter: "
                                        "[Tavrin-F16-0]")));
    EXPECT_EQ(data->getAdapterCount(), 1u);
    ASSERT_EQ(data->getPorts().size(), 2u);
    EXPECT_EQ(data->getPorts()[0]->getPortIndex(), 0u);
    EXPECT_EQ(data->getPorts()[1]->getPortIndex(), 2u);
    const Adapter& adapter = *data->getAdapters()[0];
    EXPECT_EQ(adapter.getPortCount(), 2u);
    EXPECT_EQ(adapter.getPort(1), data->getPorts()[1]);
    EXPECT_THROW(adapter.getPort(2), std::out_of_range);
}

// The adapter itself takes the first call of each kind.
INSTANTIATE_TEST_SUITE_P(
    Failures, LeftOutPort,
    testing::Values(PortCase{"open",
                             [](fake::Libraries& l) {
                                 l.statuses["HBA_OpenAdapter"] = {0, 0, 1};
                             },
                             "HBA_OpenAdapter failed, skipping Adapter Tavrin-F16-0"},
                    PortCase{"attributes",
                             [](fake::Libraries& l) {
                                 l.statuses["HBA_GetAdapterPortAttributes"] = {0, 0, 3};
                             },
                             "(portIndex=1) failed with hbaStatus 3"},
                    PortCase{"stale_twice",
                             [](fake::Libraries& l) {
                                 l.statuses["HBA_GetAdapterPortAttributes"] = {0, 0, 8, 8};
                             },
                             "(portIndex=1) failed with hbaStatus 8"},
                    PortCase{"rm_attributes",
                             [](fake::Libraries& l) {
                                 l.statuses["LRM_GetPortAttributes"] = {0, 191};
                             },
                             "RM_GetPortAttributes call failed (191)\n"}),
    [](const auto& test) { return std::string(test.param.what); });

// ---- libraries that answer nonsense ----

TEST_F(Discovery, TextsWithoutAnEndStayInTheirFields) {
    fake::Adapter& adapter = add();
    adapter.name = std::string(256, 'n');
    std::memset(adapter.record.Manufacturer, 'x', sizeof adapter.record.Manufacturer);
    std::memset(adapter.record.DriverName, 'y', sizeof adapter.record.DriverName);
    std::memset(adapter.ports[0].record.OSDeviceName, 'z', 256);
    adapter.attributes[528] = textOf(std::string(300, 'f'));
    build();
    ASSERT_EQ(data->getPorts().size(), 1u);
    EXPECT_EQ(data->getAdapters()[0]->getAdapterName(), std::string(256, 'n'));
    EXPECT_EQ(adapterFacts(0).Manufacturer, std::string(64, 'x'));
    EXPECT_EQ(adapterFacts(0).DriverName, std::string(256, 'y'));
    EXPECT_EQ(adapterFacts(0).operationalFirmware, std::string(255, 'f'));
    EXPECT_EQ(portFacts(0).OSDeviceName, std::string(256, 'z'));
}

TEST_F(Discovery, WildCountsEnd) {
    add(2).record.NumberOfPorts = 4'000'000'000;
    libraries->toldAdapters = 4'000'000'000;
    const std::vector<std::string> lines = build();
    EXPECT_THAT(lines, Contains("Number of Adapters is not plausible, looking at 4096"));
    EXPECT_THAT(lines, Contains("Number of ports is not plausible, looking at 1024"));
    EXPECT_EQ(data->getAdapterCount(), 1u);
    EXPECT_EQ(data->getPorts().size(), 2u);
}

// ---- the life of the tree ----

TEST_F(Discovery, NoAdapters) {
    EXPECT_THAT(build(),
                ElementsAre("buildAdapterData", "freeAllData: Entry", "freeAllData: cleanExit",
                            "buildAdapterData - with hbaapi", "Number of Adapters detected = 0",
                            "HBAAPI reports that there are NO HBAs in the system."));
    EXPECT_FALSE(data->isBuilt());
}

TEST_F(Discovery, ARebuildKeepsNothing) {
    add();
    add();
    build();
    libraries->adapters.pop_back();
    EXPECT_THAT(build(), Contains("Freeing adapter: Tavrin-F16-1"));
    EXPECT_EQ(data->getAdapters().size(), 1u);
    EXPECT_EQ(data->getPorts().size(), 1u);
    unloadManagementLibraries();
    data->buildAdapterData();
    EXPECT_EQ(data->getAdapters().size(), 0u);
    EXPECT_EQ(data->getPorts().size(), 0u);
    EXPECT_EQ(data->getAdapterCount(), 0u);
    EXPECT_FALSE(data->isBuilt());
    loadManagementLibraries();
    libraries =
        reinterpret_cast<fake::Access>(dlsym(libraryHandles[LRMAPI_LIBRARY], fake::accessName))();
}

TEST_F(Discovery, TheTreeFreesWhatItOwns) {
    add(2);
    build();
    data->freeAllData();
    EXPECT_THAT(log.take(), ElementsAre("freeAllData: Entry", "Freeing adapter: Tavrin-F16-0",
                                        "~FCAdapter", "Freeing Port: 1000025456AB0000", "~FCPort",
                                        "~Port", "Freeing Port: 1000025456AB0001", "~FCPort",
                                        "~Port", "~Adapter", "freeAllData: cleanExit"));
    EXPECT_EQ(data->getAdapterCount(), 0u);
    EXPECT_THAT(data->getPorts(), IsEmpty());
    data.reset();
    EXPECT_THAT(log.take(), ElementsAre("freeAllData: Entry", "freeAllData: cleanExit",
                                        "Data Pointer deleted."));
}

TEST(AdapterDefaults, AreNoAdapter) {
    const FCAdapter adapter;
    EXPECT_EQ(adapter.getAdapterName(), " ");
    EXPECT_EQ(adapter.getAdapterNumber(), -1);
    EXPECT_EQ(adapter.getAdapterType(), 0);
    EXPECT_EQ(adapter.getAttributes(), nullptr);
    EXPECT_THROW(adapter.getPort(0), std::out_of_range);
}

} // namespace
} // namespace cimple
