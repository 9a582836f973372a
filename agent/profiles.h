// Registered profiles, as ends of conformances and references.
#ifndef TVR_AGENT_PROFILES_H
#define TVR_AGENT_PROFILES_H

#include "agent/host_facts.h"
#include "agent/instance_maps.h"
#include "agent/profile_instance.h"

namespace cimple {

// The registered profile of that name; null if there is none.
const TVRHBA_RegisteredProfile* find_registered_profile(const Instance_Maps& maps,
                                                        const char* name);

// Registers a profile, unless it is registered, to which the computer system conforms. Null if its
// key is there already.
const TVRHBA_RegisteredProfile*
create_conformed_profile(Instance_Maps& maps, const Host_Facts& host, const Profile& profile);

// Registers what the host conforms to without a service or a log.
void create_profiles(Instance_Maps& maps, const Host_Facts& host);

} // namespace cimple

#endif
