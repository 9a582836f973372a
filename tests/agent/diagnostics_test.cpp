// The catalogue of diagnostic tests, what tests leave behind, and the methods of help and logs.
#include "tests/agent/agent_fixture.h"

#include "agent/clear_maps.h"
#include "agent/diagnostic_catalogue.h"
#include "agent/diagnostic_records.h"
#include "providers/TVRHBA_DiagnosticsLog_Provider.h"
#include "providers/TVRHBA_HelpService_Provider.h"

#include <fstream>

namespace cimple {
namespace {

using testing::ElementsAre;
using Texts = std::map<std::string, std::string>;

constexpr std::size_t tests = 9;
constexpr std::size_t controllers = 2;

template <class... Classes> std::map<std::string, Instance_Map*> maps_of(Instance_Maps& maps) {
    return {{Classes::static_meta_class.name, &(maps.*map_of<Classes>)}...};
}

// Ends `text` before the mark; the answer is what stood behind it.
std::string cut(std::string& text, char mark) {
    const std::size_t at = std::min(text.find(mark), text.size());
    const std::string behind = text.substr(std::min(at + 1, text.size()));
    text.resize(at);
    return behind;
}

class Diagnostics : public With_Agent {
protected:
    Diagnostics() {
        libraries.adapters.resize(controllers);
        libraries.adapters[1].attributes[RM_HA_DIAG_VERSION] = fake::valueOf(uint32{7});
        load();
        refresh();
        maps = maps_of<CIM_ComputerSystem, TVRHBA_PortController, TVRHBA_FCHBADiagnosticTest,
                       TVRHBA_FCHBADiagnosticSettingData, TVRHBA_DiagElementSettingData,
                       TVRHBA_FCHBADiagnosticServiceCapabilities, TVRHBA_DiagElementCapabilities,
                       TVRHBA_HelpService, TVRHBA_ServiceAvailableToElement,
                       TVRHBA_DiagnosticIdentity, TVRHBA_DiagElementSoftwareIdentity,
                       TVRHBA_JobSettingData, TVRHBA_JobElementSettingData, TVRHBA_DiagnosticsLog,
                       TVRHBA_UseOfLog, TVRHBA_AvailableDiagnosticService,
                       TVRHBA_ServiceAffectsElement, TVRHBA_DiagServiceConformsToProfile,
                       TVRHBA_DiagHostedService, TVRHBA_HostedService>(agent->maps);
        std::ifstream lines(DIAGNOSTIC_CATALOGUE);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with('[')) {
                names.push_back(line.substr(1, line.size() - 2));
            } else if (!line.empty() && !line.starts_with('#')) {
                const std::string text = cut(line, '=');
                told[names.back()][line] = text;
            }
        }
    }
    template <class C> Class_Map<C>& map() { return agent->maps.*map_of<C>; }
    template <class C> std::vector<std::string> texts(const char* property) {
        std::vector<std::string> found;
        for (const C* member : map<C>()) {
            found.push_back(describe(member)[property]);
        }
        return found;
    }
    uint32 create_anew() {
        ClearDiagnosticClassMaps(agent->maps, 0);
        log.take();
        return CreateFCHBADiagnosticClassFeature(agent->maps);
    }
    bool is_per_controller(const std::string& class_name) {
        return told["instances"][class_name].find("controller") != std::string::npos;
    }
    // What stands for a word between two marks, of the test or else of all.
    std::string meaning(char mark, const std::string& word, std::size_t test, std::size_t other) {
        if (mark == '%') {
            Texts own = told[names[test]];
            own["name"] = names[test];
            return own.contains(word) ? own[word] : told["shared"].at(word);
        }
        const Instance_Map& ends = *maps.at(word);
        const bool is_port = word == "TVRHBA_PortController";
        String path;
        instance_to_model_path(ends.get(is_port ? other : std::min(test, ends.size() - 1)), path);
        return path.c_str();
    }
    void expect_catalogue(const std::string& version);

    std::vector<std::string> names; // of the tests, and of the other sections behind them
    std::map<std::string, Texts> told;
    std::map<std::string, Instance_Map*> maps;
};

