#include "model/data.h"

#include "access/entry_points.h"
#include "common/logger.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace cimple {

namespace {

// Converged adapters are not the business of this provider. Some tell so by their name, others only
// by the type of the function.
bool hasConvergedName(std::string_view name) noexcept {
    return name.starts_with("Tavrin-O") || name.starts_with("Tavrin-N");
}

bool isConvergedFunction(uint32 functionType) noexcept {
    return functionType >= 1 && functionType <= 3;
}

void logConverged(const std::string& name) {
    TVR_LOG("Found XCNA Card, AdapterName = %s. skipping this card", name.c_str());
}

} // namespace

Data::Data() {
    TVR_LOG("Data Pointer Constructed.");
}

Data::~Data() {
    freeAllData();
    TVR_LOG("Data Pointer deleted.");
}

void Data::freeAllData() {
    TVR_LOG("freeAllData: Entry");
    m_ports.clear();
    for (std::unique_ptr<Adapter>& adapter : m_adapters) {
        TVR_LOG("Freeing adapter: %s", adapter->getAdapterName().c_str());
        adapter.reset();
    }
    if (!m_adapters.empty()) {
        m_adapters.clear();
        m_adapterCount = 0;
    }
    m_built = false;
    TVR_LOG("freeAllData: cleanExit");
}

void Data::buildAdapterData() {
    TVR_LOG("buildAdapterData");
    freeAllData();
    TVR_LOG("buildAdapterData - with hbaapi");
    const uint32 reported = rm::HBA_GetNumberOfAdapters();
    TVR_LOG("Number of Adapters detected = %d", reported);
    m_adapterCount = std::min(reported, maxAdapters);
    if (reported == 0) {
        TVR_LOG("HBAAPI reports that there are NO HBAs in the system.");
        return;
    }
    if (reported > maxAdapters) {
        TVR_LOG("Number of Adapters is not plausible, looking at %d", maxAdapters);
    }
    const uint32 count = m_adapterCount;
    for (uint32 index = 0; index < count; ++index) {
        bool kept = false;
        try {
            kept = addAdapter(index);
        } catch (...) {
            TVR_LOG("Catch ALL error during creating adapter..., Skipping Adapter# %d", index);
        }
        m_adapterCount -= !kept;
    }
}

void Data::buildSANData() {
    TVR_LOG("buildSANData");
    for (const std::unique_ptr<Adapter>& adapter : m_adapters) {
        TVR_LOG("Target Scan from adapter: %s", adapter->getAdapterName().c_str());
        try {
            adapter->rescanTargets();
        } catch (...) {
            TVR_LOG("Issue with Target Rescan with Adapter- moving to the next adapter");
        }
    }
}

// False for an adapter that is left out; throws for one that can't be read.
bool Data::addAdapter(uint32 index) {
    // Room for more than the 256 bytes that a name has, and for its end.
    char buffer[512] = {};
    const HBA_STATUS status = rm::HBA_GetAdapterName(index, buffer);
    if (status != HBA_STATUS_OK) {
        TVR_LOG("Error hbaStatus=%d, Skipping Adapter# %d", status, index);
        return false;
    }
    const std::string name(buffer, strnlen(buffer, sizeof buffer));
    if (hasConvergedName(name)) {
        logConverged(name);
        return false;
    }
    TVR_LOG("FC AdapterName : [%s]", name.c_str());
    auto adapter = std::make_unique<FCAdapter>(name, static_cast<sint32>(index));
    TVR_LOG("Adapter Function type : %d", adapter->getFunctionType());
    if (isConvergedFunction(adapter->getFunctionType())) {
        logConverged(name);
        return false;
    }
    m_ports.reserve(m_ports.size() + adapter->getPortCount());
    m_adapters.push_back(std::move(adapter));
    for (const std::unique_ptr<Port>& port : m_adapters.back()->getPorts()) {
        m_ports.push_back(port.get());
    }
    m_built = true;
    return true;
}

} // namespace cimple
