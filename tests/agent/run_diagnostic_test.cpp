// Running diagnostic tests: settings, polls, cancels, and what is left behind. The clock is the
// test's, so that minutes pass at once.
#include "tests/agent/agent_fixture.h"

#include "agent/diagnostic_jobs.h"
#include "agent/diagnostic_runs.h"
#include "agent/diagnostic_tests.h"
#include "providers/TVRHBA_FCHBADiagnosticTest_Provider.h"

#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Settings = TVRHBA_FCHBADiagnosticSettingData;

RM_DIAGRESULT result_in(uint32 state, uint32 code = 0) {
    RM_DIAGRESULT result{};
    result.state = state;
    result.resultCode = code;
    result.completedCycles = 90;
    result.timeToExecute = 12;
    result.loopsFailed = 3;
    return result;
}

class Run_Diagnostic : public With_Agent {
protected:
    Run_Diagnostic() {
        libraries.adapters.resize(1);
        set_number(RM_PA_TOPOLOGY, 20);
        set_number(RM_PA_LINK_STATE, 1);
        attributes()[RM_PA_FABRIC_NAME] = fake::valueOf(uint64{0});
        libraries.number = RM_BEACON_OFF;
        libraries.results = {result_in(RM_TEST_FINISHED)};
        load();
        refresh();
    }
    fake::Attributes& attributes() { return libraries.adapters[0].ports[0].attributes; }
    void set_number(uint16 attribute, uint32 number) {
        attributes()[attribute] = fake::valueOf(number);
    }
    Settings& settings(const char* test) {
        for (Settings* each : agent->maps.m_TVRHBA_FCHBADiagnosticSettingData_map) {
            if (each->InstanceID.value == test) {
                return *each;
            }
        }
        throw std::invalid_argument(test);
    }
    // Settings as a client sends them, with no more than the name of those of the test.
    static Ref<Settings> sent(const char* test) {
        Ref<Settings> settings(Settings::create(false));
        set_null_flags(settings.get(), true, true, 1);
        settings->InstanceID.set(test);
        return settings;
    }
    // The code, and the job's state and what it leaves in `job`, `state`, `record`.
    uint32 run(const char* test, const Settings* with = nullptr,
               const TVRHBA_JobSettingData* job_with = nullptr) {
        libraries.calls.clear();
        libraries.requests.clear();
        log.take();
        const std::size_t records = agent->maps.m_TVRHBA_DiagnosticCompletionRecord_map.size();
        TVRHBA_FCHBADiagnosticTest* self = nullptr;
        for (auto* each : agent->maps.m_TVRHBA_FCHBADiagnosticTest_map) {
            self = each->Name.value == test ? each : self;
        }
        const auto start = clock.time.load();
        Property<uint32> code{};
        CIM_ConcreteJob* made = nullptr;
        EXPECT_EQ(provider.RunDiagnosticService(
                      self, reinterpret_cast<const CIM_ManagedElement*>(controller()),
                      reinterpret_cast<const CIM_DiagnosticSettingData*>(with),
                      reinterpret_cast<const CIM_JobSettingData*>(job_with), made, code),
                  INVOKE_METHOD_OK);
        seconds = (clock.time - start) / 1'000'000;
        job.reset(reinterpret_cast<TVRHBA_ConcreteJob*>(made));
        const auto& map = agent->maps.m_TVRHBA_DiagnosticCompletionRecord_map;
        record = map.size() == records ? Texts() : describe(map.get(map.size() - 1));
        return code.value;
    }
    // Reads the second column of the table of runs.
    void set_library(const std::string& text) {
        libraries.statuses.clear();
        libraries.results = {};
        std::istringstream words(text);
        std::string to;
        for (std::string word; words >> word;) {
            unsigned value = 0;
            unsigned code = 0;
            unsigned times = 1;
            if (std::sscanf(word.c_str(), "%u:%u", &value, &code) == 0) {
                to = word;
                continue;
            }
            std::sscanf(word.c_str(), "%*u*%u", &times);
            for (; times > 0; --times) {
                if (to == "result") {
                    libraries.results.push_back(result_in(value, code));
                } else {
                    libraries.statuses[to].push_back(value);
                }
            }
        }
    }
    // Sets what NAME=VALUE says.
    static void set_property(Settings& settings, const std::string& text) {
        const std::string name = text.substr(0, text.find('='));
        const std::string value = text.substr(name.size() + 1);
        const auto number = static_cast<uint16>(std::atoi(value.c_str()));
        if (name == "LoopControlParameter") {
            settings.LoopControlParameter.set(value.empty() ? Array<String>()
                                                            : Array<String>{String(value)});
        } else if (name == "LoopControl") {
            settings.LoopControl.set(Array<uint16>{number});
        } else if (name == "HaltOnError") {
            settings.HaltOnError.set(number != 0);
        } else if (name == "BufferSizes") {
            settings.BufferSizes.set(Array<uint32>{number});
        } else if (name == "TargetDevice") {
            settings.TargetDevice.set(value);
        } else {
            settings.BufferPattern.set(Array<uint8>());
            for (const char digit : value) {
                settings.BufferPattern.value.append(static_cast<uint8>(digit));
            }
        }
    }
    const TVRHBA_PortController* controller() {
        return agent->maps.m_TVRHBA_PortController_map.get(0);
    }

