#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <sys/stat.h>
#include <syslog.h>
#include <thread>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

// What the system log was asked to do, as text.
std::mutex syslogMutex;
std::vector<std::string> syslogEvents;

void note(const std::string& event) {
    std::lock_guard lock(syslogMutex);
    syslogEvents.push_back(event);
}

constexpr SyslogCalls recordingCalls{
    [](const char* ident, int options, int facility) {
        note(std::string(ident) + " " + std::to_string(options) + " " + std::to_string(facility));
    },
    [](int priority, const char* text) { note(std::to_string(priority) + " " + text); },
    [] { note("close"); },
};

class Logger : public testing::Test {
protected:
    Logger() {
        syslogEvents.clear();
        setSyslogCalls(&recordingCalls);
        logger.setLogMode(0);
        logger.disable();
    }
    ~Logger() override {
        logger.setLogMode(0);
        logger.disable();
        setSyslogCalls(nullptr);
    }

    void say(uint32 level, const char* text) { logger.log("some.cpp", 7, level, "%s", text); }

    CLogger& logger = CLogger::getInstance();
};

struct ThrowingLogger final : TVR_LoggerInterface {
    void Log(uint32, const char*, uint32, const char*) override {
        throw std::runtime_error("full");
    }
};

TEST_F(Logger, LongMessagesReachEveryLoggerOnce) {
    ThrowingLogger throwing;
    logger.addLogger(&throwing);
    LogCapture log;
    EXPECT_EQ(logger.addLogger(&log), 0u);
    for (const std::size_t length : {0u, 511u, 512u, 513u, 100'000u}) {
        const std::string text(length, 'm');
        say(5, text.c_str());
        EXPECT_THAT(log.take(), ElementsAre(text));
    }
    logger.removeLogger(&throwing);
}

// ---- system log ----

TEST_F(Logger, SysLoggerTakesLevelsWithAPriority) {
    {
        TVR_SysLogger sys;
        logger.enable();
        for (uint32 level = 0; level <= 6; ++level) {
            say(level, "text");
        }
        for (const char* text :
             {"GetInterfaceState", "GetInterfaceStatus", "GetIPAddressTypo", "GetIPAddress"}) {
            say(4, text);
        }
    }
    EXPECT_THAT(syslogEvents,
                ElementsAre("[TVR][CIM][FC] 24 8", "2 [text]\n", "4 [text]\n", "3 [text]\n",
                            "6 [text]\n", "6 [GetIPAddress]\n", "close"));
}

TEST_F(Logger, DisabledOnlyTheSysLoggerHears) {
    LogCapture log;
    {
        TVR_SysLogger sys;
        syslogEvents.clear();
        say(3, "error");
        EXPECT_THAT(log.take(), IsEmpty());
        logger.enable();
        say(5, "debug");
        EXPECT_THAT(log.take(), ElementsAre("debug"));
        logger.disable();
    }
    // The system logger has gone: all hear as if the log were enabled, and nothing dangles.
    say(3, "later");
    EXPECT_THAT(log.take(), ElementsAre("later"));
    EXPECT_THAT(syslogEvents, ElementsAre("3 [error]\n", "close"));
}

// ---- file ----

class FileLog : public Logger {
protected:
    FileLog() {
        logger.addLogger(&file);
        logger.addLogger(&records);
    }

    TempDir dir;
    TVR_FileLogger file;
    TVR_CIMLogger records;
};

TEST_F(FileLog, AppendsClearsAndCloses) {
    dir.write("log", "old\n");
    logger.setLogMode(2);
    ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
    say(5, "new");
    EXPECT_THAT(dir.read("log"),
                MatchesRegex("old\n\\[threadid =[0-9]+l\\] "
                             "\\[[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\."
                             "[0-9]{6}[+-][0-9]{3}\\] "
                             "\\[some.cpp:7\\]\\[TVR_DBG\\] new\n"));
    logger.clearLogs();
    EXPECT_EQ(dir.read("log"), "");
    logger.setLogMode(0);
    EXPECT_EQ(file.getLogFile(), "");
}

TEST_F(FileLog, AFileThatCannotBeUsedLeavesTheOldOne) {
    logger.setLogMode(2);
    ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
    const std::string pipe = dir.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(chmod(dir.write("readonly", "").c_str(), 0444), 0);
    for (const std::string& path : {std::string(), dir.path(), dir.file("readonly"), pipe,
                                    dir.file("no/such"), dir.file("log/below")}) {
        EXPECT_EQ(file.setLogFile(path.c_str()), -1) << path;
    }
    EXPECT_EQ(file.getLogFile(), dir.file("log"));
    say(5, "still here");
    EXPECT_NE(dir.read("log"), "");
}

// ---- records ----

TEST_F(FileLog, ModesTellWhoWrites) {
    for (uint32 mode = 0; mode < 5; ++mode) {
        const std::string name = "log" + std::to_string(mode);
        logger.setLogMode(mode);
        ASSERT_EQ(file.setLogFile(dir.file(name).c_str()), 0);
        records.clear();
        for (uint32 level = 0; level <= 5; ++level) {
            say(level, "text");
        }
        EXPECT_EQ(!dir.read(name).empty(), mode == 2 || mode == 4) << mode;
        EXPECT_EQ(records.getRecords().size(), mode == 1 || mode == 4 ? 4u : 0u) << mode;
    }
}

TEST_F(FileLog, RecordsOverwriteTheOldest) {
    logger.setLogMode(1);
    for (int i = 0; i < 1025; ++i) {
        say(1, (std::to_string(i) + std::string(300, 'x')).c_str());
    }
    const auto kept = records.getRecords();
    ASSERT_EQ(kept.size(), 1024u);
    EXPECT_EQ(kept[0].text, "[1024" + std::string(194, 'x'));
    EXPECT_EQ(kept[1].text, "[1" + std::string(197, 'x'));
}

// ---- threads ----

// Loggers come and go, settings change, while several threads log on every path.
TEST_F(FileLog, LoggersComeAndGoWhileThreadsLog) {
    std::vector<std::jthread> threads;
    for (uint32 level : {3u, 4u, 5u}) {
        threads.emplace_back([this, level](const std::stop_token& end) {
            while (!end.stop_requested()) {
                say(level, "message");
            }
        });
    }
    for (int round = 0; round < 200; ++round) {
        TVR_SysLogger sys;
        LogCapture passing;
        round % 2 == 0 ? logger.enable() : logger.disable();
        logger.setLogMode(static_cast<uint32>(round % 5));
        file.setLogFile(dir.file("log").c_str());
        records.getRecords();
        if (round % 7 == 0) {
            logger.clearLogs();
        }
    }
}

} // namespace
} // namespace cimple
