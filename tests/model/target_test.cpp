// Discovery of targets: what is asked of the libraries, in which order, and what a failure costs.
#include "model/data.h"
#include "model/target.h"
#include "tests/access/access_session.h"

#include <cstring>

namespace cimple {
namespace {

HBA_FCPSCSIENTRY row(uint8 number) {
    HBA_FCPSCSIENTRY row{};
    row.FcpId.FcId = 0x010200;
    row.FcpId.NodeWWN = {{0x50, 0, 0x02, 0x54, 0x56, 0, 0, 0x10}};
    row.FcpId.PortWWN = {{0x50, 0, 0x02, 0x54, 0x56, 0, 0, 0x11}};
    row.FcpId.FcpLun = number;
    row.ScsiId.ScsiOSLun = number;
    return row;
}

// Two adapters of one port each, of which the first sees two logical units.
class Scan : public Access_Session {
protected:
    void SetUp() override {
        Access_Session::SetUp();
        for (const uint8 number : {uint8{0}, uint8{1}}) {
            fake::Adapter& adapter = libraries->adapters.emplace_back();
            adapter.name = "Tavrin-F16-" + std::to_string(number);
            adapter.record.NumberOfPorts = 1;
            adapter.ports.resize(1);
            adapter.ports[0].record.PortWWN = {{0x10, 0, 0x02, 0x54, 0x56, 0xAB, number, 0}};
        }
        see(0, 2);
        data.buildAdapterData();
        session.on("sees", [this](const auto& words) { see(number(words, 0), number(words, 1)); });
        session.on("one-adapter", [this] {
            libraries->adapters.pop_back();
            data.buildAdapterData();
        });
        session.on("told", [this](const auto& words) {
            libraries->toldTargets.reset();
            if (!words.empty()) {
                libraries->toldTargets = number(words, 0);
            }
        });
        session.on("failing-units", [this] {
            libraries->scsi = [](const fake::ScsiCommand& command, uint8*, uint8* sense) -> uint32 {
                sense[0] = 0x70;
                sense[23] = 0xFE;
                return command.page == 0x83   ? HBA_STATUS_SCSI_CHECK_CONDITION
                       : command.code == 0x25 ? HBA_STATUS_ERROR_NOT_SUPPORTED
                                              : HBA_STATUS_OK;
            };
        });
        // How many units each port then has, and the numbers of the first one's.
        on_call("scan", [this](const auto&, std::ostream& answer) {
            data.buildSANData();
            for (const Port* port : data.getPorts()) {
                answer << port->getTargetCount() << " units, ";
            }
            const auto& targets = data.getPorts().at(0)->getTargets();
            answer << "from " << (targets.empty() ? "none" : std::to_string(targets[0]->ScsiOSLun));
        });
    }
    void TearDown() override { EXPECT_EQ(libraries->openHandles, 0) << "an adapter was left open"; }

    void see(std::size_t adapter, std::size_t units) {
        libraries->adapters[adapter].targets.clear();
        for (std::size_t i = 0; i < units; ++i) {
            libraries->adapters[adapter].targets.push_back(row(static_cast<uint8>(i)));
        }
    }

    Data data;
};

TVR_SESSIONS(Scan, "target.txt");

TEST_F(Scan, GetsMoreRoomForALongMapping) {
    see(0, 300);
    data.buildSANData();
    EXPECT_EQ(data.getPorts()[0]->getTargetCount(), 300u);
    EXPECT_EQ(libraries->requests.at(1), "HBA_GetFcpTargetMapping 300");
    EXPECT_EQ(libraries->calls["HBA_RefreshInformation"], 0);
}

// Buffers are clean for each command and kept for its repetitions, which only a check condition
// asks for.
TEST_F(Scan, RepeatsCommandsOnCheckConditions) {
    see(0, 1);
    std::deque<uint32> statuses = {9, 9, 0, 9, 2, 9, 9, 9};
    std::string found;
    libraries->scsi = [&](const fake::ScsiCommand& command, uint8* response, uint8* sense) {
        found += std::to_string(response[254]) + std::to_string(sense[127]) + ' ';
        ++response[254];
        ++sense[127];
        const uint32 status = statuses.empty() ? 0 : statuses.front();
        if (!statuses.empty()) {
            statuses.pop_front();
        }
        if (command.code == 0x12 && command.page == 0) {
            constexpr std::string_view inquiry = "TVSTORE ARRAY           4.10";
            inquiry.copy(reinterpret_cast<char*>(response + 8), inquiry.size());
        }
        return status;
    };
    data.buildSANData();
    EXPECT_EQ(found, "00 11 22 00 11 00 11 22 00 ");
    const Target& target = *data.getPorts()[0]->getTarget(0);
    EXPECT_EQ(target.vendor, "TVSTORE ");
    EXPECT_EQ(target.product, "ARRAY           ");
    EXPECT_EQ(target.revision, "4.10");
    EXPECT_EQ(target.serialNumber, "Unknown");
    EXPECT_EQ(target.deviceIdentifier.identifierLength, 0u);
    EXPECT_EQ(target.maxLBA + target.blockSize, 0u);
}

} // namespace
} // namespace cimple