    using Texts = std::map<std::string, std::string>;
    TVRHBA_FCHBADiagnosticTest_Provider provider;
    Ref<TVRHBA_ConcreteJob> job;
    Texts record; // of the completion
    uint64 seconds = 0;
};

// The rows of a table, each the columns of a line without the blanks around them.
std::vector<std::vector<std::string>> table(const char* file) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::istringstream rest(line);
        std::vector<std::string>& row = rows.emplace_back();
        for (std::string column; std::getline(rest, column, '|');) {
            const std::size_t begin = std::min(column.find_first_not_of(' '), column.size());
            row.push_back(column.substr(begin, column.find_last_not_of(' ') + 1 - begin));
        }
    }
    return rows;
}

TEST_F(Run_Diagnostic, ComesOutAsTheAdapterSays) {
    for (const auto& row : table(DIAGNOSTIC_RUNS)) {
        SCOPED_TRACE(row[0] + ": " + row[1]);
        const std::string said =
            std::regex_replace(row.size() > 5 ? row[5] : "", std::regex("\\\\n"), "\n");
        set_library(row[1]);
        EXPECT_EQ(std::to_string(run(("TVR:FCHBA " + row[0]).c_str())), row[2]);
        EXPECT_EQ(std::to_string(calls("LRM_DiagGetResults")) + " " +
                      std::to_string(calls("LRM_DiagCancelDiagnostic")),
                  row[3]);
        ASSERT_EQ(job ? std::to_string(job->JobState.value) : "0", row[4]);
        if (!job) {
            EXPECT_THAT(record, IsEmpty());
            EXPECT_GT(logged(said), 0u);
            continue;
        }
        const bool completed = row[4] == "7";
        EXPECT_EQ(job->PercentComplete.value, completed ? 100 : 0);
        EXPECT_EQ(record["RecordData"], said);
        EXPECT_EQ(record["CompletionState"], completed ? "2" : "5");
        EXPECT_EQ(record["InstanceID"], job->InstanceID.value.c_str());
        EXPECT_EQ(record["LoopsFailed"], row[3] == "0 0" ? "" : "3");
    }
}

TEST_F(Run_Diagnostic, LooksAtThePortBefore) {
    struct Row {
        const char* test;
        uint16 attribute;
        fake::Attribute value;
        uint32 code;
        const char* line;
    };
    const char* no_plug = "Loopback plug is not detected. Unabled to run test. Install loopback "
                          "plug and make sure HBA Port is Up/Ready..";
    const Row rows[] = {
        {SELF_TEST, RM_PA_LINK_STATE, fake::valueOf(22u), 0,
         "Source HBA port is disabled. Unable to start TVR:FCHBA Self Test "},
        {HOST_LOOPBACK_TEST,
         RM_PA_LINK_STATE,
         {"\x16", {}, 5},
         40005,
         "Source HBA port is disabled. Unable to start TVR:FCHBA Host Loopback Test "},
        {EXTERNAL_LOOPBACK_TEST, RM_PA_TOPOLOGY, fake::valueOf(19u), 40001, no_plug},
        {EXTERNAL_LOOPBACK_TEST, RM_PA_FABRIC_NAME, fake::valueOf(uint64{1} << 56), 40001, no_plug},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        const fake::Attribute before = std::exchange(attributes()[row.attribute], row.value);
        EXPECT_EQ(run(row.test), row.code);
        EXPECT_EQ(logged(row.line), 1u);
        EXPECT_FALSE(job);
        EXPECT_THAT(libraries.requests, IsEmpty()) << "nothing was started";
        attributes()[row.attribute] = before;
    }
    libraries.adapters[0].targets.resize(1);
    EXPECT_EQ(run(EXTERNAL_LOOPBACK_TEST), 40001u) << "a port with targets has no plug";
    libraries.number = RM_BEACON_NOT_AVAILABLE;
    EXPECT_EQ(run(BEACON_TEST), 0u);
    EXPECT_FALSE(job);
    EXPECT_EQ(calls("LRM_DiagBeacon"), 0);
    Ref<TVRHBA_ConcreteJob> none;
    EXPECT_EQ(LoopBackTest({agent->maps,
                            {},
                            settings(SELF_TEST),
                            *agent->maps.m_TVRHBA_JobSettingData_map.get(0),
                            nullptr},
                           7, none),
              4u);
}

