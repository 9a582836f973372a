// Running diagnostic tests: settings, polls, cancels, and what is left behind. The clock is the
// test's, so that minutes pass at once.
#include "tests/agent/agent_session.h"

#include "agent/diagnostic_jobs.h"
#include "agent/diagnostic_runs.h"
#include "agent/diagnostic_tests.h"
#include "providers/TVRHBA_FCHBADiagnosticTest_Provider.h"

#include <thread>

namespace cimple {
namespace {

class Run_Diagnostic : public With_Session {
protected:
    Run_Diagnostic() {
        libraries.adapters.resize(1);
        first_port(0).attributes[RM_PA_TOPOLOGY] = fake::valueOf(20u);
        first_port(0).attributes[RM_PA_LINK_STATE] = fake::valueOf(1u);
        first_port(0).attributes[RM_PA_FABRIC_NAME] = fake::valueOf(uint64{0});
        libraries.number = RM_BEACON_OFF;
        add_result("6");
        session.on("results", [this](const auto& words) {
            libraries.results.clear();
            for_each_time(words, 0, [this](const std::string& word) { add_result(word); });
        });
        session.on("statuses", [this](const auto& words) {
            auto& statuses = libraries.statuses[words.at(0)];
            for_each_time(words, 1, [&](const auto& word) { statuses.push_back(number(word)); });
        });
        // An attribute, its value of 4 or 8 bytes, and the status that comes with it.
        session.on("attribute", [this](const auto& words) {
            fake::Attribute& value =
                first_port(0).attributes[static_cast<uint16>(number(words.at(0)))];
            value = value.bytes.size() == 8 ? fake::valueOf(uint64{std::stoull(words.at(1))})
                                            : fake::valueOf(number(words.at(1)));
            value.status = words.size() > 2 ? number(words[2]) : 0;
        });
        session.on("targets", [this](const auto& words) {
            libraries.adapters[0].targets.resize(number(words.at(0)));
        });
        session.on("beacon", [this](const auto& words) { libraries.number = number(words.at(0)); });
        // Settings as a client sends them, with a name and nothing else but what is given.
        session.on("settings", [this](const auto& words) {
            const Ref<Instance> all(clone(named(words.at(1))));
            set_null_flags(all.get(), true, true, 1);
            set(all.get(), words, 2);
            _named[words[0]].reset(clone(all.get()));
        });
        session.on("run", [this](const auto& words, std::ostream& answer) { run(words, answer); });
        load();
        refresh();
    }

    // TEST, and the settings of test and job, of the first port controller.
    void run(const Text_Session::Words& words, std::ostream& answer) {
        const Class_Map<TVRHBA_DiagnosticCompletionRecord>& records =
            agent->maps.m_TVRHBA_DiagnosticCompletionRecord_map;
        const std::size_t before = records.size();
        const auto word = [&](std::size_t i) { return i < words.size() ? words[i] : "null"; };
        Ref<TVRHBA_FCHBADiagnosticTest> self(
            agent->maps.m_TVRHBA_FCHBADiagnosticTest_map.get(0)->clone());
        self->Name.set("TVR:FCHBA " + words.at(0));
        begin_work();
        const uint64 start = clock.time;
        Property<uint32> code{};
        CIM_ConcreteJob* made = nullptr;
        TVRHBA_FCHBADiagnosticTest_Provider().RunDiagnosticService(
            self.get(), as<CIM_ManagedElement>(words.size() > 3 ? word(3) : "PortController"),
            as<CIM_DiagnosticSettingData>(word(1)), as<CIM_JobSettingData>(word(2)), made, code);
        const Ref<TVRHBA_ConcreteJob> job(reinterpret_cast<TVRHBA_ConcreteJob*>(made));
        answer << code.value << ", " << calls("LRM_DiagGetResults") << " polls, "
               << calls("LRM_DiagCancelDiagnostic") << " cancels, "
               << (clock.time - start) / 1'000'000 << " s\n";
        if (job) {
            const std::string id = job->InstanceID.value.c_str(); // its number goes on
            answer << "job of test " << id.substr(id.rfind(':') + 1) << ": state "
                   << job->JobState.value << ", " << job->PercentComplete.value << "%\n";
        }
        if (records.size() > before) {
            auto record = describe(records.get(records.size() - 1));
            answer << record["CompletionState"] << ": " << record["RecordData"] << " ("
                   << record["CompletedCycles"] << ' ' << record["LoopsFailed"] << ' '
                   << record["TimeToExecute"] << ")\n";
        }
        const std::vector<std::string>& requests = libraries.requests;
        for (std::size_t i = 0, times = 1; i < requests.size(); i += std::exchange(times, 1)) {
            while (i + times < requests.size() && requests[i + times] == requests[i]) {
                ++times;
            }
            answer << "> " << requests[i];
            answer << (times == 1 ? "" : ", " + std::to_string(times) + " times") << '\n';
        }
    }

