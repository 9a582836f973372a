// The library in a process of its own: what the environment and the real HBA API library decide.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr int libraryMissing = 77;
constexpr int notPermitted = 78;

struct Outcome {
    int status = -1;
    std::string output; ///< standard output and standard error
};

/// Runs the probe in a child that first prepares itself; a result other than 0 ends it there.
Outcome runProbe(
    const std::string& hbaLibrary, const std::string& rmLibrary,
    const std::function<int()>& prepare = [] { return 0; }) {
    std::array<int, 2> ends = {-1, -1};
    EXPECT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        if (const int result = prepare(); result != 0) {
            _exit(result);
        }
        execl(TVRSIM_PROBE, TVRSIM_PROBE, hbaLibrary.c_str(), rmLibrary.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    Outcome outcome;
    std::array<char, 4096> part;
    for (ssize_t length; (length = read(ends[0], part.data(), part.size())) > 0;) {
        outcome.output.append(part.data(), static_cast<size_t>(length));
    }
    close(ends[0]);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

/// A file of the test's own that goes with it.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content)
        : m_path(testing::TempDir() + "tvrsim." + std::to_string(getpid())) {
        std::ofstream(m_path) << content;
    }
    ~TemporaryFile() { std::remove(m_path.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

const std::string hbaFile = TVRSIM_DIRECTORY "/libHBAAPI.so";
const std::string lrmFile = TVRSIM_DIRECTORY "/liblrmapi.so";

Outcome runWithScenario(const std::string& path) {
    return runProbe(hbaFile, lrmFile,
                    [path] { return setenv("TVRSIM_SCENARIO", path.c_str(), 1); });
}

/// Lays a file over another one, seen by this process and its children only.
int layOver(const char* file, const char* place) {
    const bool done = unshare(CLONE_NEWNS) == 0 &&
                      mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                      mount(file, place, nullptr, MS_BIND, nullptr) == 0;
    if (!done) {
        std::fprintf(stderr, "%s\n", std::strerror(errno));
        return notPermitted;
    }
    return 0;
}

} // namespace

TEST(Process, BuiltInScenarioUnlessOneIsNamed) {
    EXPECT_THAT(runWithScenario("").output, StartsWith("init 0\nadapters 4\nTavrin-TVR-F1602-0: "));
    const TemporaryFile scenario(R"({"adapters": [{"name": "Tavrin-Mine"}]})");
    EXPECT_THAT(runWithScenario(scenario.path()).output,
                StartsWith("init 0\nadapters 1\nTavrin-Mine: "));
}

TEST(Process, UnusableScenarioIsOneLineAndNoAdapters) {
    const TemporaryFile scenario("{\"adapters\": [{\"ports\": [\n{\"state\": \"asleep\"}]}]}");
    EXPECT_EQ(runWithScenario(scenario.path()).output,
              "tvrsim: scenario " + scenario.path() +
                  ": adapters[0].ports[0].state: \"asleep\" is none of unknown, online, offline, "
                  "bypassed, diagnostics, linkDown, error, loopback, needsReset, "
                  "linkDownNeedsReset, disabled\ninit 1\nadapters 0\n");
    const Outcome missing = runWithScenario("/nonexistent/scenario.json");
    EXPECT_EQ(missing.output,
              "tvrsim: scenario /nonexistent/scenario.json: the file cannot be read\n"
              "init 1\nadapters 0\n");
    EXPECT_EQ(missing.status, 0);
    EXPECT_THAT(runWithScenario("/").output, HasSubstr("cannot be read\ninit 1\nadapters 0\n"));
}

// The real library reads the vendors from its file, so the test's own file is laid over it in a
// mount namespace that only the child sees.
TEST(Process, RealHbaApiLibraryShowsTheSameAdapters) {
    const std::string realLibrary = "libHBAAPI.so.2";
    const TemporaryFile vendors("tvrsim " TVRSIM_DIRECTORY "/libtvrsim.so\n");
    const Outcome real = runProbe(realLibrary, lrmFile, [&vendors] {
        return layOver(vendors.path().c_str(), "/etc/hba.conf");
    });
    if (real.status == libraryMissing || real.status == notPermitted) {
        GTEST_SKIP() << (real.status == libraryMissing ? "no HBA API library is installed: "
                                                       : "no mount namespace for the test: ")
                     << real.output;
    }
    const Outcome direct = runProbe(hbaFile, lrmFile);
    EXPECT_EQ(real.status, 0);
    EXPECT_THAT(direct.output, StartsWith("init 0\nadapters 4\n"));
    EXPECT_THAT(direct.output,
                HasSubstr("type 1 TVTAPE  LT-8 DRIVE      K1A2 capacity=9 sense 05/20"));
    EXPECT_EQ(real.output, direct.output);
}
