#include "host/tvrcim/places.h"

#include "host/tvrcim/errors.h"

#include <dlfcn.h>

namespace fs = std::filesystem;

namespace tvrcim {

namespace {

// The tree that this program was built in, or empty where it is installed.
fs::path build_tree() {
    const fs::path tree = own_file().parent_path().parent_path();
    std::error_code error;
    return fs::exists(tree / "CMakeCache.txt", error) ? tree : fs::path();
}

// `what` and `hint` are for people, `built` is relative to the build tree, `installed` to this
// program or absolute.
fs::path find(const char* what, const char* hint, const char* built, const fs::path& installed) {
    const fs::path tree = build_tree();
    fs::path file =
        tree.empty() ? (own_file().parent_path() / installed).lexically_normal() : tree / built;
    if (std::error_code error; !fs::exists(file, error)) {
        throw Usage_Error(std::string("there is no ") + what + " at " + file.string() + hint);
    }
    return file;
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
    return find("provider module", "; --module FILE names another", "lib/libtavrin_fc_provider.so",
                TVR_INSTALLED_MODULES "/libtavrin_fc_provider.so");
}

fs::path mof_file() {
    return find("class model", "", "mof/tavrin_fc_schema.mof",
                TVR_INSTALLED_MOF "/tavrin_fc_schema.mof");
}

fs::path simulator_directory() {
    return find("simulator", "; the install component \"sim\" has it", "sim/libtvrsim.so",
                TVR_INSTALLED_SIMULATOR "/libtvrsim.so")
        .parent_path();
}

void check_adapter_library() {
    if (!can_open("liblrmapi.so") && !can_open("librmapi.so")) {
        throw Cim_Error("this machine has no adapter library (liblrmapi.so or librmapi.so); --sim "
                        "shows simulated adapters");
    }
}

} // namespace tvrcim
