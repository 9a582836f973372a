#include "providers/TVRHBA_FCDriverLogEntry_Provider.h"

namespace cimple {

Unload_Status TVRHBA_FCDriverLogEntry_Provider::unload() {
    TVR_LOG("TVRHBA_FCDriverLogEntry_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCDriverLogEntry_Provider::enum_instances(const Class*, const Enum_Instances_Handler&) {
    // Records are not listed.
    TVR_IS_AGENT_LOADED();
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
