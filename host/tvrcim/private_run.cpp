#include "host/tvrcim/private_run.h"

#include "host/tvrcim/errors.h"
#include "host/tvrcim/places.h"
#include "sim/tvrsim.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

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

volatile std::sig_atomic_t child = 0;

void pass_on(int signal) {
    if (child > 0) {
        kill(static_cast<pid_t>(child), signal);
    }
}

// While the child runs, what would end this process goes to the child, so that the private
// directory is removed afterwards. A terminal's own signals reach the child twice.
class Signals_To_Child {
public:
    Signals_To_Child() {
        for (std::size_t i = 0; i < count; ++i) {
            struct sigaction action {};
            action.sa_handler = pass_on;
            sigaction(passed[i], &action, &_before[i]);
        }
    }
    ~Signals_To_Child() { restore(); }
    Signals_To_Child(const Signals_To_Child&) = delete;
    Signals_To_Child& operator=(const Signals_To_Child&) = delete;

    void restore() const {
        for (std::size_t i = 0; i < count; ++i) {
            sigaction(passed[i], &_before[i], nullptr);
        }
    }

private:
    static constexpr int passed[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
    static constexpr std::size_t count = 4;
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

void simulate(const fs::path& prefix, const std::string& asked) {
    const fs::path simulator = simulator_directory();
    if (const std::string scenario = scenario_file(asked); !scenario.empty()) {
        check_scenario(simulator, scenario);
        setenv("TVRSIM_SCENARIO", fs::absolute(scenario).c_str(), 1);
    }
    for (const char* directory : {"etc", "proc", "var/log"}) {
        fs::create_directories(prefix / directory);
    }
    copy_banner(prefix, "/proc/version");
    copy_banner(prefix, "/etc/issue");
    setenv("TAVRIN_FC_PREFIX", prefix.c_str(), 1);
    setenv("LD_LIBRARY_PATH", joined(simulator, getenv("LD_LIBRARY_PATH")).c_str(), 1);
}

// Switches the runtime log on, in a place of its own.
void keep_log(const fs::path& home, const std::string& level) {
    fs::create_directories(home);
    std::ofstream(home / ".cimplerc") << "LOG_LEVEL=" << level << '\n';
    setenv("CIMPLE_HOME", home.c_str(), 1);
}

void show_log(const fs::path& home) {
    std::ifstream messages(home / ".cimple" / "messages");
    for (std::string line; std::getline(messages, line);) {
        std::cerr << line << '\n';
    }
}

// The exit status of a process that runs this program again.
int run_again(char** arguments) {
    const std::string self = own_file().string();
    const Signals_To_Child signals;
    const pid_t pid = fork();
    if (pid < 0) {
        throw Usage_Error(std::string("cannot start a process: ") + std::strerror(errno));
    }
    if (pid == 0) {
        signals.restore();
        execv(self.c_str(), arguments);
        std::fprintf(stderr, "tvrcim: cannot start %s: %s\n", self.c_str(), std::strerror(errno));
        _exit(usage_error);
    }
    child = pid;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    child = 0;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

bool is_private_run() noexcept {
    return secure_getenv(marker) != nullptr;
}

int run_privately(char** arguments, const Private_Run& run) {
    const Private_Directory directory;
    const fs::path log_home = directory.path() / "log";
    if (run.simulated) {
        simulate(directory.path() / "host", run.scenario);
    }
    if (!run.log_level.empty()) {
        keep_log(log_home, run.log_level);
    }
    setenv(marker, "1", 1);
    const int status = run_again(arguments);
    show_log(log_home);
    return status;
}

} // namespace tvrcim