    template <class C> const C* as(const std::string& name) {
        return reinterpret_cast<const C*>(named(name));
    }

private:
    // "WORD*3" stands for three of them.
    template <class Take>
    static void for_each_time(const Text_Session::Words& words, std::size_t first, Take take) {
        for (std::size_t i = first; i < words.size(); ++i) {
            const std::size_t mark = words[i].find('*');
            const unsigned long times =
                mark == std::string::npos ? 1 : std::stoul(words[i].substr(mark + 1));
            for (unsigned long n = 0; n < times; ++n) {
                take(words[i].substr(0, mark));
            }
        }
    }
    // "STATE" or "STATE:CODE".
    void add_result(const std::string& word) {
        RM_DIAGRESULT result{};
        result.state = number(word);
        const std::size_t colon = word.find(':');
        result.resultCode = colon == word.npos ? 0 : number(word.substr(colon + 1));
        result.completedCycles = 90;
        result.loopsFailed = 3;
        result.timeToExecute = 12;
        libraries.results.push_back(result);
    }
};

TVR_SESSIONS(Run_Diagnostic, "run_diagnostic.txt");

// A test holds off requests and refreshes; they see a whole picture then.
TEST_F(Run_Diagnostic, HoldsOffOthers) {
    Gate library;
    stop_at(library, "LRM_DiagGetResults");
    const Ref<Instance> self(clone(named("FCHBADiagnosticTest")));
    static_cast<TVRHBA_FCHBADiagnosticTest*>(self.get())->Name.set(SELF_TEST);
    const auto* port = as<CIM_ManagedElement>("PortController");
    std::thread test([&] {
        Property<uint32> code{};
        CIM_ConcreteJob* job = nullptr;
        TVRHBA_FCHBADiagnosticTest_Provider().RunDiagnosticService(
            static_cast<TVRHBA_FCHBADiagnosticTest*>(self.get()), port, nullptr, nullptr, job,
            code);
        EXPECT_EQ(code.value, 0u);
        unref(reinterpret_cast<Instance*>(job));
    });
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

// What no client can bring about.
TEST_F(Run_Diagnostic, RefusesWhatItDoesNotKnow) {
    Ref<TVRHBA_ConcreteJob> job;
    Instance_Maps& maps = agent->maps;
    TVRHBA_FCHBADiagnosticSettingData* settings =
        maps.m_TVRHBA_FCHBADiagnosticSettingData_map.get(0);
    const TVRHBA_JobSettingData& jobs = *maps.m_TVRHBA_JobSettingData_map.get(0);
    EXPECT_EQ(LoopBackTest({maps, {}, *settings, jobs, nullptr}, 7, job), 4u);
    EXPECT_EQ(StatusTest({maps, {}, *settings, jobs, nullptr}, job), 5u) << "of another host";
    EXPECT_EQ(BeaconTest({maps, {}, *settings, jobs, nullptr}, job), 1u);
    EXPECT_EQ(DeleteConcreteJob(maps, nullptr), 32969u);
    EXPECT_FALSE(job);

    // A changed catalogue.
    Ref<TVRHBA_FCHBADiagnosticTest> other(maps.m_TVRHBA_FCHBADiagnosticTest_map.get(0)->clone());
    other->Name.set("TVR:FCHBA Other Test");
    maps.m_TVRHBA_FCHBADiagnosticTest_map.insert(other.release());
    settings->InstanceID.set("TVR:FCHBA Other Test");
    std::ostringstream answer;
    run({"Other Test"}, answer);
    EXPECT_EQ(answer.str(), "1, 0 polls, 0 cancels, 0 s\n");
}

} // namespace
} // namespace cimple
