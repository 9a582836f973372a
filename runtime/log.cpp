#include "runtime/log.h"

#include "runtime/cancellation.h"
#include "runtime/datetime.h"
#include "runtime/undestroyed.h"
#include "runtime/until_closed.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <pthread.h>
#include <string>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cimple {

namespace {

constexpr const char* level_names[] = {"FATAL", "ERR", "WARN", "INFO", "DBG"};

constexpr std::size_t config_line_size = 1024;

// A lock on a whole file that keeps processes apart.
class File_Lock {
public:
    explicit File_Lock(const char* path) noexcept
        : _file(::open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600)) {}
    File_Lock(const File_Lock&) = delete;
    File_Lock& operator=(const File_Lock&) = delete;
    ~File_Lock() {
        if (is_open()) {
            ::close(_file);
        }
    }

    bool is_open() const noexcept { return _file >= 0; }
    int lock() const noexcept { return set(F_WRLCK); }
    int unlock() const noexcept { return set(F_UNLCK); }

private:
    int set(short type) const noexcept {
        if (!is_open()) {
            return -1;
        }
        struct flock range {};
        range.l_type = type;
        range.l_whence = SEEK_SET;
        int result = 0;
        do {
            result = ::fcntl(_file, F_SETLKW, &range);
        } while (result != 0 && errno == EINTR);
        return result;
    }

    int _file;
};

struct Close_File {
    void operator()(FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<FILE, Close_File>;

pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

struct Mutex_Lock {
    Mutex_Lock() noexcept { ::pthread_mutex_lock(&mutex); }
    ~Mutex_Lock() { ::pthread_mutex_unlock(&mutex); }
    Mutex_Lock(const Mutex_Lock&) = delete;
    Mutex_Lock& operator=(const Mutex_Lock&) = delete;
};

// All under `mutex`. The log is on while there is a file.
struct State {
    bool initialised = false;
    Log_Level level = LL_FATAL;
    File file;
    std::unique_ptr<File_Lock> file_lock;

    void close() noexcept {
        file.reset();
        file_lock.reset();
    }
};

constinit Undestroyed<State> storage;
constinit State& state = storage.object;

// Closes the log when the module is closed; what other static objects log later is dropped. Nobody
// holds the mutex then, unless a thread did that a fork has left behind.
struct Log_End {
    ~Log_End() {
        if (::pthread_mutex_trylock(&mutex) == 0) {
            state.close();
            state.initialised = true;
            ::pthread_mutex_unlock(&mutex);
        }
    }
};
Until_Closed<Log_End> log_end;

// The value of a line "LOG_LEVEL = value", or null if it is no such line. Cuts white space from the
// end of the line.
const char* level_value(char* line) noexcept {
    constexpr const char* space = " \t\n\v\f\r";
    constexpr const char* key = "LOG_LEVEL";
    if (*line == '#') {
        return nullptr;
    }
    for (std::size_t size = std::strlen(line);
         size > 0 && std::strchr(space, line[size - 1]) != nullptr;) {
        line[--size] = '\0';
    }
    const std::size_t key_size = std::strlen(key);
    if (std::strncmp(line, key, key_size) != 0) {
        return nullptr;
    }
    const char* at = line + key_size;
    at += std::strspn(at, space);
    if (*at != '=') {
        return nullptr;
    }
    ++at;
    return at + std::strspn(at, space);
}

// Reads the level from the configuration file; false if logging stays off.
bool read_level(const std::string& path, Log_Level& level) noexcept {
    const File file(std::fopen(path.c_str(), "re"));
    if (!file) {
        return false;
    }
    char line[config_line_size];
    while (std::fgets(line, sizeof(line), file.get()) != nullptr) {
        const char* value = level_value(line);
        if (value == nullptr) {
            continue;
        }
        for (std::size_t i = 0; i < std::size(level_names); ++i) {
            if (::strcasecmp(value, level_names[i]) == 0) {
                level = static_cast<Log_Level>(i);
                return true;
            }
        }
        return false;
    }
    return false;
}

// Turns the log on if the environment asks for it. A CIMPLE_HOME of any length is taken as it is;
// one that the system can't open as a path leaves the log off.
void initialise() {
    const Cancel_Later cancel_later;
    state.initialised = true;
    const char* home = std::getenv("CIMPLE_HOME");
    if (home == nullptr) {
        return;
    }
    const std::string directory = std::string(home) + "/.cimple";
    if (!read_level(directory + "rc", state.level)) {
        return;
    }
    ::mkdir(directory.c_str(), 0777);
    auto file_lock = std::make_unique<File_Lock>((directory + "/messages.lock").c_str());
    if (!file_lock->is_open()) {
        return;
    }
    state.file.reset(std::fopen((directory + "/messages").c_str(), "ae"));
    if (state.file) {
        state.file_lock = std::move(file_lock);
    }
}

// A message that can't be formatted is replaced by its format.
void append_message(std::string& out, const char* format, va_list args) {
    va_list again;
    va_copy(again, args);
    char text[128];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started the list.
    const int size = std::vsnprintf(text, sizeof(text), format, args);
    if (size < 0) {
        out += format;
    } else if (static_cast<std::size_t>(size) < sizeof(text)) {
        out.append(text, static_cast<std::size_t>(size));
    } else {
        const std::size_t start = out.size();
        out.resize(start + static_cast<std::size_t>(size) + 1);
        std::vsnprintf(&out[start], static_cast<std::size_t>(size) + 1, format, again);
        out.pop_back();
    }
    va_end(again);
}

void write_line(Log_Level level, const char* file, long line, const char* format, va_list args) {
    const Cancel_Later cancel_later;
    char time[Datetime::ascii_size];
    Datetime::now().ascii(time, true);
    time[std::strcspn(time, ".")] = '\0';

    std::string text(time);
    text += ' ';
    text += level_names[level];
    text += ": ";
    text += file;
    text += '(';
    text += std::to_string(line);
    text += "): ";
    append_message(text, format, args);
    if (text.back() != '\n') {
        text += '\n';
    }

    state.file_lock->lock();
    std::fwrite(text.data(), 1, text.size(), state.file.get());
    std::fflush(state.file.get());
    state.file_lock->unlock();
}

} // namespace

void log(Log_Level level, const char* file, long line, const char* format, ...) noexcept {
    const int saved_errno = errno;
    va_list args;
    va_start(args, format);
    try {
        const Mutex_Lock lock;
        if (!state.initialised) {
            initialise();
        }
        if (state.file && level <= state.level) {
            write_line(level, file, line, format, args);
        }
    } catch (const std::exception&) {
        // The message is lost for lack of memory; the caller goes on.
    }
    va_end(args);
    errno = saved_errno;
}

void close_log() noexcept {
    const Cancel_Later cancel_later;
    const Mutex_Lock lock;
    state.close();
    state.initialised = false;
}

} // namespace cimple

void __cimple_trace(const char* file, unsigned int line, const char* message) {
    std::fprintf(stderr, "TRACE: %s(%d): %s\n", file, static_cast<int>(line), message);
}

void __cimple_assert(const char* file, unsigned int line, const char* function,
                     const char* condition) {
    std::fprintf(stderr, "%s(%d): %s(): assert: %s\n\n", file, static_cast<int>(line), function,
                 condition);
    std::abort();
}
