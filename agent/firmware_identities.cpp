// What runs on a port: firmware, firmware kernel, boot code and functional stub.
#include "agent/adapter_instances.h"
#include "agent/software_instances.h"

namespace cimple {

namespace {

struct Firmware {
    const char* label; // in the log
    const char* id;    // beginnings of texts that version, model and port complete
    const char* name;
    const char* description;
    Software_Class classification;
    const char* classification_description;
    std::string FCAdapterAttributes::*version;
    void (*add_own)(TVRHBA_SoftwareIdentity& identity, const FCAdapterAttributes& attributes);
};

void add_firmware_own(TVRHBA_SoftwareIdentity& identity, const FCAdapterAttributes& attributes) {
    identity.Name.set(identity.ElementName.value);
    identity.OperationalFirmware.set(attributes.operationalFirmware);
    identity.ULPFirmwareVersion.set(attributes.ulpFirmwareVersion);
    identity.ULPFirmwareName.set(attributes.ulpFirmwareName);
    identity.SPFirmwareVersion.set(attributes.spFirmwareVersion);
    identity.SPFirmwareName.set(attributes.spFirmwareName);
}

void add_boot_code_own(TVRHBA_SoftwareIdentity& identity, const FCAdapterAttributes& attributes) {
    identity.FCUniversalVersion.set(attributes.fcUniversalVersion);
    identity.FC_X86_BIOSVersion.set(attributes.fcX86BiosVersion);
    identity.FC_EFIVersion.set(attributes.fcEfiVersion);
    identity.FC_FCODEVersion.set(attributes.fcFcodeVersion);
}

void add_nothing(TVRHBA_SoftwareIdentity&, const FCAdapterAttributes&) {}

constexpr Firmware all_firmware[] = {
    {"Firmware", "TVR FC HBA:Firmware:v", "FC HBA Firmware v", "Tavrin FC HBA Firmware",
     SOFTWARE_FIRMWARE, "FC HBA Firmware", &FCAdapterAttributes::FirmwareVersion, add_firmware_own},
    {"FirmwareKernel", "Firmware Kernel v", "Firmware Kernel v", "Tavrin FC HBA Firmware Kernel",
     SOFTWARE_FIRMWARE, "Firmware Kernel", &FCAdapterAttributes::kernelVersion, add_nothing},
    {"BootCodeExpansionROM", "Boot Code - Expansion ROM v", "Boot Code - Expansion ROM v",
     "Tavrin FC HBA Boot Code", SOFTWARE_BOOT_CODE, "BIOS/FCode",
     &FCAdapterAttributes::bootBiosVersion, add_boot_code_own},
    {"FunctionalFirmware", "Functional Firmware stub v", "Functional Firmware stub v",
     "Tavrin FC HBA Boot Code", SOFTWARE_FIRMWARE, "Functional Firmware Stub",
     &FCAdapterAttributes::initialFirmwareLoad, add_nothing},
};

constexpr uint16 kind_firmware = 6;

Ref<TVRHBA_SoftwareIdentity> make_firmware(const Firmware& firmware,
                                           const FCAdapterAttributes& attributes,
                                           const std::string& wwpn) {
    const std::string& version = attributes.*firmware.version;
    const std::string suffix = version + " " + attributes.Model + " " + wwpn;
    auto identity = make<TVRHBA_SoftwareIdentity>();
    identity->InstanceID.set(firmware.id + suffix);
    identity->ElementName.set(firmware.name + suffix);
    identity->Description.set(firmware.description);
    identity->VersionString.set(version);
    identity->Manufacturer.set(attributes.Manufacturer);
    identity->Classifications.set(Array<uint16>{firmware.classification});
    identity->ClassificationDescriptions.set(Array<String>{firmware.classification_description});
    identity->IsEntity.set(true);
    set_version(*identity, version, firmware.label);
    firmware.add_own(*identity, attributes);
    return identity;
}

} // namespace

Ref<TVRHBA_ElementSoftwareIdentity>
make_element_software_identity(const End<TVRHBA_SoftwareIdentity>& identity,
                               const End<TVRHBA_PortController>& controller,
                               uint16 kind_of_software) {
    auto element = make<TVRHBA_ElementSoftwareIdentity>();
    element->Antecedent = identity;
    element->Dependent = controller;
    element->UpgradeCondition.set(uint16{3});
    element->ElementSoftwareStatus.set(Array<uint16>{2, 3, kind_of_software});
    return element;
}

void create_firmware_identities(Instance_Maps& maps, const Adapter_Ends& adapter,
                                const FCPort& fc_port,
                                const End<TVRHBA_PortController>& controller) {
    for (const Firmware& firmware : all_firmware) {
        const TVRHBA_SoftwareIdentity& identity =
            add_or_end(maps, make_firmware(firmware, adapter.attributes, fc_port.getPortName()));
        create_installed_software_identity(maps, identity);
        add(maps, make_element_software_identity(End(identity), controller, kind_firmware));
        create_software_conforms_to_profile(maps, "Software Inventory", identity);
    }
}

} // namespace cimple
