// What class providers have in common: load, unload, and the enumeration of their class's map.
#ifndef TVR_AGENT_PROVIDER_CALLS_H
#define TVR_AGENT_PROVIDER_CALLS_H

#include "agent/map_enumerate.h"
#include "runtime/enumerating_provider.h"
#include "runtime/log.h"

namespace cimple {

// Brings the agent into being if need be, and adds a count to one that is usable.
Load_Status load_agent();
// Takes the count away again.
Unload_Status unload_agent();

// Enumerate the class's map; without an agent there is nothing to enumerate.
template <class C> Enum_Instances_Status enumerate(const Enum_Instances_Handler& handler) {
    ProviderAgent* agent = ProviderAgent::instance();
    return agent == nullptr ? ENUM_INSTANCES_OK
                            : map_enumerate(*agent, agent->maps.*map_of<C>, handler);
}
template <class C> Enum_Instances_Status enumerate_SAN(const Enum_Instances_Handler& handler) {
    ProviderAgent* agent = ProviderAgent::instance();
    return agent == nullptr ? ENUM_INSTANCES_OK
                            : map_enumerate_SAN(*agent, agent->maps.*map_of<C>, handler);
}
template <class C>
Enum_Instances_Status enumerate_active(const Enum_Instances_Handler& handler, Refresher refresher) {
    ProviderAgent* agent = ProviderAgent::instance();
    return agent == nullptr
               ? ENUM_INSTANCES_OK
               : map_enumerate_active(*agent, agent->maps.*map_of<C>, handler, refresher);
}

// Base of a provider of instances that the agent keeps; adds a load and an unload that do no more
// than count. An unload takes a count away also after a load that failed, as the object manager's
// cleanup goes.
template <class C> class Agent_Provider : public Enumerating_Provider<C> {
public:
    Load_Status load() { return load_agent(); }
    Unload_Status unload() { return unload_agent(); }
};

// True if there is a usable agent; else a line in the log names the provider's source file.
bool is_agent_loaded(const char* file, uint32 line) noexcept;

} // namespace cimple

#define TVR_IS_AGENT_LOADED() ::cimple::is_agent_loaded(__FILE__, __LINE__)

#endif
