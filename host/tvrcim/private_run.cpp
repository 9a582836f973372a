#include "host/tvrcim/private_run.h"

#include "host/tvrcim/ending.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/log_tail.h"
#include "host/tvrcim/places.h"
#include "sim/tvrsim.h"

#include <dlfcn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>

namespace fs = std::filesystem;

namespace tvrcim {

namespace {

constexpr char marker[] = "TVRCIM_PRIVATE_RUN";

// A directory below the system's for temporary files that nobody else may read; removed with all
// that is in it at the end.
class Private_Directory {
public:
    Private_Directory() {
        std::error_code error;
        const fs::path temporary = fs::temp_directory_path(error);
        if (error) {
            const char* const variable = getenv("TMPDIR");
            throw Usage_Error("TMPDIR, which is \"" +
                              std::string(variable == nullptr ? "" : variable) +
                              "\", is no directory");
        }
        std::string pattern = (temporary / "tvrcim-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw Usage_Error("cannot make a directory below " + temporary.string() + ": " +
                              std::strerror(errno));
        }
        _path = pattern;
    }
    ~Private_Directory() {
        std::error_code error;
        fs::remove_all(_path, error);
    }
    Private_Directory(const Private_Directory&) = delete;
    Private_Directory& operator=(const Private_Directory&) = delete;

    const fs::path& path() const noexcept { return _path; }

private:
    fs::path _path;
};

volatile std::sig_atomic_t child_process = 0;

// What a terminal sends, it sends to the child as well.
void pass_on(int signal, siginfo_t* info, void*) {
    if (child_process > 0 && info->si_code <= 0) {
        kill(static_cast<pid_t>(child_process), signal);
    }
}

// What would end this process goes to the child, so that the private directory is removed
// afterwards; until there is a child it waits.
class Signals_To_Child {
public:
    Signals_To_Child() {
        sigemptyset(&_passed);
        for (std::size_t i = 0; i < count; ++i) {
            sigaddset(&_passed, passed[i]);
        }
        sigprocmask(SIG_BLOCK, &_passed, &_mask_before);
        for (std::size_t i = 0; i < count; ++i) {
            struct sigaction action {};
            action.sa_sigaction = pass_on;
            action.sa_flags = SA_SIGINFO;
            sigaction(passed[i], nullptr, &_before[i]);
            if (_before[i].sa_handler != SIG_IGN) {
                sigaction(passed[i], &action, nullptr);
            }
        }
    }
    ~Signals_To_Child() { restore(); }
    Signals_To_Child(const Signals_To_Child&) = delete;
    Signals_To_Child& operator=(const Signals_To_Child&) = delete;

