#include "agent/profile_instance.h"

#include <string>

namespace cimple {

namespace {

constexpr uint16 advertised_by_slp = 3;

} // namespace

String profile_id(const char* name) {
    return std::string("TVR:") + name;
}

Ref<TVRHBA_RegisteredProfile> make_profile(const Profile& profile) {
    Ref<TVRHBA_RegisteredProfile> instance(TVRHBA_RegisteredProfile::create(true));
    instance->InstanceID.set(profile_id(profile.name));
    instance->Description.set(std::string("Tavrin ") + profile.name);
    instance->ElementName.set(std::string("Tavrin Registered ") + profile.name);
    instance->RegisteredOrganization.set(profile.organization);
    instance->RegisteredName.set(profile.name);
    instance->RegisteredVersion.set(profile.version);
    instance->AdvertiseTypes.set(Array<uint16>{advertised_by_slp});
    instance->AdvertiseTypeDescriptions.set(Array<String>{"SLP"});
    return instance;
}

} // namespace cimple
