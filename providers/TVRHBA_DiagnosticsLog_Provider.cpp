#include "providers/TVRHBA_DiagnosticsLog_Provider.h"

namespace cimple {

Unload_Status TVRHBA_DiagnosticsLog_Provider::unload() {
    TVR_LOG("TVRHBA_DiagnosticsLog_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_DiagnosticsLog_Provider::enum_instances(const Class*,
                                               const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_DiagnosticsLog>(handler);
    TVR_LOG("TVRHBA_DiagnosticsLog_Provider::enum_instances()");
    return status;
}

} // namespace cimple
