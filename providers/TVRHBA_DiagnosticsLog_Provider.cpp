#include "providers/TVRHBA_DiagnosticsLog_Provider.h"

#include "agent/diagnostic_records.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

uint32 clear_diagnostics_log(Instance_Maps& maps, const TVRHBA_DiagnosticsLog* self) {
    const TVRHBA_DiagnosticsLog* log = maps.m_TVRHBA_DiagnosticsLog_map.lookup(self);
    if (log == nullptr) {
        TVR_LOG("Invalid instance of Diagnostic Log");
        return METHOD_INVALID_PARAMETER;
    }
    if (!clear_diagnostic_records(maps, log->InstanceID.value)) {
        return METHOD_FAILED;
    }
    TVR_LOG("Exiting the TVRHBA CDM Clear log");
    TVR_LOG("Exiting TVRHBA_DiagnosticsLog_Provider::ClearLog");
    return METHOD_COMPLETED;
}

} // namespace

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

Invoke_Method_Status TVRHBA_DiagnosticsLog_Provider::ClearLog(const Class* self,
                                                              Property<uint32>& return_value) {
    TVR_LOG("TVRHBA_DiagnosticsLog_Provider::ClearLog");
    return call_method(return_value, [&](ProviderAgent& agent) {
        return clear_diagnostics_log(agent.maps, self);
    });
}

} // namespace cimple
