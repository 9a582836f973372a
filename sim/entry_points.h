// The entry points that the simulator exports, as lists from which the functions, their names and
// their counters are made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

// The HBA API.
#define TVRSIM_HBA_ENTRY_POINTS(X)                                                                 \
    X(HBA_GetVersion)                                                                              \
    X(HBA_LoadLibrary)                                                                             \
    X(HBA_FreeLibrary)                                                                             \
    X(HBA_RegisterLibrary)                                                                         \
    X(HBA_RegisterLibraryV2)                                                                       \
    X(HBA_GetNumberOfAdapters)                                                                     \
    X(HBA_GetAdapterName)                                                                          \
    X(HBA_OpenAdapter)                                                                             \
    X(HBA_CloseAdapter)                                                                            \
    X(HBA_GetAdapterAttributes)                                                                    \
    X(HBA_GetAdapterPortAttributes)                                                                \
    X(HBA_RefreshInformation)                                                                      \
    X(HBA_GetFcpTargetMapping)                                                                     \
    X(HBA_SendScsiInquiry)                                                                         \
    X(HBA_SendReadCapacity)                                                                        \
    X(HBA_RegisterForAdapterPortEvents)                                                            \
    X(HBA_RemoveCallback)

// Entry points of the RM library that have no LRM_ form.
#define TVRSIM_RM_ENTRY_POINTS(X)                                                                  \
    X(RM_GetAttributeValue)                                                                        \
    X(RM_GetNextVpdEntry)                                                                          \
    X(RM_GetNumberOfLocalAdapters)                                                                 \
    X(RM_GetLocalHBAInfo)                                                                          \
    X(RM_ImportHBAFileA)                                                                           \
    X(RM_IsLocalHBA)                                                                               \
    X(RM_StatusString)                                                                             \
    X(RM_ValidateWwn)                                                                              \
    X(RM_VerifyFirmwareA)

