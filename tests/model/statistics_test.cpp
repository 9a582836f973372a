#include "tests/model/fake_host.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAreArray;

class Statistics : public FakeHost {
protected:
    Port& port() {
        if (data->getPorts().empty()) {
            build();
        }
        return *data->getPorts().at(0);
    }
    fake::Attributes& counters() { return libraries->adapters.at(0).ports.at(0).statistics; }
    const FCPortStatistics& fetch() {
        return static_cast<const FCPortStatistics&>(*port().getStatistics());
    }
};

// Every counter in the order of its attributes' numbers.
std::vector<uint64> all(const FCPortStatistics& s) {
    return {s.secondsSinceReset,
            s.exchangesOriginated,
            s.exchangesResponded,
            s.txSequences,
            s.rxSequences,
            s.txFrames,
            s.rxFrames,
            s.txWords,
            s.rxWords,
            s.lipCount,
            s.nosCount,
            s.errorFrames,
            s.dumpedFrames,
            s.linkFailures,
            s.lossOfSync,
            s.lossOfSignal,
            s.primitiveSeqErrors,
            s.invalidTxWords,
            s.invalidCRC,
            s.linkTransitions,
            s.activeRPIs,
            s.activeXRIs,
            s.primitiveSeqTimeouts,
            s.elasticBufferOverruns,
            s.arbitrationTimeouts};
}

constexpr uint16 ids[] = {1025, 1026, 1027, 1028, 1029, 1030, 1031, 1032, 1033,
                          1036, 1037, 1038, 1039, 1040, 1041, 1042, 1043, 1044,
                          1045, 1046, 1047, 1048, 1057, 1058, 1059};

TEST_F(Statistics, EachCounterHasItsAttribute) {
    add();
    std::vector<uint64> expected;
    for (const uint16 id : ids) {
        expected.push_back(0x100000000 + id);
    }
    // Twelve bytes of head and padding apart, all 25 do not fit at once into 512 bytes.
    for (std::size_t first = 0; first < std::size(ids); first += 13) {
        counters().clear();
        const std::size_t last = std::min(first + 13, std::size(ids));
        for (std::size_t i = first; i < last; ++i) {
            counters()[ids[i]] = valueOf<uint64>(expected[i]);
        }
        const std::vector<uint64> read = all(fetch());
        for (std::size_t i = 0; i < std::size(ids); ++i) {
            EXPECT_EQ(read[i], i >= first && i < last ? expected[i] : FCPortStatistics::notReported)
                << ids[i];
        }
    }
}

TEST_F(Statistics, CountersThatAreNotReported) {
    add();
    counters()[1037] = valueOf<uint64>(UINT64_MAX);
    counters()[1038] = valueOf<uint64>(0);
    counters()[1039] = valueOf<uint32>(77);
    const FCPortStatistics& read = fetch();
    EXPECT_EQ(read.nosCount, 0xFFFFFFFFu);
    EXPECT_EQ(read.errorFrames, 0u);
    EXPECT_EQ(read.dumpedFrames, 77u) << "a value of four bytes is widened";
    EXPECT_EQ(read.txFrames, 0xFFFFFFFFu);
}

TEST_F(Statistics, AFailureKeepsTheOldCounters) {
    add();
    counters()[1030] = valueOf<uint64>(1);
    EXPECT_EQ(port().heldStatistics(), nullptr);
    const PortStatistics* first = port().getStatistics();
    EXPECT_EQ(port().heldStatistics(), first);

    counters()[1030] = valueOf<uint64>(2);
    libraries->statuses["LRM_GetPortStatistics"] = {3};
    log.take();
    EXPECT_THROW(port().getStatistics(), std::exception);
    EXPECT_THAT(log.take(), testing::ElementsAre(
                                "ERROR: RM_GetPortStatistics call failed (3)",
                                "FC Port statistics error occurred,retain the old statistics !!!"));
    EXPECT_EQ(port().heldStatistics(), first);
    EXPECT_EQ(static_cast<const FCPortStatistics*>(first)->txFrames, 1u);
    EXPECT_EQ(fetch().txFrames, 2u);
}

TEST_F(Statistics, AFirstFailureLeavesNone) {
    add();
    Port& fresh = port();
    unloadManagementLibraries();
    EXPECT_THROW(fresh.getStatistics(), std::exception);
    EXPECT_EQ(fresh.heldStatistics(), nullptr);
    EXPECT_THROW(FCPortStatistics("no port name"), std::exception);
    data.reset();
    loadManagementLibraries();
    libraries =
        reinterpret_cast<fake::Access>(dlsym(libraryHandles[LRMAPI_LIBRARY], fake::accessName))();
}

} // namespace
} // namespace cimple
