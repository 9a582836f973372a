#include "model/data.h"
#include "tests/access/fake_fixture.h"
#include "tests/access/run_process.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <sstream>

namespace cimple {
namespace {

using fake::put;
using fake::valueOf;
using testing::Contains;
using namespace std::string_literals;

// The values as text, with a blank behind each.
template <class... Values> std::string joined(const Values&... values) {
    std::ostringstream text;
    ((text << values << ' '), ...);
    return text.str();
}

HBA_WWN nameOf(HBA_UINT8 kind, uint32 adapter, uint32 port) {
    return {{kind, 0, 0x02, 0x54, 0x56, 0xAB, static_cast<HBA_UINT8>(adapter),
             static_cast<HBA_UINT8>(port)}};
}

// A host of the fake libraries, and the tree over it.
class Discovery : public WithFakeLibraries {
protected:
    void SetUp() override {
        WithFakeLibraries::SetUp();
        data.emplace();
        log.take();
    }
    void TearDown() override {
        if (libraryHandles[LRMAPI_LIBRARY] != nullptr) {
            EXPECT_EQ(libraries->openHandles, 0) << "an adapter was left open";
        }
        data.reset();
    }

    // Adds an adapter whose ports have no more than what discovery needs.
    fake::Adapter& add(uint32 ports = 1) {
        const auto number = static_cast<uint32>(libraries->adapters.size());
        fake::Adapter& adapter = libraries->adapters.emplace_back();
        adapter.name = "Tavrin-F16-" + std::to_string(number);
        adapter.record.NumberOfPorts = ports;
        adapter.record.NodeWWN = nameOf(0x20, number, 0);
        adapter.ports.resize(ports);
        for (uint32 index = 0; index < ports; ++index) {
            adapter.ports[index].record.NodeWWN = nameOf(0x20, number, 0);
            adapter.ports[index].record.PortWWN = nameOf(0x10, number, index);
            adapter.ports[index].attributes = {{RM_PA_PHYSICAL_STATE, valueOf<uint32>(2)}};
        }
        adapter.driverType = 3;
        return adapter;
    }
    std::vector<std::string> build() {
        log.take();
        data->buildAdapterData();
        return log.take();
    }
    // The adapter and index of each port.
    std::string ports() const {
        std::string text;
        for (const Port* port : data->getPorts()) {
            text += joined(port->getAdapter()->getAdapterNumber(), port->getPortIndex());
        }
        return text;
    }
    const FCAdapterAttributes& adapterFacts() const {
        return *static_cast<const FCAdapter&>(*data->getAdapters().at(0)).getFCAttributes();
    }
    const FCPortAttributes& portFacts() const {
        return *static_cast<const FCPort&>(*data->getPorts().at(0)).getFCAttributes();
    }

    std::optional<Data> data;
};

TEST_F(Discovery, ReadsTheAttributesByTheirIdentifiers) {
    fake::Adapter& adapter = add();
    for (const int id : {534, 546, 545, 528, 587, 588, 589, 590, 565, 566, 563, 564}) {
        adapter.attributes[static_cast<uint16>(id)] = {std::to_string(id)};
    }
    for (const uint32 id : {526u, 527u, 544u, 553u, 549u}) {
        adapter.attributes[static_cast<uint16>(id)] = valueOf(id);
    }
    adapter.attributes[551] = valueOf<uint32>(0x00465A2D);
    adapter.attributes[531] = {"\x02\x54\x56\x01\x02\xFF"s};
    adapter.attributes[532] = valueOf<uint32>(256);
    build();
    const FCAdapterAttributes& facts = adapterFacts();
    EXPECT_EQ(facts.ieeeAddress, "02:54:56:01:02:ff");
    EXPECT_EQ(joined(facts.bootBiosVersion, facts.kernelVersion, facts.initialFirmwareLoad,
                     facts.operationalFirmware, facts.fcUniversalVersion, facts.fcX86BiosVersion,
                     facts.fcEfiVersion, facts.fcFcodeVersion, facts.ulpFirmwareVersion,
                     facts.ulpFirmwareName, facts.spFirmwareVersion, facts.spFirmwareName),
              "534 546 545 528 587 588 589 590 565 566 563 564 ");
    EXPECT_EQ(joined(facts.boardTemperature, facts.thresholdCriticalTemp,
                     facts.thresholdWarningTemp, facts.deviceID, facts.modelID, facts.driverType,
                     facts.diagVersion, facts.portNumber, facts.sliMode, facts.bootCodeEnabled),
              "45 90 70 526 527 3 544 553 549 1 ");
}

TEST_F(Discovery, MissingAttributesKeepTheirStartValues) {
    fake::Port& port = add().ports[0];
    port.attributes.clear();
    port.record.PortState = 2;
    libraries->statuses["LRM_GetDriverType"] = {9};
    EXPECT_THAT(build(), Contains("ERROR: RM_GetDriverType call failed (9)"));
    const FCAdapterAttributes& facts = adapterFacts();
    EXPECT_EQ(joined(facts.driverType, facts.ieeeAddress, facts.boardTemperature), "0  0 ");
    EXPECT_EQ(portFacts().PortState, 2u) << "the HBA API's";
}

// Of three adapters the middle one has three ports; a call fails for it or its second port.
TEST_F(Discovery, TheOthersStay) {
    const struct {
        const char* entryPoint;
        std::deque<uint32> statuses;
        const char* message;
        bool onePort = false;
    } cases[] = {
        {"HBA_GetAdapterName", {0, 4}, "Error hbaStatus=4, Skipping Adapter# 1"},
        {"HBA_OpenAdapter", {0, 0, 1}, "HBA_OpenAdapter failed, skipping"},
        {"HBA_GetAdapterAttributes", {0, 12}, "Error hbaStatus=12, skipping"},
        {"HBA_GetAdapterAttributes", {0, 8, 8}, "Error hbaStatus=8, skipping"},
        {"HBA_GetAdapterPortAttributes", {0, 0, 6}, "(portIndex=0) failed with hbaStatus 6"},
        {"LRM_GetHBAAttributes", {0, 7}, "ERROR: RM_GetHBAAttributes call failed (7)"},
        {"HBA_OpenAdapter", {0, 0, 0, 0, 1}, "HBA_OpenAdapter failed, skipping", true},
        {"HBA_GetAdapterPortAttributes", {0, 0, 0, 0, 3}, "(portIndex=1) failed", true},
        {"HBA_GetAdapterPortAttributes", {0, 0, 0, 0, 8, 8}, "(portIndex=1) failed", true},
        {"LRM_GetPortAttributes", {0, 0, 191}, "RM_GetPortAttributes call failed (191)", true},
    };
    add();
    add(3);
    add();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entryPoint);
        libraries->statuses = {{c.entryPoint, c.statuses}};
        EXPECT_THAT(build(), Contains(testing::HasSubstr(c.message)));
        EXPECT_EQ(ports(), c.onePort ? "0 0 1 0 1 2 2 0 " : "0 0 2 0 ");
        EXPECT_EQ(data->getAdapterCount(), c.onePort ? 3u : 2u);
    }
}

