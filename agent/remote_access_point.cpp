// The web portal, where the host's administrator has named one.
#include "agent/remote_access_point.h"

#include "agent/creation.h"
#include "common/tvr_common.h"

namespace cimple {

void create_remote_access_point(Instance_Maps& maps) {
    const std::string url = readWebPortalURL();
    if (url.empty() || !maps.m_TVRHBA_RemoteServiceAccessPoint_map.empty()) {
        return;
    }
    const CIM_ComputerSystem& system = maps.computer_system();
    auto point = make<TVRHBA_RemoteServiceAccessPoint>();
    point->SystemCreationClassName.set(system.CreationClassName.value);
    point->SystemName.set(system.Name.value);
    point->CreationClassName.set("TVRHBA_RemoteServiceAccessPoint");
    point->Name.set("Fleetdesk");
    point->ElementName.set("TVR FC HBA:Fleetdesk Management Interface");
    point->Description.set("Fleetdesk WebPortal URL");
    point->AccessInfo.set(url);
    point->InfoFormat.set(uint16{200});
    const TVRHBA_RemoteServiceAccessPoint& created = add_or_end(maps, std::move(point));
    TVR_LOG("Remote Hosted Service Access Point");
    auto hosted = make<TVRHBA_RemoteHostedAccessPoint>(any_namespace);
    hosted->Antecedent = system.clone();
    hosted->Dependent = created.clone();
    add_or_end(maps, std::move(hosted));
}

} // namespace cimple
