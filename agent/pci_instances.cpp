// The PCI function that a port is to the host, what it tells of its making, and its transceiver.
#include "access/entry_points.h"
#include "access/method_wrapper.h"
#include "agent/adapter_instances.h"
#include "agent/port_inventory.h"
#include "agent/profiles.h"

#include <cstdio>

namespace cimple {

namespace {

constexpr uint16 not_applicable = 5; // of EnabledState
constexpr uint16 no_change = 5;      // of RequestedState
constexpr uint16 good = 5;           // of the two of health

// Fields of the type 0 header of the PCI configuration space.
class PCI_Header {
public:
    explicit PCI_Header(const RM_PCIREGISTERS& registers) : _bytes(registers.config) {}

    uint8 byte(std::size_t offset) const { return _bytes[offset]; }
    uint16 word(std::size_t offset) const {
        return static_cast<uint16>(_bytes[offset] | _bytes[offset + 1] << 8);
    }
    uint32 dword(std::size_t offset) const {
        return word(offset) | static_cast<uint32>(word(offset + 2)) << 16;
    }

private:
    const uint8_t* _bytes;
};

// The port's name as the library takes it.
HBA_WWN port_name(const std::string& wwpn) {
    char text[TVR_MethodWrapper::hbaNameTextSize];
    if (TVR_MethodWrapper::Id2HBAName(text, wwpn.c_str()) != 0) {
        TVR_LOG("TVRHBA_PCIPort Id2HBAName failed");
        throw Rebuild_Ended();
    }
    HBA_WWN name{};
    if (TVR_MethodWrapper::str2HBAName(&name, text) != 0) {
        TVR_LOG("::str2HBAName failed");
        throw Rebuild_Ended();
    }
    return name;
}

// All zero if they can't be read.
RM_PCIREGISTERS read_registers(const HBA_WWN& port) {
    RM_PCIREGISTERS registers{};
    const RM_STATUS status = rm::LRM_DiagReadPCIRegistersV2(port, &registers);
    TVR_LOG("RM_DiagReadPCIRegistersV2 status = %d ", static_cast<int>(status));
    if (status != RM_STATUS_OK) {
        TVR_LOG("RM_DiagReadPCIRegistersV2 call failed");
        return {};
    }
    TVR_LOG("RM_DiagReadPCIRegistersV2 call passed");
    return registers;
}

void fill(TVRHBA_PCIDevice& device, const CIM_ComputerSystem& system, const std::string& wwpn,
          uint32 adapter_index, const PCI_Header& header) {
    char id[sizeof ":0x1234"];
    std::snprintf(id, sizeof id, ":0x%04X", header.word(2));
    device.SystemCreationClassName.set(system.CreationClassName.value);
    device.SystemName.set(system.Name.value);
    device.CreationClassName.set("TVRHBA_PCIDevice");
    device.DeviceID.set(wwpn + id);
    device.ElementName.set("Tavrin:NICAdapter" + std::to_string(adapter_index));
    device.EnabledState.set(not_applicable);
    device.RequestedState.set(no_change);
    device.PrimaryStatus.set(good);
    device.HealthState.set(good);
    device.VendorID.set(header.word(0x00));
    device.Command.set(header.word(0x04));
    device.PCIStatus.set(header.word(0x06));
    device.RevisionID.set(header.byte(0x08));
    device.ProgIf.set(header.byte(0x09));
    device.SubClass.set(header.byte(0x0A));
    device.BaseClass.set(header.byte(0x0B));
    device.CacheLineSize.set(header.byte(0x0C));
    device.LatencyTimer.set(header.byte(0x0D));
    device.HeaderType.set(header.byte(0x0E));
    device.BuiltInSelfTest.set(header.byte(0x0F));
    device.BaseAddresses0.set(header.dword(0x10));
    device.BaseAddresses1.set(header.dword(0x14));
    device.BaseAddresses2.set(header.dword(0x18));
    device.BaseAddresses3.set(header.dword(0x1C));
    device.BaseAddresses4.set(header.dword(0x20));
    device.BaseAddresses5.set(header.dword(0x24));
    device.CIS.set(header.dword(0x28));
    device.SubVendorID.set(header.word(0x2C));
    device.SubsystemID.set(header.word(0x2E));
    device.ExpansionROMBaseAddress.set(header.dword(0x30));
    device.CapabilitiesPtr.set(header.byte(0x34));
    device.InterruptLine.set(header.byte(0x3C));
    device.InterruptPin.set(header.byte(0x3D));
    device.MinimumGrant.set(header.byte(0x3E));
    device.MaximumLatency.set(header.byte(0x3F));
}

void create_vital_product_data(Instance_Maps& maps, const std::string& wwpn,
                               const End<TVRHBA_PCIDevice>& device) {
    if (CreateVPD(maps, wwpn) != 0) {
        TVR_LOG("FC port %s CreateVPD failed", wwpn.c_str());
        return;
    }
    for (const TVRHBA_VitalProductData* data : maps.m_TVRHBA_VitalProductData_map) {
        if (data->InstanceID.value.equali(wwpn.c_str())) {
            auto element = make<TVRHBA_ElementVPD>();
            element->ManagedElement = device;
            element->SettingData = data->clone();
            add(maps, std::move(element));
            return;
        }
    }
}

void create_transceiver(Instance_Maps& maps, const std::string& wwpn,
                        const End<TVRHBA_PhysicalPackage>& package) {
    const TVRHBA_Transceiver* transceiver = CreateTransceiver(maps, wwpn);
    if (transceiver == nullptr) {
        TVR_LOG("Failed Creating TVRXCNA_Transceiver");
        return;
    }
    auto component = make<TVRHBA_TransceiverComponent>();
    component->GroupComponent = package;
    component->PartComponent = transceiver->clone();
    add_or_end(maps, std::move(component));
}

} // namespace

bool create_PCI_instances(Instance_Maps& maps, const Host_Ends& host, const Adapter_Ends& adapter,
                          const FCPort& fc_port) {
    const std::string& wwpn = fc_port.getPortName();
    TVR_LOG("MAC address in std::string format = %s and size = %d", wwpn.c_str(),
            static_cast<int>(wwpn.size()));
    const RM_PCIREGISTERS registers = read_registers(port_name(wwpn));

    auto made = try_make<TVRHBA_PCIDevice>();
    if (!made) {
        TVR_LOG("Failed to create TVRHBA_PCIDevice");
        return false;
    }
    fill(*made, host.computer_system, wwpn, adapter.index, PCI_Header(registers));
    const End device(add_or_end(maps, std::move(made)));

    auto conformance = try_make<TVRHBA_PCIElementConformsToProfile>();
    if (!conformance) {
        TVR_LOG("Failed to create TVRHBA_PCIElementConformsToProfile");
        return false;
    }
    if (const TVRHBA_RegisteredProfile* profile = find_registered_profile(maps, "PCI Device")) {
        conformance->ConformantStandard = profile->clone();
    }
    conformance->ManagedElement = device;
    add_or_end(maps, std::move(conformance));

    auto system_device = try_make<TVRHBA_SystemDevice>(any_namespace);
    if (!system_device) {
        TVR_LOG("Failed to create TVRHBA_SystemDevice");
        return false;
    }
    system_device->GroupComponent = host.system;
    system_device->PartComponent = device;
    add_or_end(maps, std::move(system_device));

    create_vital_product_data(maps, wwpn, device);
    create_transceiver(maps, wwpn, adapter.package);
    return true;
}

} // namespace cimple
