#include "model/port.h"

#include "common/logger.h"

namespace cimple {

Port::~Port() {
    TVR_LOG("~Port");
    for (std::unique_ptr<Target>& target : targets) {
        TVR_LOG("Freeing Target: %s", target->PortWWN.c_str());
        target.reset();
    }
}

FCPort::FCPort(Adapter* owner, uint32 index) : Port(owner) {
    auto facts = std::make_unique<FCPortAttributes>(*owner, index);
    portName = facts->PortWWN;
    nodeName = facts->NodeWWN;
    portIndex = index;
    attributes = std::move(facts);
}

FCPort::~FCPort() {
    TVR_LOG("~FCPort");
    attributes.reset();
    statistics.reset();
}

PortStatistics* FCPort::getStatistics() {
    try {
        statistics = std::make_unique<FCPortStatistics>(portName);
    } catch (...) {
        TVR_LOG("FC Port statistics error occurred,retain the old statistics !!!");
        throw;
    }
    return statistics.get();
}

} // namespace cimple
