#include "common/config_file.h"
#include "common/files.h"
#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"
#include "tests/runtime/test_log.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string timeout = "TVR_PROVIDER_CACHE_TIMEOUT";
const std::string adapter = "TVR_PROVIDER_REFRESH_ADAPTERDATA";
const std::string san = "TVR_PROVIDER_REFRESH_SANDATA";

TEST(ConfigFile, TakesWhatIsAllowed) {
    const struct {
        std::string text;
        sint32 timeout;
        bool adapter = false;
        bool san = true;
    } cases[] = {
        {"", 10},
        {timeout + "=5\n" + adapter + " = TRUE\n" + san + "\t=\tFALSE\r\n", 5, true, false},
        {"  " + timeout + " = 7", 7},
        {timeout + " = 31\n", 10},
        {timeout + " = -5\n", 10},
        {timeout + " = 18446744073709551621\n", 10},
        {timeout + " = 5min\n", 5},
        {adapter + " = TRUE!\n" + san + " = False\n", 10},
        {timeout + "=3\n" + timeout + "=4\n", 3},
        {san + "=no\n" + san + "=FALSE\n" + san + "=TRUE\n", 10, false, false},
        {"#" + timeout + "=3\n  # " + adapter + "=TRUE\n", 10},
        {"OTHER = 3\n= 4\nno equals sign\n" + timeout + "=6\n", 6},
        {std::string(999, '\n') + timeout + "=3\n", 3},
        {std::string(1000, '\n') + timeout + "=3\n", 10},
        {std::string(5000, 'x') + timeout + "=3\n" + timeout + "=4\n", 4},
        {std::string("\0\0=\0\n", 5) + timeout + "=4\n", 4},
    };
    const TempDir dir;
    LogCapture log;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 200));
        TvrConfigFile config;
        config.load(dir.write("conf", c.text).c_str());
        EXPECT_EQ(config.getCacheTimeout(), c.timeout);
        EXPECT_EQ(config.getRefreshAdapterData(), c.adapter);
        EXPECT_EQ(config.getRefreshSANData(), c.san);
        EXPECT_EQ(config.setCacheTimeout(31) + config.setCacheTimeout(0), -2);
        EXPECT_EQ(config.setRefreshAdapterData(2) + config.setRefreshSANData(7), -2);
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ConfigFile, WhatCannotBeTakenReadOrWrittenIsTold) {
    const TempDir dir;
    LogCapture log;
    {
        TvrConfigFile config;
        config.load(dir.path().c_str());
        EXPECT_THAT(log.take(),
                    ElementsAre("Unable to open provider config setting file - " + dir.path()));
        TvrConfigFile nowhere;
        nowhere.load(dir.file("no/such/dir").c_str());

        const Test_Log told("LOG_LEVEL=WARN\n");
        TvrConfigFile wrong;
        const std::string path =
            dir.write("conf", "\n" + timeout + "=99\n" + timeout + "=3\n" + timeout + "=4\nX=1\n" +
                                  san + " = false " + std::string(900, 'e') + "\n");
        wrong.load(path.c_str());
        using testing::EndsWith;
        EXPECT_THAT(
            told.lines(),
            ElementsAre(EndsWith(":2: " + timeout + " takes 1 to 30, \"99\" is passed over"),
                        EndsWith(":4: " + timeout + " stands there once more and is passed over"),
                        EndsWith(":6: " + san + " takes TRUE or FALSE, \"false " +
                                 std::string(54, 'e') + "\" is passed over")));
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(Files, NobodyElseCanWriteToSettings) {
    const TempDir dir;
    const auto mode_after = [](File (*opened)(const char*), const std::string& path) {
        opened(path.c_str());
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status.st_mode & ALLPERMS;
    };
    const mode_t mask = umask(0);
    EXPECT_EQ(mode_after(openSettingsToWrite, dir.file("new")), 0644u);
    EXPECT_EQ(mode_after(openToAppend, dir.file("log")), 0644u);
    for (const auto& [before, after] : {std::pair(0666u, 0644u), {0600u, 0600u}, {06777u, 0644u}}) {
        const std::string path = dir.write("old", "text");
        chmod(path.c_str(), before);
        EXPECT_EQ(mode_after(openSettingsToWrite, path), after);
    }
    umask(mask);

    // A link is followed if its maker could write to the file himself.
    const std::string link = dir.file("link");
    ASSERT_EQ(symlink(dir.file("target").c_str(), link.c_str()), 0);
    EXPECT_NE(openSettingsToWrite(link.c_str()), nullptr);
    if (lchown(link.c_str(), 12345, 12345) == 0) {
        EXPECT_EQ(openSettingsToWrite(link.c_str()), nullptr);
        EXPECT_EQ(openToAppend(link.c_str()), nullptr);
        EXPECT_NE(openToRead(link.c_str()), nullptr);
    }
}

} // namespace
} // namespace cimple
