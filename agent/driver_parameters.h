// The parameters of the adapters' driver: those that hold for the whole driver, and those of each
// port. Instances are made by a rebuild of the adapter maps; an enumeration brings their current
// values up to date.
//
// The three operations without a port run at most once in 5 seconds each, however many adapters,
// clients, rebuilds or agents there are: the times of the last runs last as long as the process. A
// rebuild less than 5 seconds after the last fetch therefore leaves the host without instances of
// driver parameters until the next rebuild.
#ifndef TVR_AGENT_DRIVER_PARAMETERS_H
#define TVR_AGENT_DRIVER_PARAMETERS_H

#include "agent/instance_maps.h"
#include "model/data.h"

#include <string>

namespace cimple {

class ProviderAgent;

// Makes instances of the driver's parameters, or of those of the port if `global` is 0, with their
// associations. 0; 1 if the port is not local or an instance is there already; 8 when memory is
// exhausted; or the library's status. Instances made before a failure stay. Under
// m_ProviderDataMutex.
uint32 tvrcimGetDriverParam(Instance_Maps& maps, const std::string& deviceId, uint32 global);

// Joins driver and driver parameter service, and makes the instances of all parameters. On the
// refresh thread, under m_ProviderDataMutex.
void fetchDriverParams(Instance_Maps& maps, const Data& data);

// Refreshers (agent/map_enumerate.h) of the property `current`. What fails leaves the values as
// they are.
void UpdateDriverParams(ProviderAgent& agent);
void UpdateDriverParamGlobal(ProviderAgent& agent);

} // namespace cimple

#endif
