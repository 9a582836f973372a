// Alerts: from a library's callback to the handler that the runtime gave.
#include "tests/agent/agent_fixture.h"

#include "providers/TVRHBA_AlertIndication_Provider.h"

#include <cerrno>
#include <thread>

namespace cimple {
namespace {

constexpr uint32 down = HBA_EVENT_PORT_OFFLINE;
constexpr uint32 up = HBA_EVENT_PORT_ONLINE;
constexpr const char* refused =
    "Error: Failed to deliver indication as the indication handler is 0 or cleanUp signalled !";

class Alerts : public With_Agent {
protected:
    Alerts() {
        load();
        refresh();
        provider.load();
    }
    ~Alerts() override { EXPECT_EQ(provider.unload(), UNLOAD_OK); }

    std::unique_ptr<Enable_Indications_Handler> handler() {
        return std::unique_ptr<Enable_Indications_Handler>(
            new Enable_Indications_Handler{&Alerts::hear, this});
    }
    Enable_Indications_Status enable() { return provider.enable_indications(handler()); }
    // As the library does, through the registration of that handle.
    void raise(std::size_t registration, uint32 type) {
        const fake::Registration& to = libraries.registrations.at(registration - 1);
        to.callback(to.data, to.port, type, 0x010203);
    }
    std::size_t count() {
        const std::lock_guard lock(mutex);
        return alerts.size();
    }
    template <class Condition> void wait_until(Condition condition) {
        for (int i = 0; i < 20'000 && !condition(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(condition());
    }
    // The names of the alerts' ports, or their numbers.
    std::string told(const char* property) {
        std::string texts;
        for (const Ref<>& alert : alerts) {
            texts += describe(alert.get())[property] + " ";
        }
        return texts;
    }

    TVRHBA_AlertIndication_Provider provider;
    std::mutex mutex;
    std::vector<Ref<>> alerts;
    int ends = 0;         // calls with null
    Gate* gate = nullptr; // passed in each delivery

private:
    static bool hear(Instance* alert, void* client_data) {
        auto& self = *static_cast<Alerts*>(client_data);
        if (self.gate != nullptr && alert != nullptr) {
            self.gate->pass();
        }
        const std::lock_guard lock(self.mutex);
        if (alert == nullptr) {
            ++self.ends;
        } else {
            self.alerts.emplace_back(alert);
        }
        return alert != nullptr;
    }
};

TEST_F(Alerts, TellWhichLinkIsDownOrUp) {
    ASSERT_EQ(enable(), ENABLE_INDICATIONS_OK);
    ASSERT_EQ(libraries.registrations.size(), 3u);
    EXPECT_EQ(libraries.openHandles, 0);
    raise(2, down);
    raise(2, HBA_EVENT_PORT_NEW_TARGETS); // neither up nor down
    agent->maps.m_TVRHBA_FCPort_map.erase({2});
    raise(3, down); // has left the maps
    raise(1, up);
    wait_until([this] { return count() == 2; });
    EXPECT_EQ(logged("Could not generate the indication as the event type is not supported"), 1u);
    EXPECT_EQ(logged("Could not find the required FCPort"), 1u);
    auto alert = describe(alerts[0].get());
    EXPECT_EQ(alert["IndicationTime"], Datetime::now().ascii().c_str());
    EXPECT_EQ(alert["EventTime"], alert["IndicationTime"]);
    alert.erase("EventTime");
    alert.erase("IndicationTime");
    const std::map<std::string, std::string> expected = {
        {"", "root/tavrin"},
        {"AlertType", "2"},
        {"AlertingElementFormat", "2"},
        {"AlertingManagedElement",
         "TVRHBA_FCPort.SystemCreationClassName=\"CIM_ComputerSystem\",SystemName="
         "\"host.example\",CreationClassName=\"TVRHBA_FCPort\",DeviceID=\"1000AABBCCDD0200\""},
        {"CorrelatedIndications", "{}"},
        {"Description", "Port WWN 1000AABBCCDD0200 status changed to LINK_DOWN."},
        {"EventID", "0"},
        {"IndicationIdentifier", "0"},
        {"PerceivedSeverity", "5"},
        {"ProbableCause", "30"},
        {"ProbableCauseDescription", "Link Down"},
        {"ProviderName", "TVRHBA_AlertIndication_Provider"},
        {"SystemCreationClassName", "CIM_ComputerSystem"},
        {"SystemName", "host.example"},
        {"Trending", "0"}};
    EXPECT_EQ(alert, expected);
    auto second = describe(alerts[1].get());
    EXPECT_EQ(second["Description"], "Port WWN 1000AABBCCDD0100 status changed to LINK_UP.");
    EXPECT_EQ(second["ProbableCause"] + second["ProbableCauseDescription"], "1Link Up");

    // The numbers go on.
    EXPECT_EQ(provider.disable_indications(), DISABLE_INDICATIONS_OK);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(libraries.registrations[0].callback, nullptr);
    EXPECT_EQ(provider.disable_indications(), DISABLE_INDICATIONS_OK) << "nothing to do";
    ASSERT_EQ(enable(), ENABLE_INDICATIONS_OK);
    raise(4, down);
    wait_until([this] { return count() == 3; });
    EXPECT_EQ(told("EventID"), "0 1 2 ");
}

TEST_F(Alerts, EventsThatAreQueuedAtTheEndAreDropped) {
    Gate delivery;
    gate = &delivery;
    ASSERT_EQ(enable(), ENABLE_INDICATIONS_OK);
    raise(1, down);
    delivery.wait_until_reached();
    for (int i = 0; i < 10; ++i) {
        raise(1, up);
    }
    log.take();
    std::thread stop([this] { EXPECT_EQ(provider.disable_indications(), DISABLE_INDICATIONS_OK); });
    wait_until([this] { return logged("TVRHBA_AlertIndication_Provider::cleanUp()") == 1; });
    delivery.open();
    stop.join();
    EXPECT_EQ(told("EventID"), "0 ");
    EXPECT_EQ(logged("Popped from Queue: IndicationType 0x202"), 10u);
    EXPECT_EQ(logged(refused), 10u);
    EXPECT_EQ(ends, 1);
}

TEST_F(Alerts, WhatFailsIsToldAndCanBeEnded) {
    struct Row {
        const char* entry_point;
        std::deque<uint32> statuses;
        std::size_t registered;
        const char* line;
    };
    const Row rows[] = {
        {"HBA_OpenAdapter",
         {0, 1},
         1,
         "Failed to Open Adapter, Skipping registration for Indication notification"},
        {"HBA_RegisterForAdapterPortEvents",
         {0, 0, 1},
         2,
         "Failed to register the Indication notification"},
    };
    for (const Row& row : rows) {
        libraries.registrations.clear();
        libraries.statuses[row.entry_point] = {row.statuses.begin(), row.statuses.end()};
        log.take();
        EXPECT_EQ(enable(), ENABLE_INDICATIONS_FAILED) << row.entry_point;
        EXPECT_EQ(logged(row.line), 1u);
        EXPECT_EQ(libraries.registrations.size(), row.registered);
        EXPECT_EQ(libraries.openHandles, 0);
        EXPECT_EQ(provider.disable_indications(), DISABLE_INDICATIONS_OK);
        EXPECT_EQ(libraries.calls["HBA_RemoveCallback"], static_cast<int>(row.registered));
        libraries.calls.clear();
    }
    EXPECT_EQ(ends, 2);
    libraries.registrations.clear();

    // A registration that can't be ended stops the removal, but not the worker.
    ASSERT_EQ(enable(), ENABLE_INDICATIONS_OK);
    EXPECT_EQ(enable(), ENABLE_INDICATIONS_FAILED) << "another handler";
    libraries.statuses["HBA_RemoveCallback"] = {0, 1};
    EXPECT_EQ(provider.disable_indications(), DISABLE_INDICATIONS_FAILED);
    EXPECT_EQ(ends, 3);
    EXPECT_EQ(agent->indications.m_callbackHandles.size(), 2u);
    raise(1, down); // of the one that stayed
    EXPECT_EQ(count(), 0u);

    set_thread_create([](auto...) { return EAGAIN; });
    EXPECT_EQ(enable(), ENABLE_INDICATIONS_FAILED);
    set_thread_create(nullptr);
    EXPECT_EQ(provider.disable_indications(), DISABLE_INDICATIONS_OK);
    EXPECT_EQ(ends, 3) << "no handler was kept";
    agent->m_pData->freeAllData();
    EXPECT_EQ(enable(), ENABLE_INDICATIONS_FAILED) << "there is no adapter";
}

// The worker waits for the maps, and a stop doesn't wait for the refresh that makes them.
TEST_F(Alerts, AStopEndsTheWaitForTheMaps) {
    ASSERT_EQ(enable(), ENABLE_INDICATIONS_OK);
    Gate library;
    stop_at(library);
    agent->m_bForceAdapterRefresh = true;
    agent->BuildCimpleInfo();
    library.wait_until_reached();
    {
        const Lock lock(agent->m_AdapterMapsReadyMutex);
        agent->m_bIsAdapterMapsReady = false;
    }
    raise(1, down);
    wait_until([this] { return logged("PERF: Waiting for m_bIsAdapterMapsReady") == 1; });
    EXPECT_EQ(provider.disable_indications(), DISABLE_INDICATIONS_OK);
    EXPECT_EQ(logged(refused), 1u);
    library.open();
    wait_for_end();
    EXPECT_EQ(count(), 0u);
}

TEST_F(Alerts, AFlappingLinkLosesTheOldestEvents) {
    constexpr uint32 events = 100'000;
    CLogger::getInstance().removeLogger(&log); // but for the one line
    Gate delivery;
    gate = &delivery;
    ASSERT_EQ(enable(), ENABLE_INDICATIONS_OK);
    raise(1, down);
    delivery.wait_until_reached();
    for (uint32 i = 0; i < events; ++i) {
        raise(1 + i % 3, i % 2 == 0 ? up : down);
    }
    CLogger::getInstance().addLogger(&log);
    delivery.open();
    wait_until([this] { return count() == 1 + Link_Event_Queue::capacity; });
    EXPECT_EQ(logged("Link events came faster than they could be indicated, " +
                     std::to_string(events - Link_Event_Queue::capacity) + " are lost"),
              1u);
    for (uint32 i = 0; i < Link_Event_Queue::capacity; ++i) {
        const uint32 event = events - Link_Event_Queue::capacity + i;
        auto alert = describe(alerts[1 + i].get());
        ASSERT_EQ(alert["EventID"], std::to_string(1 + i));
        ASSERT_EQ(alert["ProbableCause"], event % 2 == 0 ? "1" : "30");
        ASSERT_EQ(alert["Description"].substr(9, 16),
                  "1000AABBCCDD0" + std::to_string(1 + event % 3) + "00");
    }
}

// Events pour in, maps are rebuilt and read, and alerts are switched on and off meanwhile.
TEST_F(Alerts, CanBeSwitchedAtAnyTime) {
    CLogger::getInstance().disable();
    std::atomic<bool> done{false};
    ASSERT_EQ(enable(), ENABLE_INDICATIONS_OK);
    const auto registrations = libraries.registrations; // a late library has old ones
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        for (uint32 i = 0; !done; ++i) {
            const fake::Registration& to = registrations[i % 3];
            to.callback(to.data, to.port, i % 2 == 0 ? up : down, 0);
            std::this_thread::sleep_for(std::chrono::microseconds(20));
        }
    });
    threads.emplace_back([&] {
        while (!done) {
            agent->m_bForceAdapterRefresh = true;
            agent->BuildCimpleInfo();
            enumerated<TVRHBA_FCPort>();
        }
    });
    threads.emplace_back([&] {
        while (!done) {
            provider.disable_indications();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    for (int i = 0; i < 2000 || count() == 0; ++i) {
        provider.disable_indications();
        enable();
        std::this_thread::sleep_for(std::chrono::microseconds(i % 20 == 0 ? 1000 : 0));
    }
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    wait_for_end();
    EXPECT_GE(ends, 2000);
    CLogger::getInstance().enable();
    unload();
}

} // namespace
} // namespace cimple
