#include "providers/TVRHBA_DriverRecordLogManagesRecord_Provider.h"

#include "agent/provider_calls.h"

namespace cimple {

Load_Status TVRHBA_DriverRecordLogManagesRecord_Provider::load() {
    return load_agent();
}

Unload_Status TVRHBA_DriverRecordLogManagesRecord_Provider::unload() {
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_DriverRecordLogManagesRecord_Provider::enum_instances(const Class*,
                                                             const Enum_Instances_Handler&) {
    // Records are not listed.
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
