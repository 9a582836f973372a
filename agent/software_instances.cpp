// Software identities of provider, driver and diagnostics.
#include "agent/software_instances.h"

#include "agent/creation.h"
#include "agent/fc_adapters.h"
#include "agent/profiles.h"
#include "agent/version.h"

namespace cimple {

namespace {

constexpr char diagnostics_name[] = "TVRHBA: Diagnostics";

Ref<TVRHBA_SoftwareIdentity> make_identity(const std::string& id, const std::string& name,
                                           const std::string& description,
                                           const std::string& version,
                                           Software_Class classification,
                                           const char* classification_description) {
    auto identity = make<TVRHBA_SoftwareIdentity>();
    identity->InstanceID.set(id);
    identity->Name.set(name);
    identity->ElementName.set(name);
    identity->Description.set(description);
    identity->VersionString.set(version);
    identity->Classifications.set(Array<uint16>{classification});
    identity->ClassificationDescriptions.set(Array<String>{classification_description});
    identity->IsEntity.set(true);
    return identity;
}

Ref<TVRHBA_SoftwareIdentity> make_driver_identity(const FCAdapterAttributes& attributes) {
    const std::string name = attributes.DriverName + " v" + attributes.DriverVersion;
    auto identity = make_identity("TVR FC HBA: Driver " + name, name, "Tavrin HBA Driver",
                                  attributes.DriverVersion, SOFTWARE_DRIVER, "FC HBA Driver");
    identity->Manufacturer.set(attributes.Manufacturer);
    identity->IdentityInfoValue.set(
        Array<String>{attributes.DriverName, attributes.DriverVersion,
                      std::to_string(static_cast<sint32>(attributes.driverType))});
    identity->IdentityInfoType.set(
        Array<String>{"TAVRIN:DRIVER_NAME", "TAVRIN:DRIVER_VERSION", "TAVRIN:TVFC_DRIVER_TYPE"});
    return identity;
}

Ref<TVRHBA_SoftwareIdentity> make_diagnostics_identity(const FCAdapterAttributes& attributes) {
    const std::string version = std::to_string(static_cast<sint32>(attributes.diagVersion));
    const std::string name = std::string(diagnostics_name) + " v" + version;
    auto identity = make_identity(name, name, diagnostics_name, version, SOFTWARE_DIAGNOSTICS,
                                  "TVRHBA Diagnostics");
    identity->IdentityInfoValue.set(Array<String>{diagnostics_name, version});
    return identity;
}

void create_provider_software_identity(Instance_Maps& maps,
                                       const TVRHBA_SoftwareIdentity& identity) {
    TVR_LOG("Generating TVRHBA_ProviderSoftwareIdentity (%s)", identity.InstanceID.value.c_str());
    auto provider = make<TVRHBA_ProviderSoftwareIdentity>(any_namespace);
    provider->Antecedent = identity.clone();
    provider->Dependent = maps.computer_system().clone();
    provider->UpgradeCondition.set(uint16{3});
    provider->ElementSoftwareStatus.set(Array<uint16>{2, 3, 6});
    add(maps, std::move(provider));
}

void create_further_identity(Instance_Maps& maps, Ref<TVRHBA_SoftwareIdentity> identity) {
    const TVRHBA_SoftwareIdentity& created = add_or_end(maps, std::move(identity));
    create_installed_software_identity(maps, created);
    create_software_conforms_to_profile(maps, "Software Inventory", created);
}

} // namespace

const TVRHBA_SoftwareIdentity*
find_driver_identity(const Class_Map<TVRHBA_SoftwareIdentity>& identities) {
    for (const TVRHBA_SoftwareIdentity* identity : identities) {
        const Array<uint16>& classes = identity->Classifications.value;
        if (!classes.empty() && classes[0] == SOFTWARE_DRIVER) {
            return identity;
        }
    }
    return nullptr;
}

void create_installed_software_identity(Instance_Maps& maps,
                                        const TVRHBA_SoftwareIdentity& identity) {
    TVR_LOG("Generating TVRHBA_InstalledSoftwareIdentity (%s)", identity.InstanceID.value.c_str());
    auto installed = make<TVRHBA_InstalledSoftwareIdentity>(any_namespace);
    installed->System = maps.computer_system().clone();
    installed->InstalledSoftware = identity.clone();
    add(maps, std::move(installed));
}

void create_software_conforms_to_profile(Instance_Maps& maps, const char* profile,
                                         const TVRHBA_SoftwareIdentity& identity) {
    TVR_LOG("Generating TVRHBA_SoftwareConformsToProfile (%s)", identity.InstanceID.value.c_str());
    const TVRHBA_RegisteredProfile* standard = find_registered_profile(maps, profile);
    if (standard == nullptr) {
        return;
    }
    auto conformance = make<TVRHBA_SoftwareConformsToProfile>(any_namespace);
    conformance->ConformantStandard = standard->clone();
    conformance->ManagedElement = identity.clone();
    add(maps, std::move(conformance));
}

const TVRHBA_SoftwareIdentity& create_provider_identity(Instance_Maps& maps) {
    const std::string name = "Tavrin CMPI HBA Provider v" + version_text();
    auto identity = make_identity(name, name, "Tavrin CMPI HBA Provider", version_text(),
                                  SOFTWARE_OTHER, "CMPI HBA CIM Provider");
    identity->Manufacturer.set("Tavrin Corporation");
    identity->MajorVersion.set(version_major);
    identity->MinorVersion.set(version_minor);
    identity->RevisionNumber.set(version_revision);
    identity->BuildNumber.set(version_build);
    const TVRHBA_SoftwareIdentity& created = add_or_end(maps, std::move(identity));
    create_installed_software_identity(maps, created);
    create_provider_software_identity(maps, created);
    create_software_conforms_to_profile(maps, "Software", created);
    return created;
}

void create_driver_identities(Instance_Maps& maps, const Data& data) {
    const FCAdapterAttributes* attributes = nullptr;
    for_each_FC_adapter(&data, [&](const FCAdapter& adapter) {
        attributes = adapter.getFCAttributes();
        return false;
    });
    if (attributes == nullptr) {
        return;
    }
    TVR_LOG("driverName: %s, driverVersion: %s, driverManufacturer: %s",
            attributes->DriverName.c_str(), attributes->DriverVersion.c_str(),
            attributes->Manufacturer.c_str());
    create_further_identity(maps, make_driver_identity(*attributes));
    create_further_identity(maps, make_diagnostics_identity(*attributes));
}

} // namespace cimple
