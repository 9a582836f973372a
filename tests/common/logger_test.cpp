#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
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
        note(std::string("open ") + ident + " " + std::to_string(options) + " " +
             std::to_string(facility));
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

TEST_F(Logger, AMessageTellsWhereItComesFrom) {
    LogCapture log;
    TVR_LOG("%s %d", "number", 5);
    const uint32 line = __LINE__ - 1;
    ASSERT_EQ(log.lines().size(), 1u);
    const LogCapture::Line heard = log.lines()[0];
    EXPECT_EQ(heard.level, 5u);
    EXPECT_EQ(heard.file, "tests/common/logger_test.cpp");
    EXPECT_EQ(heard.line, line);
    EXPECT_EQ(heard.text, "number 5");
}

TEST_F(Logger, DisabledWithoutASysLoggerEverybodyHears) {
    LogCapture log;
    say(1, "one");
    say(5, "five");
    logger.enable();
    say(5, "enabled");
    EXPECT_THAT(log.take(), ElementsAre("one", "five", "enabled"));
}

TEST_F(Logger, LoggersAreRegisteredOnce) {
    LogCapture log;
    EXPECT_EQ(logger.addLogger(&log), 0u);
    say(5, "once");
    EXPECT_THAT(log.take(), ElementsAre("once"));
    EXPECT_EQ(logger.removeLogger(&log), 1u);
    EXPECT_EQ(logger.removeLogger(&log), 0u);
    say(5, "nobody");
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Logger, LongMessagesAreWhole) {
    LogCapture log;
    for (const std::size_t length : {0u, 511u, 512u, 513u, 100'000u}) {
        const std::string text(length, 'm');
        say(5, text.c_str());
        EXPECT_THAT(log.take(), ElementsAre(text));
    }
}

struct ThrowingLogger final : TVR_LoggerInterface {
    void Log(uint32, const char*, uint32, const char*) override {
        throw std::runtime_error("full");
    }
};

TEST_F(Logger, ALoggerThatThrowsHarmsNobody) {
    ThrowingLogger throwing;
    logger.addLogger(&throwing);
    LogCapture log;
    say(5, std::string(1000, 'x').c_str());
    EXPECT_EQ(log.take().size(), 1u);
    logger.removeLogger(&throwing);
}

TEST_F(Logger, ModeAndLevel) {
    LogCapture log;
    logger.setLevel(3);
    logger.setLevel(0);
    logger.setLevel(6);
    EXPECT_EQ(logger.getLevel(), 3u);
    logger.setLogMode(1);
    logger.setLogMode(3);
    EXPECT_EQ(logger.getMode(), 3u);
    logger.setLogMode(0);
    logger.clearLogs();
    EXPECT_EQ(log.opened, 2);
    EXPECT_EQ(log.closed, 1);
    EXPECT_EQ(log.cleared, 1);
}

// ---- system log ----

TEST_F(Logger, SysLoggerOpensAndCloses) {
    { TVR_SysLogger sys; }
    EXPECT_THAT(syslogEvents, ElementsAre("open [TVR][CIM][FC] 24 8", "close"));
}

TEST_F(Logger, SysLoggerTakesLevelsWithAPriority) {
    TVR_SysLogger sys;
    syslogEvents.clear();
    logger.enable();
    for (uint32 level = 0; level <= 6; ++level) {
        say(level, "text");
    }
    EXPECT_THAT(syslogEvents, ElementsAre("2 [text]\n", "4 [text]\n", "3 [text]\n", "6 [text]\n"));
}

TEST_F(Logger, SysLoggerLeavesFrequentQueriesOut) {
    TVR_SysLogger sys;
    syslogEvents.clear();
    for (const char* text : {"GetInterfaceState", "GetInterfaceStatus", "GetIPAddressTypo"}) {
        say(4, text);
    }
    EXPECT_THAT(syslogEvents, IsEmpty());
    for (const char* text : {"GetInterfaceSt", "GetIPAddress", " GetInterfaceState", ""}) {
        say(4, text);
    }
    EXPECT_EQ(syslogEvents.size(), 4u);
}

TEST_F(Logger, DisabledOnlyTheSysLoggerHears) {
    LogCapture log;
    {
        TVR_SysLogger sys;
        syslogEvents.clear();
        say(5, "debug");
        say(3, "error");
        EXPECT_THAT(log.take(), IsEmpty());
        EXPECT_THAT(syslogEvents, ElementsAre("3 [error]\n"));
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

TEST_F(Logger, ClearingTheLoggersForgetsTheSysLogger) {
    TVR_SysLogger sys;
    LogCapture before;
    logger.clearLoggers();
    LogCapture log;
    syslogEvents.clear();
    say(3, "text");
    EXPECT_THAT(log.take(), ElementsAre("text"));
    EXPECT_THAT(before.take(), IsEmpty());
    EXPECT_THAT(syslogEvents, IsEmpty());
}

TEST_F(Logger, ADisabledLogFormatsNothing) {
    TVR_SysLogger sys;
    const std::string text(1'000'000, 'x');
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 10'000; ++i) {
        say(5, text.c_str());
    }
    // Formatting all of it would copy ten gigabytes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

// ---- file ----

class FileLog : public Logger {
protected:
    FileLog() { logger.addLogger(&file); }

    TempDir dir;
    TVR_FileLogger file;
};

TEST_F(FileLog, WritesOneLineAMessage) {
    logger.setLogMode(2);
    ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
    say(5, "the text");
    EXPECT_THAT(dir.read("log"),
                MatchesRegex("\\[threadid =[0-9]+l\\] "
                             "\\[[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\."
                             "[0-9]{6}[+-][0-9]{3}\\] "
                             "\\[some.cpp:7\\]\\[TVR_DBG\\] the text\n"));
}

TEST_F(FileLog, TakesModesTwoAndFour) {
    const bool writes[] = {false, false, true, false, true};
    for (uint32 mode = 0; mode < 5; ++mode) {
        logger.setLogMode(mode);
        ASSERT_EQ(file.setLogFile(dir.file("log" + std::to_string(mode)).c_str()), 0);
        say(5, "text");
        EXPECT_EQ(!dir.read("log" + std::to_string(mode)).empty(), writes[mode]) << mode;
    }
}

TEST_F(FileLog, AFileThatCannotBeUsedLeavesTheOldOne) {
    logger.setLogMode(2);
    ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
    const std::string readOnly = dir.write("readonly", "");
    ASSERT_EQ(chmod(readOnly.c_str(), 0444), 0);
    const std::string pipe = dir.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(file.setLogFile(nullptr), -1);
    for (const std::string& path :
         {std::string(), dir.path(), readOnly, pipe, dir.file("no/such"), dir.file("log/below")}) {
        EXPECT_EQ(file.setLogFile(path.c_str()), -1) << path;
    }
    EXPECT_EQ(file.getLogFile(), dir.file("log"));
    say(5, "still here");
    EXPECT_NE(dir.read("log"), "");
}

TEST_F(FileLog, AppendsClearsAndCloses) {
    dir.write("log", "old\n");
    logger.setLogMode(2);
    ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
    say(5, "new");
    EXPECT_THAT(dir.read("log"), testing::StartsWith("old\n["));
    logger.clearLogs();
    EXPECT_EQ(dir.read("log"), "");
    say(5, "fresh");
    EXPECT_THAT(dir.read("log"), testing::EndsWith(" fresh\n"));
    logger.setLogMode(0);
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.getLogFile(), "");
    logger.setLogMode(2);
    EXPECT_FALSE(file.isOpen()) << "the path is gone too";
}

TEST_F(FileLog, EnablingOpensTheWayPastTheSysLogger) {
    TVR_SysLogger sys;
    logger.setLogMode(2);
    ASSERT_EQ(file.setLogFile(dir.file("log").c_str()), 0);
    syslogEvents.clear();
    say(5, "silent");
    EXPECT_EQ(dir.read("log"), "");
    EXPECT_THAT(syslogEvents, IsEmpty());
    logger.enable();
    say(5, "heard");
    EXPECT_THAT(dir.read("log"), testing::EndsWith(" heard\n"));
    EXPECT_THAT(syslogEvents, IsEmpty());
}

// ---- records ----

class RecordLog : public Logger {
protected:
    RecordLog() { logger.addLogger(&records); }

    TVR_CIMLogger records;
};

TEST_F(RecordLog, TakesModesOneAndFourUpToLevelThree) {
    for (uint32 mode = 0; mode < 5; ++mode) {
        logger.setLogMode(mode);
        records.clear();
        for (uint32 level = 0; level <= 5; ++level) {
            say(level, "text");
        }
        EXPECT_EQ(records.getRecords().size(), mode == 1 || mode == 4 ? 4u : 0u) << mode;
    }
    records.Log(1, "x.cpp", 1, nullptr);
    EXPECT_EQ(records.getRecords().size(), 4u);
}

TEST_F(RecordLog, KeepsLevelTimeAndText) {
    logger.setLogMode(1);
    const uint64 before = Datetime::now().get_usec();
    say(2, "short");
    say(3, std::string(300, 'x').c_str());
    const auto kept = records.getRecords();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].level, 2u);
    EXPECT_STREQ(kept[0].text, "[short]");
    EXPECT_GE(kept[0].stamp.get_usec(), before);
    EXPECT_EQ(std::string(kept[1].text), "[" + std::string(198, 'x'));
}

