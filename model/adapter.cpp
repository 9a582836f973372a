#include "model/adapter.h"

#include "common/logger.h"
#include "model/port.h"

#include <algorithm>

namespace cimple {

Adapter::Adapter() : adapterName(" "), adapterNumber(-1), adapterType(ADAPTER_NONE) {}

Adapter::Adapter(const std::string& name, sint32 number, sint32 type)
    : adapterName(name), adapterNumber(number), adapterType(type) {
    TVR_LOG("Adapter( adapterName[%s], adapterNumber[%d], adapterType[%d] )", name.c_str(), number,
            type);
}

Adapter::~Adapter() {
    TVR_LOG("~Adapter");
}

FCAdapterStatistics::FCAdapterStatistics(const Adapter& adapter) {
    // There are no counters of a whole adapter.
    static_cast<void>(adapter.getAdapterNumber());
}

FCAdapter::FCAdapter(const std::string& name, sint32 number) : Adapter(name, number, ADAPTER_FC) {
    auto facts = std::make_unique<FCAdapterAttributes>(*this);
    const uint32 portCount = std::min(facts->NumberOfPorts, maxPorts);
    if (portCount < facts->NumberOfPorts) {
        TVR_LOG("Number of ports is not plausible, looking at %d", portCount);
    }
    functionType = facts->functionType;
    attributes = std::move(facts);
    statistics = std::make_unique<FCAdapterStatistics>(*this);
    for (uint32 index = 0; index < portCount; ++index) {
        try {
            ports.push_back(std::make_unique<FCPort>(this, index));
        } catch (...) {
            TVR_LOG("Failed to fetch information for port: [%d] on adapter: [%s]", index,
                    name.c_str());
        }
    }
}

FCAdapter::~FCAdapter() {
    TVR_LOG("~FCAdapter");
    attributes.reset();
    statistics.reset();
    for (std::unique_ptr<Port>& port : ports) {
        TVR_LOG("Freeing Port: %s", port->getPortName().c_str());
        port.reset();
    }
}

void FCAdapter::rescanTargets() {
    TVR_LOG("FCAdapter::rescanTargets");
    for (const std::unique_ptr<Port>& port : ports) {
        try {
            port->rescanTargets(*this);
        } catch (...) {
            TVR_LOG("Issue with Target Rescan - moving to the next Port");
        }
    }
}

} // namespace cimple
