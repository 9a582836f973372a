// Whether what a client calls a port is one.
#ifndef TVR_AGENT_PORT_LOOKUP_H
#define TVR_AGENT_PORT_LOOKUP_H

#include "agent/instance_maps.h"

namespace cimple {

// True if a port has that `DeviceID`, whatever the case of its letters. With a Full_Guard held
// (agent/locks.h). They differ in what they log.
bool IsValidFCPort(const Instance_Maps& maps, const String& device_id);
bool IsValidLogicalPort(const Instance_Maps& maps, const String& device_id);

} // namespace cimple

#endif
