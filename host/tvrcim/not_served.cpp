#include "host/tvrcim/not_served.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tvrcim {

namespace {

constexpr std::string_view own_classes = "TVRHBA_";

constexpr std::string_view always_empty[] = {
    "TVRHBA_ChassisContainsCard",
    "TVRHBA_VMSystemDevice",
};

// Of all methods these are carried out, each as "CLASS.METHOD".
constexpr std::string_view carried_out[] = {
    "TVRHBA_BootBIOSService.DisableBootBIOS",
    "TVRHBA_BootBIOSService.EnableBootBIOS",
    "TVRHBA_BootBIOSService.GetBootBIOSStatus",
    "TVRHBA_BootBIOSService.StartService",
    "TVRHBA_DiagnosticsLog.ClearLog",
    "TVRHBA_DumpService.DeleteDump",
    "TVRHBA_DumpService.GenerateDump",
    "TVRHBA_DumpService.GetDumpFileNames",
    "TVRHBA_FCHBADiagnosticTest.RunDiagnosticService",
    "TVRHBA_FCHBADriverParamService.SetDriverParameter",
    "TVRHBA_FCHBADriverParamService.StartService",
    "TVRHBA_FCHBAWWNService.ChangeWWN",
    "TVRHBA_FCHBAWWNService.GetWWNCapability",
    "TVRHBA_FCHBAWWNService.ReadWWN",
    "TVRHBA_FCHBAWWNService.RestoreWWN",
    "TVRHBA_HelpService.GetHelp",
    "TVRHBA_RecordLog.ClearLog",
    "TVRHBA_RecordLog.RequestStateChange",
    "TVRHBA_RecordLog.SetLogParams",
    "TVRHBA_SoftwareInstallationService.InstallFromByteStream",
    "TVRHBA_SoftwareInstallationService.InstallFromURI",
    "TVRHBA_SoftwareInstallationService.ResetHBA",
    "TVRHBA_SoftwareInstallationService.SetPortEnabled",
    "TVRHBA_SoftwareInstallationService.StartService",
};

} // namespace

bool is_always_empty(const tvrmof::Class& model) {
    return std::find(std::begin(always_empty), std::end(always_empty), model.name) !=
           std::end(always_empty);
}

bool is_unsupported(const tvrmof::Class& model, const tvrmof::Feature& method) {
    return model.name.starts_with(own_classes) &&
           std::find(std::begin(carried_out), std::end(carried_out),
                     model.name + "." + method.name) == std::end(carried_out);
}

} // namespace tvrcim
