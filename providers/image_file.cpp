#include "providers/image_file.h"

#include "common/logger.h"
#include "providers/service_call.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cimple {

namespace {

constexpr mode_t image_mode = 0644;

bool write_all(int file, const uint8* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(file, bytes, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

Image_Written write_image(const std::string& file, const Array<uint8>& image) {
    // Not blocking: a pipe without a reader is an error then. Not truncated: what is no regular
    // file stays as it is.
    const int opened =
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, image_mode);
    if (opened < 0) {
        return Image_Written::not_opened;
    }
    struct stat status {};
    if (::fstat(opened, &status) != 0 || !S_ISREG(status.st_mode) || ::ftruncate(opened, 0) != 0) {
        ::close(opened);
        return Image_Written::not_opened;
    }
    const bool is_written = write_all(opened, image.begin(), image.size());
    if (::close(opened) != 0 || !is_written) {
        ::unlink(file.c_str());
        return Image_Written::not_whole;
    }
    return Image_Written::whole;
}

uint32 check_image(const std::string& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) == 0) {
        return METHOD_COMPLETED;
    }
    if (errno == ENOENT) {
        TVR_LOG("ERROR: tvrcimDownloadFW: FW file not found");
        return METHOD_NO_FILE;
    }
    TVR_LOG("ERROR: tvrcimDownloadFW: Can't stat FW file ");
    return METHOD_INVALID_PARAMETER;
}

void remove_image(const std::string& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        TVR_LOG("tvrcimDownloadFW: Can't stat file %s", file.c_str());
    } else if (::unlink(file.c_str()) == 0) {
        TVR_LOG("tvrcimDownloadFW: FW file %s removed successfully", file.c_str());
    } else {
        TVR_LOG("tvrcimDownloadFW: Can't remove file %s (%d)", file.c_str(), errno);
    }
}

} // namespace cimple