TEST_F(Run_Diagnostic, FlashesTheBeaconAndLeavesItAsItWas) {
    libraries.number = RM_BEACON_ON;
    EXPECT_EQ(run(BEACON_TEST), 0u);
    EXPECT_EQ(seconds, 40u);
    ASSERT_EQ(libraries.requests.size(), 41u);
    EXPECT_EQ(libraries.requests[0], "LRM_DiagBeacon 3");
    EXPECT_EQ(libraries.requests[39], "LRM_DiagBeacon 2");
    EXPECT_EQ(libraries.requests[40], "LRM_DiagBeacon 3");
    libraries.statuses["LRM_DiagBeacon"] = {0, 4};
    EXPECT_EQ(run(BEACON_TEST), 40004u);
    EXPECT_EQ(libraries.requests.size(), 3u);
    EXPECT_EQ(libraries.requests.back(), "LRM_DiagBeacon 3");
}

// What a client sends changes the published settings as far as it is valid, for later runs too.
TEST_F(Run_Diagnostic, TakesValidSettingsAndKeepsThem) {
    EXPECT_EQ(run(PING_TEST), 5u) << "the default has no target";
    EXPECT_EQ(logged("Invalid TargetDevice, Enter Target WWPN"), 1u);
    const auto with = sent(ECHO_TEST);
    with->TargetDevice.set("50000000000000AB");
    EXPECT_EQ(run(ECHO_TEST, with.get()), 0u);
    EXPECT_THAT(libraries.requests, ElementsAre("LRM_DiagEchoTestV2 171 100 0 0 1a2b3c4d"));
    EXPECT_EQ(logged("Invalid LUN, Using the default value '0' "), 1u);

    for (const auto& row : table(DIAGNOSTIC_SETTINGS)) {
        SCOPED_TRACE(row[0]);
        const auto changed = sent(ECHO_TEST);
        set_property(*changed, row[0]);
        EXPECT_EQ(run(ECHO_TEST, changed.get()), 0u);
        EXPECT_EQ(logged(row[1]), 1u);
        EXPECT_THAT(libraries.requests, ElementsAre("LRM_DiagEchoTestV2 171 " + row[2]));
    }
    EXPECT_EQ(run(ECHO_TEST), 0u);
    EXPECT_THAT(libraries.requests, ElementsAre("LRM_DiagEchoTestV2 171 4000 1 0 0000"));

    // The record holds the settings of its run.
    const auto& kept = agent->maps.m_TVRHBA_DiagnosticSettingDataRecord_map;
    const auto* last = kept.get(kept.size() - 1);
    EXPECT_EQ(last->Caption.value, job->InstanceID.value);
    EXPECT_EQ(describe(reinterpret_cast<const Instance*>(last->Settings))["BufferPattern"],
              "{48, 48, 48, 48}");
    refresh();
    EXPECT_EQ(settings(ECHO_TEST).OverridedSettingData.value, 0u);
    EXPECT_EQ(agent->maps.m_TVRHBA_ConcreteJob_map.size(), 14u) << "jobs outlive a rebuild";

    const auto ignored = sent(STATUS_TEST);
    EXPECT_EQ(run(STATUS_TEST, ignored.get()), 0u);
    EXPECT_EQ(logged("No Override Setting Supported for test : TVR:FCHBA Status Test"), 1u);
    EXPECT_EQ(settings(STATUS_TEST).OverridedSettingData.value, 0u);
}

