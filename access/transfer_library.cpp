#include "access/transfer_library.h"

#include "common/logger.h"

#include <dlfcn.h>

namespace cimple {

namespace {

struct TransferLibraryPlace {
    const char* message;
    const char* file;
};
constexpr TransferLibraryPlace transferLibraryPlaces[] = {
    {"Searching for /lib Curl on the machine", "/lib/libcurl.so.4"},
    {"Searching for /usr/lib/ Curl on the machine", "/usr/lib/libcurl.so.4"},
    {"Checking with libcurl.so system location for libcurl", "libcurl.so"},
    {"Checking with curl.dll windows system location for libcurl", "curl.dll"},
};

} // namespace

void* openTransferLibrary() {
    for (const auto& [message, file] : transferLibraryPlaces) {
        TVR_LOG("%s", message);
        if (void* library = dlopen(file, RTLD_NOW | RTLD_GLOBAL)) {
            return library;
        }
    }
    return nullptr;
}

} // namespace cimple
