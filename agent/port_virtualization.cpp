#include "agent/port_virtualization.h"

#include "access/bounded_text.h"
#include "agent/clear_maps.h"
#include "agent/feature.h"

namespace cimple {

namespace {

constexpr uint32 virtualization_no_port = 33068;
constexpr uint32 virtualization_creation_failed = 32774;
constexpr uint32 virtualization_listing_failed = 40001;

constexpr uint16 resource_FC_HBA = 10;

constexpr TVR_MethodWrapper::NameLines virtualization_name_lines{
    "TVRXCNA_PortVirtualization::CreatePortVirtualizationClasses::Id2HBAName failed",
    "TVRXCNA_PortVirtualization::CreatePortVirtualizationClasses::str2HBAName failed"};

template <class C> Ref<C> make_virtual(const char* what) {
    return make_or_fail<C>(what, virtualization_creation_failed);
}

template <class C>
const C& add_virtual(Instance_Maps& maps, Ref<C> instance, const char* inserted) {
    const C& added = add_or_fail(maps, std::move(instance));
    TVR_LOG("%s", inserted);
    return added;
}

// The pool, joined with the host.
const TVRHBA_ResourcePool& create_pool(Instance_Maps& maps, const TVRHBA_FCPort& port,
                                       std::size_t virtual_ports) {
    TVR_LOG("Creating Resource pool ");
    const std::string name = "TVR:Resource Pool:" + std::string(port.DeviceID.value.view());
    auto made = make_virtual<TVRHBA_ResourcePool>("ResourcePool");
    made->InstanceID.set(name);
    made->ElementName.set(name);
    made->PoolID.set(name);
    made->Primordial.set(false);
    made->Capacity.set(virtual_ports);
    made->ResourceType.set(resource_FC_HBA);
    const TVRHBA_ResourcePool& pool =
        add_virtual(maps, std::move(made), "Resource Pool created and inserted in map");

    TVR_LOG("Creating HostedResource pool ");
    auto hosted = make_virtual<TVRHBA_HostedResourcePool>("HostedResourcePool");
    hosted->GroupComponent = maps.computer_system().clone();
    hosted->PartComponent = pool.clone();
    add_virtual(maps, std::move(hosted), "HostedResource Pool created and inserted in map");
    return pool;
}

const TVRHBA_VirtualFCPort& create_virtual_port(Instance_Maps& maps, const HBA_WWN& physical,
                                                const char* physical_id, const RM_VPORTENTRY& entry,
                                                uint32& status) {
    const std::string device_id = wwnToText(entry.wwpn.wwn);
    const std::string node = wwnToText(entry.wwnn.wwn);
    TVR_LOG("VPort Id :%s Node name: %s", device_id.c_str(), node.c_str());
    RM_VPORTATTRIBUTES attributes{};
    const uint32 error = TVR_MethodWrapper::ListVPortAttributes(
        physical, name_or_fail(device_id, virtualization_name_lines), &attributes);
    if (error != 0) {
        TVR_LOG("TVRXCNA_PortVirtualization::Failure in listing vports information for port: %s, "
                "Rm Error: %d",
                physical_id, error);
        status = virtualization_listing_failed;
    }
    const CIM_ComputerSystem& system = maps.computer_system();
    auto made = make_virtual<TVRHBA_VirtualFCPort>("VirtualFCPort");
    made->SystemCreationClassName.set(system.CreationClassName.value);
    made->SystemName.set(system.Name.value);
    made->CreationClassName.set("TVR_VirtualFCPort");
    made->DeviceID.set(device_id);
    made->Name.set(device_id);
    made->NodeWWN.set(node);
    made->PortFCId.set(entry.fcId);
    if (error == 0) {
        made->VPortName.set(toString(attributes.name));
    }
    return add_virtual(maps, std::move(made), "Created VirtualFCPort and inserted in map");
}

void join_virtual_port(Instance_Maps& maps, const End<TVRHBA_FCPort>& port,
                       const End<TVRHBA_ResourcePool>& pool,
                       const End<TVRHBA_VirtualFCPort>& virtual_port) {
    auto dependency = make_virtual<TVRHBA_VPortHostedDependency>("VPortHostedDependency");
    dependency->Antecedent = port;
    dependency->Dependent = virtual_port;
    add_virtual(maps, std::move(dependency), "VPortHostedDependency created and inserted in map");
    auto allocated = make_virtual<TVRHBA_ElementAllocatedFromPool>("ElementAllocatedFromPool");
    allocated->Antecedent = pool;
    allocated->Dependent = virtual_port;
    add_virtual(maps, std::move(allocated), "ElementAllocatedFromPool created and inserted in map");
}

void create_of_port(Instance_Maps& maps, const TVRHBA_FCPort& port, uint32& status) {
    const char* device_id = port.DeviceID.value.c_str();
    TVR_LOG("FC Port ID: %s", device_id);
    const HBA_WWN name = name_or_fail(device_id, virtualization_name_lines);
    std::vector<RM_VPORTENTRY> list;
    if (const uint32 error = TVR_MethodWrapper::ListVPorts(name, &list); error != 0) {
        TVR_LOG("TVRXCNA_PortVirtualization::Failure in listing vports for port: %s, Rm Error: %d",
                device_id, error);
        status = virtualization_listing_failed;
        return;
    }
    TVR_LOG("No of vports:%d for %s", static_cast<int>(list.size()), device_id);
    if (list.empty()) {
        TVR_LOG("Need not create any resource pools since no vports exist for FCport: %s",
                device_id);
        return;
    }
    const End pool(create_pool(maps, port, list.size()));
    const End physical(port);
    for (const RM_VPORTENTRY& entry : list) {
        const End virtual_port(create_virtual_port(maps, name, device_id, entry, status));
        join_virtual_port(maps, physical, pool, virtual_port);
    }
    TVR_LOG("Freeing VPList");
}

} // namespace

uint32 CreatePortVirtualizationClasses(Instance_Maps& maps) {
    TVR_LOG("TVR_PortVirtualization::CreatePortVirtualizationClasses");
    if (maps.m_TVRHBA_FCPort_map.empty()) {
        TVR_LOG("Unable to create the Port Virtualization classes, No Physical Port(FCoE) exists");
        return virtualization_no_port;
    }
    ClearPortVirtualizationMaps(maps);
    TVR_LOG("No of FC Ports: %d", static_cast<int>(maps.m_TVRHBA_FCPort_map.size()));
    return create_feature(virtualization_creation_failed, [&] {
        uint32 status = 0;
        for (const TVRHBA_FCPort* port : maps.m_TVRHBA_FCPort_map) {
            create_of_port(maps, *port, status);
        }
        return status;
    });
}

} // namespace cimple
