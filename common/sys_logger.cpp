#include "common/logger.h"

#include <array>
#include <string_view>
#include <syslog.h>

namespace cimple {

namespace {

struct LevelFacts {
    const char* name;
    int priority; // of syslog; -1 for a level that has none
};

constexpr std::array<LevelFacts, 6> levels{{
    {"TVR_INVALID", -1},
    {"TVR_CRIT", LOG_CRIT},
    {"TVR_WARN", LOG_WARNING},
    {"TVR_ERR", LOG_ERR},
    {"TVR_INFO", LOG_INFO},
    {"TVR_DBG", -1},
}};

// Messages of queries that run all the time, by how they begin.
constexpr std::array<std::string_view, 2> unwanted{"GetInterfaceSta", "GetIPAddressT"};

constexpr SyslogCalls systemCalls{
    openlog,
    [](int priority, const char* text) { syslog(priority, "%s", text); },
    closelog,
};

std::atomic<const SyslogCalls*> calls{&systemCalls};

} // namespace

void setSyslogCalls(const SyslogCalls* replacement) noexcept {
    calls.store(replacement != nullptr ? replacement : &systemCalls);
}

const char* logLevelName(uint32 level) noexcept {
    return level < levels.size() ? levels[level].name : levels[TVR_INVALID].name;
}

TVR_SysLogger::TVR_SysLogger() {
    CLogger::getInstance().addLogger(this);
    calls.load()->open("[TVR][CIM][FC]", LOG_NDELAY | LOG_NOWAIT, LOG_USER);
}

// Closing also makes the C library forget the ident, which is the module's own memory.
TVR_SysLogger::~TVR_SysLogger() {
    CLogger::getInstance().removeLogger(this);
    calls.load()->close();
}

void TVR_SysLogger::Log(uint32 level, const char*, uint32, const char* text) {
    if (level > highestLevel || levels[level].priority < 0) {
        return;
    }
    const std::string_view message(text);
    for (const std::string_view start : unwanted) {
        if (message.starts_with(start)) {
            return;
        }
    }
    std::string line;
    line.reserve(message.size() + 3);
    line.append("[").append(message).append("]\n");
    calls.load()->write(levels[level].priority, line.c_str());
}

} // namespace cimple
