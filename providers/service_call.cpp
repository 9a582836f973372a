#include "providers/service_call.h"

#include "agent/port_lookup.h"
#include "common/logger.h"

namespace cimple {

bool is_known(const Instance_Map& map, const Instance* instance) {
    return map.empty() || map.find(instance) >= 0;
}

bool is_first(const Instance_Map& map, const Instance* instance) {
    return map.empty() || key_eq(map.get(0), instance);
}

const TVRHBA_FCPort* find_target(const Instance_Maps& maps, const Instance* target) {
    if (!is_a<TVRHBA_FCPort>(target)) {
        return nullptr;
    }
    const auto* port = static_cast<const TVRHBA_FCPort*>(target);
    return IsValidFCPort(maps, port->DeviceID.value) ? port : nullptr;
}

void request_rebuild(ProviderAgent& agent) {
    agent.m_bIsAdapterDataReady = false;
    agent.m_bIsAdapterMapsReady = false;
    agent.m_bForceAdapterRefresh = true;
    agent.BuildCimpleInfo();
}

} // namespace cimple
