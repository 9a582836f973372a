#include "host/tvrcim/places.h"

#include "host/tvrcim/errors.h"

#include <dlfcn.h>

#include <vector>

namespace fs = std::filesystem;

namespace tvrcim {

namespace {

// `what` is for people, `build` relative to the build tree, `installed` to the prefix.
fs::path find(const char* what, const char* hint, const fs::path& build,
              const fs::path& installed) {
    const fs::path root = own_file().parent_path().parent_path();
    const std::vector<fs::path> tried = {root / build, root / installed,
                                         fs::path(TVR_INSTALL_PREFIX) / installed};
    for (const fs::path& each : tried) {
        if (std::error_code error; fs::exists(each, error)) {
            return each;
        }
    }
    throw Usage_Error(std::string("the ") + what + " is neither " + tried[0].string() + " nor " +
                      tried[2].string() + hint);
}

bool can_open(const char* library) {
    void* const handle = dlopen(library, RTLD_LAZY | RTLD_LOCAL);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}

} // namespace

fs::path own_file() {
    return fs::read_symlink("/proc/self/exe");
}

fs::path module_file() {
    return find("provider module", "; --module FILE names it", "lib/libtavrin_fc_provider.so",
                TVR_INSTALL_MODULE_DIR "/libtavrin_fc_provider.so");
}

fs::path mof_file() {
    return find("class model", "", "mof/tavrin_fc_schema.mof",
                TVR_INSTALL_DATA_DIR "/mof/tavrin_fc_schema.mof");
}

fs::path simulator_directory() {
    return find("simulator", "", "sim/libtvrsim.so", TVR_INSTALL_SIM_DIR "/libtvrsim.so")
        .parent_path();
}

void check_adapter_library() {
    if (!can_open("liblrmapi.so") && !can_open("librmapi.so")) {
        throw Cim_Error("this machine has no adapter library (liblrmapi.so or librmapi.so); --sim "
                        "shows simulated adapters");
    }
}

} // namespace tvrcim
