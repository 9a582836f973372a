// The agent's life: who makes it, who ends it, and what it leaves behind.
#include "tests/agent/agent_fixture.h"

#include "agent/locks.h"
#include "tests/runtime/plain_context.h"

#include <future>
#include <thread>
#include <utility>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class Lifecycle : public With_Agent {};

// Tells when somebody comes to wait for the end of a refresh.
class Joining {
public:
    void wait() { _begun.get_future().wait(); }

private:
    std::promise<void> _begun;
    const Log_Hook _hook{"PERF: Clearing the previous thread...with join",
                         [this, told = false]() mutable {
                             if (!std::exchange(told, true)) {
                                 _begun.set_value();
                             }
                         }};
};

TEST_F(Lifecycle, ConcurrentLoadsMakeOneAgent) {
    open_libraries();
    constexpr std::size_t count = 8;
    std::vector<ProviderAgent*> seen(count);
    std::atomic<std::size_t> loaded{0};
    {
        std::vector<std::jthread> threads;
        threads.reserve(count);
        for (ProviderAgent*& one : seen) {
            threads.emplace_back([&] {
                one = &ProviderAgent::getInstance();
                loaded += load_agent() == LOAD_OK;
            });
        }
    }
    EXPECT_EQ(loaded, count);
    EXPECT_THAT(seen, testing::Each(seen.front()));
    EXPECT_EQ(calls("LRM_InitLib"), 1);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_NE(ProviderAgent::instance(), nullptr);
        unload_agent();
    }
    EXPECT_EQ(ProviderAgent::instance(), nullptr);
}

// The last class is unloaded while a refresh reads the adapters.
class Ends_In_Refresh : public Lifecycle {
protected:
    Ends_In_Refresh() {
        stop_at(gate);
        load();
        first = agent;
        first->BuildCimpleInfo();
        gate.wait_until_reached();
        unloader = std::thread([this] { unload(); });
        joining.wait();
    }
    ~Ends_In_Refresh() override {
        gate.open();
        if (unloader.joinable()) {
            unloader.join();
        }
    }

    ProviderAgent* first = nullptr;
    Gate gate;
    Joining joining;
    std::thread unloader;
};

TEST_F(Ends_In_Refresh, LeavesTheLibraryWithTheCallThatItIsIn) {
    gate.open();
    unloader.join();
    EXPECT_EQ(ProviderAgent::instance(), nullptr);
    EXPECT_EQ(calls("HBA_GetNumberOfAdapters"), 1);
    EXPECT_EQ(calls("HBA_GetAdapterName"), 0);
    const std::vector<std::string> lines = log.take();
    EXPECT_THAT(lines, Contains("PERF: DataFetch_Handler Thread END"));
    EXPECT_THAT(lines, Not(Contains("PERF: Updating Adapter Maps...")));
    const auto end = std::find(lines.begin(), lines.end(), "PERF: DataFetch_Handler Thread END");
    const auto deleted = std::find(lines.begin(), lines.end(), "Data Pointer deleted.");
    EXPECT_LT(end, deleted) << "the data outlives the refresh that fills it";
}

// Threads that look for the agent find one that is whole, or none.
TEST_F(Lifecycle, NobodyFindsTheAgentOnceItEnds) {
    load();
    std::atomic<bool> ended{false};
    std::atomic<bool> found{true};
    const Log_Hook hook("Entering the function ~ProviderAgent()", [&] {
        found = ProviderAgent::instance() != nullptr;
        ended = true;
    });
    unload();
    EXPECT_TRUE(ended);
    EXPECT_FALSE(found);
    EXPECT_EQ(ProviderAgent::instance(), nullptr);
    const std::vector<std::string> order = {"ProviderAgent::releaseRef[1]",
                                            "Entering the function ~ProviderAgent()",
                                            "Deleting Data pointer",
                                            "Data Pointer deleted.",
                                            "MethodWrapper",
                                            "Destructor",
                                            "RMLIB uninitialzed",
                                            "Entered ClearMaps()",
                                            "Exiting ClearMaps()",
                                            "Tavrin Provider Unloaded"};
    EXPECT_EQ(sequence(order), order);
}

