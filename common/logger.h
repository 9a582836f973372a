// The system's log: one `CLogger` that hands every message to the registered loggers.
#ifndef TVR_COMMON_LOGGER_H
#define TVR_COMMON_LOGGER_H

#include "common/files.h"
#include "runtime/datetime.h"

#include <atomic>
#include <cstdarg>
#include <mutex>
#include <string>
#include <vector>

namespace cimple {

enum TVR_LogLevel : uint32 {
    TVR_INVALID = 0,
    TVR_CRIT = 1,
    TVR_WARN = 2,
    TVR_ERR = 3,
    TVR_INFO = 4,
    TVR_DBG = 5, // the level of every message of the system itself
};

// Each logger reads the mode for itself; 0 and 3 silence both the file and the records.
enum TVR_LogMode : uint32 {
    TVR_LOG_NONE = 0,
    TVR_LOG_RECORDS = 1,
    TVR_LOG_FILE = 2,
    TVR_LOG_SILENT = 3,
    TVR_LOG_FILE_AND_RECORDS = 4,
};
constexpr uint32 TVR_LOG_MODES = 5;

// A destination of messages. `Log` is called by one thread at a time on the way through all
// loggers, and must not log itself. A class whose objects may end while registered calls
// CLogger::removeLogger in its own destructor, before anything it needs for `Log` is gone.
class TVR_LoggerInterface {
public:
    virtual ~TVR_LoggerInterface() = default;

    // `text` is the finished message; `file` and `line` tell where it comes from.
    virtual void Log(uint32 level, const char* file, uint32 line, const char* text) = 0;
    virtual void open() {}
    virtual void close() {}
    virtual void clear() {}
};

class TVR_FileLogger;
class TVR_SysLogger;

// The logger singleton. It comes into being at the first use and is usable until the module is
// unmapped, by the destructors of static objects too; memory is held only while a logger is
// registered.
//
// Threads: every operation may be called from any thread. Loggers are not owned; when removeLogger
// or clearLoggers has returned, no thread is inside one of the loggers concerned.
class CLogger {
public:
    static CLogger& getInstance() noexcept;

    // Never fails its caller: what can't be formatted or written is dropped, and an exception of a
    // logger ends there.
    //
    // While the log is disabled and a TVR_SysLogger is registered, only that logger hears the
    // message, without a lock; a message above its highest level then costs no formatting either.
    // Otherwise all loggers hear it, in the order of their registration.
    void log(const char* file, uint32 line, uint32 level, const char* format, ...) noexcept
        __attribute__((format(printf, 5, 6)));
    void vlog(const char* file, uint32 line, uint32 level, const char* format,
              va_list arguments) noexcept __attribute__((format(printf, 5, 0)));

    // 1 when added, 0 when it was registered already.
    uint32 addLogger(TVR_LoggerInterface* logger);
    // 1 when removed, 0 when it was not registered.
    uint32 removeLogger(TVR_LoggerInterface* logger) noexcept;
    void clearLoggers() noexcept;

    uint32 getMode() const noexcept { return m_mode.load(std::memory_order_relaxed); }
    uint32 getLevel() const noexcept { return m_level.load(std::memory_order_relaxed); }
    uint32 isEnabled() const noexcept { return m_enabled.load(std::memory_order_relaxed) != 0; }
    void enable() noexcept { m_enabled.store(1, std::memory_order_relaxed); }
    void disable() noexcept { m_enabled.store(0, std::memory_order_relaxed); }

    // Ignored outside 1..5. The level is kept for clients to see; loggers have limits of their own.
    void setLevel(uint32 level) noexcept;
    // Opens every logger for a mode other than 0 and closes every logger for 0.
    void setLogMode(uint32 mode);
    // Empties every logger that keeps something.
    void clearLogs();

    // Keep the settings over a restart, in settings().logSettingsFile. A file that is missing or
    // can't be used changes nothing, but for the enabled flag when its line was good so far.
    void saveConfigData();
    void loadConfigData();

private:
    CLogger() = default;
    ~CLogger() = delete;

    TVR_FileLogger* fileLogger() const noexcept;
    bool toSysLogger(const char* file, uint32 line, uint32 level, const char* text) noexcept;
    void forgetSysLogger() noexcept;

    std::atomic<uint32> m_mode{0};
    std::atomic<uint32> m_level{0};
    std::atomic<sint32> m_enabled{0};

