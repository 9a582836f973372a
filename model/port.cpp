#include "model/port.h"

#include "common/logger.h"
#include "model/adapter.h"
#include "model/hba_access.h"
#include "model/target_mapping.h"

namespace cimple {

Port::~Port() {
    TVR_LOG("~Port");
    freeTargets();
}

void Port::freeTargets() noexcept {
    for (std::unique_ptr<Target>& target : targets) {
        TVR_LOG("Freeing Target: %s", target->PortWWN.c_str());
        target.reset();
    }
    targets.clear();
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

void FCPort::rescanTargets(const Adapter& owner) {
    TVR_LOG("FCPort::rescanTargets");
    freeTargets();
    const OpenAdapter open(owner.getAdapterName());
    TargetMapping mapping;
    const HBA_STATUS status = fetchTargetMapping(open.handle(), mapping);
    if (mapping && mapping.toldRows() == 0) {
        TVR_LOG("HBA_GetFcpTargetMapping_t() found no target mappings");
        return;
    }
    if (status != HBA_STATUS_OK) {
        return;
    }
    const uint32 rows = mapping.size();
    targets.reserve(rows);
    for (uint32 row = 0; row < rows; ++row) {
        try {
            targets.push_back(std::make_unique<Target>(owner, mapping.row(row)));
        } catch (...) {
            TVR_LOG("target creation failed - moving to the next target");
        }
    }
}

} // namespace cimple
