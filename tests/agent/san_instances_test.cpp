// A rebuild of the SAN maps: its order, what its instances share, and where it ends.
#include "tests/agent/agent_fixture.h"

#include <cstring>
#include <stdexcept>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

HBA_FCPSCSIENTRY row(uint8 number) {
    HBA_FCPSCSIENTRY row{};
    row.FcpId.PortWWN = {{0x50, 0, 0xAA, 0xBB, 0xCC, 0xDD, 0, 0x01}};
    std::memcpy(&row.FcpId.FcpLun, "\0\0\0\0\0\0\0", 8);
    reinterpret_cast<uint8*>(&row.FcpId.FcpLun)[1] = number;
    row.ScsiId.ScsiOSLun = number;
    return row;
}

// Three adapters of one port each, which see two logical units each: a volume and a tape drive.
class SAN : public With_Agent {
protected:
    SAN() {
        for (fake::Adapter& adapter : libraries.adapters) {
            adapter.targets = {row(0), row(1)};
        }
        libraries.scsi = [](const fake::ScsiCommand& command, uint8* response, uint8*) -> uint32 {
            const bool tape = reinterpret_cast<const uint8*>(&command.lun)[1] == 1;
            if (command.page == 0x83) {
                const uint8 page[] = {tape, 0x83, 0, 12, 1, 3, 0, 8, 0x50, 1, 2, 3, 4, 5, 6, 7};
                std::memcpy(response, page, sizeof page);
            }
            return HBA_STATUS_OK;
        };
    }
    // The log from the rebuild's first line to the last one of `file`.
    std::vector<std::string> rebuild_lines() {
        std::vector<std::string> found;
        for (const LogCapture::Line& line : log.lines()) {
            if (line.file.ends_with("san_instances.cpp") || line.file.ends_with("creation.h")) {
                found.push_back(line.text);
            }
        }
        const auto begin = std::find(found.begin(), found.end(), "PERF: updateSANMaps: Entry");
        return {begin, found.end()};
    }
    static std::vector<std::string> endpoints() {
        return enumerated_SAN<TVRHBA_SCSIProtocolEndpoint>().texts("Name");
    }
};

TEST_F(SAN, GoesThroughAdaptersPortsAndTargets) {
    libraries.adapters.resize(1);
    load();
    refresh();
    const std::string port = "1000AABBCCDD0100";
    const std::string target = "5000AABBCCDD0001";
    const std::string volume = port + "_" + target + "_5001020304050607_0000000000000000";
    const std::string tape = port + "_" + target + "_5001020304050607_0001000000000000";
    EXPECT_THAT(rebuild_lines(),
                ElementsAre("PERF: updateSANMaps: Entry", "Creating classes for port 0.",
                            "Creating classes for target 0 of 2.",
                            "Generating TVRHBA_LocalHostedAccessPoint (" + port + ":" + target +
                                ":0000000000000000)",
                            "Target 0 is of type 0.", "creating TVRHBA_StorageVolume",
                            "StorageVolumeInstance->DeviceID = " + volume,
                            "Generating TVRHBA_StorageVolumeSystemDevice (" + volume + ")",
                            "creating TVRHBA_SCSIInitiatorTargetStorageVolumePath - Storage Volume",
                            "Creating classes for target 1 of 2.",
                            "Generating TVRHBA_LocalHostedAccessPoint (" + port + ":" + target +
                                ":0001000000000000)",
                            "Target 1 is of type 1.",
                            "Generating TVRHBA_TapeDriveSystemDevice (" + tape + ")",
                            "creating TVRHBA_SCSIInitiatorTargetTapeDrivePath - Tape Drive",
                            "PERF: updateSANMaps: cleanExit"));
    // Associations share one copy of each of their ends, or memory would grow with their number.
    const auto& hosted = agent->maps.m_TVRHBA_LocalHostedAccessPoint_map;
    const auto* volume_path = agent->maps.m_TVRHBA_SCSIInitiatorTargetStorageVolumePath_map.get(0);
    const auto* tape_path = agent->maps.m_TVRHBA_SCSIInitiatorTargetTapeDrivePath_map.get(0);
    EXPECT_EQ(volume_path->Initiator, tape_path->Initiator);
    EXPECT_EQ(volume_path->Target, hosted.get(0)->Dependent);
    EXPECT_EQ(hosted.get(0)->Antecedent, hosted.get(1)->Antecedent);
    EXPECT_EQ(volume_path->LogicalUnit,
              agent->maps.m_TVRHBA_StorageVolumeSystemDevice_map.get(0)->PartComponent);
}

// A row that comes twice: what was made before it stays, and the next rebuild starts afresh.
TEST_F(SAN, EndsAtTheFirstInstanceThatIsThereAlready) {
    libraries.adapters[1].targets = {row(0), row(0), row(1)};
    load();
    refresh();
    const std::string target = ":5000AABBCCDD0001:000";
    EXPECT_EQ(rebuild_lines().back(), "Insert Failed : m_TVRHBA_SCSIProtocolEndpoint_map");
    EXPECT_THAT(endpoints(), ElementsAre("1000AABBCCDD0100" + target + "0000000000000",
                                         "1000AABBCCDD0100" + target + "1000000000000",
                                         "1000AABBCCDD0200" + target + "0000000000000"));
    EXPECT_EQ(enumerated_SAN<TVRHBA_SCSIInitiatorTargetStorageVolumePath>().size(), 2u);
    libraries.adapters.resize(1);
    refresh();
    EXPECT_EQ(rebuild_lines().back(), "PERF: updateSANMaps: cleanExit");
    EXPECT_EQ(endpoints().size(), 2u);
}

// Adapter maps that stopped short, at the second adapter or before there was a computer system.
TEST_F(SAN, EndsAtAPortWithoutAnInitiator) {
    const std::string missing = "Could not find TVRHBA_SCSIProtocolEndpoint Initiator instance.";
    libraries.adapters[1].record.NodeWWN = libraries.adapters[0].record.NodeWWN;
    load();
    refresh();
    EXPECT_EQ(rebuild_lines().back(), missing);
    EXPECT_EQ(endpoints().size(), 2u);

    static constexpr Host_Lookup failing = {
        [](char*, std::size_t) -> int { throw std::runtime_error("no name"); },
        [](const char*, Host_Name&) { return false; }};
    set_host_lookup(&failing);
    refresh();
    ASSERT_TRUE(agent->maps.m_CIM_ComputerSystem_map.empty());
    EXPECT_EQ(rebuild_lines().back(), missing);
    EXPECT_THAT(endpoints(), IsEmpty());
}

} // namespace
} // namespace cimple
