// When a refresh runs, who waits for it, and what readers see meanwhile.
#include "tests/agent/agent_session.h"

#include "agent/locks.h"
#include "runtime/association.h"

#include <future>
#include <optional>
#include <set>
#include <thread>

namespace cimple {
namespace {

using testing::ElementsAre;

constexpr uint64 minute = 60'000'000;
constexpr char begin_line[] = "PERF: DataFetch_Handler Thread BEGIN";
constexpr char no_timeout_line[] = "PERF: ---No timeout BuildCimpleInfo END---";
constexpr char running_line[] =
    "PERF: ---DataFetch_Handler thread already running -BuildCimpleInfo END---";

std::atomic<int> failing_starts{0};

int create_or_fail(pthread_t* thread, const pthread_attr_t* attributes, void* (*proc)(void*),
                   void* argument) {
    if (failing_starts > 0) {
        --failing_starts;
        return EAGAIN;
    }
    return pthread_create(thread, attributes, proc, argument);
}

class Refresh : public With_Session {
protected:
    Refresh() {
        session.on("configure", [this] {
            directory.write("etc/tavrin_fc_provider.conf", session.rest() + '\n');
        });
        session.on("force", [this] { agent->m_bForceAdapterRefresh = true; });
        // When that line is logged next: a request on the thread that logs it.
        session.on("force-at", [this](const auto& words) {
            auto& forced =
                words.at(0) == "SAN" ? agent->m_bForceSANRefresh : agent->m_bForceAdapterRefresh;
            _hook.emplace(words.at(1), [&forced, done = false]() mutable {
                forced = forced || !std::exchange(done, true);
            });
        });
        // Asks for the maps, as each enumeration does, and waits for what comes of it.
        session.on("request", [this] {
            agent->BuildCimpleInfo();
            wait_for_end();
        });
        session.on("SAN-request", [this] {
            enumerated_SAN<TVRHBA_TapeDrive>();
            wait_for_end();
        });
        session.on("ready", [this](const auto&, std::ostream& answer) {
            answer << "adapter data " << agent->m_bIsAdapterDataReady << ", maps "
                   << agent->m_bIsAdapterMapsReady << ", SAN maps " << agent->m_bIsSANMapsReady
                   << ", forced " << agent->m_bForceAdapterRefresh
                   << (agent->m_bForceSANRefresh ? ", SAN forced\n" : "\n");
        });
        session.on("stages", [this](const auto&, std::ostream& answer) {
            // The thread's last line comes when it no longer counts as running.
            while (logged("PERF: DataFetch_Handler Thread END") == 0) {
                std::this_thread::yield();
            }
            // But for the gate's own, which go on beside the thread's.
            for (const LogCapture::Line& line : log.lines()) {
                if (line.text.starts_with("PERF: ") && !line.text.starts_with("PERF: ---")) {
                    answer << line.text << '\n';
                }
            }
        });
    }
    ~Refresh() override {
        set_thread_create(nullptr);
        failing_starts = 0;
    }

private:
    std::optional<Log_Hook> _hook;
};

TVR_SESSIONS(Refresh, "refresh.txt");

TEST_F(Refresh, TheFirstRequestWaits) {
    Gate gate;
    stop_at(gate);
    load();
    auto ports = std::async(std::launch::async, [] { return enumerated<TVRHBA_FCPort>(); });
    gate.wait_until_reached();
    EXPECT_EQ(ports.wait_for(std::chrono::milliseconds(5)), std::future_status::timeout);
    gate.open();
    EXPECT_THAT(ports.get().texts("DeviceID"),
                ElementsAre("1000AABBCCDD0100", "1000AABBCCDD0200", "1000AABBCCDD0300"));
    EXPECT_EQ(logged(begin_line), 1u);
    EXPECT_EQ(logged("PERF: Clearing the previous thread...with join"), 0u);
}

TEST_F(Refresh, CountsTheTimeOutFromItsEnd) {
    Gate gate;
    stop_at(gate);
    load();
    agent->BuildCimpleInfo();
    gate.wait_until_reached();
    clock.time += 20 * minute;
    agent->BuildCimpleInfo();
    EXPECT_EQ(logged(running_line), 1u);
    gate.open();
    wait_for_end();
    agent->BuildCimpleInfo();
    EXPECT_EQ(logged(no_timeout_line), 1u);
    EXPECT_EQ(logged(begin_line), 1u);

    // A shorter time-out holds from the next request on.
    clock.time += 2 * minute;
    agent->m_CacheTimeout = 1;
    agent->BuildCimpleInfo();
    wait_for_end();
    EXPECT_EQ(logged(begin_line), 2u);
}

// Each rebuild gives all ports another description, and now more of them, now fewer.
TEST_F(Refresh, ReadersSeeOldOrNewNeverAMixture) {
    constexpr int rebuilds = 40;
    int generation = 0;
    libraries.entered = [&](const std::string& entry_point) {
        if (entry_point == "HBA_GetNumberOfAdapters") {
            ++generation;
            libraries.adapters.clear();
            for (uint32 i = 0; i < (generation % 2 == 0 ? 5u : 8u); ++i) {
                fake::Adapter& each = libraries.adapters.emplace_back(adapter(i));
                std::snprintf(each.record.ModelDescription, sizeof each.record.ModelDescription,
                              "%d", generation);
            }
        }
    };
    load();
    refresh();
    const Ref<TVRHBA_FCPort> port(clone_of(agent->maps.m_TVRHBA_FCPort_map.get(1)));
    const String any;
    const Instance_Selector by_end = Instance_Selector::by_end(*port, any);
    std::atomic<bool> done{false};
    std::atomic<int> mixtures{0};
    std::vector<std::thread> readers;
    readers.reserve(6);
    for (int i = 0; i < 2; ++i) {
        readers.emplace_back([&] { // traversals, which share an index of the map
            do {
                Collected devices;
                const Enum_Instances_Handler all = devices.handler();
                enumerate<TVRHBA_FCPortSystemDevice>({all.proc, all.client_data, &by_end});
                mixtures += devices.size() != 1;
            } while (!done);
        });
    }
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&, i] {
            do {
                Collected ports;
                if (i % 2 == 0) {
                    enumerate<TVRHBA_FCPort>(ports.handler());
                } else {
                    enumerate_active<TVRHBA_FCPort>(ports.handler(), [](ProviderAgent&) {});
                }
                const std::vector<std::string> texts = ports.texts("Description");
                const std::set<std::string> distinct(texts.begin(), texts.end());
                const bool even = !texts.empty() && std::stoi(texts.front()) % 2 == 0;
                if (distinct.size() != 1 || texts.size() != (even ? 5u : 8u)) {
                    ++mixtures;
                }
            } while (!done);
        });
    }
    for (int i = 0; i < rebuilds; ++i) {
        refresh();
    }
    done = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(mixtures, 0);
    EXPECT_GE(generation, rebuilds);
}

