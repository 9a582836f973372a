// The built tvrcim as people run it, on simulated adapters.
#include "json/json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using tvrjson::Json;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

const Json& first(const Json& array) {
    return array.elements().at(0);
}

class Tvrcim : public ::testing::Test {
protected:
    Tvrcim() {
        std::string pattern = (fs::temp_directory_path() / "tvrcim-test-XXXXXX").string();
        directory = mkdtemp(pattern.data());
        fs::create_directories(directory / "tmp");
        fs::create_directories(directory / "etc");
    }
    ~Tvrcim() override { fs::remove_all(directory); }

    // Runs tvrcim with what the shell makes of `arguments`. The machine's own configuration is out
    // of the way, and temporary files are made where the test sees them.
    Outcome run(const std::string& arguments, const std::string& input = {}) const {
        std::ofstream(directory / "in") << input;
        const std::string command = "cd '" + directory.string() +
                                    "' && env TMPDIR=$PWD/tmp TAVRIN_FC_PREFIX=$PWD " +
                                    environment + " '" TVRCIM "' " + arguments + " <in >out 2>err";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read("out"), read("err")};
    }

    // An error is one line, names the program, and leaves standard output alone.
    void expect_error(const std::string& arguments, int status, const std::string& text) const {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status) << arguments;
        EXPECT_THAT(outcome.err, StartsWith("tvrcim: ")) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr(text)) << arguments;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
    }

    std::string read(const char* file) const {
        std::ostringstream text;
        text << std::ifstream(directory / file).rdbuf();
        return text.str();
    }

    fs::path directory;
    std::string environment;
};

std::size_t lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
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
    EXPECT_THAT(outcome.out, ContainsRegex("\n10000254563C7781  .*  Disable +- +unknown +0\n"));
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
    EXPECT_THAT(outcome.out, HasSubstr("port 10000254564A1021  Other  no link  firmware"));
    const Json tree = Json::parse(run("--sim -o json tree").out);
    const Json& port = first(*first(*tree.find("adapters")).find("ports"));
    EXPECT_EQ(first(*port.find("targets")).find("units")->size(), 4u);
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
    const std::string file = (directory / "host.json").string();
    std::ofstream(file) << R"({"adapters": [{"copies": 3}]})";
    for (const std::string& arguments :
         {"--sim " + file + " list", "--sim=" + file + " list", "list --log --sim=" + file}) {
        EXPECT_EQ(lines(run(arguments).out), 4u) << arguments;
    }
    EXPECT_TRUE(fs::is_empty(directory / "tmp"));
    EXPECT_TRUE(fs::is_empty(directory / "etc")) << "a simulated run has a place of its own";
    expect_error("--sim=/nonexistent list", 2, "scenario /nonexistent: the file cannot be read");
    expect_error("--sim=/proc/version list", 2, "scenario /proc/version: document: parse error");

    std::ofstream(file) << R"({"adapters": [{"copies": -3}]})";
    expect_error("--sim=" + file + " list", 2, "host.json: adapters[0].copies");
}

TEST_F(Tvrcim, tells_when_its_output_is_lost) {
    EXPECT_EQ(run("--sim --log list >/dev/full 2>err #").status, 1);
    EXPECT_THAT(read("err"), StartsWith("tvrcim: standard output cannot be written\n"));
    EXPECT_THAT(read("err"), HasSubstr("enter: enumInstances()")) << "the log comes all the same";
    environment = "TVRSIM_SCENARIO=/nonexistent";
    expect_error("--sim list", 2, "scenario /nonexistent: the file cannot be read");
    EXPECT_TRUE(fs::is_empty(directory / "tmp"));
    environment = "TMPDIR=/nonexistent";
    expect_error("--sim list", 2, "TMPDIR, which is \"/nonexistent\", is no directory");
}

TEST_F(Tvrcim, json_is_for_programs) {
    const Json list = Json::parse(run("--sim -o json list").out);
    EXPECT_EQ(first(list).find("speed")->as_unsigned(), 16000000000u);

    const Json ports = Json::parse(run("--sim -o json enum TVRHBA_FCPort -p Speed").out);
    ASSERT_EQ(ports.size(), 4u);
    const Json& properties = *first(ports).find("properties");
    EXPECT_EQ(properties.size(), 5u) << "the keys and what was asked for";
    EXPECT_EQ(properties.find("Speed")->as_unsigned(), 16000000000u);
}

TEST_F(Tvrcim, enumerates_and_gets) {
    const Outcome profiles = run("enum TVRHBA_RegisteredProfile --names");
    EXPECT_EQ(lines(profiles.out), 13u);
    EXPECT_THAT(profiles.out,
                StartsWith("root/pg_interop:TVRHBA_RegisteredProfile.InstanceID=\"TVR:Profile "
                           "Registration\"\n"));
    const Outcome port = run("--sim get TVRHBA_FCPort.DeviceID=10000254564A1020 -p PortType");
    EXPECT_THAT(port.out, HasSubstr("\n  PortType                = 10\n"));
    EXPECT_THAT(run("get TVRHBA_RegisteredProfile.InstanceID=TVR:Storage -p RegisteredName").out,
                HasSubstr("= \"Storage HBA\"\n"))
        << "the beginning of the only key";
}

TEST_F(Tvrcim, wrong_input_is_told_in_one_line) {
    expect_error("", 2, "a command is missing: list, tree, classes");
    expect_error("lst", 2, "there is no command 'lst'; did you mean list?");
    expect_error("enum TVRHBA_FCPrt", 2, "did you mean TVRHBA_FCPort?");
    expect_error("--sim --namespac x list", 2, "no option --namespac; did you mean --namespace?");
    expect_error("enum TVRHBA_FCPort --nam", 2, "no option --nam; did you mean --names or");
    expect_error("--log=LOUD list", 2, "--log is FATAL, ERR");
    expect_error("--module /nonexistent.so list", 2, "module /nonexistent.so: ");
    expect_error("--module libm.so.6 list", 2, "module libm.so.6: serves none of the classes");
    expect_error("--instances /nonexistent.json list", 2, "instance file /nonexistent.json");
    expect_error("--instances / list", 2, "instance file /: cannot be read");
    expect_error("classes 'XX*'", 2, "no class matches 'XX*'");
    expect_error("--sim get TVRHBA_FCPort.DeviceID=zz", 1, "no such instance; DeviceID is ");
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
}

TEST_F(Tvrcim, the_shell_keeps_the_module_loaded) {
    const Outcome outcome = run("--sim shell", "list\nnope\nenum TVRHBA_FCPort --names\nexit\n");
    EXPECT_EQ(lines(outcome.out), 9u) << outcome.out;
    EXPECT_THAT(outcome.err, HasSubstr("no command 'nope'"));
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
    for (const char* command : {"list", "classes", "enum", "get", "set", "call", "shell"}) {
        EXPECT_THAT(help, HasSubstr(std::string("\n  ") + command + " ")) << command;
    }
}

} // namespace
