#include "agent/uri_schemes.h"

#include "access/transfer_library.h"
#include "common/logger.h"

#include <dlfcn.h>

namespace cimple {

Array<uint16> supported_URI_schemes() {
    Array<uint16> schemes{3};
    void* library = openTransferLibrary();
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
