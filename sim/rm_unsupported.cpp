// Functions that the simulated adapters do not have: each answers the status by which the library
// refuses its kind of function and changes nothing.
#include "sim/entry_points.h"

#include "sim/rm_behaviour.h"

namespace tvrsim::behaviour {

#define TVRSIM_REFUSE(name, status, ...)                                                           \
    RM_STATUS name(__VA_ARGS__) {                                                                  \
        return status;                                                                             \
    }

TVRSIM_REFUSE(GetVPD, RM_STATUS_NOT_SUPPORTED, HBA_WWN, void*, uint32_t*)
TVRSIM_REFUSE(GetSffData, RM_STATUS_NOT_SUPPORTED, HBA_WWN, void*, uint32_t*)
TVRSIM_REFUSE(DiagGetLoadListParams, RM_STATUS_NOT_SUPPORTED, HBA_WWN, RM_LOADLIST*)
TVRSIM_REFUSE(DiagReadPCIRegistersV2, RM_STATUS_NOT_SUPPORTED, HBA_WWN, RM_PCIREGISTERS*)

TVRSIM_REFUSE(ChangeWWN, RM_STATUS_WWN_NOT_AVAILABLE, HBA_WWN, HBA_WWN, HBA_WWN, uint32_t,
              uint32_t*)
TVRSIM_REFUSE(GetWWNCapability, RM_STATUS_WWN_NOT_AVAILABLE, HBA_WWN, uint32_t*)
TVRSIM_REFUSE(ReadWWN, RM_STATUS_WWN_NOT_AVAILABLE, HBA_WWN, uint32_t, HBA_WWN*, HBA_WWN*,
              uint32_t*)
TVRSIM_REFUSE(RestoreWWN, RM_STATUS_WWN_NOT_AVAILABLE, HBA_WWN, uint32_t, uint32_t*)

TVRSIM_REFUSE(GetDriverParams, RM_STATUS_NOT_SUPPORTED, HBA_WWN, RM_DRIVERPARAM*, uint32_t*)
TVRSIM_REFUSE(GetDriverParamsGlobal, RM_STATUS_NOT_SUPPORTED, HBA_WWN, RM_DRIVERPARAM*, uint32_t*)
TVRSIM_REFUSE(SetDriverParam, RM_STATUS_NOT_SUPPORTED, HBA_WWN, const char*, uint32_t)

TVRSIM_REFUSE(DownloadFirmware, RM_STATUS_NOT_SUPPORTED, HBA_WWN, const char*, uint32_t)
TVRSIM_REFUSE(ResetHBA, RM_STATUS_NOT_SUPPORTED, HBA_WWN, uint32_t)
TVRSIM_REFUSE(SetBootBiosState, RM_STATUS_NOT_SUPPORTED, HBA_WWN, uint32_t)
TVRSIM_REFUSE(SetPortEnabled, RM_STATUS_NOT_SUPPORTED, HBA_WWN, uint8_t, uint8_t*)

TVRSIM_REFUSE(GenerateDump, RM_STATUS_NOT_SUPPORTED, HBA_WWN, HBA_WWN)
TVRSIM_REFUSE(GenerateEfdDump, RM_STATUS_NOT_SUPPORTED, HBA_WWN, uint32_t, uint32_t)
TVRSIM_REFUSE(GetDumpDirectoryA, RM_STATUS_NOT_SUPPORTED, HBA_WWN, char*, uint32_t)
TVRSIM_REFUSE(SetDumpDirectory, RM_STATUS_NOT_SUPPORTED, HBA_WWN, const char*)
TVRSIM_REFUSE(GetDumpRetentionCount, RM_STATUS_NOT_SUPPORTED, HBA_WWN, uint32_t*)
TVRSIM_REFUSE(SetDumpRetentionCount, RM_STATUS_NOT_SUPPORTED, HBA_WWN, uint32_t)
TVRSIM_REFUSE(GetDumpFileNames, RM_STATUS_NOT_SUPPORTED, HBA_WWN, RM_DUMPFILENAMES*)
TVRSIM_REFUSE(DeleteDumpFiles, RM_STATUS_NOT_SUPPORTED, HBA_WWN)

TVRSIM_REFUSE(DiagEchoTestV2, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, HBA_WWN, uint32_t, uint32_t,
              uint32_t*, uint32_t, const void*)
TVRSIM_REFUSE(DiagLoopBackTestV3, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t, uint32_t,
              uint32_t, uint32_t*, uint32_t, const void*)
TVRSIM_REFUSE(DiagPciLoopBackTestV2, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t, uint32_t,
              uint32_t*, uint32_t, const void*)
TVRSIM_REFUSE(DiagRunPOST, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t*)
TVRSIM_REFUSE(DiagGetResults, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t, RM_DIAGRESULT*)
TVRSIM_REFUSE(DiagCancelDiagnostic, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t)

TVRSIM_REFUSE(VPList, RM_STATUS_VPORT_NOT_SUPPORTED, HBA_WWN, RM_VPORTLIST*)
TVRSIM_REFUSE(VPGetAttributes, RM_STATUS_VPORT_NOT_SUPPORTED, HBA_WWN, HBA_WWN, RM_VPORTATTRIBUTES*)
TVRSIM_REFUSE(VPListTargets, RM_STATUS_VPORT_NOT_SUPPORTED, HBA_WWN, HBA_WWN, HBA_FCPTARGETMAPPING*)
TVRSIM_REFUSE(GetVMFromVPort, RM_STATUS_VPORT_NOT_SUPPORTED, const RM_VPORTENTRY*, RM_VMENTRY*)
TVRSIM_REFUSE(GetVMInfo, RM_STATUS_VPORT_NOT_SUPPORTED, const RM_VMENTRY*, RM_VMINFO*)

#undef TVRSIM_REFUSE

} // namespace tvrsim::behaviour