void Diagnostics::expect_catalogue(const std::string& version) {
    told["shared"]["version"] = version;
    for (const auto& [class_name, pattern] : told["instances"]) {
        const Instance_Map& found = *maps.at(class_name);
        const std::size_t share = is_per_controller(class_name) ? controllers : 1;
        ASSERT_EQ(found.size(), class_name == "TVRHBA_JobSettingData" ? 1 : tests * share)
            << class_name;
        for (std::size_t i = 0; i < found.size(); ++i) {
            std::string text = pattern;
            for (std::size_t at; (at = text.find_first_of("%@")) != text.npos;) {
                const std::size_t end = text.find(text[at], at + 1);
                const std::string word = text.substr(at + 1, end - at - 1);
                text.replace(at, end + 1 - at, meaning(text[at], word, i / share, i % share));
            }
            const Ref<Instance> plain(create(found.meta_class(), true));
            Texts expected = {{"", "root/tavrin"}};
            for (std::string rest; !text.empty(); text = rest) {
                rest = cut(text, '|');
                const std::string value = cut(text, '=');
                expected[text] = value;
            }
            expected.merge(describe(plain.get()));
            EXPECT_EQ(describe(found.get(i)), expected) << class_name << ' ' << i;
        }
    }
}

TEST_F(Diagnostics, AreCataloguedForAllControllers) {
    expect_catalogue("5");
    libraries.statuses["LRM_GetHBAAttributes"] = {9}; // of the first adapter
    EXPECT_EQ(create_anew(), 0u);
    expect_catalogue("7");
    EXPECT_EQ(logged("Number of FCHBA ManagedElement : 2"), 1u);
    EXPECT_EQ(logged("TVRHBA_DiagElementCapabilities instance (NIC) is created"), tests);

    libraries.statuses["LRM_GetHBAAttributes"] = {9, 9};
    EXPECT_EQ(create_anew(), 40002u);
    EXPECT_EQ(log.lines().back().text,
              "FCHBA Diagnostics are not supported in any of the managed element");
    uint32 version = 3;
    EXPECT_EQ(GetDiagnosticVersion("1000AABBCCDD0200", nullptr), 32768u);
    EXPECT_EQ(GetDiagnosticVersion("nonsense", &version), 32768u);
    EXPECT_EQ(version, 3u);
    libraries.adapters.clear();
    log.take();
    refresh();
    const std::vector<std::string> lines = {
        "No FC card found", "CreateFCHBADiagnosticClassFeature",
        "Unable to create the FCHBA Diagnostic feature, No managed element exist",
        "FCHBA Diagnositcss either Not Supported/Failed to Create the feature",
        "Create the Diagnostic classes"};
    EXPECT_EQ(sequence(lines), lines);
}

// With one instance of the first test in the way all its others are taken back.
TEST_F(Diagnostics, AreWholeOrMissing) {
    for (const auto& [class_name, line] : told["refused"]) {
        Instance_Map& refusing = *maps.at(class_name);
        ASSERT_EQ(create_anew(), 0u);
        Ref<Instance> other(clone(refusing.get(refusing.size() == tests ? 0 : 1)));
        ClearDiagnosticClassMaps(agent->maps, 0);
        refusing.insert(other.release());
        log.take();
        EXPECT_EQ(CreateFCHBADiagnosticClassFeature(agent->maps), 0u);
        const std::vector<std::string> failed = {
            line, "Failed to insert the Diag Instances into map for DiagTest " + names[0]};
        EXPECT_EQ(sequence(failed), failed);
        refusing.erase({0});
        EXPECT_EQ(map<TVRHBA_JobSettingData>().size(), 1u);
        for (const auto& [filled, unused] : told["refused"]) {
            EXPECT_EQ(maps.at(filled)->size(),
                      (tests - 1) * (is_per_controller(filled) ? controllers : 1))
                << filled << ' ' << class_name;
        }
    }
}

