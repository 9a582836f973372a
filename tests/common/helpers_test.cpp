#include "common/files.h"
#include "common/settings.h"
#include "common/tvr_common.h"
#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <ostream>
#include <sys/stat.h>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// ---- versions ----

struct VersionCase {
    const char* text;
    bool good;
    uint16 major, minor, revision, build;
    const char* release;
    const char* test;
    friend void PrintTo(const VersionCase& c, std::ostream* out) {
        *out << (c.text == nullptr ? "null" : c.text);
    }
};

class ParseVersion : public testing::TestWithParam<VersionCase> {};

TEST_P(ParseVersion, FollowsTheGrammar) {
    const VersionCase& c = GetParam();
    ParsedVersion version;
    EXPECT_EQ(parseVersion(c.text, version), c.good ? 0u : TVR_FAILURE);
    EXPECT_EQ(version.major, c.major);
    EXPECT_EQ(version.minor, c.minor);
    EXPECT_EQ(version.revision, c.revision);
    EXPECT_EQ(version.build, c.build);
    EXPECT_EQ(version.releaseType, c.release);
    EXPECT_EQ(version.testRelease, c.test);
}

INSTANTIATE_TEST_SUITE_P(Texts, ParseVersion,
                         testing::Values(VersionCase{"2.82a4", true, 2, 8, 2, 4, "a", ""},
                                         VersionCase{"1.11X5", true, 1, 1, 1, 5, "X", ""},
                                         VersionCase{"2.82a4r1", true, 2, 8, 2, 4, "a", "r1"},
                                         VersionCase{"2.82a4R9 x", true, 2, 8, 2, 4, "a", "r9"},
                                         VersionCase{"2.82a4r", true, 2, 8, 2, 4, "a", ""},
                                         VersionCase{"2.82a4 and more", true, 2, 8, 2, 4, "a", ""},
                                         VersionCase{"2.82a4rX", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"12.0a1", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"2.82a", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"x.82a4", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"2-82a4", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"2.x2a4", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"2.8xa4", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"2.8234", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"2.82\xe4"
                                                     "4",
                                                     false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"2.82ab", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{"", false, 0, 0, 0, 0, "", ""},
                                         VersionCase{nullptr, false, 0, 0, 0, 0, "", ""}));

TEST(ParseVersionLog, TellsEachStep) {
    LogCapture log;
    ParsedVersion version;
    parseVersion("2.82a4r1", version);
    EXPECT_THAT(log.take(),
                ElementsAre("Input Version String: [2.82a4r1]",
                            "Parsed the major, minor, revision & build numbers",
                            "parseVersion: This seems to be a Test Release Firmware...",
                            "Parsed the revision for Test Firmwares",
                            "Filled Major, Minor, Revision & Build Numbers", "Filled ReleaseType",
                            "parseVersion: Version parsing success"));
    parseVersion("2", version);
    EXPECT_THAT(log.take(), ElementsAre("Input Version String: [2]",
                                        "parseVersion Error: Invalid Firmware String"));
    parseVersion(nullptr, version);
    EXPECT_THAT(log.take(), ElementsAre("parseVersion Error: Input FirmwareVersion is Null"));
}

// ---- names and identifiers ----

constexpr uint8 wwn[8] = {0x10, 0x00, 0xAA, 0xBB, 0xCC, 0xDD, 0x00, 0x11};

TEST(WwnText, GoesBothWays) {
    char text[wwnTextSize];
    EXPECT_EQ(wwnToText(text, wwn), 0u);
    EXPECT_STREQ(text, "1000AABBCCDD0011");
    EXPECT_EQ(wwnToText(nullptr, wwn), 0u);

    uint8 bytes[8] = {};
    EXPECT_EQ(text2HBAName(bytes, "1000aabbCCdd0011"), 1u);
    EXPECT_THAT(bytes, testing::ElementsAreArray(wwn));
}

TEST(WwnText, RefusesWhatIsNoName) {
    LogCapture log;
    for (const char* bad :
         {"1000AABBCCDD001", "1000AABBCCDD00111", "1000AABBCCDD00G1", "", "10:00:AA:BB:CC:D"}) {
        uint8 bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        EXPECT_EQ(text2HBAName(bytes, bad), 0u) << bad;
        EXPECT_THAT(bytes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8)) << bad;
        EXPECT_THAT(log.take(), ElementsAre("INVALID WWN")) << bad;
    }
}

TEST(Descriptor, HasThreeLengths) {
    uint8 bytes[16];
    for (uint8 i = 0; i < 16; ++i) {
        bytes[i] = static_cast<uint8>(0xF0 + i);
    }
    LogCapture log;
    char text[64];
    descriptorToText(text, 3, 16, bytes);
    EXPECT_STREQ(text, "F0F1F2F3F4F5F6F7F8F9FAFBFCFDFEFF");
    descriptorToText(text, 3, 12, bytes);
    EXPECT_STREQ(text, "F0F1F2F3F4F5F6F7F8F9FAFB");
    descriptorToText(text, 3, 8, bytes);
    EXPECT_STREQ(text, "F0F1F2F3F4F5F6F7");
    EXPECT_THAT(log.take(), IsEmpty());
    descriptorToText(text, 3, 10, bytes);
    EXPECT_STREQ(text, "");
    EXPECT_THAT(log.take(), ElementsAre("INVALID Descriptor"));
}