TEST_F(RecordLog, OverwritesTheOldest) {
    logger.setLogMode(1);
    for (int i = 0; i < 1025; ++i) {
        say(1, std::to_string(i).c_str());
    }
    auto kept = records.getRecords();
    ASSERT_EQ(kept.size(), 1024u);
    EXPECT_STREQ(kept[0].text, "[1024]");
    EXPECT_STREQ(kept[1].text, "[1]");
    EXPECT_STREQ(kept[1023].text, "[1023]");
    for (int i = 1025; i < 2049; ++i) {
        say(1, std::to_string(i).c_str());
    }
    EXPECT_STREQ(records.getRecords()[0].text, "[2048]");
    logger.clearLogs();
    EXPECT_THAT(records.getRecords(), IsEmpty());
    say(1, "first again");
    EXPECT_STREQ(records.getRecords()[0].text, "[first again]");
}

// ---- device log ----

TEST_F(Logger, DeviceLogHasRoomFor200) {
    DeviceLog lines;
    LogCapture log;
    EXPECT_EQ(lines.add(""), 0u);
    EXPECT_THAT(log.take(), IsEmpty());
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(lines.add("line " + std::to_string(i)), 0u);
    }
    EXPECT_EQ(lines.add("one more"), 1u);
    EXPECT_EQ(log.take().size(), 201u);
    EXPECT_EQ(lines.size(), 200u);
    EXPECT_EQ(lines.getLines().front(), "line 0");
    EXPECT_EQ(lines.getLines().back(), "line 199");
    lines.clear();
    EXPECT_EQ(lines.size(), 0u);
    EXPECT_EQ(lines.add("again"), 0u);
}

// ---- threads ----

// Loggers come and go, settings change, while several threads log on every path.
TEST_F(FileLog, LoggersComeAndGoWhileThreadsLog) {
    TVR_CIMLogger records;
    logger.addLogger(&records);
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (uint32 level : {3u, 4u, 5u}) {
        threads.emplace_back([&, level] {
            while (!stop) {
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
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
} // namespace cimple