// Records of several runs, in this order; then those of the Echo test go.
TEST_F(Diagnostics, LeaveRecordsUntilTheirLogIsCleared) {
    const Diagnostic_Counts counts{3, 40, 1};
    const Ref<TVRHBA_PortController> port(map<TVRHBA_PortController>().get(1)->clone());
    const auto run = [&](const std::string& test, const char* job, uint32 overridden,
                         const TVRHBA_PortController* element) {
        const Diagnostic_Outcome outcome{
            "TVR:FCHBA " + test + " Test", test + " ended", job, &counts, 5, element, overridden};
        CreateDiagnosticServiceRecord(agent->maps, outcome);
        CreateDiagnosticCompletionRecord(agent->maps, outcome);
    };
    log.take();
    run("Status", "job1", 0, nullptr);
    run("Echo", "job2", 1, port.get());
    run("Self", "job3", 0, port.get());
    run("Echo", "job4", 0, nullptr);
    run("Beacon", "job5", 1, port.get());
    EXPECT_EQ(logged("Invalid managed element"), 4u);
    EXPECT_EQ(logged("PortController : 1000AABBCCDD0200"), 6u);
    const std::pair<const char*, const Instance*> made[] = {
        {"service", map<TVRHBA_DiagnosticServiceRecord>().get(1)},
        {"settings", map<TVRHBA_DiagnosticSettingDataRecord>().get(0)},
        {"corresponding", map<TVRHBA_CorrespondingSettingDataRecord>().get(1)},
        {"without a port", map<TVRHBA_DiagnosticCompletionRecord>().get(0)}};
    const std::string now = "CreationTimeStamp=" + std::string(Datetime::now().ascii()) + "; ";
    for (const auto& [what, record] : made) {
        std::string line = one_line(record);
        line.erase(std::min(line.find(now), line.size()), now.size());
        EXPECT_EQ(line, told["records"][what] + " ");
    }
    EXPECT_EQ(map<TVRHBA_LogManagesRecord>().size(), 12u);
    map<TVRHBA_ConcreteJob>().insert(TVRHBA_ConcreteJob::create(true));
    refresh();
    EXPECT_EQ(map<TVRHBA_ConcreteJob>().size(), 1u);

    TVRHBA_DiagnosticsLog_Provider provider;
    Property<uint32> code{9, 1};
    const Ref<TVRHBA_DiagnosticsLog> self(map<TVRHBA_DiagnosticsLog>().get(1)->clone());
    EXPECT_EQ(provider.ClearLog(self.get(), code), INVOKE_METHOD_OK);
    EXPECT_EQ(code.value, 0u);
    EXPECT_EQ(log.lines().back().text, "Exiting TVRHBA_DiagnosticsLog_Provider::ClearLog");
    EXPECT_THAT(texts<TVRHBA_DiagnosticServiceRecord>("InstanceID"),
                ElementsAre("job1:Service Record", "job3:Service Record", "job5:Service Record"));
    EXPECT_THAT(texts<TVRHBA_DiagnosticCompletionRecord>("InstanceID"),
                ElementsAre("job1", "job3", "job5"));
    EXPECT_THAT(texts<TVRHBA_DiagnosticSettingDataRecord>("Caption"), ElementsAre("job2", "job5"));
    EXPECT_EQ(map<TVRHBA_CorrespondingSettingDataRecord>().size(), 4u);
    EXPECT_EQ(map<TVRHBA_LogManagesRecord>().size(), 7u);
    EXPECT_EQ(map<TVRHBA_RecordAppliesToElement>().size(), 5u);
    self->InstanceID.set("another");
    EXPECT_EQ(provider.ClearLog(self.get(), code), INVOKE_METHOD_OK);
    EXPECT_EQ(code.value, 5u);
    EXPECT_EQ(log.lines().back().text, "Invalid instance of Diagnostic Log");
}

TEST_F(Diagnostics, AreExplained) {
    TVRHBA_HelpService_Provider provider;
    const std::string unsupported = "Unsupported Delivery options, Use '1' for proper support";
    const std::string no_line = "PERF: ---No timeout BuildCimpleInfo END---"; // of its own
    const std::tuple<std::string, std::string, Property<uint16>, uint16, uint32, std::string>
        cases[] = {
            {"Ping", "Ping", {1, 0}, 1, 0, "TVRHBA_HelpService_Provider::GetHelp"},
            {"Ping", "Ping", {2, 0}, 1, 5, unsupported},
            {"Ping", "Ping", {1, 0}, 2, 5, unsupported},
            {"Ping", "Echo", {2, 0}, 1, 4, no_line},
            {"Ping", "ping", {1, 0}, 1, 4, no_line},
            {"Ping", "Ping", {1, 1}, 1, 5, "Invalid Requested Document"},
            {"Pong", "Ping", {1, 0}, 1, 5, "Invalid instance of Help Service"},
        };
    for (const auto& [name, document, form, delivery, result, last_line] : cases) {
        const Ref<TVRHBA_HelpService> self(map<TVRHBA_HelpService>().get(5)->clone());
        self->Name.set("TVR:FCHBA " + name + " Test");
        Property<uint16> format = form;
        Property<String> info{{}, 1};
        Property<uint32> code{9, 1};
        EXPECT_EQ(provider.GetHelp(self.get(), {"TVR:FCHBA " + document + " Test", 0}, format,
                                   {delivery, 0}, info, code),
                  INVOKE_METHOD_OK);
        EXPECT_EQ(code.value, result);
        EXPECT_EQ(log.lines().back().text, last_line);
        EXPECT_EQ(info.value.c_str(), result == 0 ? told[names[5]]["help"] : "");
    }
}

} // namespace
} // namespace cimple
