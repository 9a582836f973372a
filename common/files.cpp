#include "common/files.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cimple {

namespace {

// What anybody may be allowed to do with a file of ours.
constexpr mode_t mostPermissions = 0644;

File adopt(int descriptor, const char* mode) noexcept {
    FILE* stream = descriptor < 0 ? nullptr : fdopen(descriptor, mode);
    if (stream == nullptr && descriptor >= 0) {
        const int error = errno;
        close(descriptor);
        errno = error;
    }
    return File(stream);
}

bool isForeignLink(const char* path) noexcept {
    struct stat status;
    return lstat(path, &status) == 0 && S_ISLNK(status.st_mode) && status.st_uid != 0 &&
           status.st_uid != geteuid();
}

// Opens a file of one of the wanted kinds. A pipe without a partner neither blocks nor passes.
int openKind(const char* path, int flags, bool deviceToo) noexcept {
    if ((flags & O_CREAT) != 0 && isForeignLink(path)) {
        errno = ELOOP;
        return -1;
    }
    const int descriptor = open(path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mostPermissions);
    if (descriptor < 0) {
        return -1;
    }
    struct stat status;
    const bool known = fstat(descriptor, &status) == 0;
    if (known && (S_ISREG(status.st_mode) || (deviceToo && S_ISCHR(status.st_mode)))) {
        return descriptor;
    }
    close(descriptor);
    errno = EINVAL;
    return -1;
}

} // namespace

File openToRead(const char* path) noexcept {
    return adopt(openKind(path, O_RDONLY, false), "r");
}

File openToWrite(const char* path) noexcept {
    return adopt(openKind(path, O_WRONLY | O_CREAT | O_TRUNC, true), "w");
}

File openSettingsToWrite(const char* path) noexcept {
    File file = openToWrite(path);
    struct stat status;
    if (file && fstat(fileno(file.get()), &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & ALLPERMS & ~mostPermissions) != 0) {
        // Fails for a file of somebody else, who can change it anyhow.
        [[maybe_unused]] const int ignored =
            fchmod(fileno(file.get()), status.st_mode & mostPermissions);
    }
    return file;
}

File openToAppend(const char* path) noexcept {
    return adopt(openKind(path, O_RDWR | O_CREAT | O_APPEND, true), "a+");
}

bool readLine(FILE* stream, std::size_t limit, std::string& line) {
    line.clear();
    int c = getc(stream);
    if (c == EOF) {
        return false;
    }
    for (; c != EOF && c != '\n'; c = getc(stream)) {
        if (line.size() < limit) {
            line.push_back(static_cast<char>(c));
        }
    }
    return true;
}

} // namespace cimple