TEST_F(Refresh, WaitingRequestsStartItWhenAStartFailed) {
    set_thread_create(&create_or_fail);
    failing_starts = 5;
    load();
    // std::async makes its threads without the hook.
    auto first = std::async(std::launch::async, [] { return enumerated<TVRHBA_FCPort>().size(); });
    auto second =
        std::async(std::launch::async, [] { return enumerated<TVRHBA_SoftwareIdentity>().size(); });
    EXPECT_EQ(first.get(), 3u);
    EXPECT_EQ(second.get(), 15u);
    EXPECT_EQ(failing_starts, 0);
    EXPECT_EQ(logged(begin_line), 1u);
}

TEST_F(Refresh, RequestsFailWhenNoThreadCanBeHad) {
    set_thread_create(&create_or_fail);
    failing_starts = 1'000'000;
    load();
    EXPECT_EQ(agent->BuildCimpleInfo(), 0u);
    EXPECT_FALSE(agent->m_bIsThreadRunning);
    Collected none;
    EXPECT_EQ(enumerate<TVRHBA_FCPort>(none.handler()), ENUM_INSTANCES_FAILED);
    EXPECT_EQ(logged("Exception in CIM Provider Enumeration - do nothing"), 1u);
    EXPECT_THROW(Full_Guard guard(*agent), Refresh_Unavailable);

    failing_starts = 0;
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 3u);
}

