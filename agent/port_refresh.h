// Refreshers (agent/map_enumerate.h) of the ports: what must follow the hardware more closely than
// the rebuilds of the maps do. A failure ends them and leaves the remaining instances as they are.
#ifndef TVR_AGENT_PORT_REFRESH_H
#define TVR_AGENT_PORT_REFRESH_H

namespace cimple {

class ProviderAgent;

// Status of the ports, at most once in 5 seconds in a process.
void UpdateFCPortStatus(ProviderAgent& agent);

// Counters of the ports, at every call.
void GetFCPortStats(ProviderAgent& agent);

} // namespace cimple

#endif
