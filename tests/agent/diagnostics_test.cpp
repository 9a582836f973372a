// The catalogue of diagnostic tests, what tests leave behind, and the methods of help and logs.
#include "tests/agent/agent_session.h"

#include "agent/clear_maps.h"
#include "agent/diagnostic_catalogue.h"
#include "agent/diagnostic_records.h"

#include <fstream>

namespace cimple {
namespace {

using Texts = std::map<std::string, std::string>;

constexpr std::size_t tests = 9;
constexpr std::size_t controllers = 2;

template <class... Classes> std::map<std::string, Instance_Map*> maps_of(Instance_Maps& maps) {
    return {{Classes::static_meta_class.name, &(maps.*map_of<Classes>)}...};
}

// Ends `text` before the mark; the answer is what stood behind it.
std::string cut(std::string& text, char mark) {
    const std::size_t at = std::min(text.find(mark), text.size());
    std::string behind = text.substr(std::min(at + 1, text.size()));
    text.resize(at);
    return behind;
}

class Diagnostics : public With_Session {
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
        session.rename(Datetime::now().ascii().c_str(), "$NOW");
        session.on("catalogue", [this](const auto& words) { expect_catalogue(words.at(0)); });
        session.on("create", [this] { return create_anew(); });
        session.on("version", [](const auto& words, std::ostream& answer) {
            uint32 version = 3;
            const bool wanted = words.size() == 1;
            answer << GetDiagnosticVersion(words.at(0), wanted ? &version : nullptr) << ", "
                   << version << '\n';
        });
        session.on("job", [this] {
            agent->maps.m_TVRHBA_ConcreteJob_map.insert(TVRHBA_ConcreteJob::create(true));
        });
        // TEST JOB OVERRIDDEN ELEMENT: the end of a run, of which the records tell.
        session.on("run", [this](const auto& words) {
            const Diagnostic_Counts counts{3, 40, 1};
            const auto* element = reinterpret_cast<TVRHBA_PortController*>(named(words.at(3)));
            const Diagnostic_Outcome outcome{("TVR:FCHBA " + words[0] + " Test").c_str(),
                                             (words[0] + " ended").c_str(),
                                             words[1].c_str(),
                                             &counts,
                                             5,
                                             element,
                                             number(words[2])};
            CreateDiagnosticServiceRecord(agent->maps, outcome);
            CreateDiagnosticCompletionRecord(agent->maps, outcome);
        });
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

TVR_SESSIONS(Diagnostics, "diagnostics.txt");

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
        EXPECT_EQ(agent->maps.m_TVRHBA_JobSettingData_map.size(), 1u);
        for (const auto& [filled, unused] : told["refused"]) {
            EXPECT_EQ(maps.at(filled)->size(),
                      (tests - 1) * (is_per_controller(filled) ? controllers : 1))
                << filled << ' ' << class_name;
        }
    }
}

} // namespace
} // namespace cimple
