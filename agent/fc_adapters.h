// The FC adapters of the host.
#ifndef TVR_AGENT_FC_ADAPTERS_H
#define TVR_AGENT_FC_ADAPTERS_H

#include "agent/provider_agent.h"

namespace cimple {

// Calls `visit` for each FC adapter, in the order of the adapter data. Others are told of in the
// log. False if `visit` has ended the walk by answering false.
template <class Visit> bool for_each_FC_adapter(const ProviderAgent& agent, Visit visit) {
    if (!agent.m_pData) {
        return true;
    }
    for (const std::unique_ptr<Adapter>& adapter : agent.m_pData->getAdapters()) {
        if (adapter->getAdapterType() != ADAPTER_FC) {
            TVR_LOG("Skippping Adapter [%s] since it is not an FC Adapter",
                    adapter->getAdapterName().c_str());
        } else if (!visit(static_cast<const FCAdapter&>(*adapter))) {
            return false;
        }
    }
    return true;
}

} // namespace cimple

#endif
