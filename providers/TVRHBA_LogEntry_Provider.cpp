#include "providers/TVRHBA_LogEntry_Provider.h"

#include "agent/provider_calls.h"

namespace cimple {

Load_Status TVRHBA_LogEntry_Provider::load() {
    return load_agent();
}

Unload_Status TVRHBA_LogEntry_Provider::unload() {
    return unload_agent();
}

Enum_Instances_Status TVRHBA_LogEntry_Provider::enum_instances(const Class*,
                                                               const Enum_Instances_Handler&) {
    // Records are not listed.
    TVR_IS_AGENT_LOADED();
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
