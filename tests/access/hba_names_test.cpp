#include "access/method_wrapper.h"
#include "tests/common/log_capture.h"

#include <gmock/gmock.h>

#include <cstring>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr HBA_WWN sample{{0x10, 0x00, 0xAA, 0xBB, 0xCC, 0xDD, 0x00, 0x11}};

bool same(const HBA_WWN& a, const HBA_WWN& b) {
    return std::memcmp(a.wwn, b.wwn, sizeof a.wwn) == 0;
}

TEST(Id2HBAName, PutsColonsIn) {
    char out[TVR_MethodWrapper::hbaNameTextSize];
    LogCapture log;
    EXPECT_EQ(TVR_MethodWrapper::Id2HBAName(out, "1000AABBCCDD0011"), 0u);
    EXPECT_STREQ(out, "10:00:AA:BB:CC:DD:00:11");
    EXPECT_THAT(log.take(), ElementsAre("Entering TVR_MethodWrapper::Id2HBAName",
                                        "DeviceID is:: 1000AABBCCDD0011",
                                        "HBA Name is:: 10:00:AA:BB:CC:DD:00:11"));
    EXPECT_EQ(TVR_MethodWrapper::Id2HBAName(out, "\"1000aabbccdd0011\""), 0u);
    EXPECT_STREQ(out, "10:00:aa:bb:cc:dd:00:11");
    EXPECT_EQ(TVR_MethodWrapper::Id2HBAName(out, "no test of character"), 0u);
    EXPECT_STREQ(out, "no: t:es:t :of: c:ha:ra");
}

TEST(Id2HBAName, ShortAndMissingTexts) {
    char out[TVR_MethodWrapper::hbaNameTextSize];
    for (const char* text : {"", "\"", "1", "1000AABBCCDD001"}) {
        EXPECT_EQ(TVR_MethodWrapper::Id2HBAName(out, text), 0u);
        HBA_WWN name;
        EXPECT_EQ(TVR_MethodWrapper::str2HBAName(&name, out), 1u) << text;
    }
    LogCapture log;
    EXPECT_EQ(TVR_MethodWrapper::Id2HBAName(nullptr, "1000AABBCCDD0011"), 1u);
    EXPECT_EQ(TVR_MethodWrapper::Id2HBAName(out, nullptr), 1u);
    EXPECT_THAT(log.take(), Contains("Null pointer argument in one of the arguments").Times(2));
}

TEST(Str2HBAName, ReadsTheColonForm) {
    HBA_WWN name{};
    LogCapture log;
    EXPECT_EQ(TVR_MethodWrapper::str2HBAName(&name, "10:00:aa:bb:CC:DD:00:11"), 0u);
    EXPECT_TRUE(same(name, sample));
    EXPECT_THAT(log.take(), ElementsAre("Entering TVR_MethodWrapper::str2HBAName",
                                        "wwpn:( 10:00:aa:bb:CC:DD:00:11 ) ",
                                        "After tokenizing wwpn:( 10  0 aa bb cc dd  0 11 )"));
}

TEST(Str2HBAName, RefusesAllElse) {
    for (const char* bad :
         {"10 00 aa bb cc dd 00 11", "10:00:aa bb:cc:dd:00:11", "10:00:aa:bb:cc:dd:00:1",
          "10:00:aa:bb:cc:dd:00:111", "10:00:aa:bb:cc:dd:00:1g", "10-00-aa-bb-cc-dd-00-11",
          "1:000:aa:bb:cc:dd:00:11", "", ":::::::::::::::::::::::"}) {
        LogCapture log;
        HBA_WWN name = sample;
        EXPECT_EQ(TVR_MethodWrapper::str2HBAName(&name, bad), 1u) << bad;
        EXPECT_TRUE(same(name, sample)) << bad;
        EXPECT_EQ(log.take().back(), "INVALID HBA Name") << bad;
    }
    LogCapture log;
    HBA_WWN name = sample;
    EXPECT_EQ(TVR_MethodWrapper::str2HBAName(&name, nullptr), 1u);
    EXPECT_EQ(TVR_MethodWrapper::str2HBAName(nullptr, "10:00:aa:bb:cc:dd:00:11"), 1u);
    EXPECT_EQ(log.take().back(), "Null pointer assignment in argument pHBAName");
}

TEST(String2HBAName, OneIsSuccess) {
    HBA_WWN name{};
    EXPECT_EQ(TVR_MethodWrapper::string2HBAName(name, "1000AABBccdd0011"), 1u);
    EXPECT_TRUE(same(name, sample));
    LogCapture log;
    EXPECT_EQ(TVR_MethodWrapper::string2HBAName(name, "1000AABBCCDD001"), 0u);
    EXPECT_EQ(TVR_MethodWrapper::string2HBAName(name, "1000AABBCCDD00G1"), 0u);
    EXPECT_THAT(log.take(), ElementsAre("INVALID WWN", "INVALID WWN"));
}

TEST(HbaNameToText, WritesTheColonForm) {
    char text[TVR_MethodWrapper::hbaNameTextSize];
    EXPECT_EQ(TVR_MethodWrapper::hbaNameToText(text, sample), 0u);
    EXPECT_STREQ(text, "10:00:AA:BB:CC:DD:00:11");
    EXPECT_EQ(TVR_MethodWrapper::hbaNameToText(nullptr, sample), 0u);
}

TEST(WWPNList, TellsANameThatItHas) {
    std::vector<HBA_WWN> list;
    HBA_WWN other = sample;
    other.wwn[7] = 0x12;
    EXPECT_EQ(TVR_MethodWrapper::isDuplicateEntryInWWPNList(sample, list), 0u);
    EXPECT_EQ(TVR_MethodWrapper::isDuplicateEntryInWWPNList(other, list), 0u);
    EXPECT_EQ(TVR_MethodWrapper::isDuplicateEntryInWWPNList(sample, list), 1u);
    EXPECT_EQ(TVR_MethodWrapper::isDuplicateEntryInWWPNList(other, list), 1u);
    EXPECT_EQ(list.size(), 2u);
}

} // namespace
} // namespace cimple
