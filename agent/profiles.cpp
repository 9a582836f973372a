// The profiles that host and provider conform to, and how they refer to one another.
#include "agent/creation.h"
#include "agent/profile_instance.h"

namespace cimple {

namespace {

struct Registered {
    Profile profile;
    bool referenced; // by "Profile Registration"
};

constexpr Registered host_profiles[] = {
    {{"Profile Registration", ORGANIZATION_DMTF, "1.0.0"}, false},
    {{"Software Inventory", ORGANIZATION_DMTF, "1.0.0"}, true},
    {{"Physical Package", ORGANIZATION_SNIA, "1.3.0"}, true},
    {{"Host Discovered Resources", ORGANIZATION_SNIA, "1.2.0"}, true},
    {{"FC HBA", ORGANIZATION_SNIA, "1.2.0"}, true},
    {{"Storage HBA", ORGANIZATION_SNIA, "1.4.0"}, true},
    {{"FC Initiator Ports", ORGANIZATION_SNIA, "1.3.0"}, true},
    {{"Software", ORGANIZATION_SNIA, "1.2.0"}, true},
    {{"Access Points", ORGANIZATION_SNIA, "1.3.0"}, true},
    {{"PCI Device", ORGANIZATION_DMTF, "1.0.0"}, true},
    {{"FCHBA Diagnostics", ORGANIZATION_DMTF, "1.0.0"}, true},
};

} // namespace

TVRHBA_RegisteredProfile* ProviderAgent::findRegisteredProfile(const char* name) const {
    const String id = profile_id(name);
    for (TVRHBA_RegisteredProfile* profile : m_TVRHBA_RegisteredProfile_map) {
        if (profile->InstanceID.value == id) {
            return profile;
        }
    }
    return nullptr;
}

TVRHBA_RegisteredProfile* ProviderAgent::createRegisteredProfile(const Profile& profile) {
    if (TVRHBA_RegisteredProfile* present = findRegisteredProfile(profile.name)) {
        TVR_LOG("Got TVRHBA_RegisteredProfile in the map (%s)", profile.name);
        return present;
    }
    TVR_LOG("Generating TVRHBA_RegisteredProfile (%s)", profile.name);
    Ref<TVRHBA_RegisteredProfile> instance = make_profile(profile);
    instance->__name_space = interop_namespace;
    TVRHBA_RegisteredProfile* created = add(*this, std::move(instance));
    if (created != nullptr) {
        TVR_LOG("Created TVRHBA_RegisteredProfile in the map (%s)", profile.name);
    }
    return created;
}

// A computer system of another provider is not claimed.
void ProviderAgent::createComputerSystemConformsToProfile(const TVRHBA_RegisteredProfile& profile) {
    TVR_LOG("inside createComputerSystemConformsToProfile");
    if (!m_bOwnComputerSystem) {
        TVR_LOG("This is IBM/VMWare comp Sys - do nothing");
        return;
    }
    auto conformance = make<TVRHBA_ComputerSystemConformsToProfile>(any_namespace);
    conformance->ConformantStandard = profile.clone();
    conformance->ManagedElement = computerSystem().clone();
    add(*this, std::move(conformance));
}

void ProviderAgent::createReferencedProfile(const char* label,
                                            const TVRHBA_RegisteredProfile* dependent,
                                            const TVRHBA_RegisteredProfile* antecedent) {
    TVR_LOG("Generating TVRHBA_ReferencedProfile (%s)", label);
    if (dependent == nullptr || antecedent == nullptr) {
        TVR_LOG("Generating TVRXCNA_ReferencedProfile failed (%s)", label);
        return;
    }
    auto reference = make<TVRHBA_ReferencedProfile>(interop_namespace);
    reference->Antecedent = antecedent->clone();
    reference->Dependent = dependent->clone();
    add(*this, std::move(reference));
    if (m_pBaseServerProfile) {
        auto base = make<TVRHBA_BaseServerReferencedProfile>(interop_namespace);
        base->Antecedent = m_pBaseServerProfile->clone();
        base->Dependent = dependent->clone();
        add(*this, std::move(base));
    }
}

// Registers a profile to which the computer system conforms.
TVRHBA_RegisteredProfile* ProviderAgent::createConformedProfile(const Profile& profile) {
    TVRHBA_RegisteredProfile* registered = createRegisteredProfile(profile);
    if (registered != nullptr) {
        createComputerSystemConformsToProfile(*registered);
    }
    return registered;
}

void ProviderAgent::createProfiles() {
    const char* const registration = host_profiles[0].profile.name;
    for (const auto& [profile, referenced] : host_profiles) {
        const TVRHBA_RegisteredProfile* registered = createConformedProfile(profile);
        if (!referenced) {
            continue;
        }
        const std::string label = std::string(profile.name) + " / " + registration;
        createReferencedProfile(label.c_str(), registered, findRegisteredProfile(registration));
        if (profile.name == std::string_view("FC Initiator Ports")) {
            // Its instance for the Base Server profile repeats a key and is refused.
            createReferencedProfile("FC HBA / FC Initiator Port", findRegisteredProfile("FC HBA"),
                                    registered);
        }
    }
}

} // namespace cimple