// Services that a class may have for its own. A thread uses them until its context ends.
class Origin final : public Plain_Context {
public:
    explicit Origin(const void* of_thread = nullptr) : _of_thread(of_thread) {}
    ~Origin() override {
        if (_of_thread != nullptr) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            --in_use;
        }
    }
    const void* origin() const noexcept override {
        return _of_thread == nullptr ? this : _of_thread;
    }
    Thread_Context* thread_create_hook() override {
        ++in_use;
        return std::make_unique<Origin>(origin()).release();
    }
    template <class Call> auto run(Call&& call) {
        push(this);
        const auto result = call();
        pop();
        return result;
    }
    static inline std::atomic<int> in_use{0}; // by threads

private:
    const void* _of_thread;
};

// The last class of an origin goes while a refresh runs with its services; others stay.
class With_Origin : public Lifecycle {
protected:
    // Begins a refresh that stops in that entry point.
    void begin_refresh(Gate& gate, const char* entry_point) {
        stop_at(gate, entry_point);
        load();
        EXPECT_EQ(origin.run(load_agent), LOAD_OK);
        origin.run([this] { return agent->BuildCimpleInfo(); });
        gate.wait_until_reached();
    }
    std::size_t refreshes() { return logged("PERF: DataFetch_Handler Thread BEGIN"); }

    Origin origin;
};

class Origins : public With_Origin, public testing::WithParamInterface<const char*> {};

TEST_P(Origins, TakeTheirRefreshAlongAndWaitingRequestsStartAnother) {
    Gate gate;
    begin_refresh(gate, GetParam());
    Joining joining;
    // A request of another class that needs all that the refresh makes.
    auto request = std::async(std::launch::async, [] {
        enumerated_SAN<TVRHBA_TapeDrive>();
        return enumerated<TVRHBA_FCPort>().size();
    });
    auto unloaded = std::async(std::launch::async, [this] {
        origin.run(unload_agent);
        return Origin::in_use.load();
    });
    joining.wait();
    const int entered = calls(GetParam());
    gate.open();
    EXPECT_EQ(unloaded.get(), 0) << "the thread is gone, and with it what it used";
    EXPECT_EQ(request.get(), 3u);
    EXPECT_EQ(refreshes(), 2u);
    EXPECT_EQ(libraries.openHandles, 0);
    EXPECT_GT(calls(GetParam()), entered) << "what was left out is made up for";
    EXPECT_FALSE(agent->maps.m_TVRHBA_FCDriverServiceAffectsDriver_map.empty());
}

INSTANTIATE_TEST_SUITE_P(, Origins,
                         testing::Values("HBA_GetNumberOfAdapters", // adapter data
                                         "HBA_GetAdapterPortAttributes",
                                         "LRM_GetDriverParams",      // adapter maps
                                         "HBA_GetFcpTargetMapping"), // SAN data
                         [](const auto& one) { return std::string(one.param); });

TEST_F(With_Origin, KeepsTheRefreshAsLongAsAClassStays) {
    Gate gate;
    begin_refresh(gate, "HBA_GetNumberOfAdapters");
    EXPECT_EQ(origin.run(load_agent), LOAD_OK);
    origin.run(unload_agent); // another class of the origin is still there
    Origin other;
    EXPECT_EQ(other.run(load_agent), LOAD_OK);
    other.run(unload_agent); // the refresh is not this one's
    gate.open();
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 3u);
    EXPECT_EQ(refreshes(), 1u);
    origin.run(unload_agent);
}

// A method holds the locks that the refresh needs, for as long as it takes.
TEST_F(With_Origin, WaitsForNoMethodThatTheRefreshWaitsFor) {
    load();
    refresh();
    EXPECT_EQ(origin.run(load_agent), LOAD_OK);
    const Full_Guard guard(*agent);
    agent->m_bForceAdapterRefresh = true;
    origin.run([this] { return agent->BuildCimpleInfo(); });
    std::async(std::launch::async, [this] { origin.run(unload_agent); }).get();
    EXPECT_TRUE(agent->m_bForceAdapterRefresh);
    EXPECT_EQ(Origin::in_use, 0);
}

