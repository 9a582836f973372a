// Which maps a rebuild empties, in groups. Under m_ProviderDataMutex, or while no other thread
// reaches the agent.
#ifndef TVR_AGENT_CLEAR_MAPS_H
#define TVR_AGENT_CLEAR_MAPS_H

#include "agent/instance_maps.h"

namespace cimple {

// Everything that a rebuild of the adapter maps makes anew, and no more.
void clearAdapterMaps(Instance_Maps& maps);
// The same of the SAN maps.
void clearSANMaps(Instance_Maps& maps);
// Empties none: driver parameters go with the adapter maps.
void clearDriverMaps();

// Groups by feature. Answer 0.
uint32 ClearFCDriverLogClasses(Instance_Maps& maps);
uint32 ClearPortVirtualizationMaps(Instance_Maps& maps);
// Mode 0 empties the catalogue of tests, 1 the records and 2 the jobs of past tests, which outlive
// a rebuild.
uint32 ClearDiagnosticClassMaps(Instance_Maps& maps, uint32 mode);

} // namespace cimple

#endif
