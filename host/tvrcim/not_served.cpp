#include "host/tvrcim/not_served.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tvrcim {

namespace {

constexpr std::string_view own_classes = "TVRHBA_";

constexpr std::string_view always_empty[] = {
    "TVRHBA_AffectedJobElement",
    "TVRHBA_AlertIndication",
    "TVRHBA_AvailableDiagnosticService",
    "TVRHBA_ChassisContainsCard",
    "TVRHBA_ConcreteJob",
    "TVRHBA_CorrespondingSettingDataRecord",
    "TVRHBA_DiagElementCapabilities",
    "TVRHBA_DiagElementSettingData",
    "TVRHBA_DiagElementSoftwareIdentity",
    "TVRHBA_DiagHostedService",
    "TVRHBA_DiagServiceConformsToProfile",
    "TVRHBA_DiagnosticCompletionRecord",
    "TVRHBA_DiagnosticIdentity",
    "TVRHBA_DiagnosticServiceRecord",
    "TVRHBA_DiagnosticSettingDataRecord",
    "TVRHBA_DiagnosticsLog",
    "TVRHBA_DriverRecordLogManagesRecord",
    "TVRHBA_DumpData",
    "TVRHBA_DumpService",
    "TVRHBA_DumpServiceAffectsElement",
    "TVRHBA_ElementAllocatedFromPool",
    "TVRHBA_ElementDumpData",
    "TVRHBA_FCDriverLogEntry",
    "TVRHBA_FCHBADiagnosticServiceCapabilities",
    "TVRHBA_FCHBADiagnosticSettingData",
    "TVRHBA_FCHBADiagnosticTest",
    "TVRHBA_HelpService",
    "TVRHBA_HostedDumpService",
    "TVRHBA_HostedResourcePool",
    "TVRHBA_HostedService",
    "TVRHBA_JobElementSettingData",
    "TVRHBA_JobSettingData",
    "TVRHBA_LogEntry",
    "TVRHBA_LogManagesRecord",
    "TVRHBA_OwningJobElement",
    "TVRHBA_RecordAppliesToElement",
    "TVRHBA_RecordLogManagesRecord",
    "TVRHBA_ResourcePool",
    "TVRHBA_ServiceAffectsElement",
    "TVRHBA_ServiceAvailableToElement",
    "TVRHBA_UseOfLog",
    "TVRHBA_VMSystemDevice",
    "TVRHBA_VPortHostedDependency",
    "TVRHBA_VirtualFCPort",
};

// Of all methods these are carried out, each as "CLASS.METHOD".
constexpr std::array<std::string_view, 0> carried_out = {};

} // namespace

bool is_always_empty(const tvrmof::Class& model) {
    return std::find(std::begin(always_empty), std::end(always_empty), model.name) !=
           std::end(always_empty);
}

bool is_unsupported(const tvrmof::Class& model, const tvrmof::Feature& method) {
    return model.name.starts_with(own_classes) &&
           std::find(carried_out.begin(), carried_out.end(), model.name + "." + method.name) ==
               carried_out.end();
}

} // namespace tvrcim
