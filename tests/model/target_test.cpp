// Discovery of targets: what is asked of the libraries, in which order, and what a failure costs.
#include "model/data.h"
#include "model/target.h"
#include "tests/access/fake_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;
using Lines = std::vector<std::string>;

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
class Scan : public WithFakeLibraries {
protected:
    void SetUp() override {
        WithFakeLibraries::SetUp();
        *libraries = {};
        for (const uint8 number : {uint8{0}, uint8{1}}) {
            fake::Adapter& adapter = libraries->adapters.emplace_back();
            adapter.name = "Tavrin-F16-" + std::to_string(number);
            adapter.record.NumberOfPorts = 1;
            adapter.ports.resize(1);
            adapter.ports[0].record.PortWWN = {{0x10, 0, 0x02, 0x54, 0x56, 0xAB, number, 0}};
        }
        see(2);
        data.buildAdapterData();
    }
    void TearDown() override {
        EXPECT_EQ(libraries->openHandles, 0) << "an adapter was left open";
        *libraries = {};
    }

    void see(std::size_t units) {
        libraries->adapters[0].targets.clear();
        for (std::size_t i = 0; i < units; ++i) {
            libraries->adapters[0].targets.push_back(row(static_cast<uint8>(i)));
        }
    }
    Lines scan() {
        libraries->requests.clear();
        log.take();
        data.buildSANData();
        return log.take();
    }
    // The numbers of the units that the first port has.
    std::vector<uint32> units() const {
        std::vector<uint32> numbers;
        for (const std::unique_ptr<Target>& target : data.getPorts().at(0)->getTargets()) {
            numbers.push_back(target->ScsiOSLun);
        }
        return numbers;
    }

    Data data;
};

TEST_F(Scan, TellsItsSteps) {
    libraries->adapters.pop_back();
    data.buildAdapterData();
    see(1);
    scan();
    libraries->scsi = [](const fake::ScsiCommand& command, uint8*, uint8* sense) -> uint32 {
        sense[0] = 0x70;
        sense[23] = 0xFE;
        return command.page == 0x83   ? HBA_STATUS_SCSI_CHECK_CONDITION
               : command.code == 0x25 ? HBA_STATUS_ERROR_NOT_SUPPORTED
                                      : HBA_STATUS_OK;
    };
    std::string zeros;
    for (int i = 0; i < 22; ++i) {
        zeros += "00 ";
    }
    EXPECT_THAT(scan(),
                ElementsAre("buildSANData", "Target Scan from adapter: Tavrin-F16-0",
                            "FCAdapter::rescanTargets", "FCPort::rescanTargets",
                            "Freeing Target: 5000025456000011",
                            "To retry the HBA_GetFcpTargetMapping command", "All Ok ...break ",
                            "Successful target info fetched", "Creating Target...",
                            "5000025456000010", "5000025456000011", "SCSI Inquiry with 0, 0",
                            "SCSI Inquiry with 1, 0x80", "SCSI Inquiry with 1, 0x83",
                            "HBA_SendScsiInquiry_t(0x80) returns 9.",
                            "Sense Data: 70 " + zeros + "fe ", "Send Read Capacity",
                            "HBA_SendScsiInquiry_t(0x80) returns 2.", "End Creating Target..."));
    EXPECT_THAT(libraries->requests,
                ElementsAre("HBA_GetFcpTargetMapping 256", "HBA_SendScsiInquiry 0 0 255 128",
                            "HBA_SendScsiInquiry 1 128 255 128",
                            "HBA_SendScsiInquiry 1 131 255 128",
                            "HBA_SendScsiInquiry 1 131 255 128",
                            "HBA_SendScsiInquiry 1 131 255 128", "HBA_SendReadCapacity 255 128"));
}

