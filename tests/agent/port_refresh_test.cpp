// Status and counters of the ports, as fresh as their enumeration.
#include "tests/agent/agent_fixture.h"

#include "agent/port_refresh.h"
#include "providers/TVRHBA_FCPortStatistics_Provider.h"
#include "providers/TVRHBA_FCPort_Provider.h"

namespace cimple {
namespace {

using fake::valueOf;
using testing::ElementsAre;

class Port_Refresh : public With_Agent {
protected:
    void SetUp() override {
        load();
        refresh();
    }
    void set_state(std::size_t adapter, uint32 state) {
        libraries.adapters[adapter].ports[0].attributes[RM_PA_PHYSICAL_STATE] = valueOf(state);
    }
    std::vector<std::string> statuses() {
        Collected ports;
        TVRHBA_FCPort_Provider().enum_instances(nullptr, ports.handler());
        return ports.texts("OperationalStatus");
    }
    Collected statistics() {
        Collected statistics;
        TVRHBA_FCPortStatistics_Provider().enum_instances(nullptr, statistics.handler());
        return statistics;
    }
    // In place of the first instance, one with another key.
    template <class C>
    C& rename_first(Class_Map<C>& map, Property<String> C::*key, const char* name) {
        C* copy = map.get(0)->clone();
        (copy->*key).set(name);
        map.clear();
        map.insert(copy);
        return *copy;
    }
};

TEST_F(Port_Refresh, StatusFollowsTheHardwareEveryFiveSeconds) {
    EXPECT_THAT(statuses(), ElementsAre("{2}", "{2}", "{2}"));
    set_state(1, 7);
    clock.time += 4'999'999;
    log.take();
    EXPECT_THAT(statuses(), ElementsAre("{2}", "{2}", "{2}"));
    EXPECT_EQ(logged("PERF: UpdateFCPortStatus: Entry"), 1u);
    EXPECT_EQ(logged("PERF: update driver map"), 0u);
    auto before = describe(agent->maps.m_TVRHBA_FCPort_map.get(1));
    clock.time += 1;
    EXPECT_THAT(statuses(), ElementsAre("{2}", "{6}", "{2}"));
    auto after = describe(agent->maps.m_TVRHBA_FCPort_map.get(1));
    EXPECT_EQ(after["StatusDescriptions"], "{Error}");
    for (const char* name : {"OperationalStatus", "StatusDescriptions"}) {
        after[name] = before[name];
    }
    EXPECT_EQ(after, before);
    EXPECT_EQ(enumerated<TVRHBA_ControlledBy>().texts("AccessState")[1], "1");
    set_state(0, 22);
    clock.time -= 60'000'000;
    EXPECT_EQ(statuses()[0], "{32790}") << "a clock that was set back holds nothing back";
}

TEST_F(Port_Refresh, AFailureLeavesTheLaterPortsAsTheyWere) {
    for (std::size_t i = 0; i < 3; ++i) {
        set_state(i, 7);
    }
    libraries.statuses["LRM_GetPortAttributes"] = {0, 0, 0};
    libraries.statuses["HBA_GetAdapterPortAttributes"] = {0, 1};
    EXPECT_THAT(statuses(), ElementsAre("{6}", "{2}", "{2}"));
    EXPECT_EQ(logged("Error while retrieving fcPortAttributes"), 1u);
    EXPECT_EQ(logged("Error while updating FC Port map"), 1u);
    EXPECT_EQ(libraries.openHandles, 0);
    clock.time += 5'000'000;
    EXPECT_THAT(statuses(), ElementsAre("{6}", "{6}", "{6}"));
}

TEST_F(Port_Refresh, APortIsFoundInALongerName) {
    set_state(0, 7);
    const auto& port = rename_first(agent->maps.m_TVRHBA_FCPort_map, &TVRHBA_FCPort::DeviceID,
                                    "fc.1000AABBCCDD0100.a");
    const auto& counters = rename_first(agent->maps.m_TVRHBA_FCPortStatistics_map,
                                        &TVRHBA_FCPortStatistics::InstanceID, "1000AABBCCDD0100");
    EXPECT_THAT(statuses(), ElementsAre("{6}"));
    EXPECT_EQ(statistics().size(), 1u);
    EXPECT_EQ(port.OperationalStatus.value[0], 6);
    EXPECT_EQ(counters.PacketsReceived.null, 0);
}

TEST_F(Port_Refresh, CountersAreReadAtEveryEnumeration) {
    fake::Attributes& fed = libraries.adapters[0].ports[0].statistics;
    for (const auto& [first, last] : {std::pair{1025, 1033}, {1036, 1048}, {1057, 1059}}) {
        for (int attribute = first; attribute <= last; ++attribute) {
            fed[static_cast<uint16>(attribute)] =
                valueOf(uint64{10'000} + static_cast<uint64>(attribute));
        }
    }
    EXPECT_EQ(one_line(statistics()[0]),
              "=root/tavrin; ActiveRPIs=11047; ActiveXRIs=11048; ArbitrationTimeouts=11059; "
              "BytesReceived=44132; BytesTransmitted=44128; CRCErrors=11045; "
              "Description=Statistics for the FC port.; DumpedFrames=11039; "
              "ElasticBufOverruns=11058; ElementName=1000AABBCCDD0100; ErrorFrames=11038; "
              "ExCountOrig=11026; ExCountResp=11027; "
              "InstanceID=TVR FC HBA:HBA Statistics:1000AABBCCDD0100; "
              "InvalidTransmissionWords=11044; LIPCount=11036; LinkFailures=11040; "
              "LinkTransitions=11046; LossOfSignalCounter=11042; LossOfSyncCounter=11041; "
              "NOSCount=11037; PacketsReceived=11031; PacketsTransmitted=11030; "
              "PrimitiveSeqProtocolErrCount=11043; PrimitiveSeqTimesouts=11057; "
              "RxSequences=11029; StatisticTime=" +
                  std::string(Datetime::now().ascii().c_str()) + "; TxSequences=11028; ");
    EXPECT_EQ(logged("PERF: GetFCPortStats: cleanExit"), 3u);
    fed[1036] = valueOf(uint64{5});
    EXPECT_EQ(statistics().texts("LIPCount")[0], "5");
}

TEST_F(Port_Refresh, CountersThatTheAdapterLacksAreNotToldOrKept) {
    fake::Attributes& fed = libraries.adapters[0].ports[0].statistics;
    auto bare = describe(statistics()[0]);
    EXPECT_EQ(bare.count("NOSCount"), 0u);
    EXPECT_EQ(bare.count("DumpedFrames"), 0u);
    EXPECT_EQ(bare["LIPCount"], "4294967295");
    EXPECT_EQ(bare["BytesReceived"], "17179869180");
    fed[1037] = valueOf(uint64{0xFFFFFFFE});
    EXPECT_EQ(describe(statistics()[0])["NOSCount"], "4294967294");
    for (const uint64 missing : {0xFFFFFFFFull, 0x100000000ull, ~0ull}) {
        fed[1037] = valueOf(missing);
        EXPECT_EQ(describe(statistics()[0])["NOSCount"], "4294967294") << missing;
    }
}

TEST_F(Port_Refresh, CountersThatCantBeReadEndTheRefresh) {
    const auto feed = [this](uint64 value) {
        for (fake::Adapter& adapter : libraries.adapters) {
            adapter.ports[0].statistics[RM_PS_LIP_COUNT] = valueOf(value);
        }
        return statistics().texts("LIPCount");
    };
    EXPECT_THAT(feed(1), ElementsAre("1", "1", "1"));
    libraries.statuses["LRM_GetPortStatistics"] = {0, 9};
    EXPECT_THAT(feed(2), ElementsAre("2", "1", "1"));
    EXPECT_EQ(logged("Error occurred while retrieving FCPort Statistics..."), 1u);
    EXPECT_EQ(logged("Error getting FC Port statistics"), 1u);
    EXPECT_THAT(feed(3), ElementsAre("3", "3", "3"));
}

} // namespace
} // namespace cimple
