#include "common/settings.h"
#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

namespace cimple {
namespace {

using testing::ElementsAre;

class LogSettings : public testing::Test {
protected:
    LogSettings() : saved(settings()) {
        settings() = Settings(dir.path());
        reset();
    }
    ~LogSettings() override {
        reset();
        settings() = saved;
    }

    void reset() {
        logger.setLogMode(0);
        logger.setLevel(1);
        logger.disable();
    }
    void load(const std::string& text) {
        dir.write("etc/tavrin_fc_provider.dmp", text);
        logger.loadConfigData();
    }
    std::vector<uint32> state() {
        return {logger.getMode(), logger.getLevel(), logger.isEnabled()};
    }

    TempDir dir;
    Settings saved;
    CLogger& logger = CLogger::getInstance();
};

TEST_F(LogSettings, TakeWhatIsGood) {
    const std::string path = dir.file("log");
    const std::string unreadable = "Unable to read Log ";
    const std::string invalid = "Invalid value for Log ";
    const std::string from = " from config data file - " + settings().logSettingsFile;
    const std::string was = " from config data file -" + settings().logSettingsFile + "-";
    const struct {
        std::string text;
        uint32 mode, level, enabled;
        bool open = false;
        std::string message = {};
    } cases[] = {
        {"2,5,1\n" + path, 2, 5, 1, true},
        {"4,3,0\r\n" + path + "\r\n", 4, 3, 0, true},
        {" 2, 5,1 and more text here\n" + path + "\nmore\n", 2, 5, 1, true},
        {"2,5,                1\n" + path, 2, 5, 0, true},
        {"1,5,1\n", 0, 1, 1},
        {"2,5,1\n/no/such/directory/log", 0, 1, 1},
        {"", 0, 1, 0},
        {"\n2,5,1\n" + path, 0, 1, 0, false, unreadable + "Mode" + from},
        {std::string("\0\xff,\x01", 4), 0, 1, 0, false, unreadable + "Mode" + from},
        {"5,5,1\n" + path, 0, 1, 0, false, invalid + "Mode" + was + "5"},
        {"-1,5,1\n" + path, 0, 1, 0, false, invalid + "Mode" + was + "4294967295"},
        {"99999999999999,5,1\n" + path, 0, 1, 0, false, invalid + "Mode" + was + "2147483647"},
        {"2,6,1\n" + path, 0, 1, 0, false, invalid + "Level" + was + "6"},
        {"2,5\n" + path, 0, 1, 0, false, unreadable + "Enabled" + from},
        {"2,5,-1\n" + path, 0, 1, 1, false, invalid + "Enabled" + from},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        reset();
        TVR_FileLogger file;
        logger.addLogger(&file);
        LogCapture log;
        load(c.text);
        const std::vector<std::string> expected(c.message.empty() ? 0 : 1, c.message);
        EXPECT_EQ(log.take(), expected);
        EXPECT_THAT(state(), ElementsAre(c.mode, c.level, c.enabled));
        EXPECT_EQ(file.getLogFile(), c.open ? path : "");
    }
}

TEST_F(LogSettings, AFileThatCannotBeReadOrWrittenIsTold) {
    LogCapture log;
    logger.loadConfigData(); // a missing one is no error
    settings().logSettingsFile = dir.path();
    logger.loadConfigData();
    logger.saveConfigData();
    EXPECT_THAT(log.take(), ElementsAre("Unable to open config data file - " + dir.path(),
                                        "Unable to open file for storing config data"));
}

TEST_F(LogSettings, SurviveARestart) {
    load("3,4,1\n"); // without a file logger every mode is taken
    TVR_FileLogger file;
    logger.addLogger(&file);
    ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
    logger.setLogMode(4);
    logger.saveConfigData();
    EXPECT_EQ(dir.read("etc/tavrin_fc_provider.dmp"), "4,4,1\n" + dir.file("log"));
    reset();
    logger.loadConfigData();
    TVR_LOG("%s restart", "after the");
    EXPECT_THAT(dir.read("log"),
                testing::ContainsRegex("\\[tests/common/log_settings_test.cpp:[0-9]+\\]"
                                       "\\[TVR_DBG\\] after the restart\n"));
}

} // namespace
} // namespace cimple
