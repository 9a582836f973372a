#include "providers/TVRHBA_LogEntry_Provider.h"

namespace cimple {

Enum_Instances_Status TVRHBA_LogEntry_Provider::enum_instances(const Class*,
                                                               const Enum_Instances_Handler&) {
    // Records are not listed.
    TVR_IS_AGENT_LOADED();
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
