#include "common/settings.h"
#include "tests/common/log_capture.h"
#include "tests/common/session.h"
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
        session.rename(dir.path(), "$DIR");
        // A text with \\n, \\r and \\0: mode, level, whether the log is enabled, its file, and the
        // log.
        session.on("load", [this](const auto&, std::ostream& answer) {
            std::string text = session.rest();
            for (const auto& [escape, c] : {std::pair("\\n", '\n'), {"\\r", '\r'}, {"\\0", '\0'}}) {
                for (std::size_t at = 0; (at = text.find(escape, at)) != text.npos;) {
                    text.replace(at, 2, 1, c);
                }
            }
            reset();
            TVR_FileLogger file;
            logger.addLogger(&file);
            LogCapture log;
            load(text);
            answer << logger.getMode() << ' ' << logger.getLevel() << ' ' << logger.isEnabled()
                   << ' ' << file.getLogFile() << '\n';
            for (const std::string& line : log.take()) {
                answer << "| " << line << '\n';
            }
        });
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

    TempDir dir;
    Settings saved;
    CLogger& logger = CLogger::getInstance();
    Text_Session session;
};

TVR_SESSIONS(LogSettings, "log_settings.txt");

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
