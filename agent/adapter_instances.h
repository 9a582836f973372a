// The instances of adapters and of their ports, and what those of a port are joined to.
#ifndef TVR_AGENT_ADAPTER_INSTANCES_H
#define TVR_AGENT_ADAPTER_INSTANCES_H

#include "agent/creation.h"
#include "model/data.h"

namespace cimple {

// Makes the instances of all FC adapters with their ports. Throws Rebuild_Ended.
void create_adapter_instances(Instance_Maps& maps, const Data& data);

// Of the host, the same for all ports. What the host doesn't have is missing here.
struct Host_Ends {
    explicit Host_Ends(const Instance_Maps& maps);

    const CIM_ComputerSystem& computer_system;
    End<CIM_ComputerSystem> system;
    std::optional<End<TVRHBA_SoftwareIdentity>> driver;
    std::optional<End<TVRHBA_RemoteServiceAccessPoint>> access_point;
    std::optional<End<TVRHBA_SoftwareInstallationService>> installation_service;
    std::optional<End<TVRHBA_BootBIOSService>> boot_bios_service;
    std::optional<End<TVRHBA_FCHBAWWNService>> wwn_service;
    std::optional<End<TVRHBA_FCHBADriverParamService>> driver_param_service;
};

// Of the port's adapter.
struct Adapter_Ends {
    uint32 index; // among all adapters of the host
    uint32 port_count;
    const FCAdapterAttributes& attributes;
    End<TVRHBA_PhysicalPackage> package;
    End<TVRHBA_Product> product;
    End<TVRHBA_LogicalPortGroup> port_group;
};

// The PCI function of a port with its vital product data and its transceiver. False if there is no
// memory for the function: the port then gets no further instances.
bool create_PCI_instances(Instance_Maps& maps, const Host_Ends& host, const Adapter_Ends& adapter,
                          const FCPort& fc_port);

// The port, its statistics, controllers, endpoint and firmware, and all that joins them.
void create_port_instances(Instance_Maps& maps, const Host_Ends& host, const Adapter_Ends& adapter,
                           const FCPort& fc_port);

// The software that runs on the port: firmware, its kernel, boot code and stub.
void create_firmware_identities(Instance_Maps& maps, const Adapter_Ends& adapter,
                                const FCPort& fc_port,
                                const End<TVRHBA_PortController>& controller);

// Joins software with the controller that it serves; `kind_of_software` ends the list of its
// statuses, behind current and next.
Ref<TVRHBA_ElementSoftwareIdentity>
make_element_software_identity(const End<TVRHBA_SoftwareIdentity>& identity,
                               const End<TVRHBA_PortController>& controller,
                               uint16 kind_of_software);

} // namespace cimple

#endif