TEST_F(Run_Diagnostic, RefusesWhatItDoesNotKnow) {
    const auto other = sent(PING_TEST);
    EXPECT_EQ(run(SELF_TEST, other.get()), 5u);
    EXPECT_EQ(logged("Invalid input instance: TVRHBA_FCHBADiagnosticSettingData"), 1u);
    EXPECT_EQ(logged("Unable to get the Job/Diagnostic SettingData, Not able to continue"), 1u);
    EXPECT_EQ(run(SELF_TEST, reinterpret_cast<const Settings*>(controller())), 5u);
    Ref<TVRHBA_JobSettingData> jobs(TVRHBA_JobSettingData::create(true));
    EXPECT_EQ(run(SELF_TEST, nullptr, jobs.get()), 5u) << "of no name";
    EXPECT_EQ(logged("Invalid input instance: TVRHBA_JobSettingData"), 1u);

    // Jobs can go at once, from then on.
    jobs->InstanceID.set("TVR:FCHBA JobSettingData");
    EXPECT_EQ(run(SELF_TEST, nullptr, jobs.get()), 0u);
    ASSERT_TRUE(job);
    const std::string first = job->InstanceID.value.c_str();
    EXPECT_EQ(first.substr(first.rfind(':')), ":4711");
    jobs->DeleteOnCompletion.set(true);
    EXPECT_EQ(run(SELF_TEST, nullptr, jobs.get()), 0u);
    EXPECT_FALSE(job);
    EXPECT_EQ(run(SELF_TEST), 0u);
    EXPECT_FALSE(job) << "as it was set";
    EXPECT_EQ(agent->maps.m_TVRHBA_DiagnosticCompletionRecord_map.size(), 3u);
    for (const Instance_Map* map : std::initializer_list<const Instance_Map*>{
             &agent->maps.m_TVRHBA_ConcreteJob_map, &agent->maps.m_TVRHBA_OwningJobElement_map,
             &agent->maps.m_TVRHBA_AffectedJobElement_map}) {
        EXPECT_EQ(map->size(), 1u) << "of the first run";
    }
    EXPECT_EQ(DeleteConcreteJob(agent->maps, nullptr), 32969u);

    Property<uint32> code{};
    CIM_ConcreteJob* none = nullptr;
    auto* self = agent->maps.m_TVRHBA_FCHBADiagnosticTest_map.get(0);
    const auto* port =
        reinterpret_cast<const CIM_ManagedElement*>(agent->maps.m_TVRHBA_FCPort_map.get(0));
    for (const CIM_ManagedElement* element : {port, static_cast<decltype(port)>(nullptr)}) {
        provider.RunDiagnosticService(self, element, nullptr, nullptr, none, code);
        EXPECT_EQ(code.value, 5u);
    }
    const Ref<TVRHBA_FCHBADiagnosticTest> unknown(self->clone());
    unknown->Name.set("TVR:FCHBA Other Test");
    const auto* element = reinterpret_cast<const CIM_ManagedElement*>(controller());
    provider.RunDiagnosticService(unknown.get(), element, nullptr, nullptr, none, code);
    EXPECT_EQ(code.value, 5u);
    settings(BEACON_TEST).InstanceID.set("TVR:FCHBA Other Test");
    agent->maps.m_TVRHBA_FCHBADiagnosticTest_map.insert(unknown->clone());
    provider.RunDiagnosticService(unknown.get(), element, nullptr, nullptr, none, code);
    EXPECT_EQ(code.value, 1u) << "a changed catalogue";
}

// A test holds off requests and refreshes; they see a whole picture then.
TEST_F(Run_Diagnostic, HoldsOffOthers) {
    Gate library;
    stop_at(library, "LRM_DiagGetResults");
    std::thread test([this] { EXPECT_EQ(run(SELF_TEST), 0u); });
    library.wait_until_reached();
    agent->m_bForceAdapterRefresh = true;
    std::atomic<bool> answered{false};
    std::thread reader([&] {
        EXPECT_EQ(enumerated<TVRHBA_FCHBADiagnosticTest>().size(), 9u);
        answered = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(answered);
    library.open();
    test.join();
    reader.join();
    wait_for_end();
    EXPECT_EQ(agent->maps.m_TVRHBA_DiagnosticServiceRecord_map.size(), 1u);
}

} // namespace
} // namespace cimple
