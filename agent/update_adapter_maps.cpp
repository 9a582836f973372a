// One rebuild of the adapter maps, from the host down to the ports.
#include "agent/creation.h"
#include "agent/driver_parameters.h"
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
        updateFromAdapters();
    } catch (const Rebuild_Ended&) {
        return TVR_FAILURE;
    } catch (...) {
        TVR_LOG("No FC card found");
    }
    TVR_LOG("PERF: updateAdapterMaps: cleanExit");
    return 0;
}

// What a host has only with an FC adapter. Throws if it has none.
void ProviderAgent::updateFromAdapters() {
    if (!m_pData) {
        TVR_LOG("Could not locate the data pointer - Serious issue");
        throw Rebuild_Ended();
    }
    if (!m_pData->isBuilt()) {
        TVR_LOG("FC Adapter Not present !!!!, throw error !!!");
        throw std::runtime_error("no FC adapter");
    }
    const TVRHBA_SoftwareIdentity& provider = createProviderIdentity();
    createSettings();
    createServices();
    createRecordLog(provider);
    createRemoteAccessPoint();
    createDriverIdentities();
    createAdapterInstances();
    fetchDriverParams(*this);
    TVR_LOG("Done with the Driver Parameter fetching");
}

} // namespace cimple
