#include "access/libraries.h"

#include "access/entry_points.h"

#include <dlfcn.h>
#include <string>

namespace cimple {

constinit std::array<std::atomic<void*>, libraryCount> libraryHandles{};
constinit std::atomic<uint32> hbaApiMissing{0};
constinit std::atomic<uint32> lrmApiMissing{0};
constinit std::atomic<uint32> rmApiMissing{0};

namespace {

void forgetLastLoad() noexcept {
    rm::resetEntryPoints();
    hbaApiMissing = 0;
    lrmApiMissing = 0;
    rmApiMissing = 0;
}

} // namespace

uint32 loadDynamicLibrary(uint32 index, const char* name) {
    if (index >= libraryCount || name == nullptr) {
        return 0;
    }
    std::atomic<void*>& handle = libraryHandles[index];
    if (handle == nullptr) {
        const std::string file = std::string("lib") + name + ".so";
        handle = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
    }
    return handle != nullptr;
}

uint32 loadManagementLibraries() {
    forgetLastLoad();
    hbaApiMissing = loadDynamicLibrary(HBAAPI_LIBRARY, "HBAAPI") == 0;
    lrmApiMissing = loadDynamicLibrary(LRMAPI_LIBRARY, "lrmapi") == 0;
    rmApiMissing = lrmApiMissing != 0 && loadDynamicLibrary(RMAPI_LIBRARY, "rmapi") == 0;
    rm::findEntryPoints();
    return lrmApiMissing != 0 && rmApiMissing == 0 ? 1 : 0;
}

uint32 unloadManagementLibraries() {
    for (std::atomic<void*>& handle : libraryHandles) {
        if (void* library = handle.exchange(nullptr)) {
            dlclose(library);
        }
    }
    forgetLastLoad();
    return 0;
}

} // namespace cimple
