#include "agent/uri_schemes.h"

#include "common/logger.h"

#include <dlfcn.h>

namespace cimple {

namespace {

struct Place {
    const char* message;
    const char* file;
};
constexpr Place places[] = {
    {"Searching for /lib Curl on the machine", "/lib/libcurl.so.4"},
    {"Searching for /usr/lib/ Curl on the machine", "/usr/lib/libcurl.so.4"},
    {"Checking with libcurl.so system location for libcurl", "libcurl.so"},
    {"Checking with curl.dll windows system location for libcurl", "curl.dll"},
};

void* open_transfer_library() {
    for (const auto& [message, file] : places) {
        TVR_LOG("%s", message);
        if (void* library = dlopen(file, RTLD_NOW | RTLD_GLOBAL)) {
            return library;
        }
    }
    return nullptr;
}

} // namespace

Array<uint16> supported_URI_schemes() {
    Array<uint16> schemes{3};
    void* library = open_transfer_library();
    if (library == nullptr) {
        TVR_LOG("libcurl is not present. only file type URIScheme will be supported");
        return schemes;
    }
    for (const uint16 scheme : {uint16{4}, uint16{5}, uint16{6}, uint16{8}}) {
        schemes.append(scheme);
    }
    if (dlclose(library) != 0) {
        TVR_LOG("ERROR: UNABLE TO CLOSE DYNAMIC LIB");
    }
    return schemes;
}

} // namespace cimple
