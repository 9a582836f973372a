// Enumerations of the agent's maps.
#ifndef TVR_AGENT_MAP_ENUMERATE_H
#define TVR_AGENT_MAP_ENUMERATE_H

#include "agent/provider_agent.h"
#include "runtime/provider.h"
#include "runtime/until_closed.h"

namespace cimple {

// The three forms, for any map. Each copies the map, or what the handler's selector accepts of it,
// under the locks of its reader (agent/locks.h) and then hands the copies, in the order of the map,
// to the handler, which owns them; no lock of the agent is held meanwhile, so that a slow client
// holds up nobody. Waits, refreshers and lines in the log are the same for few as for all. Whatever
// goes wrong ends the enumeration with a line in the log and what was delivered so far. The status
// is a failure only if no refresh could be had, and so nothing to answer from.
Enum_Instances_Status enumerate_adapter_map(ProviderAgent& agent, const Instance_Map& map,
                                            const Enum_Instances_Handler& handler);
Enum_Instances_Status enumerate_SAN_map(ProviderAgent& agent, const Instance_Map& map,
                                        const Enum_Instances_Handler& handler);
// Updates instances of the agent's maps in place from the hardware; called with the locks held.
using Refresher = void (*)(ProviderAgent& agent);
// `mutex` serialises the refreshers of one map.
Enum_Instances_Status enumerate_active_map(ProviderAgent& agent, const Instance_Map& map,
                                           Mutex& mutex, Refresher refresher,
                                           const Enum_Instances_Handler& handler);

template <class C>
Enum_Instances_Status map_enumerate(ProviderAgent& agent, const Class_Map<C>& map,
                                    const Enum_Instances_Handler& handler) {
    return enumerate_adapter_map(agent, map, handler);
}

template <class C>
Enum_Instances_Status map_enumerate_SAN(ProviderAgent& agent, const Class_Map<C>& map,
                                        const Enum_Instances_Handler& handler) {
    return enumerate_SAN_map(agent, map, handler);
}

template <class C>
Enum_Instances_Status map_enumerate_active(ProviderAgent& agent, const Class_Map<C>& map,
                                           const Enum_Instances_Handler& handler,
                                           Refresher refresher) {
    static Until_Closed<Mutex> mutex(true);
    return enumerate_active_map(agent, map, mutex.get(), refresher, handler);
}

} // namespace cimple

#endif
