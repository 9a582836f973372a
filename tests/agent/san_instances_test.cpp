// A rebuild of the SAN maps: its order, what its instances share, and where it ends.
#include "tests/agent/agent_session.h"

#include <cstring>
#include <stdexcept>

namespace cimple {
namespace {

HBA_FCPSCSIENTRY row(uint8 number) {
    HBA_FCPSCSIENTRY row{};
    row.FcpId.PortWWN = {{0x50, 0, 0xAA, 0xBB, 0xCC, 0xDD, 0, 0x01}};
    std::memcpy(&row.FcpId.FcpLun, "\0\0\0\0\0\0\0", 8);
    reinterpret_cast<uint8*>(&row.FcpId.FcpLun)[1] = number;
    row.ScsiId.ScsiOSLun = number;
    return row;
}

// Three adapters of one port each, which see two logical units each: a volume and a tape drive.
class SAN : public With_Session {
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
        session.on("only",
                   [this](const auto& words) { libraries.adapters.resize(number(words.at(0))); });
        session.on("same-node", [this] {
            libraries.adapters[1].record.NodeWWN = libraries.adapters[0].record.NodeWWN;
        });
        session.on("row-twice", [this] {
            libraries.adapters[1].targets = {row(0), row(0), row(1)};
        });
        session.on("no-host-name", [] {
            static constexpr Host_Lookup failing = {
                [](char*, std::size_t) -> int { throw std::runtime_error("no name"); },
                [](const char*, Host_Name&) { return false; }};
            set_host_lookup(&failing);
        });
        load();
    }
};

TVR_SESSIONS(SAN, "san_instances.txt");

// Or memory would grow with their number.
TEST_F(SAN, AssociationsShareOneCopyOfEachOfTheirEnds) {
    libraries.adapters.resize(1);
    refresh();
    const auto& hosted = agent->maps.m_TVRHBA_LocalHostedAccessPoint_map;
    const auto* volume_path = agent->maps.m_TVRHBA_SCSIInitiatorTargetStorageVolumePath_map.get(0);
    const auto* tape_path = agent->maps.m_TVRHBA_SCSIInitiatorTargetTapeDrivePath_map.get(0);
    EXPECT_EQ(volume_path->Initiator, tape_path->Initiator);
    EXPECT_EQ(volume_path->Target, hosted.get(0)->Dependent);
    EXPECT_EQ(hosted.get(0)->Antecedent, hosted.get(1)->Antecedent);
    EXPECT_EQ(volume_path->LogicalUnit,
              agent->maps.m_TVRHBA_StorageVolumeSystemDevice_map.get(0)->PartComponent);
}

} // namespace
} // namespace cimple
