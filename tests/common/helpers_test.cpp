#include "common/files.h"
#include "common/settings.h"
#include "common/tvr_common.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace cimple {
namespace {

using testing::ElementsAre;

TEST(ParseVersion, FollowsTheGrammar) {
    const struct {
        const char* text;
        uint16 minor, revision, build;
        std::string types;
    } good[] = {
        {"2.82a4", 8, 2, 4, "a/"},     {"2.11X5", 1, 1, 5, "X/"},
        {"2.82a4r1", 8, 2, 4, "a/r1"}, {"2.82a4R9 x", 8, 2, 4, "a/r9"},
        {"2.82a4r", 8, 2, 4, "a/"},    {"2.82a4 and more", 8, 2, 4, "a/"},
    };
    for (const auto& c : good) {
        ParsedVersion v;
        EXPECT_EQ(parseVersion(c.text, v), 0u) << c.text;
        EXPECT_THAT((std::vector{v.major, v.minor, v.revision, v.build}),
                    ElementsAre(2, c.minor, c.revision, c.build));
        EXPECT_EQ(v.releaseType + "/" + v.testRelease, c.types);
    }
    for (const char* bad : {"2.82a4rX", "12.0a1", "2.82a", "x.82a4", "2-82a4", "2.x2a4", "2.8xa4",
                            "2.8234", "2.82\xe4\x34", "2.82ab", "", "2"}) {
        ParsedVersion version;
        EXPECT_EQ(parseVersion(bad, version), TVR_FAILURE) << bad;
        EXPECT_EQ(version.major, 0u) << bad;
    }
}

TEST(WwnText, GoesBothWays) {
    constexpr uint8 wwn[8] = {0x10, 0x00, 0xAA, 0xBB, 0xCC, 0xDD, 0x00, 0x11};
    char text[wwnTextSize];
    EXPECT_EQ(wwnToText(text, wwn), 0u);
    EXPECT_STREQ(text, "1000AABBCCDD0011");
    uint8 bytes[8] = {};
    EXPECT_EQ(text2HBAName(bytes, "1000aabbCCdd0011"), 1u);
    EXPECT_THAT(bytes, testing::ElementsAreArray(wwn));
    for (const char* bad :
         {"1000AABBCCDD001", "1000AABBCCDD00111", "1000AABBCCDD00G1", "", "10:00:AA:BB:CC:D"}) {
        EXPECT_EQ(text2HBAName(bytes, bad), 0u) << bad;
        EXPECT_THAT(bytes, testing::ElementsAreArray(wwn)) << bad;
    }
}

TEST(BytesToText, AppendsARange) {
    uint8 bytes[256] = {0, 0x0A, 0xB0, 0xFF, 4, 5, 6, 7, 8, 9};
    bytes[255] = 0x77;
    char text[600];
    descriptorToText(text, 3, 8, bytes);
    EXPECT_STREQ(text, "000AB0FF04050607");
    descriptorToText(text, 3, 10, bytes);
    EXPECT_STREQ(text, "");
    bytesToText(text, 3, 16, bytes, 1, 4);
    bytesToText(text, 3, 16, bytes, 4, 4);
    bytesToText(text, 3, 16, nullptr, 0, 4);
    EXPECT_STREQ(text, "0AB0FF");
    // An end that a target made up reads nothing behind the record.
    bytesToText(text, 3, 4'000'000'000, bytes, 255, 4'000'000'000);
    EXPECT_STREQ(text, "0AB0FF77");
}

class HostFiles : public testing::Test {
protected:
    HostFiles() : saved(settings()) { settings() = Settings(dir.path()); }
    ~HostFiles() override { settings() = saved; }

    TempDir dir;
    Settings saved;
};

TEST_F(HostFiles, OSInformation) {
    std::string name;
    std::string version;
    EXPECT_EQ(getOSInformation(name, version), TVR_FAILURE);
    EXPECT_EQ(name + "/" + version, "Unknown/Unknown");
    dir.write("proc/version", "Linux version 6.1 (gcc) #1\nsecond\n");
    EXPECT_EQ(getOSInformation(name, version), TVR_FAILURE);
    EXPECT_EQ(name + "/" + version, "Linux version 6.1 (gcc) #1/Unknown");
    dir.write("proc/version", std::string(300, 'k'));
    dir.write("etc/issue", std::string("Debian\n\\l\n\0rest", 15));
    EXPECT_EQ(getOSInformation(name, version), 0u);
    EXPECT_EQ(name + "/" + version, std::string(255, 'k') + "/Debian\n\\l\n");
}

TEST_F(HostFiles, WebPortalURL) {
    EXPECT_EQ(readWebPortalURL(), "");
    dir.write("etc/tvr_smis.conf",
              "  # a\n\n \t\nhttp://" + std::string(300, 'a') + "\nhttp://x\n");
    EXPECT_EQ(readWebPortalURL(), "http://" + std::string(248, 'a'));
    // A file that isn't a regular one counts as missing, and opening it does not block.
    settings().webPortalFile = dir.file("pipe");
    ASSERT_EQ(mkfifo(settings().webPortalFile.c_str(), 0600), 0);
    EXPECT_EQ(readWebPortalURL(), "");
}

} // namespace
} // namespace cimple
