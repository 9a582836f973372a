#include "providers/TVRHBA_FCHBADiagnosticTest_Provider.h"

namespace cimple {

Unload_Status TVRHBA_FCHBADiagnosticTest_Provider::unload() {
    TVR_LOG("TVRHBA_FCHBADiagnosticTest_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCHBADiagnosticTest_Provider::enum_instances(const Class*,
                                                    const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_FCHBADiagnosticTest>(handler);
    TVR_LOG("TVRHBA_FCHBADiagnosticTest_Provider::enum_instances()");
    return status;
}

} // namespace cimple