    std::mutex m_mutex;
    std::vector<TVR_LoggerInterface*> m_loggers;

    // Set while a TVR_SysLogger is registered. A thread that uses it without the lock counts itself
    // in first, so that removal can wait for the last one.
    std::atomic<TVR_SysLogger*> m_sysLogger{nullptr};
    std::atomic<uint32> m_sysLoggerUsers{0};
};

// Appends one line per message to a text file, flushed at once. Takes modes 2 and 4, all levels.
// Threads: any.
class TVR_FileLogger final : public TVR_LoggerInterface {
public:
    TVR_FileLogger() = default;
    ~TVR_FileLogger() override;
    TVR_FileLogger(const TVR_FileLogger&) = delete;
    TVR_FileLogger& operator=(const TVR_FileLogger&) = delete;

    // 0, or -1 when the file can't be written, or exists without its owner's write permission; the
    // file in use then stays.
    sint32 setLogFile(const char* path);
    // Path of the file in use or last asked for; empty after `close`.
    std::string getLogFile() const;
    bool isOpen() const;

    void Log(uint32 level, const char* file, uint32 line, const char* text) override;
    // Opens the path afresh for appending, in modes 2 and 4 only.
    void open() override;
    // Closes the file and forgets its path.
    void close() override;
    // Truncates an open file.
    void clear() override;

private:
    mutable std::mutex m_mutex;
    std::string m_path;
    File m_stream;
};

// Keeps the newest messages as records. Takes modes 1 and 4, levels up to 3. Threads: any.
class TVR_CIMLogger final : public TVR_LoggerInterface {
public:
    static constexpr uint32 capacity = 1024;

    struct Record {
        uint32 level;
        Datetime stamp;
        char text[200]; // "[message]", cut to fit, always terminated
    };

    TVR_CIMLogger() = default;
    ~TVR_CIMLogger() override;
    TVR_CIMLogger(const TVR_CIMLogger&) = delete;
    TVR_CIMLogger& operator=(const TVR_CIMLogger&) = delete;

    // A copy in order of place, not of age: from the 1025th on a record overwrites the oldest.
    std::vector<Record> getRecords() const;

    void Log(uint32 level, const char* file, uint32 line, const char* text) override;
    void clear() override;

private:
    mutable std::mutex m_mutex;
    std::vector<Record> m_records;
    uint32 m_index = UINT32_MAX; // of the newest record, not reduced to the capacity
};

// Writes to the system log with the ident "[TVR][CIM][FC]". Takes levels 1 to 4 in every mode.
// Registers itself; one exists at a time.
class TVR_SysLogger final : public TVR_LoggerInterface {
public:
    static constexpr uint32 highestLevel = TVR_INFO;

    TVR_SysLogger();
    ~TVR_SysLogger() override;
    TVR_SysLogger(const TVR_SysLogger&) = delete;
    TVR_SysLogger& operator=(const TVR_SysLogger&) = delete;

    void Log(uint32 level, const char* file, uint32 line, const char* text) override;
};

// What the system logger calls; tests put functions of their own in place. Null puts the system's
// back. The caller keeps the object alive and sets it while no TVR_SysLogger exists.
struct SyslogCalls {
    void (*open)(const char* ident, int options, int facility);
    void (*write)(int priority, const char* text);
    void (*close)();
};
void setSyslogCalls(const SyslogCalls* calls) noexcept;

// Name of a level 0..5, as "TVR_DBG".
const char* logLevelName(uint32 level) noexcept;

// Lines of the driver's log, up to a fixed number. Threads: one at a time, under its owner's locks.
class DeviceLog {
public:
    static constexpr std::size_t capacity = 200;

    // 0, also for an empty line, which is ignored; 1 when the log is full and the line is dropped.
    uint32 add(const std::string& line);
    void clear() noexcept { m_lines.clear(); }
    std::size_t size() const noexcept { return m_lines.size(); }
    std::vector<std::string> getLines() const { return m_lines; }

private:
    std::vector<std::string> m_lines;
};

} // namespace cimple

// Logs a message of the system, with the place it comes from.
#define TVR_LOG(...)                                                                               \
    ::cimple::CLogger::getInstance().log(__FILE__, __LINE__, ::cimple::TVR_DBG, __VA_ARGS__)

#endif
