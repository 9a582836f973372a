// The instances of adapters and their ports.
#include "agent/creation.h"
#include "agent/port_tables.h"
#include "agent/provider_agent.h"
#include "common/tvr_common.h"

namespace cimple {

namespace {

constexpr uint16 usage_front_end_only = 4;
constexpr uint16 link_technology_fc = 4;

Ref<TVRHBA_FCPort> make_port(const CIM_ComputerSystem& system, const FCAdapterAttributes& adapter,
                             const FCPort& fc_port) {
    const FCPortAttributes& attributes = *fc_port.getFCAttributes();
    const String wwpn = fc_port.getPortName();
    auto port = make<TVRHBA_FCPort>();
    port->SystemCreationClassName.set(system.CreationClassName.value);
    port->SystemName.set(system.Name.value);
    port->CreationClassName.set("TVRHBA_FCPort");
    port->DeviceID.set(wwpn);
    port->Name.set(wwpn);
    port->PermanentAddress.set(wwpn);
    port->NetworkAddresses.set(Array<String>{wwpn});
    port->Description.set(adapter.ModelDescription);
    port->ElementName.set(adapter.NodeSymbolicName);
    port->PortNumber.set(static_cast<uint16>(adapter.portNumber));
    port->UsageRestriction.set(usage_front_end_only);
    port->FCID.set(attributes.PortFcId);
    port->NumberOfDiscoveredPorts.set(attributes.NumberofDiscoveredPorts);
    port->OperationalFirmware.set(adapter.operationalFirmware + ":v" + adapter.FirmwareVersion);
    port->FabricName.set(attributes.FabricName);
    port->OtherIdentifyingInfo.set(Array<String>{attributes.OSDeviceName, adapter.ieeeAddress});
    port->IdentifyingDescriptions.set(Array<String>{"OS Device Name", "TAVRIN:IEEE_ADDRESS"});

    const Port_Type type = port_type(attributes.PortType);
    port->PortType.set(type.type);
    if (type.text != nullptr) {
        port->OtherPortType.set(type.text);
        port->OtherNetworkPortType.set(type.text);
    }
    TVR_LOG("***************Port Status: %d******************",
            static_cast<int>(attributes.PortState));
    const Port_Status status = port_status(attributes.PortState);
    port->OperationalStatus.set(Array<uint16>{status.operational_status});
    port->StatusDescriptions.set(Array<String>{status.description});

    // The adapter doesn't tell active classes from supported ones.
    const Array<uint16> classes = classes_of_service(attributes.PortSupportedClassofService);
    port->SupportedCOS.set(classes);
    port->ActiveCOS.set(classes);
    port->SupportedFC4Types.set(fc4_types(attributes.PortSupportedFc4Types));
    port->ActiveFC4Types.set(fc4_types(attributes.PortActiveFc4Types));
    port->Speed.set(port_speed(attributes.PortSpeed));
    port->MaxSpeed.set(highest_speed(attributes.PortSupportedSpeed));
    port->LinkTechnology.set(link_technology_fc);
    port->SupportedMaximumTransmissionUnit.set(uint64{attributes.PortMaxFrameSize});
    port->ActiveMaximumTransmissionUnit.set(uint64{attributes.PortMaxFrameSize});
    return port;
}

} // namespace

uint32 ProviderAgent::createAdapterInstances() {
    for (const std::unique_ptr<Adapter>& adapter : m_pData->getAdapters()) {
        if (adapter->getAdapterType() != ADAPTER_FC) {
            TVR_LOG("Skippping Adapter [%s] since it is not an FC Adapter",
                    adapter->getAdapterName().c_str());
            continue;
        }
        const auto& fc_adapter = static_cast<const FCAdapter&>(*adapter);
        for (const std::unique_ptr<Port>& port : fc_adapter.getPorts()) {
            if (createPortInstances(*fc_adapter.getFCAttributes(),
                                    static_cast<const FCPort&>(*port)) != 0) {
                return TVR_FAILURE;
            }
        }
    }
    return 0;
}

uint32 ProviderAgent::createPortInstances(const FCAdapterAttributes& adapter,
                                          const FCPort& fc_port) {
    const TVRHBA_FCPort* port =
        insert(m_TVRHBA_FCPort_map, make_port(computerSystem(), adapter, fc_port),
               "Insert Failed : m_TVRHBA_FCPort_map");
    return port != nullptr ? 0 : TVR_FAILURE;
}

} // namespace cimple