// Entry points that exist as LRM_name and as RM_name: X(name, parameters, arguments).
#define TVRSIM_LRM_ENTRY_POINTS(X)                                                                 \
    X(GetHBAAttributes, (HBA_WWN port, void* buffer, uint32_t* size), (port, buffer, size))        \
    X(GetPortAttributes, (HBA_WWN port, void* buffer, uint32_t* size), (port, buffer, size))       \
    X(GetPortStatistics, (HBA_WWN port, void* buffer, uint32_t* size), (port, buffer, size))       \
    X(GetDriverType, (HBA_WWN port, uint32_t * type), (port, type))                                \
    X(GetVPD, (HBA_WWN port, void* buffer, uint32_t* size), (port, buffer, size))                  \
    X(GetSffData, (HBA_WWN port, void* buffer, uint32_t* size), (port, buffer, size))              \
    X(GetFcpTargetMapping, (HBA_WWN port, HBA_FCPTARGETMAPPING * mapping), (port, mapping))        \
    X(ChangeWWN, (HBA_WWN port, HBA_WWN wwpn, HBA_WWN wwnn, uint32_t bank, uint32_t * state),      \
      (port, wwpn, wwnn, bank, state))                                                             \
    X(GetWWNCapability, (HBA_WWN port, uint32_t * capability), (port, capability))                 \
    X(ReadWWN, (HBA_WWN port, uint32_t bank, HBA_WWN * wwpn, HBA_WWN * wwnn, uint32_t * state),    \
      (port, bank, wwpn, wwnn, state))                                                             \
    X(RestoreWWN, (HBA_WWN port, uint32_t bank, uint32_t * state), (port, bank, state))            \
    X(GetDriverParams, (HBA_WWN port, RM_DRIVERPARAM * params, uint32_t * count),                  \
      (port, params, count))                                                                       \
    X(GetDriverParamsGlobal, (HBA_WWN port, RM_DRIVERPARAM * params, uint32_t * count),            \
      (port, params, count))                                                                       \
    X(SetDriverParam, (HBA_WWN port, const char* assignment, uint32_t control),                    \
      (port, assignment, control))                                                                 \
    X(DownloadFirmware, (HBA_WWN port, const char* path, uint32_t flags), (port, path, flags))     \
    X(ResetHBA, (HBA_WWN port, uint32_t mode), (port, mode))                                       \
    X(SetBootBiosState, (HBA_WWN port, uint32_t enable), (port, enable))                           \
    X(SetPortEnabled, (HBA_WWN port, uint8_t enable, uint8_t * state), (port, enable, state))      \
    X(GenerateDump, (HBA_WWN host, HBA_WWN port), (host, port))                                    \
    X(GenerateEfdDump, (HBA_WWN port, uint32_t type, uint32_t flags), (port, type, flags))         \
    X(GetDumpDirectoryA, (HBA_WWN port, char* directory, uint32_t size), (port, directory, size))  \
    X(SetDumpDirectory, (HBA_WWN port, const char* directory), (port, directory))                  \
    X(GetDumpRetentionCount, (HBA_WWN port, uint32_t * count), (port, count))                      \
    X(SetDumpRetentionCount, (HBA_WWN port, uint32_t count), (port, count))                        \
    X(GetDumpFileNames, (HBA_WWN port, RM_DUMPFILENAMES * names), (port, names))                   \
    X(DeleteDumpFiles, (HBA_WWN port), (port))                                                     \
    X(DiagBeacon, (HBA_WWN port, uint32_t state), (port, state))                                   \
    X(DiagBeaconState, (HBA_WWN port, uint32_t * state), (port, state))                            \
    X(DiagCancelDiagnostic, (HBA_WWN port, uint32_t test), (port, test))                           \
    X(DiagEchoTestV2,                                                                              \
      (HBA_WWN port, HBA_WWN target, uint32_t cycles, uint32_t halt, uint32_t * test,              \
       uint32_t flags, const void* pattern),                                                       \
      (port, target, cycles, halt, test, flags, pattern))                                          \
    X(DiagGetLoadListParams, (HBA_WWN port, RM_LOADLIST * list), (port, list))                     \
    X(DiagGetResults, (HBA_WWN port, uint32_t test, RM_DIAGRESULT * result), (port, test, result)) \
    X(DiagLoopBackTestV3,                                                                          \
      (HBA_WWN port, uint32_t internal, uint32_t cycles, uint32_t halt, uint32_t * test,           \
       uint32_t flags, const void* pattern),                                                       \
      (port, internal, cycles, halt, test, flags, pattern))                                        \
    X(DiagPciLoopBackTestV2,                                                                       \
      (HBA_WWN port, uint32_t cycles, uint32_t halt, uint32_t * test, uint32_t flags,              \
       const void* pattern),                                                                       \
      (port, cycles, halt, test, flags, pattern))                                                  \
    X(DiagReadPCIRegistersV2, (HBA_WWN port, RM_PCIREGISTERS * registers), (port, registers))      \
    X(DiagRunPOST, (HBA_WWN port, uint32_t * test), (port, test))                                  \
    X(VPList, (HBA_WWN port, RM_VPORTLIST * list), (port, list))                                   \
    X(VPGetAttributes, (HBA_WWN port, HBA_WWN virtualPort, RM_VPORTATTRIBUTES * attributes),       \
      (port, virtualPort, attributes))                                                             \
    X(VPListTargets, (HBA_WWN port, HBA_WWN virtualPort, HBA_FCPTARGETMAPPING * targets),          \
      (port, virtualPort, targets))                                                                \
    X(GetVMFromVPort, (const RM_VPORTENTRY* virtualPort, RM_VMENTRY* firstEntry),                  \
      (virtualPort, firstEntry))                                                                   \
    X(GetVMInfo, (const RM_VMENTRY* machine, RM_VMINFO* info), (machine, info))

namespace tvrsim {

/// One exported function. RM_name and LRM_name of one call are two entry points.
enum class EntryPoint : uint16_t {
#define TVRSIM_ENUM(name) name,
#define TVRSIM_ENUM_BOTH(name, parameters, arguments) LRM_##name, RM_##name,
    TVRSIM_HBA_ENTRY_POINTS(TVRSIM_ENUM) TVRSIM_RM_ENTRY_POINTS(TVRSIM_ENUM) LRM_InitLib,
    RM_InitLib,
    TVRSIM_LRM_ENTRY_POINTS(TVRSIM_ENUM_BOTH)
#undef TVRSIM_ENUM
#undef TVRSIM_ENUM_BOTH
        count
};

inline constexpr size_t entryPointCount = static_cast<size_t>(EntryPoint::count);

/// The exported name.
std::string_view nameOf(EntryPoint entryPoint);

/// The entry point of an exported name, or nothing.
std::optional<EntryPoint> entryPointOf(std::string_view name);

} // namespace tvrsim
