// The instances of targets: for each logical unit that a port sees an endpoint, a device of the
// class that its type asks for, and the path that leads to it.
#include "agent/san_instances.h"

#include "agent/clear_maps.h"
#include "agent/creation.h"
#include "agent/fc_adapters.h"
#include "agent/san_tables.h"
#include "common/formatted.h"
#include "common/tvr_common.h"

#include <cstring>
#include <optional>
#include <utility>

namespace cimple {

namespace {

// What the instances of a port's targets are joined to.
struct Initiator {
    const CIM_ComputerSystem& computer_system;
    const End<CIM_ComputerSystem>& system;
    const std::string& port_name;
    End<TVRHBA_SCSIProtocolInitiatorEndpoint> endpoint;
};

// One target with the texts that several of its instances have.
struct Unit {
    Unit(const Target& of, const std::string& port_name);

    const Target& target;
    std::string lun;           // 16 digits
    std::string inquiry;       // with the serial number
    std::string short_inquiry; // without
    std::string device_key;
    Device_Kind kind;
};

// The bytes of a LUN in the order in which they are stored.
std::string lun_text(uint64 lun) {
    uint8 bytes[sizeof lun];
    std::memcpy(bytes, &lun, sizeof lun);
    return wwnToText(bytes);
}

Unit::Unit(const Target& of, const std::string& port_name)
    : target(of), lun(lun_text(of.FcpLun)),
      inquiry(formatted("%.8s %.16s Revision %.4s Serial Number %.40s", of.vendor.c_str(),
                        of.product.c_str(), of.revision.c_str(), of.serialNumber.c_str())),
      short_inquiry(formatted("%.8s %.16s Revision %.4s", of.vendor.c_str(), of.product.c_str(),
                              of.revision.c_str())),
      device_key(port_name + "_" + of.PortWWN + "_" + identifier_text(of.deviceIdentifier) + "_" +
                 lun),
      kind(device_kind(of.deviceIdentifier.peripheralType)) {}

Ref<TVRHBA_SCSIProtocolEndpoint> make_endpoint(const Initiator& initiator, const Unit& unit) {
    const Target& target = unit.target;
    auto endpoint = make<TVRHBA_SCSIProtocolEndpoint>();
    endpoint->SystemCreationClassName.set(initiator.computer_system.CreationClassName.value);
    endpoint->SystemName.set(initiator.computer_system.Name.value);
    endpoint->CreationClassName.set("TVRHBA_SCSIProtocolEndpoint");
    endpoint->Name.set(initiator.port_name + ":" + target.PortWWN + ":" + unit.lun);
    endpoint->TargetWWPN.set(target.PortWWN);
    endpoint->TargetWWNN.set(target.NodeWWN);
    endpoint->Description.set(unit.inquiry);
    endpoint->ElementName.set(target.product);
    endpoint->ProtocolType.set(uint16{18});
    endpoint->ProtocolIFType.set(uint16{56});
    endpoint->ConnectionType.set(uint16{2});
    endpoint->Role.set(uint16{3});
    endpoint->EnabledDefault.set(uint16{5});
    endpoint->EnabledState.set(uint16{0});
    endpoint->RequestedState.set(uint16{0});
    endpoint->OperationalStatus.set(Array<uint16>{0});
    endpoint->FCID.set(target.FcId);
    endpoint->SCSIBusNumber.set(target.ScsiBusNumber);
    endpoint->SCSITargetNumber.set(target.ScsiTargetNumber);
    endpoint->OtherIdentifyingInfo.set(Array<String>{target.OSDeviceName});
    endpoint->IdentifyingDescriptions.set(Array<String>{"OS Device Name"});
    return endpoint;
}

// What devices of all classes have.
template <class Device>
Ref<Device> make_device(const Initiator& initiator, const Unit& unit, const char* class_name) {
    const Target& target = unit.target;
    auto device = make<Device>();
    device->SystemCreationClassName.set(initiator.computer_system.CreationClassName.value);
    device->SystemName.set(initiator.computer_system.Name.value);
    device->CreationClassName.set(class_name);
    device->DeviceID.set(unit.device_key);
    device->Description.set(unit.inquiry);
    device->ElementName.set(unit.kind.element_name +
                            std::to_string(static_cast<sint32>(target.ScsiOSLun)));
    device->OperationalStatus.set(Array<uint16>{0});
    return device;
}

template <class Device> void set_capacity(Device& device, const Target& target) {
    if (target.blockSize == 0 || target.maxLBA == 0) {
        return;
    }
    device.Capacity.set(target.blockSize * target.maxLBA);
    device.CapacityUnit.set("Byte");
    if constexpr (requires { device.NumberOfBlocks; }) {
        device.BlockSize.set(target.blockSize);
        device.NumberOfBlocks.set(target.maxLBA);
    }
}

// The operating system's name of a device, and what the device says of itself.
template <class Device>
void identify(Device& device, const Target& target, const std::string& inquiry,
              const char* first_description = "OS Device Name",
              const char* second_description = "Standard SCSI inquiry data") {
    device.OtherIdentifyingInfo.set(Array<String>{target.OSDeviceName, inquiry});
    device.IdentifyingDescriptions.set(Array<String>{first_description, second_description});
}

Ref<TVRHBA_StorageVolume> make_storage_volume(const Initiator& initiator, const Unit& unit) {
    TVR_LOG("creating TVRHBA_StorageVolume");
    const DeviceIdentifier& identifier = unit.target.deviceIdentifier;
    auto volume = make_device<TVRHBA_StorageVolume>(initiator, unit, "TVRHBA_StorageVolume");
    TVR_LOG("StorageVolumeInstance->DeviceID = %s", unit.device_key.c_str());
    set_capacity(*volume, unit.target);
    identify(*volume, unit.target, unit.short_inquiry);
    volume->Name.set(identifier_name(identifier));
    const Name_Format format = name_format(identifier.identifierType);
    if (format.format != 0) {
        volume->NameFormat.set(format.format);
        volume->NameNamespace.set(format.name_space);
        if (format.other_format != nullptr) {
            volume->OtherNameFormat.set(format.other_format);
        }
        if (format.other_name_space != nullptr) {
            volume->OtherNameNamespace.set(format.other_name_space);
        }
    }
    return volume;
}

Ref<TVRHBA_TapeDrive> make_tape_drive(const Initiator& initiator, const Unit& unit) {
    const Target& target = unit.target;
    auto drive = make_device<TVRHBA_TapeDrive>(initiator, unit, "TVRHBA_TapeDrive");
    set_capacity(*drive, target);
    drive->Name.set(target.OSDeviceName);
    identify(*drive, target, target.vendor + " " + target.product + " " + target.revision,
             "OS Device Name", "standard SCSI Inquery data");
    return drive;
}

Ref<TVRHBA_LogicalDisk> make_logical_disk(const Initiator& initiator, const Unit& unit) {
    auto disk = make_device<TVRHBA_LogicalDisk>(initiator, unit, "TVRHBA_LogicalDisk");
    set_capacity(*disk, unit.target);
    disk->Name.set(identifier_name(unit.target.deviceIdentifier));
    identify(*disk, unit.target, unit.short_inquiry);
    disk->DataOrganization.set(uint16{1});
    disk->StatusInfo.set(uint16{2});
    disk->AdditionalAvailability.set(Array<uint16>{2});
    return disk;
}

Ref<TVRHBA_StorageExtent> make_storage_extent(const Initiator& initiator, const Unit& unit) {
    auto extent = make_device<TVRHBA_StorageExtent>(initiator, unit, "TVRHBA_StorageExtent");
    set_capacity(*extent, unit.target);
    extent->Name.set(identifier_name(unit.target.deviceIdentifier));
    // The descriptions stand the other way round here.
    identify(*extent, unit.target, unit.short_inquiry, "Standard SCSI inquiry data",
             "OS Device Name");
    return extent;
}

Ref<TVRHBA_SCSIArbitraryLogicalUnit> make_arbitrary_unit(const Initiator& initiator,
                                                         const Unit& unit) {
    const Target& target = unit.target;
    auto device = make_device<TVRHBA_SCSIArbitraryLogicalUnit>(initiator, unit,
                                                               "TVRHBA_SCSIArbitraryLogicalUnit");
    device->Name.set(target.OSDeviceName);
    identify(*device, target, unit.short_inquiry);
    device->DeviceType.set(device_type(target.peripheralType));
    device->OtherDeviceType.set(
        formatted("Peripheral devices type is 0x%02X", target.peripheralType));
    return device;
}

// Publishes the device, hangs it on the computer system and lays the path to it.
template <class System_Device, class Path, class Device>
void add_device(Instance_Maps& maps, const Initiator& initiator,
                const End<TVRHBA_SCSIProtocolEndpoint>& endpoint, Ref<Device> made,
                const char* path_text) {
    const Device& added = add_or_end(maps, std::move(made));
    const End device(added);
    TVR_LOG("Generating %s (%s)", System_Device::static_meta_class.name,
            added.DeviceID.value.c_str());
    auto system_device = make<System_Device>(any_namespace);
    system_device->GroupComponent = initiator.system;
    system_device->PartComponent = device;
    add_or_end(maps, std::move(system_device));
    TVR_LOG("creating %s - %s", Path::static_meta_class.name, path_text);
    auto path = make<Path>();
    path->Initiator = initiator.endpoint;
    path->Target = endpoint;
    path->LogicalUnit = device;
    add_or_end(maps, std::move(path));
}

void add_target(Instance_Maps& maps, const Initiator& initiator, const Target& target,
                std::size_t index) {
    const Unit unit(target, initiator.port_name);
    const TVRHBA_SCSIProtocolEndpoint& made = add_or_end(maps, make_endpoint(initiator, unit));
    const End endpoint(made);
    TVR_LOG("Generating TVRHBA_LocalHostedAccessPoint (%s)", made.Name.value.c_str());
    auto hosted = make<TVRHBA_LocalHostedAccessPoint>(any_namespace);
    hosted->Antecedent = initiator.system;
    hosted->Dependent = endpoint;
    add_or_end(maps, std::move(hosted));

    TVR_LOG("Target %d is of type %d.", static_cast<int>(index),
            target.deviceIdentifier.peripheralType);
    switch (unit.kind.device_class) {
    case Device_Class::storage_volume:
        add_device<TVRHBA_StorageVolumeSystemDevice, TVRHBA_SCSIInitiatorTargetStorageVolumePath>(
            maps, initiator, endpoint, make_storage_volume(initiator, unit), "Storage Volume");
        break;
    case Device_Class::tape_drive:
        add_device<TVRHBA_TapeDriveSystemDevice, TVRHBA_SCSIInitiatorTargetTapeDrivePath>(
            maps, initiator, endpoint, make_tape_drive(initiator, unit), "Tape Drive");
        break;
    case Device_Class::logical_disk:
        add_device<TVRHBA_LogicalDiskSystemDevice, TVRHBA_SCSIInitiatorTargetLogicalDiskPath>(
            maps, initiator, endpoint, make_logical_disk(initiator, unit), "Logical Disk");
        break;
    case Device_Class::storage_extent:
        add_device<TVRHBA_StorageExtentSystemDevice, TVRHBA_SCSIInitiatorTargetStorageExtentPath>(
            maps, initiator, endpoint, make_storage_extent(initiator, unit), "Storage Extent");
        break;
    case Device_Class::arbitrary:
        add_device<TVRHBA_SCSIArbitraryLogicalUnitSystemDevice,
                   TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath>(
            maps, initiator, endpoint, make_arbitrary_unit(initiator, unit),
            "SCSI Arbitrary Logical Unit");
        break;
    }
}

const TVRHBA_SCSIProtocolInitiatorEndpoint& find_initiator(const Instance_Maps& maps,
                                                           const std::string& port_name) {
    for (const TVRHBA_SCSIProtocolInitiatorEndpoint* endpoint :
         maps.m_TVRHBA_SCSIProtocolInitiatorEndpoint_map) {
        if (endpoint->Name.value.equali(port_name.c_str())) {
            return *endpoint;
        }
    }
    TVR_LOG("Could not find TVRHBA_SCSIProtocolEndpoint Initiator instance.");
    throw Rebuild_Ended();
}

// Makes `system`, which all ports share, if it isn't there yet. A port with an initiator has a
// computer system, too; without one the adapter maps may have stopped before it.
void add_targets(Instance_Maps& maps, std::optional<End<CIM_ComputerSystem>>& system,
                 const Port& port) {
    End endpoint(find_initiator(maps, port.getPortName()));
    if (!system) {
        system.emplace(maps.computer_system());
    }
    const Initiator initiator{maps.computer_system(), *system, port.getPortName(),
                              std::move(endpoint)};
    const std::size_t count = port.getTargetCount();
    for (std::size_t index = 0; index < count; ++index) {
        TVR_LOG("Creating classes for target %d of %d.", static_cast<int>(index),
                static_cast<int>(count));
        add_target(maps, initiator, *port.getTarget(index), index);
    }
}

} // namespace

uint32 updateSANMaps(Instance_Maps& maps, const Data* data) {
    TVR_LOG("PERF: updateSANMaps: Entry");
    clearSANMaps(maps);
    try {
        std::optional<End<CIM_ComputerSystem>> system;
        for_each_FC_adapter(data, [&](const FCAdapter& adapter) {
            int index = 0;
            for (const std::unique_ptr<Port>& port : adapter.getPorts()) {
                TVR_LOG("Creating classes for port %d.", index++);
                add_targets(maps, system, *port);
            }
            return true;
        });
    } catch (const Rebuild_Ended&) {
        return TVR_FAILURE;
    } catch (...) {
        TVR_LOG("Error updating SAN maps");
        return TVR_FAILURE;
    }
    TVR_LOG("PERF: updateSANMaps: cleanExit");
    return 0;
}

} // namespace cimple