// A method makes such requests under its guard.
TEST_F(Refresh, TakesAForceRequestWhenItsStageBegins) {
    load();
    refresh();
    std::promise<void> started;
    const Log_Hook hook("PERF: Building Adapter Data...", [&] { started.set_value(); });
    {
        const Full_Guard guard(*agent);
        EXPECT_FALSE(agent->m_ProviderDataMutex.try_lock());
        agent->m_bForceAdapterRefresh = true;
        agent->BuildCimpleInfo();
        started.get_future().wait();
        EXPECT_TRUE(agent->m_bIsAdapterMapsReady) << "the old ones serve meanwhile";
        // The thread stands before the guard's first mutex, so its data will be of after this.
        libraries.adapters = {adapter(9)};
        agent->m_bForceAdapterRefresh = true;
        EXPECT_EQ(agent->BuildCimpleInfo(), 0u);
        EXPECT_EQ(agent->maps.m_TVRHBA_FCPort_map.size(), 3u);
    }
    wait_for_end();
    EXPECT_FALSE(agent->m_bForceAdapterRefresh);
    EXPECT_EQ(logged("PERF: Waiting for m_AdapterDataReadyMutex"), 0u);
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 1u);
    EXPECT_EQ(logged(begin_line), 2u);
}

// A request that comes when the thread has passed its test for one is neither lost nor left
// waiting.
TEST_F(Refresh, LosesNoSANRequest) {
    directory.write("etc/tavrin_fc_provider.conf", "TVR_PROVIDER_REFRESH_SANDATA = FALSE\n");
    CLogger::getInstance().disable();
    load();
    for (int i = 0; i < 300; ++i) {
        agent->m_bForceAdapterRefresh = true;
        agent->BuildCimpleInfo();
        // Anywhere in the refresh.
        for (int pause = 0; pause < i % 50; ++pause) {
            std::this_thread::yield();
        }
        enumerated_SAN<TVRHBA_TapeDrive>();
    }
    wait_for_end();
    EXPECT_FALSE(agent->m_bForceSANRefresh);
}

// Adapter classes are read without a wait for the scan of the SAN: in these tests the scan waits
// for the readers.
class SAN_Scan : public Refresh, public testing::WithParamInterface<bool> {
protected:
    // Starts readers, as active ones or plain.
    void start_readers(int count) {
        for (int i = 0; i < count; ++i) {
            _readers.push_back(std::async(std::launch::async, [] {
                Collected ports;
                if (GetParam()) {
                    enumerate_active<TVRHBA_FCPort>(ports.handler(), [](ProviderAgent&) {});
                } else {
                    enumerate<TVRHBA_FCPort>(ports.handler());
                }
                return ports.size();
            }));
        }
        _started = true;
    }
    // On the thread that scans.
    void expect_readers_to_pass() {
        for (const std::future<std::size_t>& reader : _readers) {
            _passed =
                _passed && reader.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
        }
    }
    // In the end.
    void expect_ports() {
        for (const std::future<std::size_t>& reader : _readers) {
            reader.wait();
        }
        wait_for_end();
        EXPECT_TRUE(_passed);
        for (std::future<std::size_t>& reader : _readers) {
            EXPECT_EQ(reader.get(), 3u);
        }
        _readers.clear();
        _started = false;
    }

    bool started() const { return _started; }

private:
    std::vector<std::future<std::size_t>> _readers;
    std::atomic<bool> _started{false};
    std::atomic<bool> _passed{true};
};
INSTANTIATE_TEST_SUITE_P(, SAN_Scan, testing::Bool(), [](const auto& one) {
    return std::string(one.param ? "ActiveReaders" : "Readers");
});

TEST_P(SAN_Scan, LetsPassWhoWaitedForTheFirstMaps) {
    constexpr int count = 3;
    for (int life = 0; life < 20 && !HasFailure(); ++life) {
        std::atomic<int> came{0}; // readers whose first step is done
        libraries.entered = [this, &came](const std::string& entry_point) {
            if (entry_point == "HBA_GetNumberOfAdapters") {
                while (came < count || !started()) {
                    std::this_thread::yield();
                }
            } else if (entry_point == "HBA_GetFcpTargetMapping") {
                expect_readers_to_pass();
            }
        };
        load();
        const Log_Hook hook("PERF: ---BuildCimpleInfo BEGIN---", [&came] { ++came; });
        start_readers(count);
        expect_ports();
        unload();
    }
}

