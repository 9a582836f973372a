// Software identities of provider, driver and diagnostics.
#include "agent/creation.h"
#include "agent/fc_adapters.h"
#include "agent/software_identity.h"
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

void ProviderAgent::createInstalledSoftwareIdentity(const TVRHBA_SoftwareIdentity& identity) {
    TVR_LOG("Generating TVRHBA_InstalledSoftwareIdentity (%s)", identity.InstanceID.value.c_str());
    auto installed = make<TVRHBA_InstalledSoftwareIdentity>(any_namespace);
    installed->System = computerSystem().clone();
    installed->InstalledSoftware = identity.clone();
    add(*this, std::move(installed));
}

void ProviderAgent::createSoftwareConformsToProfile(const char* profile,
                                                    const TVRHBA_SoftwareIdentity& identity) {
    TVR_LOG("Generating TVRHBA_SoftwareConformsToProfile (%s)", identity.InstanceID.value.c_str());
    const TVRHBA_RegisteredProfile* standard = findRegisteredProfile(profile);
    if (standard == nullptr) {
        return;
    }
    auto conformance = make<TVRHBA_SoftwareConformsToProfile>(any_namespace);
    conformance->ConformantStandard = standard->clone();
    conformance->ManagedElement = identity.clone();
    add(*this, std::move(conformance));
}

void ProviderAgent::createProviderSoftwareIdentity(const TVRHBA_SoftwareIdentity& identity) {
    TVR_LOG("Generating TVRHBA_ProviderSoftwareIdentity (%s)", identity.InstanceID.value.c_str());
    auto provider = make<TVRHBA_ProviderSoftwareIdentity>(any_namespace);
    provider->Antecedent = identity.clone();
    provider->Dependent = computerSystem().clone();
    provider->UpgradeCondition.set(uint16{3});
    provider->ElementSoftwareStatus.set(Array<uint16>{2, 3, 6});
    add(*this, std::move(provider));
}

const TVRHBA_SoftwareIdentity& ProviderAgent::createProviderIdentity() {
    const std::string name = "Tavrin CMPI HBA Provider v" + version_text();
    auto identity = make_identity(name, name, "Tavrin CMPI HBA Provider", version_text(),
                                  SOFTWARE_OTHER, "CMPI HBA CIM Provider");
    identity->Manufacturer.set("Tavrin Corporation");
    identity->MajorVersion.set(version_major);
    identity->MinorVersion.set(version_minor);
    identity->RevisionNumber.set(version_revision);
    identity->BuildNumber.set(version_build);
    const TVRHBA_SoftwareIdentity& created = add_or_end(*this, std::move(identity));
    createInstalledSoftwareIdentity(created);
    createProviderSoftwareIdentity(created);
    createSoftwareConformsToProfile("Software", created);
    return created;
}

void ProviderAgent::createDriverIdentities() {
    const FCAdapterAttributes* attributes = nullptr;
    for_each_FC_adapter(*this, [&](const FCAdapter& adapter) {
        attributes = adapter.getFCAttributes();
        return false;
    });
    if (attributes == nullptr) {
        return;
    }
    TVR_LOG("driverName: %s, driverVersion: %s, driverManufacturer: %s",
            attributes->DriverName.c_str(), attributes->DriverVersion.c_str(),
            attributes->Manufacturer.c_str());
    createFurtherIdentity(make_driver_identity(*attributes));
    createFurtherIdentity(make_diagnostics_identity(*attributes));
}

void ProviderAgent::createFurtherIdentity(Ref<TVRHBA_SoftwareIdentity> identity) {
    const TVRHBA_SoftwareIdentity& created = add_or_end(*this, std::move(identity));
    createInstalledSoftwareIdentity(created);
    createSoftwareConformsToProfile("Software Inventory", created);
}

} // namespace cimple
