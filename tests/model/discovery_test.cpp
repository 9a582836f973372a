#include "model/data.h"
#include "tests/access/access_session.h"
#include "tests/access/run_process.h"

#include <gmock/gmock.h>

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
class Discovery : public Access_Session {
protected:
    void SetUp() override {
        Access_Session::SetUp();
        data.emplace();
        set_up_session();
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
    void set_up_session();
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

void Discovery::set_up_session() {
    // PORTS [NAME]: one adapter more.
    session.on("adapter", [this](const auto& words) {
        fake::Adapter& adapter = add(number(words, 0));
        adapter.name = words.size() > 1 ? words[1] : adapter.name;
    });
    session.on("function", [this](const auto& words) { // of the last adapter
        fake::Attribute& type = libraries->adapters.back().attributes[556];
        type = valueOf(number(words, 0));
        type.toldLength = static_cast<uint16_t>(number(words, 1));
    });
    session.on("bare", [this] {
        libraries->adapters.back().ports[0].attributes.clear();
        libraries->adapters.back().ports[0].record.PortState = 2;
    });
    session.on("gone", [this] { libraries->adapters.pop_back(); });
    session.on("unload", [] { unloadManagementLibraries(); });
    // How many adapters there are, the adapter and index of each port, and what failed.
    session.on("build", [this](const auto&, std::ostream& answer) {
        const std::vector<std::string> lines = build();
        answer << data->getAdapterCount() << " adapters, ports " << ports() << '\n';
        for (const std::string& line : lines) {
            if (line.find("call failed (2)") == line.npos) { // an attribute that isn't there
                for (const char* word : {"rror", "failed", "Freeing adapter", "NO HBAs"}) {
                    if (line.find(word) != line.npos) {
                        tell(line, answer);
                        break;
                    }
                }
            }
        }
    });
    session.on("facts", [this](const auto&, std::ostream& answer) {
        const FCAdapterAttributes& facts = adapterFacts();
        answer << "driver type " << facts.driverType << ", address '" << facts.ieeeAddress
               << "', temperature " << facts.boardTemperature << ", manufacturer '"
               << facts.Manufacturer << "', port state " << portFacts().PortState << '\n';
    });
}

TVR_SESSIONS(Discovery, "discovery.txt");

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
