#include "common/logger.h"

#include "common/settings.h"
#include "runtime/cancellation.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

namespace cimple {

namespace {

// The finished text of one message. Short ones need no memory of their own.
class Message {
public:
    Message(const char* format, va_list arguments) {
        va_list again;
        va_copy(again, arguments);
        // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started it
        const int length = vsnprintf(m_short, sizeof m_short, format, arguments);
        if (length >= static_cast<int>(sizeof m_short)) {
            m_long.resize(static_cast<std::size_t>(length));
            vsnprintf(m_long.data(), m_long.size() + 1, format, again);
        }
        va_end(again);
        m_text = length < 0 ? nullptr : m_long.empty() ? m_short : m_long.c_str();
    }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    // Null if the format could not be followed.
    const char* text() const noexcept { return m_text; }

private:
    char m_short[512];
    std::string m_long;
    const char* m_text;
};

// Decimal number at the start of a text, 0 if there is none, cut to the range of 32 bits.
sint32 toNumber(const char* text) noexcept {
    return static_cast<sint32>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

} // namespace

CLogger& CLogger::getInstance() noexcept {
    alignas(CLogger) static unsigned char storage[sizeof(CLogger)];
    static CLogger* const instance = new (storage) CLogger;
    return *instance;
}

void CLogger::log(const char* file, uint32 line, uint32 level, const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    vlog(file, line, level, format, arguments);
    va_end(arguments);
}

void CLogger::vlog(const char* file, uint32 line, uint32 level, const char* format,
                   va_list arguments) noexcept {
    const bool sysLoggerOnly =
        m_enabled.load(std::memory_order_relaxed) == 0 && m_sysLogger.load() != nullptr;
    if (sysLoggerOnly && level > TVR_SysLogger::highestLevel) {
        return;
    }
    // Loggers write, and that is where a cancelled thread ends.
    const Cancel_Later until_written;
    try {
        const Message message(format, arguments);
        if (message.text() == nullptr ||
            (sysLoggerOnly && toSysLogger(file, line, level, message.text()))) {
            return;
        }
        std::lock_guard lock(m_mutex);
        for (TVR_LoggerInterface* logger : m_loggers) {
            try {
                logger->Log(level, file, line, message.text());
            } catch (...) {
                // The others hear it all the same.
            }
        }
    } catch (...) {
        // No memory for the text: it is dropped.
    }
}

// False if the logger has gone meanwhile.
bool CLogger::toSysLogger(const char* file, uint32 line, uint32 level, const char* text) noexcept {
    ++m_sysLoggerUsers;
    TVR_SysLogger* logger = m_sysLogger.load();
    if (logger != nullptr) {
        try {
            logger->Log(level, file, line, text);
        } catch (...) {
            // Nothing else would hear it.
        }
    }
    --m_sysLoggerUsers;
    return logger != nullptr;
}

// A thread that counts itself in after the last look here finds the pointer null.
void CLogger::forgetSysLogger() noexcept {
    m_sysLogger.store(nullptr);
    while (m_sysLoggerUsers.load() != 0) {
        std::this_thread::yield();
    }
}

uint32 CLogger::addLogger(TVR_LoggerInterface* logger) {
    std::lock_guard lock(m_mutex);
    if (std::find(m_loggers.begin(), m_loggers.end(), logger) != m_loggers.end()) {
        return 0;
    }
    m_loggers.push_back(logger);
    if (auto* sysLogger = dynamic_cast<TVR_SysLogger*>(logger)) {
        m_sysLogger.store(sysLogger);
    }
    return 1;
}

uint32 CLogger::removeLogger(TVR_LoggerInterface* logger) noexcept {
    std::lock_guard lock(m_mutex);
    const auto found = std::find(m_loggers.begin(), m_loggers.end(), logger);
    if (found == m_loggers.end()) {
        return 0;
    }
    m_loggers.erase(found);
    if (m_loggers.empty()) {
        std::vector<TVR_LoggerInterface*>().swap(m_loggers);
    }
    if (m_sysLogger.load() == logger) {
        forgetSysLogger();
    }
    return 1;
}

void CLogger::clearLoggers() noexcept {
    std::lock_guard lock(m_mutex);
    std::vector<TVR_LoggerInterface*>().swap(m_loggers);
    forgetSysLogger();
}

void CLogger::setLevel(uint32 level) noexcept {
    if (level >= TVR_CRIT && level <= TVR_DBG) {
        m_level.store(level, std::memory_order_relaxed);
    }
}

void CLogger::setLogMode(uint32 mode) {
    std::lock_guard lock(m_mutex);
    m_mode.store(mode, std::memory_order_relaxed);
    for (TVR_LoggerInterface* logger : m_loggers) {
        mode != TVR_LOG_NONE ? logger->open() : logger->close();
    }
}

void CLogger::clearLogs() {
    std::lock_guard lock(m_mutex);
    for (TVR_LoggerInterface* logger : m_loggers) {
        logger->clear();
    }
}

// The first registered one; called with the lock held.
TVR_FileLogger* CLogger::fileLogger() const noexcept {
    for (TVR_LoggerInterface* logger : m_loggers) {
        if (auto* found = dynamic_cast<TVR_FileLogger*>(logger)) {
            return found;
        }
    }
    return nullptr;
}

void CLogger::saveConfigData() {
    std::string logFile;
    {
        std::lock_guard lock(m_mutex);
        if (const TVR_FileLogger* logger = fileLogger()) {
            logFile = logger->getLogFile();
        }
    }
    // Opening empties the file, so all that goes into it is at hand before.
    const File file = openSettingsToWrite(settings().logSettingsFile.c_str());
    if (!file) {
        TVR_LOG("Unable to open file for storing config data");
        return;
    }
    fprintf(file.get(), "%d,%d,%d\n%s", static_cast<int>(getMode()), static_cast<int>(getLevel()),
            static_cast<int>(isEnabled()), logFile.c_str());
}

void CLogger::loadConfigData() {
    const std::string path = settings().logSettingsFile;
    const File file = openToRead(path.c_str());
    if (!file) {
        if (errno != ENOENT) {
            TVR_LOG("Unable to open config data file - %s", path.c_str());
        }
        return;
    }
    constexpr std::size_t maxFirstLine = 19;
    constexpr std::size_t maxPathLine = 255;
    std::string line;
    if (!readLine(file.get(), maxFirstLine, line)) {
        return;
    }

    char* rest = nullptr;
    const char* token = strtok_r(line.data(), ",", &rest);
    if (token == nullptr) {
        TVR_LOG("Unable to read Log Mode from config data file - %s", path.c_str());
        return;
    }
    const uint32 mode = static_cast<uint32>(toNumber(token));
    if (mode >= TVR_LOG_MODES) {
        TVR_LOG("Invalid value for Log Mode from config data file -%s-%u", path.c_str(), mode);
        return;
    }

    token = strtok_r(nullptr, ",", &rest);
    if (token == nullptr) {
        TVR_LOG("Unable to read Log Level from config data file - %s", path.c_str());
        return;
    }
    const uint32 level = static_cast<uint32>(toNumber(token));
    if (level > TVR_DBG) {
        TVR_LOG("Invalid value for Log Level from config data file -%s-%u", path.c_str(), level);
        return;
    }

    token = strtok_r(nullptr, ",", &rest);
    if (token == nullptr) {
        TVR_LOG("Unable to read Log Enabled from config data file - %s", path.c_str());
        return;
    }
    const sint32 enabled = toNumber(token);
    m_enabled.store(enabled, std::memory_order_relaxed);
    if (enabled < 0) {
        TVR_LOG("Invalid value for Log Enabled from config data file - %s", path.c_str());
        return;
    }

    std::string logFile;
    if (mode == TVR_LOG_FILE || mode == TVR_LOG_FILE_AND_RECORDS) {
        if (!readLine(file.get(), maxPathLine, logFile)) {
            return;
        }
        logFile.resize(std::min(logFile.rfind('\r'), logFile.size()));
    }
    {
        // Without a path there is no log file, so that modes 0, 1 and 3 end here.
        std::lock_guard lock(m_mutex);
        TVR_FileLogger* logger = fileLogger();
        if (logger != nullptr && logger->setLogFile(logFile.c_str()) != 0) {
            return;
        }
    }
    if (enabled > 0) {
        enable();
    }
    setLevel(level);
    setLogMode(mode);
}

} // namespace cimple
