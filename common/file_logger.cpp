#include "common/logger.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace cimple {

namespace {

bool writesFile() noexcept {
    const uint32 mode = CLogger::getInstance().getMode();
    return mode == TVR_LOG_FILE || mode == TVR_LOG_FILE_AND_RECORDS;
}

} // namespace

TVR_FileLogger::~TVR_FileLogger() {
    CLogger::getInstance().removeLogger(this);
}

sint32 TVR_FileLogger::setLogFile(const char* path) {
    if (path == nullptr) {
        return -1;
    }
    struct stat status;
    if (stat(path, &status) == 0 ? (status.st_mode & S_IWUSR) == 0 : errno != ENOENT) {
        return -1;
    }
    File stream = openToAppend(path);
    if (!stream) {
        return -1;
    }
    std::string name(path);
    std::lock_guard lock(m_mutex);
    m_stream = std::move(stream);
    m_path = std::move(name);
    return 0;
}

std::string TVR_FileLogger::getLogFile() const {
    std::lock_guard lock(m_mutex);
    return m_path;
}

bool TVR_FileLogger::isOpen() const {
    std::lock_guard lock(m_mutex);
    return m_stream != nullptr;
}

// The thread is shown by the kernel's number for it, as other tools show it.
void TVR_FileLogger::Log(uint32 level, const char* file, uint32 line, const char* text) {
    if (!writesFile() || level > TVR_DBG) {
        return;
    }
    std::lock_guard lock(m_mutex);
    if (!m_stream) {
        return;
    }
    char now[Datetime::ascii_size];
    Datetime::now().ascii(now, true);
    fprintf(m_stream.get(), "[threadid =%ul] [%s] [%s:%u][%s] %s\n",
            static_cast<unsigned>(gettid()), now, file, line, logLevelName(level), text);
    fflush(m_stream.get());
}

void TVR_FileLogger::open() {
    if (!writesFile()) {
        return;
    }
    std::lock_guard lock(m_mutex);
    m_stream.reset();
    if (!m_path.empty()) {
        m_stream = openToAppend(m_path.c_str());
    }
}

void TVR_FileLogger::close() {
    std::lock_guard lock(m_mutex);
    m_stream.reset();
    m_path.clear();
}

void TVR_FileLogger::clear() {
    std::lock_guard lock(m_mutex);
    if (m_stream) {
        m_stream.reset();
        openToWrite(m_path.c_str());
        m_stream = openToAppend(m_path.c_str());
    }
}

} // namespace cimple
