// The instances of adapters: package, product and port group, and what stands for their ports.
#include "agent/adapter_instances.h"

#include "agent/software_instances.h"

#include <algorithm>

namespace cimple {

namespace {

constexpr uint16 package_type_module = 9;

std::optional<End<TVRHBA_SoftwareIdentity>>
driver_end(const Class_Map<TVRHBA_SoftwareIdentity>& identities) {
    const TVRHBA_SoftwareIdentity* driver = find_driver_identity(identities);
    if (driver == nullptr) {
        return std::nullopt;
    }
    return End<TVRHBA_SoftwareIdentity>(*driver);
}

Ref<TVRHBA_PhysicalPackage> make_package(const FCAdapterAttributes& attributes) {
    auto package = make<TVRHBA_PhysicalPackage>();
    package->Tag.set(attributes.NodeWWN);
    package->CreationClassName.set("TVRHBA_PhysicalPackage");
    package->Name.set(attributes.Model);
    package->Manufacturer.set(attributes.Manufacturer);
    package->Model.set(attributes.Model);
    package->PartNumber.set(attributes.Model);
    package->SerialNumber.set(attributes.SerialNumber);
    package->Version.set(attributes.HardwareVersion);
    package->Description.set(attributes.ModelDescription);
    package->ElementName.set(attributes.NodeSymbolicName);
    package->PackageType.set(package_type_module);
    package->SLIMode.set(attributes.sliMode);
    if (attributes.boardTemperature > 0) {
        package->BoardTemperature.set(attributes.boardTemperature);
        package->ThresholdCriticalTemp.set(attributes.thresholdCriticalTemp);
        package->ThresholdWarningTemp.set(attributes.thresholdWarningTemp);
    }
    package->TemperatureUnit.set("Celsius");
    package->VendorSpecID.set(attributes.VendorSpecificID);
    package->DeviceID.set(attributes.deviceID);
    package->ModelID.set(attributes.modelID);
    return package;
}

Ref<TVRHBA_Product> make_product(const FCAdapterAttributes& attributes) {
    auto product = make<TVRHBA_Product>();
    product->Name.set(attributes.Model);
    product->IdentifyingNumber.set(attributes.NodeWWN);
    product->Vendor.set(attributes.Manufacturer);
    product->Version.set(attributes.HardwareVersion);
    product->Description.set(attributes.ModelDescription);
    product->ElementName.set(attributes.NodeSymbolicName);
    return product;
}

Ref<TVRHBA_LogicalPortGroup> make_port_group(const FCAdapterAttributes& attributes) {
    auto group = make<TVRHBA_LogicalPortGroup>();
    group->InstanceID.set("TVR FC HBA:" + attributes.NodeWWN);
    group->Name.set(attributes.NodeWWN);
    group->NameFormat.set("WWN");
    group->ElementName.set(attributes.Model + ":" + attributes.NodeWWN);
    group->Description.set("The Fibre Channel ports of the HBA.");
    return group;
}

// Makes the adapter's own instances, in their order.
Adapter_Ends create_adapter(Instance_Maps& maps, const Host_Ends& host, const FCAdapter& adapter,
                            uint32 index) {
    const FCAdapterAttributes& attributes = *adapter.getFCAttributes();
    const End package(add_or_end(maps, make_package(attributes)));
    auto packaging = make<TVRHBA_SystemPackaging>(any_namespace);
    packaging->Antecedent = package;
    packaging->Dependent = host.system;
    add_or_end(maps, std::move(packaging));
    const End product(add_or_end(maps, make_product(attributes)));
    const End group(add_or_end(maps, make_port_group(attributes)));
    auto hosted = make<TVRHBA_HostedCollection>(any_namespace);
    hosted->Antecedent = host.system;
    hosted->Dependent = group;
    add_or_end(maps, std::move(hosted));
    return {index, static_cast<uint32>(adapter.getPortCount()), attributes, package, product,
            group};
}

} // namespace

Host_Ends::Host_Ends(const Instance_Maps& maps)
    : computer_system(maps.computer_system()), system(maps.computer_system()),
      driver(driver_end(maps.m_TVRHBA_SoftwareIdentity_map)),
      access_point(first_end(maps.m_TVRHBA_RemoteServiceAccessPoint_map)),
      installation_service(first_end(maps.m_TVRHBA_SoftwareInstallationService_map)),
      boot_bios_service(first_end(maps.m_TVRHBA_BootBIOSService_map)),
      wwn_service(first_end(maps.m_TVRHBA_FCHBAWWNService_map)),
      driver_param_service(first_end(maps.m_TVRHBA_FCHBADriverParamService_map)) {}

void create_adapter_instances(Instance_Maps& maps, const Data& data) {
    const Host_Ends host(maps);
    uint32 index = 0;
    for (const std::unique_ptr<Adapter>& adapter : data.getAdapters()) {
        const uint32 adapter_index = index++;
        if (adapter->getAdapterType() != ADAPTER_FC) {
            TVR_LOG("Skippping Adapter [%s] since it is not an FC Adapter",
                    adapter->getAdapterName().c_str());
            continue;
        }
        const auto& fc_adapter = dynamic_cast<const FCAdapter&>(*adapter);
        const Adapter_Ends ends = create_adapter(maps, host, fc_adapter, adapter_index);
        int port_index = 0;
        for (const std::unique_ptr<Port>& port : fc_adapter.getPorts()) {
            TVR_LOG("Creating classes for port %d.", port_index++);
            const auto& fc_port = dynamic_cast<const FCPort&>(*port);
            if (create_PCI_instances(maps, host, ends, fc_port)) {
                create_port_instances(maps, host, ends, fc_port);
            }
        }
    }
}

} // namespace cimple
