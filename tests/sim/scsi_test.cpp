#include "sim/scsi.h"
#include "sim/target_mapping.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace tvrsim;

namespace {

Lun disk() {
    Lun lun;
    lun.fcpLun = 7;
    lun.vendor = "TVSTORE";
    lun.product = "ARRAY-2000";
    lun.revision = "4.10";
    lun.serialNumber = "A1";
    lun.designators.emplace_back().bytes = std::string("\x60\x02\x54\x56\x00\x00\x00\x01", 8);
    lun.blockSize = 4096;
    lun.blocks = 0x12345678;
    return lun;
}

std::string sense(const ScsiAnswer& answer) {
    return {answer.sense.at(2), answer.sense.at(12)};
}

/// A mapping with room for some rows, and one row more that must stay untouched.
class MappingBuffer {
public:
    explicit MappingBuffer(HBA_UINT32 room)
        : m_bytes(offsetof(HBA_FCPTARGETMAPPING, entry) + (room + 1) * sizeof(HBA_FCPSCSIENTRY),
                  '\xEE'),
          m_end(m_bytes.size() - sizeof(HBA_FCPSCSIENTRY)) {
        get()->NumberOfEntries = room;
    }
    HBA_FCPTARGETMAPPING* get() { return reinterpret_cast<HBA_FCPTARGETMAPPING*>(m_bytes.data()); }
    HBA_FCPSCSIENTRY row(size_t index) const {
        HBA_FCPSCSIENTRY entry;
        std::memcpy(&entry,
                    m_bytes.data() + offsetof(HBA_FCPTARGETMAPPING, entry) + index * sizeof entry,
                    sizeof entry);
        return entry;
    }
    bool endIsUntouched() const {
        return std::string(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_end), m_bytes.end()) ==
               std::string(sizeof(HBA_FCPSCSIENTRY), '\xEE');
    }

private:
    std::vector<char> m_bytes;
    size_t m_end;
};

} // namespace

TEST(Scsi, InquiryPages) {
    const ScsiAnswer standard = inquiry(disk(), false, 0);
    ASSERT_EQ(standard.data.size(), 36U);
    EXPECT_EQ(standard.data.substr(8), "TVSTORE ARRAY-2000      4.10");
    EXPECT_EQ(inquiry(disk(), true, 0).data, std::string("\0\0\0\x03\0\x80\x83", 7));
    EXPECT_EQ(inquiry(disk(), true, 0x80).data, std::string("\0\x80\0\x02"
                                                            "A1",
                                                            6));
    EXPECT_EQ(inquiry(disk(), true, 0x83).data,
              std::string("\0\x83\0\x0C\x01\x03\0\x08\x60\x02\x54\x56\0\0\0\x01", 16));
    EXPECT_EQ(sense(inquiry(disk(), true, 0xB0)), "\x05\x24");
    EXPECT_EQ(sense(inquiry(disk(), false, 0x80)), "\x05\x24");

    Lun bare = disk();
    bare.serialNumber.clear();
    bare.designators.clear();
    EXPECT_EQ(inquiry(bare, true, 0).data, std::string("\0\0\0\x01\0", 5));
    EXPECT_EQ(inquiry(bare, true, 0x80).status, HBA_STATUS_SCSI_CHECK_CONDITION);
    EXPECT_EQ(inquiry(bare, true, 0x83).status, HBA_STATUS_SCSI_CHECK_CONDITION);
}

TEST(Scsi, CapacityIsTheLastBlock) {
    EXPECT_EQ(readCapacity(disk()).data, std::string("\x12\x34\x56\x77\0\0\x10\0", 8));
    Lun lun = disk();
    lun.blocks = UINT64_MAX;
    EXPECT_EQ(readCapacity(lun).data.substr(0, 4), "\xFF\xFF\xFF\xFF");
    lun.blocks = 0;
    EXPECT_EQ(readCapacity(lun).data.substr(0, 4), std::string(4, '\0'));
    lun.peripheralType = 1;
    EXPECT_EQ(sense(readCapacity(lun)), "\x05\x20");
}

TEST(Scsi, AnswersAreCutToTheBuffers) {
    std::string response(6, '#');
    EXPECT_EQ(deliver(inquiry(disk(), true, 0x80), response.data(), 5, nullptr, 0), HBA_STATUS_OK);
    EXPECT_EQ(response, std::string("\0\x80\0\x02"
                                    "A#",
                                    6));
    std::string senseData(4, '#');
    EXPECT_EQ(deliver(noSuchUnit(), response.data(), 5, senseData.data(), 3),
              HBA_STATUS_SCSI_CHECK_CONDITION);
    EXPECT_EQ(senseData, std::string("\x70\0\x05#", 4));
    EXPECT_EQ(deliver(noSuchUnit(), nullptr, 5, nullptr, 0), HBA_STATUS_ERROR_ARG);
}

TEST(TargetMapping, CountTellsTheNeed) {
    Target target;
    target.portWwn = HBA_WWN{{0x50, 1}};
    target.luns = {disk(), disk(), disk()};
    target.luns[2].fcpLun = 9;
    target.luns[2].osDeviceName = "/dev/sdz";
    std::vector<Port> ports(2);
    ports[1].targets = std::make_shared<const TargetTable>(std::vector{target});
    MappingFaults none;

    MappingBuffer small(2);
    EXPECT_EQ(fillMapping(ports, none, small.get()), HBA_STATUS_ERROR_MORE_DATA);
    EXPECT_EQ(small.get()->NumberOfEntries, 3U);
    EXPECT_TRUE(small.endIsUntouched());
    MappingBuffer enough(3);
    EXPECT_EQ(fillMapping(ports, none, enough.get()), HBA_STATUS_OK);
    EXPECT_EQ(enough.row(2).FcpId.FcpLun, 9U);
    EXPECT_STREQ(enough.row(2).ScsiId.OSDeviceName, "/dev/sdz");
    EXPECT_TRUE(enough.endIsUntouched());
}
