#include "common/settings.h"
#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <optional>
#include <ostream>
#include <sys/stat.h>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class LogSettings : public testing::Test {
protected:
    LogSettings() : saved(settings()) {
        settings() = Settings(dir.path());
        std::filesystem::create_directory(dir.file("etc"));
        logger.setLogMode(0);
        logger.setLevel(1);
        logger.disable();
    }
    ~LogSettings() override {
        logger.setLogMode(0);
        logger.disable();
        settings() = saved;
    }

    void writeSettings(const std::string& text) { dir.write("etc/tavrin_fc_provider.dmp", text); }
    std::string writtenSettings() { return dir.read("etc/tavrin_fc_provider.dmp"); }

    TempDir dir;
    Settings saved;
    CLogger& logger = CLogger::getInstance();
};

// "%FILE" stands for the path of a log file that can be written, "%CONF" for the settings file.
struct LoadCase {
    const char* what;
    std::string text;
    uint32 mode;
    uint32 level;
    uint32 enabled;
    bool open;
    std::vector<std::string> messages;
    friend void PrintTo(const LoadCase& c, std::ostream* out) { *out << c.what; }
};

std::string replaced(std::string text, const std::string& mark, const std::string& with) {
    const std::size_t found = text.find(mark);
    return found == std::string::npos ? text : text.replace(found, mark.size(), with);
}

class LoadLogSettings : public LogSettings, public testing::WithParamInterface<LoadCase> {};

TEST_P(LoadLogSettings, TakesWhatIsGood) {
    const LoadCase& c = GetParam();
    TVR_FileLogger file;
    logger.addLogger(&file);
    std::optional<LogCapture> log(std::in_place);
    writeSettings(replaced(c.text, "%FILE", dir.file("log")));
    logger.loadConfigData();
    std::vector<std::string> expected;
    for (const std::string& message : c.messages) {
        expected.push_back(replaced(message, "%CONF", settings().logSettingsFile));
    }
    EXPECT_THAT(log->take(), ElementsAreArray(expected));
    log.reset();
    EXPECT_EQ(logger.getMode(), c.mode);
    EXPECT_EQ(logger.getLevel(), c.level);
    EXPECT_EQ(logger.isEnabled(), c.enabled);
    EXPECT_EQ(file.isOpen(), c.open);
    EXPECT_EQ(file.getLogFile(), c.open ? dir.file("log") : "");
}

