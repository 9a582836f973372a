// Hosts of the fake libraries, and the tree over them.
#pragma once

#include "model/data.h"
#include "tests/access/fake_fixture.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace cimple {

// An integer, or a counter, as it stands in an attribute buffer.
template <class Number> fake::Attribute valueOf(Number number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return {bytes};
}

inline fake::Attribute textOf(const std::string& text) {
    return {text};
}

inline HBA_WWN nameOf(HBA_UINT8 kind, uint32 adapter, uint32 port) {
    return {{kind, 0, 0x02, 0x54, 0x56, 0xAB, static_cast<HBA_UINT8>(adapter),
             static_cast<HBA_UINT8>(port)}};
}

template <std::size_t size> void put(char (&field)[size], const std::string& text) {
    std::memset(field, 0, size);
    std::memcpy(field, text.data(), std::min(size, text.size()));
}

// One port that has no more than what discovery needs.
inline fake::Port makePort(uint32 adapter, uint32 index) {
    fake::Port port;
    port.record.NodeWWN = nameOf(0x20, adapter, 0);
    port.record.PortWWN = nameOf(0x10, adapter, index);
    port.attributes = {{RM_PA_PHYSICAL_STATE, valueOf<uint32>(2)}};
    return port;
}

inline fake::Adapter makeAdapter(uint32 number, uint32 ports) {
    fake::Adapter adapter;
    adapter.name = "Tavrin-F16-" + std::to_string(number);
    adapter.record.NumberOfPorts = ports;
    adapter.record.NodeWWN = nameOf(0x20, number, 0);
    for (uint32 index = 0; index < ports; ++index) {
        adapter.ports.push_back(makePort(number, index));
    }
    adapter.driverType = 3;
    return adapter;
}

class FakeHost : public WithFakeLibraries {
protected:
    void SetUp() override {
        WithFakeLibraries::SetUp();
        data.emplace();
        log.take();
    }
    void TearDown() override {
        EXPECT_EQ(libraries->openHandles, 0) << "an adapter was left open";
        data.reset();
    }

    fake::Adapter& add(uint32 ports = 1) {
        const auto number = static_cast<uint32>(libraries->adapters.size());
        libraries->adapters.push_back(makeAdapter(number, ports));
        return libraries->adapters.back();
    }
    std::vector<std::string> build() {
        log.take();
        data->buildAdapterData();
        return log.take();
    }
    const FCAdapterAttributes& adapterFacts(std::size_t index) const {
        return *static_cast<const FCAdapter&>(*data->getAdapters().at(index)).getFCAttributes();
    }
    const FCPortAttributes& portFacts(std::size_t index) const {
        return *static_cast<const FCPort&>(*data->getPorts().at(index)).getFCAttributes();
    }

    std::optional<Data> data;
};

} // namespace cimple
