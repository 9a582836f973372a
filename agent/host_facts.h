// What the agent knows of the host that it runs on.
#ifndef TVR_AGENT_HOST_FACTS_H
#define TVR_AGENT_HOST_FACTS_H

#include "runtime/instance.h"
#include "schema/classes.h"

#include <string>

namespace cimple {

// Kept from one rebuild of the adapter maps to the next. Under m_ProviderDataMutex of the agent.
struct Host_Facts {
    // What the host says of itself; "Unknown" if it doesn't.
    std::string m_OSName;
    std::string m_OSVersion;
    // Set with the computer system that the agent makes itself.
    std::string m_HostName;
    std::string m_IPAddress; // as "192.0.2.7", or "unknown"

    Ref<CIM_RegisteredProfile> m_pBaseServerProfile; // of the host, if it has one
    bool m_bOwnComputerSystem = false;               // the host has none but the agent's own
};

} // namespace cimple

#endif