// The refresh may wait for an object manager that waits for this load.
TEST_F(Ends_In_Refresh, AClassLoadedMeanwhileWaitsForNothingAndKeepsTheAgent) {
    auto loaded = std::async(std::launch::async, [] { return load_agent(); });
    EXPECT_EQ(loaded.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    gate.open();
    EXPECT_EQ(loaded.get(), LOAD_OK);
    unloader.join();
    EXPECT_EQ(ProviderAgent::instance(), first);
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 3u);
    unload_agent();
}

TEST_F(Ends_In_Refresh, SeveralLastReleasesEndTheAgentOnce) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(load_agent(), LOAD_OK);
        unload_agent(); // leaves the running refresh to the first one
    }
    EXPECT_EQ(ProviderAgent::instance(), first);
    gate.open();
    unloader.join();
    EXPECT_EQ(ProviderAgent::instance(), nullptr);
}

TEST_F(Lifecycle, ASecondLifeStartsAfresh) {
    load();
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 3u);
    agent->host.m_bOwnComputerSystem = true;
    unload();

    libraries.adapters = {adapter(7)};
    load();
    EXPECT_TRUE(agent->m_bForceAdapterRefresh);
    EXPECT_FALSE(agent->m_bIsAdapterMapsReady);
    EXPECT_FALSE(agent->host.m_bOwnComputerSystem);
    EXPECT_TRUE(agent->maps.m_TVRHBA_FCPort_map.empty());
    EXPECT_EQ(agent->m_LoadedTime.get_usec(), 0u);
    EXPECT_THAT(enumerated<TVRHBA_FCPort>().texts("DeviceID"), ElementsAre("1000AABBCCDD0700"));
    EXPECT_EQ(calls("LRM_InitLib"), 2);
}

// In a process of its own: an agent that could not be constructed stays until the module is closed.
TEST_F(Lifecycle, AFailedConstructionIsAnsweredWithEmptyEnumerations) {
    const auto check = [this] {
        libraries.initLib = [] { return 1; };
        open_libraries();
        EXPECT_EQ(load_agent(), LOAD_FAILED);
        ProviderAgent* failed = ProviderAgent::instance();
        ASSERT_NE(failed, nullptr);
        EXPECT_FALSE(failed->m_bIsLoaded);
        CLogger::getInstance().addLogger(&log);

        EXPECT_EQ(enumerated<TVRHBA_PhysicalPackage>().size(), 0u);
        EXPECT_EQ(enumerated<TVRHBA_SoftwareIdentity>().size(), 0u);
        EXPECT_EQ(enumerated_SAN<TVRHBA_TapeDrive>().size(), 0u);
        EXPECT_FALSE(is_agent_loaded("providers/TVRHBA_FCPort_Provider.cpp", 1));
        const std::vector<std::string> lines = log.take();
        EXPECT_THAT(lines, Contains("Tavrin Provider dependent library load has failed..do nothing "
                                    "is the only option"));
        EXPECT_THAT(lines, Contains("RM Init failed for TVRHBA_FCPort_Provider.cpp"));
        EXPECT_THAT(lines, Not(Contains("PERF: Updating Adapter Maps...")));

        // Every unload takes a count that was never added.
        unload_agent();
        EXPECT_FALSE(failed->m_bIsThreadRunning || failed->m_bIsThreadJoinable)
            << "a thread outlives the release that may have been the last";
        unload_agent();
        EXPECT_EQ(ProviderAgent::instance(), failed);
        EXPECT_EQ(load_agent(), LOAD_FAILED);
        EXPECT_EQ(ProviderAgent::instance(), failed);
    };
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_EXIT(
        {
            check();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace cimple
