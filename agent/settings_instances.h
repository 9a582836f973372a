// The provider's own settings as instances.
#ifndef TVR_AGENT_SETTINGS_INSTANCES_H
#define TVR_AGENT_SETTINGS_INSTANCES_H

#include "agent/instance_maps.h"
#include "common/config_file.h"

namespace cimple {

// One for each setting, with its value as it is now. Throws Rebuild_Ended.
void create_settings(Instance_Maps& maps, const TvrConfigFile& config);

} // namespace cimple

#endif
