// The FC adapters of the host.
#ifndef TVR_AGENT_FC_ADAPTERS_H
#define TVR_AGENT_FC_ADAPTERS_H

#include "common/logger.h"
#include "model/data.h"

namespace cimple {

// Calls `visit` for each FC adapter, in the order of the adapter data, until it answers false.
// Others are told of in the log. Without data there are none.
template <class Visit> void for_each_FC_adapter(const Data* data, Visit visit) {
    if (data == nullptr) {
        return;
    }
    for (const std::unique_ptr<Adapter>& adapter : data->getAdapters()) {
        if (adapter->getAdapterType() != ADAPTER_FC) {
            TVR_LOG("Skippping Adapter [%s] since it is not an FC Adapter",
                    adapter->getAdapterName().c_str());
        } else if (!visit(static_cast<const FCAdapter&>(*adapter))) {
            return;
        }
    }
}

} // namespace cimple

#endif