TEST_F(Scan, AsksForAMappingUntilItFits) {
    const std::string retry = "To retry the HBA_GetFcpTargetMapping command";
    const std::string good = "All Ok ...break ";
    const std::string fetched = "Successful target info fetched";
    const std::string refreshed = "Refresh and retry ... ";
    const std::string none = "HBA_GetFcpTargetMapping_t() found no target mappings";
    const std::string room = "Increasing the buffer to = ";
    const std::string usual = room + "256";
    const std::string no_memory = "Could not allocate memory..break ";
    const struct {
        std::size_t units;
        std::deque<uint32> statuses;
        std::optional<uint32> told;
        std::size_t found;
        std::vector<uint32> rooms; // in rows, one a call
        Lines attempts;            // a line for each
        Lines end;
    } cases[] = {
        {300, {}, {}, 300, {256, 300}, {room + "300", good}, {fetched}},
        {2, {8, 8, 8}, {}, 0, {256, 256, 256}, {refreshed, refreshed, refreshed}, {fetched}},
        {2, {8, 8}, {}, 2, {256, 256, 256}, {refreshed, refreshed, good}, {fetched}},
        {2, {7}, 0, 0, {256, 256}, {usual, good}, {fetched, none}},
        {2, {}, 1, 1, {256}, {good}, {fetched}},
        {2, {7, 7, 7}, 100, 0, {256, 256, 256}, {usual, usual, usual}, {fetched}},
        {2, {7, 7, 7}, 0, 0, {256, 256, 256}, {usual, usual, usual}, {fetched, none}},
        {2, {7}, 1'048'577, 0, {256}, {room + "1048577", no_memory}, {}},
        {2, {2}, {}, 0, {256}, {"Error hbaStatus=2"}, {}},
        {0, {}, {}, 0, {256}, {good}, {fetched, none}},
        {2, {}, 4'000'000'000, 2, {256}, {good}, {fetched}},
    };
    libraries->adapters.pop_back();
    data.buildAdapterData();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.attempts.back());
        see(c.units);
        libraries->statuses["HBA_GetFcpTargetMapping"] = c.statuses;
        libraries->toldTargets = c.told;
        libraries->calls["HBA_RefreshInformation"] = 0;
        const Lines lines = scan();
        // From the first line of the mapping up to what follows it.
        const auto begin = std::find(lines.begin(), lines.end(), retry);
        const auto end = std::find(begin, lines.end(), "Creating Target...");
        Lines expected;
        for (const std::string& attempt : c.attempts) {
            expected.push_back(retry);
            if (expected.size() > 1) {
                expected.emplace_back("Deleting the allocated memory");
            }
            expected.push_back(attempt);
        }
        expected.insert(expected.end(), c.end.begin(), c.end.end());
        EXPECT_EQ(Lines(begin, end), expected);
        EXPECT_EQ(units().size(), c.found);
        EXPECT_EQ(libraries->calls["HBA_RefreshInformation"],
                  std::count(expected.begin(), expected.end(), refreshed));
        Lines rooms;
        for (const uint32 rows : c.rooms) {
            rooms.push_back("HBA_GetFcpTargetMapping " + std::to_string(rows));
        }
        std::erase_if(libraries->requests,
                      [](const std::string& text) { return text.find("Mapping") == text.npos; });
        EXPECT_EQ(libraries->requests, rooms);
    }
}

// Buffers are clean for each command and kept for its repetitions, which only a check condition
// asks for.
TEST_F(Scan, RepeatsCommandsOnCheckConditions) {
    see(1);
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
    scan();
    EXPECT_EQ(found, "00 11 22 00 11 00 11 22 00 ");
    const Target& target = *data.getPorts()[0]->getTarget(0);
    EXPECT_EQ(target.vendor, "TVSTORE ");
    EXPECT_EQ(target.product, "ARRAY           ");
    EXPECT_EQ(target.revision, "4.10");
    EXPECT_EQ(target.serialNumber, "Unknown");
    EXPECT_EQ(target.deviceIdentifier.identifierLength, 0u);
    EXPECT_EQ(target.maxLBA + target.blockSize, 0u);
}

// The scan opens the adapter once for its mapping and once for each row.
TEST_F(Scan, LosesOnlyWhatItCantOpen) {
    libraries->adapters[1].targets = {row(7)};
    const struct {
        std::deque<uint32> statuses;
        std::vector<uint32> units;
        std::string message;
    } cases[] = {
        {{}, {0, 1}, "buildSANData"},
        {{1}, {}, "Issue with Target Rescan - moving to the next Port"},
        {{0, 1}, {1}, "target creation failed - moving to the next target"},
        {{0, 0, 1}, {0}, "HBA_OpenAdapter failed, skipping Adapter Tavrin-F16-0"},
    };
    for (const auto& c : cases) {
        libraries->statuses["HBA_OpenAdapter"] = c.statuses;
        EXPECT_THAT(scan(), Contains(c.message));
        EXPECT_EQ(units(), c.units) << c.message;
        EXPECT_EQ(data.getPorts()[1]->getTargetCount(), 1u) << c.message;
    }
}

} // namespace
} // namespace cimple
