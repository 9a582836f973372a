// The runtime's own log, off unless CIMPLE_HOME names a directory whose ".cimplerc" has a
// LOG_LEVEL.
#ifndef TVR_RUNTIME_LOG_H
#define TVR_RUNTIME_LOG_H

#include "runtime/type.h"

namespace cimple {

enum Log_Level { LL_FATAL, LL_ERR, LL_WARN, LL_INFO, LL_DBG };

// Appends one line to "messages" in CIMPLE_HOME/.cimple, if that level is written. Never fails its
// caller. Any thread may call it; a line is whole within the process and across processes.
void log(Log_Level level, const char* file, long line, const char* format, ...) noexcept
    __attribute__((format(printf, 4, 5)));

// Closes the log; the next call of `log` reads the environment anew.
void close_log() noexcept;

// File name of a path, for log lines.
constexpr const char* base_name(const char* path) noexcept {
    const char* name = path;
    for (const char* p = path; *p != '\0'; ++p) {
        if (*p == '/') {
            name = p + 1;
        }
    }
    return name;
}

} // namespace cimple

#define TVR_RUNTIME_LOG(level, ...)                                                                \
    ::cimple::log(::cimple::level, ::cimple::base_name(__FILE__), __LINE__, __VA_ARGS__)

extern "C" {
// Prints "TRACE: file(line): message" to standard error.
__attribute__((visibility("default"))) void __cimple_trace(const char* file, unsigned int line,
                                                           const char* message);
// Prints where and which condition failed to standard error and aborts.
__attribute__((visibility("default"), noreturn)) void
__cimple_assert(const char* file, unsigned int line, const char* function, const char* condition);
}

#endif
