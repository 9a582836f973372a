// The web portal, where the host's administrator has named one.
#include "agent/creation.h"
#include "agent/provider_agent.h"
#include "common/tvr_common.h"

namespace cimple {

uint32 ProviderAgent::createRemoteAccessPoint() {
    const std::string url = readWebPortalURL();
    if (url.empty() || !m_TVRHBA_RemoteServiceAccessPoint_map.empty()) {
        return 0;
    }
    const CIM_ComputerSystem& system = computerSystem();
    auto point = make<TVRHBA_RemoteServiceAccessPoint>();
    point->SystemCreationClassName.set(system.CreationClassName.value);
    point->SystemName.set(system.Name.value);
    point->CreationClassName.set("TVRHBA_RemoteServiceAccessPoint");
    point->Name.set("Fleetdesk");
    point->ElementName.set("TVR FC HBA:Fleetdesk Management Interface");
    point->Description.set("Fleetdesk WebPortal URL");
    point->AccessInfo.set(url);
    point->InfoFormat.set(uint16{200});
    const TVRHBA_RemoteServiceAccessPoint* created =
        insert(m_TVRHBA_RemoteServiceAccessPoint_map, std::move(point),
               "Insert Failed : m_TVRHBA_RemoteServiceAccessPoint_map");
    if (created == nullptr) {
        return TVR_FAILURE;
    }
    TVR_LOG("Remote Hosted Service Access Point");
    auto hosted = make<TVRHBA_RemoteHostedAccessPoint>(any_namespace);
    hosted->Antecedent = system.clone();
    hosted->Dependent = created->clone();
    return insert(m_TVRHBA_RemoteHostedAccessPoint_map, std::move(hosted),
                  "Insert Failed : m_TVRHBA_RemoteHostedAccessPoint_map") != nullptr
               ? 0
               : TVR_FAILURE;
}

} // namespace cimple
