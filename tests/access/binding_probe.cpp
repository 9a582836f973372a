// Runs the commands of its arguments on the binding of the libraries and prints what came of each.
// The search path of libraries counts from a process's start, so every constellation needs a
// process of its own.

#include "access/entry_points.h"
#include "access/libraries.h"
#include "access/method_wrapper.h"

#include <cstdio>
#include <dlfcn.h>
#include <filesystem>
#include <unistd.h>

using namespace cimple;

namespace {

void printOpenLibraries() {
    printf("open=");
    for (const char* name : {"libHBAAPI.so", "liblrmapi.so", "librmapi.so"}) {
        void* handle = dlopen(name, RTLD_NOW | RTLD_NOLOAD);
        printf("%d", handle != nullptr);
        if (handle != nullptr) {
            dlclose(handle);
        }
    }
    printf(" ");
}

void run(const std::string& command) {
    constexpr HBA_WWN port{{0x10, 0, 0, 0, 0, 0, 0, 0x77}};
    if (command == "load") {
        printf("load=%u ", loadManagementLibraries());
        printf("missing=%u%u%u ", hbaApiMissing.load(), lrmApiMissing.load(), rmApiMissing.load());
        printOpenLibraries();
    } else if (command == "unload") {
        printf("unload=%u ", unloadManagementLibraries());
        printOpenLibraries();
    } else if (command == "calls") {
        printf("count=%u ", rm::HBA_GetNumberOfAdapters());
        rm::HBA_CloseAdapter(5);
        uint32_t size = 0;
        const uint32_t stats = rm::LRM_GetPortStatistics(port, nullptr, &size);
        uint32_t isLocal = 0;
        printf("init=%d stats=%u/%u local=%u ", rm::LRM_InitLib(), stats, size,
               rm::RM_IsLocalHBA(port, &isLocal));
    } else if (command == "wrapper") {
        static const TVR_MethodWrapper wrapper;
        printf("pid=%d ", getpid());
    } else {
        // The library whose file was empty is there from now on.
        std::filesystem::rename(command + ".later", command);
    }
}

} // namespace

int main(int, char** argv) {
    while (*++argv != nullptr) {
        run(*argv);
    }
    return 0;
}
