// The computer system on which every logical device hangs.
#ifndef TVR_AGENT_COMPUTER_SYSTEM_H
#define TVR_AGENT_COMPUTER_SYSTEM_H

#include "agent/host_facts.h"
#include "agent/instance_maps.h"

namespace cimple {

// Finds the host's computer system and its Base Server profile at the object manager, makes a
// computer system where the host has none, and puts it into its map. 0, or TVR_FAILURE if the map
// refuses it.
uint32 create_computer_system(Instance_Maps& maps, Host_Facts& host);

} // namespace cimple

#endif