INSTANTIATE_TEST_SUITE_P(
    Files, LoadLogSettings,
    testing::Values(
        LoadCase{"all", "2,5,1\n%FILE", 2, 5, 1, true, {}},
        LoadCase{"line_ends", "4,3,0\r\n%FILE\r\n", 4, 3, 0, true, {}},
        LoadCase{"blanks_and_rest", " 2, 5,1 and more text here\n%FILE\nmore\n", 2, 5, 1, true, {}},
        LoadCase{"level_0_is_kept_out", "2,0,1\n%FILE", 2, 1, 1, true, {}},
        LoadCase{"mode_1_has_no_path", "1,5,1\n", 0, 1, 1, false, {}},
        LoadCase{"mode_3_has_no_path", "3,5,0\n%FILE", 0, 1, 0, false, {}},
        LoadCase{"no_second_line", "2,5,1\n", 0, 1, 1, false, {}},
        LoadCase{"no_such_directory", "2,5,1\n/no/such/directory/log", 0, 1, 1, false, {}},
        LoadCase{"empty", "", 0, 1, 0, false, {}},
        LoadCase{"empty_line",
                 "\n2,5,1\n%FILE",
                 0,
                 1,
                 0,
                 false,
                 {"Unable to read Log Mode from config data file - %CONF"}},
        LoadCase{"binary",
                 std::string("\0\xff,\x01", 4),
                 0,
                 1,
                 0,
                 false,
                 {"Unable to read Log Mode from config data file - %CONF"}},
        LoadCase{"only_commas",
                 ",,,\n",
                 0,
                 1,
                 0,
                 false,
                 {"Unable to read Log Mode from config data file - %CONF"}},
        LoadCase{"mode_5",
                 "5,5,1\n%FILE",
                 0,
                 1,
                 0,
                 false,
                 {"Invalid value for Log Mode from config data file -%CONF-5"}},
        LoadCase{"mode_negative",
                 "-1,5,1\n%FILE",
                 0,
                 1,
                 0,
                 false,
                 {"Invalid value for Log Mode from config data file -%CONF-4294967295"}},
        LoadCase{"mode_huge",
                 "99999999999999,5,1\n%FILE",
                 0,
                 1,
                 0,
                 false,
                 {"Invalid value for Log Mode from config data file -%CONF-2147483647"}},
        LoadCase{"level_6",
                 "2,6,1\n%FILE",
                 0,
                 1,
                 0,
                 false,
                 {"Invalid value for Log Level from config data file -%CONF-6"}},
        LoadCase{"no_level",
                 "2\n%FILE",
                 0,
                 1,
                 0,
                 false,
                 {"Unable to read Log Level from config data file - %CONF"}},
        LoadCase{"no_enabled",
                 "2,5\n%FILE",
                 0,
                 1,
                 0,
                 false,
                 {"Unable to read Log Enabled from config data file - %CONF"}},
        LoadCase{"enabled_negative",
                 "2,5,-1\n%FILE",
                 0,
                 1,
                 1,
                 false,
                 {"Invalid value for Log Enabled from config data file - %CONF"}},
        LoadCase{"enabled_large", "2,5,7\n%FILE", 2, 5, 1, true, {}},
        LoadCase{"enabled_behind_column_19", "2,5,                1\n%FILE", 2, 5, 0, true, {}}),
    [](const auto& test) { return std::string(test.param.what); });

TEST_F(LogSettings, AMissingFileIsNoError) {
    LogCapture log;
    logger.loadConfigData();
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(logger.getMode(), 0u);
}

TEST_F(LogSettings, AFileThatCannotBeReadOrWrittenIsTold) {
    LogCapture log;
    settings().logSettingsFile = dir.path();
    logger.loadConfigData();
    EXPECT_THAT(log.take(), ElementsAre("Unable to open config data file - " + dir.path()));
    logger.saveConfigData();
    EXPECT_THAT(log.take(), ElementsAre("Unable to open file for storing config data"));
}

TEST_F(LogSettings, AReadOnlyLogFileEndsTheLoad) {
    const std::string path = dir.write("log", "kept\n");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    TVR_FileLogger file;
    logger.addLogger(&file);
    writeSettings("2,5,1\n" + path);
    logger.loadConfigData();
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(logger.getMode(), 0u);
    EXPECT_EQ(dir.read("log"), "kept\n");
}

TEST_F(LogSettings, WithoutAFileLoggerEveryModeIsTaken) {
    writeSettings("3,4,1\n");
    logger.loadConfigData();
    EXPECT_EQ(logger.getMode(), 3u);
    EXPECT_EQ(logger.getLevel(), 4u);
    EXPECT_EQ(logger.isEnabled(), 1u);
}

TEST_F(LogSettings, SurviveARestart) {
    {
        TVR_FileLogger file;
        logger.addLogger(&file);
        ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
        logger.setLevel(5);
        logger.setLogMode(4);
        logger.enable();
        logger.saveConfigData();
        logger.setLogMode(0);
        logger.disable();
    }
    EXPECT_EQ(writtenSettings(), "4,5,1\n" + dir.file("log"));
    logger.saveConfigData();
    EXPECT_EQ(writtenSettings(), "0,5,0\n");

    writeSettings("4,5,1\n" + dir.file("log"));
    TVR_FileLogger file;
    logger.addLogger(&file);
    logger.loadConfigData();
    TVR_LOG("after the restart");
    EXPECT_THAT(dir.read("log"), testing::HasSubstr("[TVR_DBG] after the restart\n"));
}

} // namespace
} // namespace cimple
