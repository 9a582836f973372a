#include "bench/simulated_host.h"

#include "sim/tvrsim.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <unistd.h>

namespace tvrbench {

namespace {

constexpr const char* entered = "TVR_BENCH_ENTERED";

std::shared_ptr<const tvrmof::Schema> class_model() {
    static const auto schema =
        std::make_shared<const tvrmof::Schema>(tvrmof::read_file(TVR_BENCH_MOF));
    return schema;
}

[[noreturn]] void give_up(const std::string& why) {
    std::fprintf(stderr, "tvr_bench: %s\n", why.c_str());
    std::exit(1);
}

void remove_private_directory() {
    std::error_code ignored;
    std::filesystem::remove_all(std::getenv("TAVRIN_FC_PREFIX"), ignored);
}

struct Kept {
    long ports = 0;
    long disks = 0;
    std::unique_ptr<tvrhost::Object_Manager> manager;
};
Kept kept;

tvrhost::Options with_class_model() {
    tvrhost::Options options;
    options.schema = class_model();
    return options;
}

} // namespace

void enter_simulated_host(char** argv) {
    if (std::getenv(entered) != nullptr) {
        std::atexit(remove_private_directory);
        return;
    }
    std::string prefix = (std::filesystem::temp_directory_path() / "tvr-bench-XXXXXX").string();
    if (mkdtemp(prefix.data()) == nullptr) {
        give_up("no temporary directory");
    }
    std::string path = TVR_BENCH_SIMULATOR;
    if (const char* present = std::getenv("LD_LIBRARY_PATH")) {
        path += std::string(":") + present;
    }
    setenv("LD_LIBRARY_PATH", path.c_str(), 1);
    setenv("TAVRIN_FC_PREFIX", prefix.c_str(), 1);
    setenv(entered, "1", 1);
    execv("/proc/self/exe", argv);
    give_up("cannot start again with the simulated libraries");
}

void* simulated(const char* function) {
    static void* const library = dlopen("liblrmapi.so", RTLD_NOW | RTLD_LOCAL);
    void* const symbol = library == nullptr ? nullptr : dlsym(library, function);
    if (symbol == nullptr) {
        give_up("the simulated libraries are not found");
    }
    return symbol;
}

void control(const std::string& request) {
    static const auto call = reinterpret_cast<tvrsim_control_fn>(simulated("tvrsim_control"));
    char message[256] = "";
    if (call(request.c_str(), message, sizeof message) != 0) {
        give_up(message);
    }
}

void set_host(long ports, long disks) {
    kept = {};
    const std::string targets = disks == 0
                                    ? ""
                                    : R"("targets": [{"luns": [{"blocks": 2048, "copies": )" +
                                          std::to_string(disks) + "}]}]";
    control(R"({"scenario": {"adapters": [{"copies": )" + std::to_string(ports) +
            R"(, "ports": [{)" + targets + "}]}]}}");
}

std::unique_ptr<tvrhost::Object_Manager> module_manager() {
    tvrhost::Options options = with_class_model();
    options.module = TVR_BENCH_MODULE;
    tvrhost::Named_Values system;
    system.set("CreationClassName", "IBMSD_ComputerSystem");
    system.set("Name", "bench-host");
    options.instances.push_back(
        {tvrhost::Cim_Path("root/ibmse", "IBMSD_ComputerSystem", system), system});
    return std::make_unique<tvrhost::Object_Manager>(std::move(options));
}

tvrhost::Object_Manager& kept_manager(long ports, long disks) {
    if (kept.manager == nullptr || kept.ports != ports || kept.disks != disks) {
        set_host(ports, disks);
        kept = {ports, disks, module_manager()};
    }
    return *kept.manager;
}

void leave_simulated_host() {
    kept = {};
}

std::unique_ptr<tvrhost::Object_Manager> manager_of(tvrhost::Factory_Lookup factories) {
    tvrhost::Options options = with_class_model();
    options.factories = std::move(factories);
    return std::make_unique<tvrhost::Object_Manager>(std::move(options));
}

} // namespace tvrbench