TEST(BytesToText, AppendsARange) {
    DeviceIdentifier record;
    record.identifier[1] = 0x0A;
    record.identifier[2] = 0xB0;
    record.identifier[3] = 0xFF;
    record.identifier[255] = 0x77;
    char text[600] = "naa.";
    bytesToText(text, 3, 16, record.identifier, 1, 4);
    EXPECT_STREQ(text, "naa.0AB0FF");
    bytesToText(text, 3, 16, record.identifier, 4, 4);
    bytesToText(text, 3, 16, nullptr, 0, 4);
    bytesToText(nullptr, 3, 16, record.identifier, 0, 4);
    EXPECT_STREQ(text, "naa.0AB0FF");

    // An end that a target made up reads nothing behind the record.
    char last[16] = "";
    bytesToText(last, 3, 4'000'000'000, record.identifier, 255, 4'000'000'000);
    EXPECT_STREQ(last, "77");
}

// ---- host files ----

class HostFiles : public testing::Test {
protected:
    HostFiles() : saved(settings()) { settings() = Settings(dir.path()); }
    ~HostFiles() override { settings() = saved; }

    TempDir dir;
    Settings saved;
    LogCapture log;
    std::string name;
    std::string version;
};

TEST(Settings, DefaultsAreTheMachinesFiles) {
    const Settings plain;
    EXPECT_EQ(plain.configFile, "/etc/tavrin_fc_provider.conf");
    EXPECT_EQ(plain.logSettingsFile, "/etc/tavrin_fc_provider.dmp");
    EXPECT_EQ(plain.webPortalFile, "/etc/tvr_smis.conf");
    EXPECT_EQ(plain.systemLog, "/var/log/messages");
    EXPECT_EQ(plain.kernelVersion, "/proc/version");
    EXPECT_EQ(plain.issue, "/etc/issue");
    EXPECT_EQ(Settings("/opt/x").issue, "/opt/x/etc/issue");
}

TEST_F(HostFiles, OSInformation) {
    dir.write("proc/version", "Linux version 6.1 (gcc) #1\nsecond\n");
    dir.write("etc/issue", std::string("Debian\n\\l\n\0rest", 15));
    EXPECT_EQ(getOSInformation(name, version), 0u);
    EXPECT_EQ(name, "Linux version 6.1 (gcc) #1");
    EXPECT_EQ(version, "Debian\n\\l\n");
    EXPECT_THAT(log.take(), ElementsAre("Under _LINUX -- getting the os name and version",
                                        "Under _LINUX -- Getting the OS Distribution Name"));

    dir.write("etc/issue", "");
    dir.write("proc/version", std::string(300, 'k'));
    EXPECT_EQ(getOSInformation(name, version), 0u);
    EXPECT_EQ(name, std::string(255, 'k'));
    EXPECT_EQ(version, "");
}

TEST_F(HostFiles, OSInformationThatIsMissing) {
    EXPECT_EQ(getOSInformation(name, version), TVR_FAILURE);
    EXPECT_EQ(name, "Unknown");
    EXPECT_EQ(version, "Unknown");

    dir.write("proc/version", "Linux\n");
    EXPECT_EQ(getOSInformation(name, version), TVR_FAILURE);
    EXPECT_EQ(name, "Linux");
    EXPECT_EQ(version, "Unknown");
    EXPECT_THAT(log.take(),
                Contains("Unable to open the /etc/issue file to get OSDistribution Name"));
}

TEST_F(HostFiles, WebPortalURL) {
    EXPECT_EQ(readWebPortalURL(), "");
    EXPECT_THAT(log.take(),
                ElementsAre("WebPortal config file '" + settings().webPortalFile + "' not found."));
    const struct {
        std::string text;
        std::string url;
    } cases[] = {
        {"  # comment\n\n \t\n  http://host:80/x \nhttp://second\n", "http://host:80/x "},
        {"https://no.line.end", "https://no.line.end"},
        {"# only\n   \n", ""},
        {"", ""},
        {"http://" + std::string(300, 'a') + "\n", "http://" + std::string(248, 'a')},
    };
    for (const auto& c : cases) {
        dir.write("etc/tvr_smis.conf", c.text);
        EXPECT_EQ(readWebPortalURL(), c.url) << c.text;
    }
}

// Anything but a regular file counts as a file that can't be read, and opening it does not block.
TEST_F(HostFiles, PipesAndDirectoriesAreNoFiles) {
    const std::string pipe = dir.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(openToRead(pipe.c_str()));
    EXPECT_FALSE(openToWrite(pipe.c_str()));
    EXPECT_FALSE(openToAppend(pipe.c_str()));
    EXPECT_FALSE(openToRead(dir.path().c_str()));
    EXPECT_FALSE(openToWrite(dir.path().c_str()));
    settings().webPortalFile = pipe;
    EXPECT_EQ(readWebPortalURL(), "");
}

} // namespace
} // namespace cimple
