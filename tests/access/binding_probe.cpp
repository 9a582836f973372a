// Runs the commands of its arguments on the binding of the libraries and prints what came of each.
// The search path of libraries counts from a process's start, so every constellation needs a
// process of its own.

#include "access/entry_points.h"
#include "access/libraries.h"
#include "access/method_wrapper.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <string_view>
#include <unistd.h>

using namespace cimple;

namespace {

void print(const char* what, long value) {
    printf("%s=%ld ", what, value);
}

bool run(std::string_view command, const char* argument) {
    constexpr HBA_WWN port{{0x10, 0, 0, 0, 0, 0, 0, 0x77}};
    if (command == "load") {
        print("load", loadManagementLibraries());
        printf("missing=%u%u%u ", hbaApiMissing.load(), lrmApiMissing.load(), rmApiMissing.load());
    } else if (command == "unload") {
        print("unload", unloadManagementLibraries());
    } else if (command == "count") {
        print("count", rm::HBA_GetNumberOfAdapters());
    } else if (command == "close") {
        rm::HBA_CloseAdapter(5);
    } else if (command == "init") {
        print("init", rm::LRM_InitLib());
    } else if (command == "stats") {
        uint32_t size = 0;
        print("stats", rm::LRM_GetPortStatistics(port, nullptr, &size));
        print("size", size);
    } else if (command == "local") {
        uint32_t isLocal = 0;
        print("local", rm::RM_IsLocalHBA(port, &isLocal));
    } else if (command == "twice") {
        void* first = libraryHandles[LRMAPI_LIBRARY];
        print("twice", loadDynamicLibrary(LRMAPI_LIBRARY, "lrmapi"));
        print("same", first == libraryHandles[LRMAPI_LIBRARY]);
    } else if (command == "open?") {
        void* handle = dlopen(argument, RTLD_NOW | RTLD_NOLOAD);
        print(argument, handle != nullptr);
    } else if (command == "install") {
        // The library whose file was empty is there from now on.
        std::filesystem::rename(std::string(argument) + ".later", argument);
    } else if (command == "wrapper") {
        static const TVR_MethodWrapper wrapper;
        print("pid", getpid());
    } else {
        return false;
    }
    return true;
}

} // namespace

int main(int, char** argv) {
    while (const char* command = *++argv) {
        const bool needsArgument =
            std::strcmp(command, "open?") == 0 || std::strcmp(command, "install") == 0;
        if (needsArgument) {
            ++argv;
        }
        if (!run(command, *argv)) {
            fprintf(stderr, "unknown command %s\n", command);
            return 2;
        }
    }
    return 0;
}
