// The logical side of a port: the port itself, statistics, controllers, endpoint, and what joins
// them with one another, with the adapter and with the host's services.
#include "access/diag_test_func.h"
#include "agent/adapter_instances.h"
#include "agent/port_inventory.h"
#include "agent/port_tables.h"
#include "agent/profiles.h"
#include "agent/service_links.h"

namespace cimple {

namespace {

constexpr uint16 usage_not_restricted = 4;
constexpr uint16 link_technology_fc = 4;
constexpr uint16 kind_driver = 9; // of software

// Profiles that an instance conforms to.
constexpr const char* port_profiles[] = {"Physical Package", "Host Discovered Resources",
                                         "FC Initiator Ports", "Access Points"};
constexpr const char* controller_profiles[] = {"Storage HBA", "FC HBA"};

// One identification of a port: what it is, and its text.
void identify(TVRHBA_FCPort& port, const String& info, const char* description) {
    port.OtherIdentifyingInfo.value.append(info);
    port.OtherIdentifyingInfo.null = 0;
    port.IdentifyingDescriptions.value.append(description);
    port.IdentifyingDescriptions.null = 0;
}

// The keys of a logical device or endpoint, and the texts that all of a port's have.
template <class C>
Ref<C> make_of_port(const CIM_ComputerSystem& system, const FCAdapterAttributes& adapter,
                    const char* class_name) {
    auto instance = make<C>();
    instance->SystemCreationClassName.set(system.CreationClassName.value);
    instance->SystemName.set(system.Name.value);
    instance->CreationClassName.set(class_name);
    instance->Description.set(adapter.ModelDescription);
    instance->ElementName.set(adapter.NodeSymbolicName);
    return instance;
}

template <class C> void set_status(C& instance, const Port_Status& status) {
    instance.OperationalStatus.set(Array<uint16>{status.operational_status});
    instance.StatusDescriptions.set(Array<String>{status.description});
}

Ref<TVRHBA_FCPort> make_port(const CIM_ComputerSystem& system, const FCAdapterAttributes& adapter,
                             const FCPort& fc_port) {
    const FCPortAttributes& attributes = *fc_port.getFCAttributes();
    const String wwpn = fc_port.getPortName();
    auto port = make_of_port<TVRHBA_FCPort>(system, adapter, "TVRHBA_FCPort");
    port->DeviceID.set(wwpn);
    port->Name.set(wwpn);
    port->PermanentAddress.set(wwpn);
    port->NetworkAddresses.set(Array<String>{wwpn});
    port->PortNumber.set(static_cast<uint16>(adapter.portNumber));
    uint16 beacon = 0;
    if (TVR_DiagTestFunc::GetBeaconState(&beacon, fc_port.getPortName()) == 0) {
        port->LocationIndicator.set(beacon);
    }
    port->UsageRestriction.set(usage_not_restricted);
    port->FCID.set(attributes.PortFcId);
    port->NumberOfDiscoveredPorts.set(attributes.NumberofDiscoveredPorts);
    port->OperationalFirmware.set(adapter.operationalFirmware + ":v" + adapter.FirmwareVersion);
    port->FabricName.set(attributes.FabricName);
    FillPortVPD(*port, fc_port.getPortName());
    identify(*port, attributes.OSDeviceName, "OS Device Name");
    identify(*port, adapter.ieeeAddress, "TAVRIN:IEEE_ADDRESS");

    const Port_Type type = port_type(attributes.PortType);
    port->PortType.set(type.type);
    if (type.text != nullptr) {
        port->OtherPortType.set(type.text);
        port->OtherNetworkPortType.set(type.text);
    }
    TVR_LOG("***************Port Status: %d******************",
            static_cast<int>(attributes.PortState));
    set_status(*port, port_status(attributes.PortState));

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

// Without counters, which are read when they are asked for.
Ref<TVRHBA_FCPortStatistics> make_statistics(const std::string& wwpn) {
    auto statistics = make<TVRHBA_FCPortStatistics>();
    set_null_flags(statistics.get(), false, true, 1);
    statistics->InstanceID.set("TVR FC HBA:HBA Statistics:" + wwpn);
    statistics->ElementName.set(wwpn);
    statistics->Description.set("Statistics for the FC port.");
    return statistics;
}

Ref<TVRHBA_SCSIProtocolController> make_protocol_controller(const CIM_ComputerSystem& system,
                                                            const Adapter_Ends& adapter,
                                                            const FCPort& fc_port) {
    auto controller = make_of_port<TVRHBA_SCSIProtocolController>(system, adapter.attributes,
                                                                  "TVRHBA_SCSIProtocolController");
    controller->DeviceID.set(fc_port.getPortName());
    controller->Name.set(fc_port.getPortName());
    controller->NameFormat.set(uint16{2});
    controller->MaxUnitsControlled.set(adapter.port_count);
    set_status(*controller, controller_status(fc_port.getFCAttributes()->PortState));
    return controller;
}

Ref<TVRHBA_PortController> make_port_controller(const CIM_ComputerSystem& system,
                                                const Adapter_Ends& adapter,
                                                const FCPort& fc_port) {
    auto controller =
        make_of_port<TVRHBA_PortController>(system, adapter.attributes, "TVRHBA_PortController");
    controller->DeviceID.set(fc_port.getPortName());
    controller->Name.set(adapter.attributes.NodeSymbolicName);
    controller->ControllerType.set(uint16{4});
    controller->ProtocolSupported.set(uint16{10});
    controller->ProtocolDescription.set("SCSI Fibre Channel Protocol");
    controller->MaxNumberControlled.set(adapter.port_count);
    controller->Availability.set(uint16{3});
    controller->EnabledState.set(uint16{5});
    controller->RequestedState.set(uint16{5});
    controller->EnabledDefault.set(uint16{2});
    set_status(*controller, controller_status(fc_port.getFCAttributes()->PortState));
    return controller;
}

Ref<TVRHBA_SCSIProtocolInitiatorEndpoint> make_endpoint(const CIM_ComputerSystem& system,
                                                        const FCAdapterAttributes& adapter,
                                                        const std::string& wwpn) {
    auto endpoint = make_of_port<TVRHBA_SCSIProtocolInitiatorEndpoint>(
        system, adapter, "TVRHBA_SCSIProtocolInitiatorEndpoint");
    endpoint->Name.set(wwpn);
    endpoint->ProtocolType.set(uint16{18});
    endpoint->ProtocolIFType.set(uint16{56});
    endpoint->ConnectionType.set(uint16{2});
    endpoint->Role.set(uint16{2});
    endpoint->EnabledDefault.set(uint16{5});
    endpoint->EnabledState.set(uint16{0});
    endpoint->RequestedState.set(uint16{0});
    endpoint->OperationalStatus.set(Array<uint16>{0});
    return endpoint;
}

// Whether the controller reaches its port: 1 for a port that is online, 0 where that is unknown.
uint16 access_state(uint32 port_state) {
    switch (port_state) {
    case 1:
        return 0;
    case 2:
        return 1;
    default:
        return 2;
    }
}

template <class C, class Element, std::size_t count>
void conform(Instance_Maps& maps, const char* const (&profiles)[count],
             const End<Element>& element) {
    for (const char* name : profiles) {
        if (const TVRHBA_RegisteredProfile* profile = find_registered_profile(maps, name)) {
            auto conformance = make<C>(any_namespace);
            conformance->ConformantStandard = profile->clone();
            conformance->ManagedElement = element;
            add(maps, std::move(conformance));
        }
    }
}

// Associations by the names of their ends. The rebuild can't go on without them.
template <class C, class Group, class Part>
void add_component(Instance_Maps& maps, const End<Group>& group, const End<Part>& part,
                   const char* name_space = implementation_namespace) {
    auto component = make<C>(name_space);
    component->GroupComponent = group;
    component->PartComponent = part;
    add_or_end(maps, std::move(component));
}

template <class C, class Antecedent, class Dependent>
void add_dependency(Instance_Maps& maps, const End<Antecedent>& antecedent,
                    const End<Dependent>& dependent,
                    const char* name_space = implementation_namespace) {
    auto dependency = make<C>(name_space);
    dependency->Antecedent = antecedent;
    dependency->Dependent = dependent;
    add_or_end(maps, std::move(dependency));
}

// A service that the host has affects the port.
template <class C, class Service>
void add_effect(Instance_Maps& maps, const std::optional<End<Service>>& service,
                const End<TVRHBA_FCPort>& port, const char* name_space = implementation_namespace,
                Lines lines = Lines::plain) {
    if (!service) {
        return;
    }
    if (auto effect = try_association<C>(name_space, lines)) {
        effect->AffectedElement = port;
        effect->AffectingElement = *service;
        add_association(maps, std::move(effect), lines);
    }
}

} // namespace

void create_port_instances(Instance_Maps& maps, const Host_Ends& host, const Adapter_Ends& adapter,
                           const FCPort& fc_port) {
    const CIM_ComputerSystem& system = host.computer_system;
    const FCAdapterAttributes& attributes = adapter.attributes;
    const std::string& wwpn = fc_port.getPortName();

    const End port(add_or_end(maps, make_port(system, attributes, fc_port)));
    conform<TVRHBA_FCPortConformsToProfile>(maps, port_profiles, port);
    add_component<TVRHBA_FCPortSystemDevice>(maps, host.system, port, any_namespace);
    auto member = make<TVRHBA_MemberOfCollection>();
    member->Collection = adapter.port_group;
    member->Member = port;
    add_or_end(maps, std::move(member));

    auto statistical_data = make<TVRHBA_ElementStatisticalData>();
    statistical_data->ManagedElement = port;
    statistical_data->Stats = add_or_end(maps, make_statistics(wwpn)).clone();
    add_or_end(maps, std::move(statistical_data));

    const End protocol_controller(
        add_or_end(maps, make_protocol_controller(system, adapter, fc_port)));
    add_dependency<TVRHBA_ProtocolControllerForPort>(maps, protocol_controller, port);
    add_component<TVRHBA_SCSIProtocolControllerSystemDevice>(maps, host.system, protocol_controller,
                                                             any_namespace);

    const TVRHBA_PortController& port_controller =
        add_or_end(maps, make_port_controller(system, adapter, fc_port));
    const End controller(port_controller);
    add_component<TVRHBA_ProductElementComponent>(maps, adapter.product, controller);
    add_component<TVRHBA_ProductPhysicalComponent>(maps, adapter.product, adapter.package);
    conform<TVRHBA_PortControllerConformsToProfile>(maps, controller_profiles, controller);
    CreateFlashContents(maps, wwpn, attributes, port_controller);
    auto controlled = make<TVRHBA_ControlledBy>();
    controlled->Antecedent = controller;
    controlled->Dependent = port;
    controlled->AccessState.set(access_state(fc_port.getFCAttributes()->PortState));
    add_or_end(maps, std::move(controlled));
    add_dependency<TVRHBA_Realizes>(maps, adapter.package, controller);
    add_component<TVRHBA_PortControllerSystemDevice>(maps, host.system, controller, any_namespace);

    const End endpoint(add_or_end(maps, make_endpoint(system, attributes, wwpn)));
    add_dependency<TVRHBA_DeviceSAPImplementation>(maps, port, endpoint);
    add_dependency<TVRHBA_LocalHostedInitiatorAccessPoint>(maps, host.system, endpoint,
                                                           any_namespace);

    create_firmware_identities(maps, adapter, fc_port, controller);
    if (host.driver) {
        add_or_end(maps, make_element_software_identity(*host.driver, controller, kind_driver));
    }
    if (host.access_point) {
        auto available = make<TVRHBA_SAPAvailableForElement>();
        available->AvailableSAP = *host.access_point;
        available->ManagedElement = port;
        add_or_end(maps, std::move(available));
    }
    add_effect<TVRHBA_InstallServiceAffectsFCPort>(maps, host.installation_service, port);
    add_effect<TVRHBA_BootBIOSServiceAffectsFCPort>(maps, host.boot_bios_service, port);
    add_effect<TVRHBA_FCHBAWWNServiceAffectsFCPort>(maps, host.wwn_service, port, any_namespace);
    add_effect<TVRHBA_FCHBADriverParamServiceAffectsFCPort>(
        maps, host.driver_param_service, port, implementation_namespace, Lines::with_class);
    TVR_LOG("Ending of Software Installation Service");
}

} // namespace cimple