TEST_P(SAN_Scan, LetsPassWhoseRequestStartedIt) {
    load();
    refresh();
    libraries.entered = [this](const std::string& entry_point) {
        if (entry_point == "HBA_GetFcpTargetMapping") {
            expect_readers_to_pass();
        }
    };
    for (int expiry = 0; expiry < 50 && !HasFailure(); ++expiry) {
        clock.time += 10 * minute;
        {
            // Both come for this mutex: the reader, and the refresh that it has started.
            const Lock lock(agent->m_AdapterDataReadyMutex);
            start_readers(1);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        expect_ports();
    }
}

TEST_F(Refresh, AMethodTellsOfItsWaits) {
    Gate gate;
    stop_at(gate);
    load();
    auto method = std::async(std::launch::async, [this] { const Full_Guard guard(*agent); });
    gate.wait_until_reached();
    gate.open();
    method.get();
    // The first mutex may be the refresh's until the data is ready, the second until the maps are.
    for (const char* name : {"m_AdapterDataReadyMutex", "m_AdapterMapsReadyMutex"}) {
        EXPECT_EQ(logged(std::string("PERF: Waiting for ") + name),
                  logged(std::string("PERF: Woken up from wait for ") + name));
    }
    EXPECT_EQ(logged(begin_line), 1u);
}

TEST_F(Refresh, AStalledClientHoldsUpNobody) {
    load();
    refresh();
    static ProviderAgent* current = nullptr;
    current = agent;
    const Enum_Instances_Handler handler{[](Instance* instance, int, void* data) {
                                             unref(instance);
                                             // Another reader, and a refresh, in the middle of the
                                             // delivery.
                                             *static_cast<std::size_t*>(data) +=
                                                 enumerated<TVRHBA_SoftwareIdentity>().size();
                                             current->m_bForceAdapterRefresh = true;
                                             current->BuildCimpleInfo();
                                             return true;
                                         },
                                         nullptr};
    std::size_t identities = 0;
    enumerate<TVRHBA_FCPort>({handler.proc, &identities});
    EXPECT_EQ(identities, 45u);
}

TEST_F(Refresh, AHandlerThatThrowsEndsTheEnumeration) {
    load();
    refresh();
    int handed = 0;
    enumerate<TVRHBA_FCPort>({[](Instance* instance, int, void* data) -> bool {
                                  unref(instance);
                                  if (++*static_cast<int*>(data) == 2) {
                                      throw 1;
                                  }
                                  return true;
                              },
                              &handed});
    EXPECT_EQ(handed, 2);
    EXPECT_EQ(logged("Exception in CIM Provider Enumeration - do nothing"), 1u);
}

TEST_F(Refresh, TwoInstancesWithEqualKeysDeliverNothing) {
    load();
    refresh();
    agent->maps.m_TVRHBA_FCPort_map.get(2)->DeviceID.set("1000AABBCCDD0100");
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 0u);
    EXPECT_EQ(logged("Insert failed for 2"), 1u);
    // Locks are free again.
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 3u);
}

// A get and a traversal differ from an enumeration in what is copied, and in nothing else.
TEST_F(Refresh, ASelectorLimitsWhatIsCopied) {
    static int refreshed;
    refreshed = 0;
    load();
    refresh();
    const Ref<TVRHBA_FCPort> port(clone_of(agent->maps.m_TVRHBA_FCPort_map.get(1)));
    const std::string id = port->DeviceID.value.c_str();
    const auto kept = [](auto enumeration, const Instance_Selector& selector) {
        Collected collected;
        const Enum_Instances_Handler all = collected.handler();
        enumeration(Enum_Instances_Handler{all.proc, all.client_data, &selector});
        return collected;
    };
    const Instance_Selector by_key = Instance_Selector::by_key(*port);
    const auto active = [](const Enum_Instances_Handler& handler) {
        enumerate_active<TVRHBA_FCPort>(handler, [](ProviderAgent&) { ++refreshed; });
    };
    EXPECT_THAT(kept(enumerate<TVRHBA_FCPort>, by_key).texts("DeviceID"), ElementsAre(id));
    EXPECT_THAT(kept(active, by_key).texts("DeviceID"), ElementsAre(id));
    EXPECT_EQ(refreshed, 1);
    EXPECT_EQ(kept(enumerate_SAN<TVRHBA_TapeDrive>, by_key).size(), 0u);

    const String any;
    const Instance_Selector by_end = Instance_Selector::by_end(*port, any);
    for (int maps = 0; maps < 2; ++maps) { // the index of ends goes with the maps of its time
        const Collected devices = kept(enumerate<TVRHBA_FCPortSystemDevice>, by_end);
        ASSERT_EQ(devices.size(), 1u);
        EXPECT_TRUE(is_reference_end(port.get(), devices[0], any));
        agent->m_bForceAdapterRefresh = true;
        refresh();
    }
}

} // namespace
} // namespace cimple
