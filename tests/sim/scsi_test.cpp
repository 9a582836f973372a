#include "sim/scsi.h"

#include <gtest/gtest.h>

#include <string>

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
