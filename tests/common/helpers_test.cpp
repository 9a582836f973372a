#include "common/files.h"
#include "common/settings.h"
#include "common/tvr_common.h"
#include "tests/common/session.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace cimple {
namespace {

class Texts : public testing::Test {
protected:
    Texts() {
        session.on("version", [this](const auto&, std::ostream& answer) {
            ParsedVersion v;
            answer << (parseVersion(session.rest().c_str(), v) == 0 ? "" : "no version, ")
                   << v.major << ' ' << v.minor << ' ' << v.revision << ' ' << v.build << ' '
                   << v.releaseType << '/' << v.testRelease << '\n';
        });
        session.on("name", [this](const auto&, std::ostream& answer) { // a bad one changes nothing
            char text[wwnTextSize];
            answer << text2HBAName(_bytes, session.rest().c_str()) << ' ';
            answer << (wwnToText(text, _bytes) == 0 ? text : "none") << '\n';
        });
    }

    Text_Session session;

private:
    uint8 _bytes[8] = {};
};

TVR_SESSIONS(Texts, "helpers.txt");

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
