// What a registered profile is published as, the same in the agent's map and in an enumeration of
// the class.
#ifndef TVR_AGENT_PROFILE_INSTANCE_H
#define TVR_AGENT_PROFILE_INSTANCE_H

#include "schema/classes.h"

namespace cimple {

// Value map of `RegisteredOrganization`.
enum Organization : uint16 { ORGANIZATION_DMTF = 2, ORGANIZATION_SNIA = 11 };

struct Profile {
    const char* name;
    Organization organization;
    const char* version;
};

// `InstanceID` of the profile of that name.
String profile_id(const char* name);

// A new instance of the profile, without a namespace.
Ref<TVRHBA_RegisteredProfile> make_profile(const Profile& profile);

} // namespace cimple

#endif