    void pass_to(pid_t process) const {
        child_process = process;
        sigprocmask(SIG_SETMASK, &_mask_before, nullptr);
    }
    void restore() const {
        for (std::size_t i = 0; i < count; ++i) {
            sigaction(passed[i], &_before[i], nullptr);
        }
        sigprocmask(SIG_SETMASK, &_mask_before, nullptr);
    }

private:
    static constexpr int passed[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
    static constexpr std::size_t count = 4;
    sigset_t _passed{};
    sigset_t _mask_before{};
    struct sigaction _before[count] {};
};

// The files of the machine that the module reads and that make no difference to it.
void copy_banner(const fs::path& prefix, const char* file) {
    std::ifstream from(file);
    std::ofstream to(prefix / fs::path(file).relative_path());
    if (from.peek() != std::ifstream::traits_type::eof()) {
        to << from.rdbuf();
    }
}

// Tells what is wrong with a scenario before anything starts from it.
void check_scenario(const fs::path& simulator, const std::string& scenario) {
    const fs::path file = simulator / "libtvrsim.so";
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto check = reinterpret_cast<tvrsim_check_fn>(
        library == nullptr ? nullptr : dlsym(library, "tvrsim_check"));
    if (check == nullptr) {
        throw Usage_Error("the simulator cannot be used: " + std::string(dlerror()));
    }
    char reason[512];
    if (check(scenario.c_str(), reason, sizeof reason) != 0) {
        throw Usage_Error("scenario " + scenario + ": " + reason);
    }
}

std::string joined(const fs::path& first, const char* rest) {
    return rest == nullptr || *rest == '\0' ? first.string() : first.string() + ":" + rest;
}

// The scenario asked for, the environment's, or none.
std::string scenario_file(const std::string& asked) {
    const char* const variable = secure_getenv("TVRSIM_SCENARIO");
    return !asked.empty() || variable == nullptr ? asked : variable;
}

void make_configuration(const fs::path& prefix) {
    for (const char* directory : {"etc", "proc", "var/log"}) {
        fs::create_directories(prefix / directory);
    }
    setenv("TAVRIN_FC_PREFIX", prefix.c_str(), 1);
}

void simulate(const fs::path& prefix, const std::string& asked) {
    const fs::path simulator = simulator_directory();
    if (const std::string scenario = scenario_file(asked); !scenario.empty()) {
        check_scenario(simulator, scenario);
        setenv("TVRSIM_SCENARIO", fs::absolute(scenario).c_str(), 1);
    }
    make_configuration(prefix);
    copy_banner(prefix, "/proc/version");
    copy_banner(prefix, "/etc/issue");
    setenv("LD_LIBRARY_PATH", joined(simulator, getenv("LD_LIBRARY_PATH")).c_str(), 1);
}

// The machine's own files, but for the log settings: what is written to a link goes to its file.
void link_configuration(const fs::path& prefix) {
    const char* const before = secure_getenv("TAVRIN_FC_PREFIX");
    const std::string root =
        before == nullptr || *before == '\0' ? "" : fs::absolute(before).string();
    make_configuration(prefix);
    for (const char* file : {"etc/tavrin_fc_provider.conf", "etc/tvr_smis.conf", "etc/issue",
                             "proc/version", "var/log/messages"}) {
        fs::create_symlink(root + "/" + file, prefix / file);
    }
}

// Has the module write its log from its start on. Returns the log's file.
fs::path keep_device_log(const fs::path& prefix) {
    constexpr std::size_t longest = 255; // of a path in the settings
    fs::path log = prefix / "var/log/devices.log";
    if (log.native().size() > longest) {
        throw Usage_Error("the path of the device log is too long; TMPDIR may name another place");
    }
    std::ofstream(prefix / "etc/tavrin_fc_provider.dmp") << "2,5,1\n" << log.native();
    return log;
}

// Switches the runtime log on, in a place of its own. Returns its file.
fs::path keep_runtime_log(const fs::path& home, const std::string& level) {
    fs::create_directories(home);
    std::ofstream(home / ".cimplerc") << "LOG_LEVEL=" << level << '\n';
    setenv("CIMPLE_HOME", home.c_str(), 1);
    return home / ".cimple" / "messages";
}

// How a process ended that runs this program again, as waitpid tells it.
int run_again(char** arguments, const Signals_To_Child& signals) {
    const std::string self = own_file().string();
    const pid_t pid = fork();
    if (pid < 0) {
        throw Usage_Error(std::string("cannot start a process: ") + std::strerror(errno));
    }
    if (pid == 0) {
        signals.restore();
        prctl(PR_SET_PDEATHSIG, SIGTERM); // nobody would wait for its answer
        execv(self.c_str(), arguments);
        std::fprintf(stderr, "tvrcim: cannot start %s: %s\n", self.c_str(), std::strerror(errno));
        _exit(usage_error);
    }
    signals.pass_to(pid);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    child_process = 0;
    remove_module_names(pid);
    return status;
}

int run_in(const fs::path& directory, char** arguments, const Private_Run& run,
           const Signals_To_Child& signals) {
    const fs::path prefix = directory / "host";
    if (run.simulated) {
        simulate(prefix, run.scenario);
    } else if (run.device_log) {
        link_configuration(prefix);
    }
    std::optional<Log_Tail> device_log;
    if (run.device_log) {
        device_log.emplace(keep_device_log(prefix));
    }
    std::optional<Log_Tail> runtime_log;
    if (!run.log_level.empty()) {
        runtime_log.emplace(keep_runtime_log(directory / "log", run.log_level));
    }
    setenv(marker, "1", 1);
    return run_again(arguments, signals);
}

} // namespace

bool is_private_run() noexcept {
    return secure_getenv(marker) != nullptr;
}

int run_privately(char** arguments, const Private_Run& run) {
    int status = 0;
    {
        const Signals_To_Child signals;
        const Private_Directory directory;
        status = run_in(directory.path(), arguments, run, signals);
    }
    if (WIFSIGNALED(status)) {
        end_by_signal(WTERMSIG(status));
    }
    return WEXITSTATUS(status);
}

} // namespace tvrcim