TEST_F(Discovery, ConvergedAdaptersAreLeftOut) {
    for (const char* name : {"Tavrin-OCe11102", "Tavrin-N", "Tavrin-M", "Tavrin-", "tavrin-O"}) {
        add().name = name;
    }
    for (const uint32 function : {0u, 1u, 2u, 3u, 4u}) {
        add().attributes[556] = valueOf(function);
        libraries->adapters.back().attributes[556].toldLength = function % 2;
    }
    build();
    EXPECT_EQ(ports(), "2 0 3 0 4 0 5 0 9 0 ");
}

TEST_F(Discovery, StaleDataIsReadAgainOnce) {
    add();
    libraries->statuses["HBA_GetAdapterAttributes"] = {8};
    libraries->statuses["HBA_GetAdapterPortAttributes"] = {8, 0, 8};
    build();
    ASSERT_EQ(ports(), "0 0 ");
    EXPECT_EQ(adapterFacts().Manufacturer, "") << "nothing of the failed call stays";
    EXPECT_EQ(libraries->calls["HBA_RefreshInformation"], 3);
}

TEST_F(Discovery, TextsWithoutAnEndStayInTheirFields) {
    fake::Adapter& adapter = add();
    adapter.name = std::string(256, 'n');
    put(adapter.record.Manufacturer, std::string(64, 'x'));
    put(adapter.record.DriverName, std::string(256, 'y'));
    put(adapter.ports[0].record.OSDeviceName, std::string(256, 'z'));
    build();
    ASSERT_EQ(ports(), "0 0 ");
    EXPECT_EQ(data->getAdapters()[0]->getAdapterName(), std::string(256, 'n'));
    EXPECT_EQ(adapterFacts().Manufacturer, std::string(64, 'x'));
    EXPECT_EQ(adapterFacts().DriverName, std::string(256, 'y'));
    EXPECT_EQ(portFacts().OSDeviceName, std::string(256, 'z'));
}

TEST_F(Discovery, WildCountsEnd) {
    add(2).record.NumberOfPorts = 4'000'000'000;
    libraries->toldAdapters = 4'000'000'000;
    const std::vector<std::string> lines = build();
    EXPECT_THAT(lines, Contains("Number of Adapters is not plausible, looking at 4096"));
    EXPECT_THAT(lines, Contains("Number of ports is not plausible, looking at 1024"));
    EXPECT_EQ(ports(), "0 0 0 1 ");
}

TEST_F(Discovery, ARebuildKeepsNothing) {
    add();
    add();
    build();
    libraries->adapters.pop_back();
    EXPECT_THAT(build(), Contains("Freeing adapter: Tavrin-F16-1"));
    EXPECT_EQ(ports(), "0 0 ");
    unloadManagementLibraries();
    EXPECT_EQ(build().back(), "HBAAPI reports that there are NO HBAs in the system.");
    EXPECT_EQ(data->getAdapters().size() + data->getPorts().size() + data->getAdapterCount(), 0u);
}

// ---- counters ----

TEST_F(Discovery, AFailureKeepsTheOldCounters) {
    add();
    build();
    Port& port = *data->getPorts()[0];
    EXPECT_EQ(port.heldStatistics(), nullptr);
    libraries->statuses["LRM_GetPortStatistics"] = {3, 0, 3};
    EXPECT_THROW(port.getStatistics(), std::exception);
    EXPECT_EQ(port.heldStatistics(), nullptr);
    const PortStatistics* first = port.getStatistics();
    EXPECT_THROW(port.getStatistics(), std::exception);
    EXPECT_EQ(port.heldStatistics(), first);
    EXPECT_EQ(log.take().back(), "FC Port statistics error occurred,retain the old statistics !!!");
}

} // namespace
} // namespace cimple

int main(int argc, char** argv) {
    cimple::restartWithLibraries(LIBRARIES, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
