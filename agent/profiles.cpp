// The profiles that host and provider conform to, and how they refer to one another.
#include "agent/profiles.h"

#include "agent/creation.h"

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

const TVRHBA_RegisteredProfile* createRegisteredProfile(Instance_Maps& maps,
                                                        const Profile& profile) {
    if (const TVRHBA_RegisteredProfile* present = find_registered_profile(maps, profile.name)) {
        TVR_LOG("Got TVRHBA_RegisteredProfile in the map (%s)", profile.name);
        return present;
    }
    TVR_LOG("Generating TVRHBA_RegisteredProfile (%s)", profile.name);
    Ref<TVRHBA_RegisteredProfile> instance = make_profile(profile);
    instance->__name_space = interop_namespace;
    const TVRHBA_RegisteredProfile* created = add(maps, std::move(instance));
    if (created != nullptr) {
        TVR_LOG("Created TVRHBA_RegisteredProfile in the map (%s)", profile.name);
    }
    return created;
}

// A computer system of another provider is not claimed.
void createComputerSystemConformsToProfile(Instance_Maps& maps, const Host_Facts& host,
                                           const TVRHBA_RegisteredProfile& profile) {
    TVR_LOG("inside createComputerSystemConformsToProfile");
    if (!host.m_bOwnComputerSystem) {
        TVR_LOG("This is IBM/VMWare comp Sys - do nothing");
        return;
    }
    auto conformance = make<TVRHBA_ComputerSystemConformsToProfile>(any_namespace);
    conformance->ConformantStandard = profile.clone();
    conformance->ManagedElement = maps.computer_system().clone();
    add(maps, std::move(conformance));
}

void createReferencedProfile(Instance_Maps& maps, const Host_Facts& host, const char* label,
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
    add(maps, std::move(reference));
    if (host.m_pBaseServerProfile) {
        auto base = make<TVRHBA_BaseServerReferencedProfile>(interop_namespace);
        base->Antecedent = host.m_pBaseServerProfile->clone();
        base->Dependent = dependent->clone();
        add(maps, std::move(base));
    }
}

} // namespace

const TVRHBA_RegisteredProfile* find_registered_profile(const Instance_Maps& maps,
                                                        const char* name) {
    const String id = profile_id(name);
    for (const TVRHBA_RegisteredProfile* profile : maps.m_TVRHBA_RegisteredProfile_map) {
        if (profile->InstanceID.value == id) {
            return profile;
        }
    }
    return nullptr;
}

const TVRHBA_RegisteredProfile*
create_conformed_profile(Instance_Maps& maps, const Host_Facts& host, const Profile& profile) {
    const TVRHBA_RegisteredProfile* registered = createRegisteredProfile(maps, profile);
    if (registered != nullptr) {
        createComputerSystemConformsToProfile(maps, host, *registered);
    }
    return registered;
}

void create_profiles(Instance_Maps& maps, const Host_Facts& host) {
    const char* const registration = host_profiles[0].profile.name;
    for (const auto& [profile, referenced] : host_profiles) {
        const TVRHBA_RegisteredProfile* registered = create_conformed_profile(maps, host, profile);
        if (!referenced) {
            continue;
        }
        const std::string label = std::string(profile.name) + " / " + registration;
        createReferencedProfile(maps, host, label.c_str(), registered,
                                find_registered_profile(maps, registration));
        if (profile.name == std::string_view("FC Initiator Ports")) {
            // Its instance for the Base Server profile repeats a key and is refused.
            createReferencedProfile(maps, host, "FC HBA / FC Initiator Port",
                                    find_registered_profile(maps, "FC HBA"), registered);
        }
    }
}

} // namespace cimple
