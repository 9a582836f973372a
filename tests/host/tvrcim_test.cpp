// The built tvrcim as people run it, on simulated adapters.
#include "tests/host/tvrcim_fixture.h"
#include "json/json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using tvrjson::Json;

const Json& first(const Json& array) {
    return array.elements().at(0);
}

TEST_F(Tvrcim, lists_the_simulated_ports) {
    const Outcome outcome = run("--sim list");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty()) << "neither progress nor faults";
    EXPECT_EQ(lines(outcome.out), 5u) << outcome.out;
    EXPECT_THAT(outcome.out,
                ContainsRegex("^WWPN +MODEL +FIRMWARE +STATE +SPEED +TYPE +TARGETS\n"));
    EXPECT_THAT(outcome.out,
                ContainsRegex("\n10000254564A1020  TVR-F1602  v2.82a4 +OK +16G +N +2\n"));
    EXPECT_THAT(outcome.out, ContainsRegex("\n10000254563C7781  .*  disabled +- +- +0\n"));
}

TEST_F(Tvrcim, shows_the_host_as_a_tree) {
    environment = "LC_ALL=C";
    const Outcome outcome = run("--sim tree");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr(R"(
|- TVR-F1602  serial TVF1602S0417  node 20000254564A1020  48 C  Tavrin TVR-F1602 16Gb )"));
    EXPECT_THAT(outcome.out, HasSubstr(R"(
|  `- port 10000254564A1020  OK  16G  N  firmware v2.82a4  /sys/class/fc_host/host3
|     |- target 5002545670000A01  FCID 010A00
|     |  |- LUN 0  Storage Volume            100.0 GiB  TVSTORE ARRAY-2000 Revision 4.10      /dev/sdb
)"));
    EXPECT_THAT(outcome.out, HasSubstr(R"(
|     `- target 5002545670000B01  FCID 010B00
|        |- LUN 0  Tape Drive  TVTAPE LT-8 DRIVE K1A2           /dev/nst0
|        `- LUN 1  Jukebox     TVTAPE LIBRARY 48 Revision 1.07
)"));
    EXPECT_THAT(outcome.out, HasSubstr("port 10000254564A1021  link down  firmware"));
    const Json tree = Json::parse(run("--sim -o json tree").out);
    const Json& port = first(*first(*tree.find("adapters")).find("ports"));
    EXPECT_EQ(first(*port.find("targets")).find("units")->size(), 4u);
    const Json list = Json::parse(run("--sim -o json list").out);
    EXPECT_EQ(list.elements().at(3).find("state")->as_string(), "Disable") << "unchanged";
    const Json ports = Json::parse(run("--sim -o json enum TVRHBA_FCPort -p PortType").out);
    const Json& properties = *ports.elements().at(3).find("properties");
    EXPECT_EQ(properties.size(), 5u) << "the keys and what was asked for";
    EXPECT_EQ(properties.find("PortType")->as_unsigned(), 0u) << "without its meaning";
}

TEST_F(Tvrcim, follows_associations) {
    const std::string port = " TVRHBA_FCPort.DeviceID=10000254563C7780 ";
    const Outcome controller = run("--sim assoc" + port + "--class tvrhba_controlledBY --names");
    EXPECT_THAT(controller.out, ContainsRegex("^root/tavrin:TVRHBA_PortController\\.[^\n]*\n$"));
    EXPECT_THAT(run("--sim refs" + port + "--class TVRHBA_ControlledBy -p AccessState").out,
                ContainsRegex("\n  AccessState += 1\n$"));
    expect_error("--sim assoc TVRHBA_FCPortStatistics.InstanceID=none", 1, "CMPI_RC_ERR_NOT_FOUND");

    std::string path = run("--sim get" + port + "-p Speed").out;
    path = "'" + path.substr(0, path.find('\n')).replace(0, path.find('.'), "CIM_FCPort") + "'";
    EXPECT_EQ(run("--sim assoc " + path + " --class TVRHBA_ControlledBy --names").out,
              controller.out)
        << "by the whole path of a superclass";

    const std::string graph = run("--sim graph" + port + "--depth 2 --leaf CIM_System").out;
    EXPECT_THAT(graph, StartsWith("digraph associations {\n"));
    EXPECT_THAT(graph, HasSubstr(" [label=\"ControlledBy\\nAntecedent \u2192 Dependent\"]\n"));
    EXPECT_THAT(graph, HasSubstr(" [label=\"8 DriverParams\", style=dashed]\n"));
    EXPECT_THAT(graph, ContainsRegex("  a[0-9]+ -> n[0-9]+ \\[label=\"LogicalUnit\"\\]\n"));
    EXPECT_EQ(lines(run("--sim assoc CIM_ComputerSystem --class CIM_SystemPackaging --names").out),
              4u)
        << "nobody serves the system, and associations lead to it";
}

TEST_F(Tvrcim, takes_a_scenario_and_leaves_nothing_behind) {
    const std::string file = scenario(R"({"adapters": [{"copies": 3}]})");
    for (const std::string& arguments :
         {"--sim " + file + " list", "--sim=" + file + " list", "list --log --sim=" + file}) {
        EXPECT_EQ(lines(run(arguments).out), 4u) << arguments;
    }
    EXPECT_TRUE(fs::is_empty(directory / "tmp"));
    EXPECT_TRUE(fs::is_empty(directory / "etc")) << "a simulated run has a place of its own";
    expect_error("--sim=/nonexistent list", 2, "scenario /nonexistent: the file cannot be read");
    expect_error("--sim=/proc/version list", 2, "scenario /proc/version: document: parse error");

    expect_error("--sim=" + scenario(R"({"adapters": [{"copies": -3}]})") + " list", 2,
                 "host.json: adapters[0].copies");
}

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

TEST_F(Tvrcim, tells_which_adapters_are_left_out_and_why) {
    const struct {
        const char* json;
        int status;
        const char* said;
        std::size_t ports = 0;
    } cases[] = {
        {R"({"adapters": [{"copies": 3}], "entryPoints": {"LRM_GetHBAAttributes": {"status": 12}}})",
         1,
         "of 3 adapters 3 are left out: Tavrin-TVR-F1601-0 and 2 more: LRM_GetHBAAttributes "
         "answers status 12\n"},
        {R"({"adapters": [{}, {"ports": [{}, {}]}], "entryPoints": {"LRM_GetPortAttributes":
             {"where": "1000025456000101", "status": 12}, "HBA_OpenAdapter":
             {"where": "Tavrin-TVR-F1601-0", "status": 1}}})",
         1,
         "of 2 adapters 1 is left out, and 1 port is: Tavrin-TVR-F1601-0: HBA_OpenAdapter fails; "
         "port 1 of Tavrin-TVR-F1601-1: LRM_GetPortAttributes answers status 12\n",
         1},
        {R"({"adapters": [{}, {"name": "Tavrin-N1"}, {"attributes": {"functionType": 2}}]})", 0,
         "of 3 adapters 2 are left out: Tavrin-N1 and 1 more: a converged adapter", 1},
        {R"({"adapters": [{}, {"manufacturer": "Else", "name": "e"}], "entryPoints":
             {"LRM_GetHBAAttributes": {"where": "1000025456000100", "status": 2}}})",
         0, "of 2 adapters 1 is left out: e: made by \"Else\"", 1},
        {R"({"adapters": [{"copies": 2}], "entryPoints": {"HBA_GetAdapterAttributes":
             {"failCall": 1}}})",
         1, "of 2 adapters 1 port is left out: port 0 of Tavrin-TVR-F1601-0: it can be read now",
         1},
        {R"({"adapters": []})", 0, "the adapter libraries report no adapter\n"},
    };
    for (const auto& [json, status, said, ports] : cases) {
        const Outcome outcome = run("--sim=" + scenario(json) + " list");
        EXPECT_EQ(outcome.status, status) << json;
        EXPECT_THAT(outcome.err, StartsWith(std::string("tvrcim: ") + said)) << json;
        EXPECT_EQ(lines(outcome.out), status == 1 && ports == 0 ? 0 : ports + 1) << outcome.out;
    }
    environment = "LD_LIBRARY_PATH='" TVR_SIMULATOR "/hbaapi-only'";
    expect_error("tree", 1, "no adapter library");
}

TEST_F(Tvrcim, shows_the_ports_asked_for) {
    for (const char* port : {"10:00:02:54:56:3c:77:80", "0x10000254563C7780", "10000254563c778"}) {
        const std::size_t ports = std::string(port).ends_with("778") ? 2 : 1;
        EXPECT_EQ(lines(run(std::string("--sim list ") + port).out), ports + 1) << port;
    }
    EXPECT_EQ(lines(run("--sim tree 10000254563C7780").out), 6u);
    expect_error("--sim list 10000254563C7789", 2, "did you mean 10000254563C7780");
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

TEST_F(Tvrcim, wrong_input_is_told_in_one_line) {
    expect_error("", 2, "a command is missing: list, tree, classes");
    expect_error("lst", 2, "there is no command 'lst'; did you mean list?");
    expect_error("--sim lsit", 2, "neither a command nor a scenario 'lsit'; did you mean list?");
    expect_error("help lsit", 2, "there is no command 'lsit'; did you mean list?");
    expect_error("enum TVRHBA_FCPrt", 2, "did you mean TVRHBA_FCPort?");
    expect_error("--sim --namespac x list", 2, "no option --namespac; did you mean --namespace?");
    expect_error("enum TVRHBA_FCPort --nam", 2, "no option --nam; did you mean --names or");
    expect_error("--log=LOUD list", 2, "--log is FATAL, ERR");
    expect_error("--module /nonexistent.so list", 2, "module /nonexistent.so: ");
    expect_error("--module libm.so.6 list", 2, "module libm.so.6: serves none of the classes");
    expect_error("--instances /nonexistent.json list", 2, "instance file /nonexistent.json");
    expect_error("--instances / list", 2, "instance file /: cannot be read");
    expect_error("classes 'XX*'", 2, "no class matches 'XX*'");
    expect_error("--sim get 'TVRHBA_FCPort.DeviceID=1,SystemName=a,CreationClassName=b,"
                 "SystemCreationClassName=c'",
                 1, "CMPI_RC_ERR_NOT_FOUND");
    expect_error("enum CIM_ComputerSystem", 1, "nobody serves CIM_ComputerSystem");
}

TEST_F(Tvrcim, given_instances_take_the_place_of_what_the_module_makes) {
    std::ofstream(directory / "given.json") << R"([{"class": "IBMSD_ComputerSystem",
        "namespace": "root/ibmse", "properties": {
        "CreationClassName": "IBMSD_ComputerSystem", "Name": "given-host"}}])";
    const Outcome outcome = run("--sim --instances '" + (directory / "given.json").string() +
                                "' get TVRHBA_FCPort.DeviceID=10000254564A1020 -p SystemName");
    EXPECT_THAT(outcome.out, HasSubstr("SystemName              = \"given-host\""));
    EXPECT_THAT(run("--sim get TVRHBA_FCPort.DeviceID=10000254564A1020 -p PortType").out,
                HasSubstr("\n  PortType                = 10 (N)\n"));
}

TEST_F(Tvrcim, the_shell_keeps_the_module_loaded) {
    const Outcome outcome = run("--sim shell", "list\nnope\nenum TVRHBA_FCPort --names\nexit\n");
    EXPECT_EQ(lines(outcome.out), 9u) << outcome.out;
    EXPECT_THAT(outcome.err, HasSubstr("tvrcim: line 2: there is no command 'nope'"));
}

TEST_F(Tvrcim, without_adapter_libraries_it_offers_the_simulation) {
    environment = "LD_LIBRARY_PATH='" TVR_NO_LIBRARIES "'";
    for (const char* command : {"list", "enum TVRHBA_FCPort", "get TVRHBA_FCPort"}) {
        expect_error(command, 1, "--sim shows simulated adapters");
    }
    EXPECT_EQ(run("enum TVRHBA_RegisteredProfile").status, 0) << "what needs no adapter works";
}

TEST_F(Tvrcim, tells_version_usage_and_what_the_runtime_did) {
    EXPECT_THAT(run("--log enum TVRHBA_RegisteredProfile --names").err,
                HasSubstr("enter: enumInstanceNames()"));
    EXPECT_EQ(run("--version").out, "tvrcim 2.5.11-1\n");
    const std::string help = run("--help").out;
    EXPECT_THAT(help, HasSubstr("\n  classes "));
    EXPECT_EQ(run("help").out, help);
    EXPECT_EQ(run("help tree").out, run("tree --help").out);
}

} // namespace
