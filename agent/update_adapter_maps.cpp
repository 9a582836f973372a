// One rebuild of the adapter maps, from the host down to the ports.
#include "agent/provider_agent.h"
#include "common/tvr_common.h"

#include <stdexcept>

namespace cimple {

uint32 ProviderAgent::updateAdapterMaps() {
    TVR_LOG("PERF: updateAdapterMaps: Entry");
    clearAdapterMaps();
    if (m_pBaseServerProfile) {
        TVR_LOG("Destroying the Base Server Profile instance");
        m_pBaseServerProfile.reset();
    }
    if (createComputerSystem() != 0) {
        return TVR_FAILURE;
    }
    createProfiles();
    try {
        if (updateFromAdapters() != 0) {
            return TVR_FAILURE;
        }
    } catch (...) {
        TVR_LOG("No FC card found");
    }
    TVR_LOG("PERF: updateAdapterMaps: cleanExit");
    return 0;
}

// What a host has only with an FC adapter. Throws if it has none.
uint32 ProviderAgent::updateFromAdapters() {
    if (!m_pData) {
        TVR_LOG("Could not locate the data pointer - Serious issue");
        return TVR_FAILURE;
    }
    if (!m_pData->isBuilt()) {
        TVR_LOG("FC Adapter Not present !!!!, throw error !!!");
        throw std::runtime_error("no FC adapter");
    }
    TVRHBA_SoftwareIdentity* provider = createProviderIdentity();
    if (provider == nullptr || createSettings() != 0 || createRecordLog(*provider) != 0 ||
        createRemoteAccessPoint() != 0 || createDriverIdentities() != 0) {
        return TVR_FAILURE;
    }
    return createAdapterInstances();
}

} // namespace cimple
