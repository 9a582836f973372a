// The built tvrcim as people run it, on simulated adapters.
#include "tests/common/session.h"
#include "tests/host/tvrcim_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using ::testing::HasSubstr;

class Tvrcim_Output : public Tvrcim {
protected:
    Tvrcim_Output() {
        session.rename(directory.string(), "$DIR");
        session.on("", [this](const auto&, std::ostream& answer) { tell(session.rest(), answer); });
        session.on("environment", [this] { environment = session.rest(); });
        session.on("scenario", [this] { scenario(session.rest()); });
        session.on("given", [this] { std::ofstream(directory / "given.json") << session.rest(); });
        // How many lines come.
        session.on("lines", [this] { return lines(run(session.rest()).out); });
        session.on("left", [this](const auto& words, std::ostream& answer) {
            for (const std::string& name : words) {
                answer << (fs::is_empty(directory / name) ? "nothing\n" : "something\n");
            }
        });
        session.rename(TVR_SIMULATOR, "$SIMULATOR");
    }

    Text_Session session;

private:
    // Of errors each line as "! ", and the status where it isn't success.
    void tell(const std::string& arguments, std::ostream& answer) {
        const Outcome outcome = run(arguments);
        answer << outcome.out;
        std::istringstream errors(outcome.err);
        for (std::string line; std::getline(errors, line);) {
            answer << "! " << line << '\n';
        }
        if (outcome.status != 0) {
            answer << "status " << outcome.status << '\n';
        }
    }
};

TVR_SESSIONS(Tvrcim_Output, "tvrcim.txt");

// The host is one on which nothing is answered for longer than anybody waits.
TEST_F(Tvrcim, ends_in_order_however_it_ends) {
    scenario(
        R"({"adapters": [{}], "entryPoints": {"LRM_GetHBAAttributes": {"latencyMs": 20000}}})");
    const struct {
        const char* run;
        int status;
    } cases[] = {
        {"export LD_LIBRARY_PATH='" TVR_SIMULATOR "'; exec 3> >(true); sleep 0.3\n"
         "(echo $BASHPID; exec $T enum TVRHBA_DriverParams >&3); exit $?",
         141},
        {"setsid -w $T --sim=host.json list & sleep 0.5; kill -TERM -- -$!; wait $!", 143},
        {"setsid -w $T --sim=host.json list & sleep 0.5; kill -HUP $!; wait $!", 129},
        {"export LD_LIBRARY_PATH='" TVR_SIMULATOR "' TVRSIM_SCENARIO=host.json\n"
         "$T list & echo $!; sleep 0.5; kill -TERM $!; wait $!",
         143},
        {"export LD_LIBRARY_PATH='" TVR_SIMULATOR "' TVRSIM_SCENARIO=host.json\n"
         "$T list & echo $!; sleep 0.5; kill -TERM $!; sleep 0.4; kill -TERM $!; wait $!",
         143},
        {"sleep 2 | $T --sim shell & sleep 0.5; kill -TERM $!; wait $!", 143},
    };
    for (const auto& [run, status] : cases) {
        SCOPED_TRACE(run);
        const auto begin = std::chrono::steady_clock::now();
        const Outcome outcome = script(run);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
        EXPECT_TRUE(fs::is_empty(directory / "tmp")) << "no private directory is left";
        const std::string process = outcome.out.substr(0, outcome.out.find('\n'));
        EXPECT_FALSE(fs::exists("/dev/shm/sem.TVR_RM_INIT_LIB_" + process));
        EXPECT_FALSE(fs::exists("/dev/shm/sem.TVR_RM_INIT_LIB_DONE_" + process));
    }
}

TEST_F(Tvrcim, shows_the_logs_and_keeps_others_from_the_settings) {
    const std::string here = "umask 0; export LD_LIBRARY_PATH='" TVR_SIMULATOR "'\n";
    const Outcome outcome = script(here + "$T --device-log list");
    EXPECT_EQ(lines(outcome.out), 5u);
    EXPECT_THAT(outcome.err, HasSubstr("[TVR_DBG] Tavrin Provider Unloaded\n"));
    EXPECT_TRUE(fs::exists(directory / "etc/tavrin_fc_provider.conf")) << "the machine's own";
    EXPECT_FALSE(fs::exists(directory / "etc/tavrin_fc_provider.dmp")) << "this run's alone";
    script(here + "$T list");
    EXPECT_EQ(std::distance(fs::directory_iterator(directory / "etc"), {}), 2);
    for (const auto& file : fs::directory_iterator(directory / "etc")) {
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0644)) << file;
    }
    std::ofstream(directory / "etc/tavrin_fc_provider.conf") << "TVR_PROVIDER_CACHE_TIMEOUT = 99\n";
    EXPECT_THAT(script(here + "$T --log list").err,
                HasSubstr("tavrin_fc_provider.conf:1: TVR_PROVIDER_CACHE_TIMEOUT takes 1 to 30"));
    EXPECT_THAT(run("--sim --device-log list").err, HasSubstr("FC AdapterName : [Tavrin-"));
}

TEST_F(Tvrcim, tells_when_its_output_is_lost) {
    const Outcome outcome = run("--sim --log list >/dev/full");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("tvrcim: standard output cannot be written\n"));
    EXPECT_THAT(outcome.err, HasSubstr("enter: enumInstances()")) << "the log comes all the same";
    environment = "TVRSIM_SCENARIO=/nonexistent";
    expect_error("--sim list", 2, "scenario /nonexistent: the file cannot be read");
    EXPECT_TRUE(fs::is_empty(directory / "tmp"));
    environment = "TMPDIR=/nonexistent";
    expect_error("--sim list", 2, "TMPDIR, which is \"/nonexistent\", is no directory");
}

TEST_F(Tvrcim, the_shell_keeps_the_module_loaded) {
    const Outcome outcome = run("--sim shell", "list\nnope\nenum TVRHBA_FCPort --names\nexit\n");
    EXPECT_EQ(lines(outcome.out), 9u) << outcome.out;
    EXPECT_THAT(outcome.err, HasSubstr("tvrcim: line 2: there is no command 'nope'"));
}

TEST_F(Tvrcim, tells_usage_and_what_the_runtime_did) {
    EXPECT_THAT(run("--log enum TVRHBA_RegisteredProfile --names").err,
                HasSubstr("enter: enumInstanceNames()"));
    const std::string help = run("--help").out;
    EXPECT_THAT(help, HasSubstr("\n  classes "));
    EXPECT_EQ(run("help").out, help);
    EXPECT_EQ(run("help tree").out, run("tree --help").out);
}

} // namespace
