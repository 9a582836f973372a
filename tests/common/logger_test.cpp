#include "tests/common/log_capture.h"
#include "tests/common/session.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <regex>
#include <stdexcept>
#include <sys/stat.h>
#include <syslog.h>
#include <thread>

namespace cimple {
namespace {

using testing::ElementsAre;

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

class FileLog : public Logger {
protected:
    FileLog() {
        logger.addLogger(&file);
        logger.addLogger(&records);
        mkfifo(dir.file("pipe").c_str(), 0600);
        chmod(dir.write("readonly", "").c_str(), 0444);
        session.rename(dir.path(), "$DIR");
        session.on("say", [this](const auto& words) {
            say(static_cast<uint32>(std::stoul(words.at(0))), words.at(1).c_str());
        });
        session.on("many", [this] { // more than there is room for
            for (int i = 0; i < 1025; ++i) {
                say(1, (std::to_string(i) + std::string(300, 'x')).c_str());
            }
        });
        session.on("mode", [this](const auto& words) {
            logger.setLogMode(static_cast<uint32>(std::stoul(words.at(0))));
        });
        session.on("switch", [this](const auto& words) {
            words.at(0) == "on" ? logger.enable() : logger.disable();
        });
        session.on("clear", [this] {
            logger.clearLogs();
            records.clear();
        });
        session.on("file", [this](const auto& words, std::ostream& answer) {
            answer << file.setLogFile(words.at(0).c_str()) << ", " << file.getLogFile() << '\n';
        });
        session.on("move", [this](const auto& words, std::ostream&) {
            std::filesystem::rename(dir.file(words.at(0)), dir.file(words.at(1)));
        });
        session.on("read", [this](const auto& words, std::ostream& answer) { // any digit as 9
            std::string text = dir.read(words.at(0));
            text = std::regex_replace(text, std::regex("threadid =[0-9]+"), "threadid =9");
            text = std::regex_replace(text, std::regex("[0-9]"), "9");
            answer << std::regex_replace(text, std::regex("[+-]999\\]"), "+999]");
        });
        session.on("records", [this](const auto&, std::ostream& answer) { // and the first two
            const auto kept = records.getRecords();
            answer << kept.size() << '\n';
            for (std::size_t i = 0; i < std::min<std::size_t>(kept.size(), 2); ++i) {
                answer << kept[i].text << '\n';
            }
        });
        session.on("heard", [this](const auto&, std::ostream& answer) { // by another logger
            for (const std::string& line : log.take()) {
                answer << line << '\n';
            }
        });
        session.on("system-logger", [this](const auto& words) {
            sys.reset(words.at(0) == "comes" ? new TVR_SysLogger : nullptr);
        });
        session.on("system-log", [](const auto&, std::ostream& answer) {
            for (const std::string& event : std::exchange(syslogEvents, {})) {
                answer << event.substr(0, event.find('\n')) << '\n';
            }
        });
    }

    TempDir dir;
    TVR_FileLogger file;
    TVR_CIMLogger records;
    LogCapture log;
    std::unique_ptr<TVR_SysLogger> sys;
    Text_Session session;
};

TVR_SESSIONS(FileLog, "logger.txt");

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
        TVR_SysLogger passing_sys;
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
