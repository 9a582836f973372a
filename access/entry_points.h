// The entry points of the management libraries, each as an object that is called like the function
// whose name it bears: `rm::LRM_GetPortStatistics(port, buffer, &size)`. The function is looked up
// when the libraries are loaded; one that can't be found is looked for again at each call, which
// answers a fixed failure value.
//
// Three families differ in where they are looked up:
//
//   L  LRM_x   in liblrmapi.so; without it in librmapi.so, there as LRM_x and then as RM_x
//   R  RM_x    in liblrmapi.so; without it in librmapi.so
//   H  HBA_x   in libHBAAPI.so; without it among all global symbols, where liblrmapi.so shows its
//              own; without both in librmapi.so
//
// Threads: calls may come from several threads, except while the libraries are loaded or unloaded.
// A thread's calls can be made to end early (CallsUntil).
#ifndef TVR_ACCESS_ENTRY_POINTS_H
#define TVR_ACCESS_ENTRY_POINTS_H

#include "access/rm/rm_api.h"
#include "runtime/type.h"

#include <atomic>
#include <type_traits>

// family, name, failure value (pointers fail with null, functions without result just return)
#define TVR_ENTRY_POINTS(X)                                                                        \
    X(H, HBA_GetNumberOfAdapters, 0)                                                               \
    X(H, HBA_GetAdapterName, 1)                                                                    \
    X(H, HBA_OpenAdapter, 1)                                                                       \
    X(H, HBA_CloseAdapter, 0)                                                                      \
    X(H, HBA_GetAdapterAttributes, 1)                                                              \
    X(H, HBA_GetAdapterPortAttributes, 1)                                                          \
    X(H, HBA_GetFcpTargetMapping, 1)                                                               \
    X(H, HBA_RefreshInformation, 0)                                                                \
    X(H, HBA_SendScsiInquiry, 1)                                                                   \
    X(H, HBA_SendReadCapacity, 1)                                                                  \
    X(H, HBA_RegisterForAdapterPortEvents, 1)                                                      \
    X(H, HBA_RemoveCallback, 1)                                                                    \
    X(R, RM_GetAttributeValue, 0)                                                                  \
    X(R, RM_GetNextVpdEntry, 0)                                                                    \
    X(R, RM_GetNumberOfLocalAdapters, 0)                                                           \
    X(R, RM_GetLocalHBAInfo, 1)                                                                    \
    X(R, RM_ImportHBAFileA, 1)                                                                     \
    X(R, RM_IsLocalHBA, 1)                                                                         \
    X(R, RM_StatusString, 1)                                                                       \
    X(R, RM_ValidateWwn, 1)                                                                        \
    X(R, RM_VerifyFirmwareA, 1)                                                                    \
    X(L, LRM_InitLib, 1)                                                                           \
    X(L, LRM_GetHBAAttributes, 1)                                                                  \
    X(L, LRM_GetPortAttributes, 1)                                                                 \
    X(L, LRM_GetPortStatistics, 1)                                                                 \
    X(L, LRM_GetDriverType, 1)                                                                     \
    X(L, LRM_GetVPD, 1)                                                                            \
    X(L, LRM_GetSffData, 1)                                                                        \
    X(L, LRM_GetFcpTargetMapping, 1)                                                               \
    X(L, LRM_ChangeWWN, 1)                                                                         \
    X(L, LRM_GetWWNCapability, 1)                                                                  \
    X(L, LRM_ReadWWN, 1)                                                                           \
    X(L, LRM_RestoreWWN, 1)                                                                        \
    X(L, LRM_GetDriverParams, 1)                                                                   \
    X(L, LRM_GetDriverParamsGlobal, 1)                                                             \
    X(L, LRM_SetDriverParam, 1)                                                                    \
    X(L, LRM_DownloadFirmware, 1)                                                                  \
    X(L, LRM_ResetHBA, 1)                                                                          \
    X(L, LRM_SetBootBiosState, 1)                                                                  \
    X(L, LRM_SetPortEnabled, 1)                                                                    \
    X(L, LRM_GenerateDump, 1)                                                                      \
    X(L, LRM_GenerateEfdDump, 1)                                                                   \
    X(L, LRM_GetDumpDirectoryA, 1)                                                                 \
    X(L, LRM_SetDumpDirectory, 1)                                                                  \
    X(L, LRM_GetDumpRetentionCount, 1)                                                             \
    X(L, LRM_SetDumpRetentionCount, 1)                                                             \
    X(L, LRM_GetDumpFileNames, 1)                                                                  \
    X(L, LRM_DeleteDumpFiles, 1)                                                                   \
    X(L, LRM_DiagBeacon, 1)                                                                        \
    X(L, LRM_DiagBeaconState, 1)                                                                   \
    X(L, LRM_DiagCancelDiagnostic, 1)                                                              \
    X(L, LRM_DiagEchoTestV2, 1)                                                                    \
    X(L, LRM_DiagGetLoadListParams, 1)                                                             \
    X(L, LRM_DiagGetResults, 1)                                                                    \
    X(L, LRM_DiagLoopBackTestV3, 1)                                                                \
    X(L, LRM_DiagPciLoopBackTestV2, 1)                                                             \
    X(L, LRM_DiagReadPCIRegistersV2, 1)                                                            \
    X(L, LRM_DiagRunPOST, 1)                                                                       \
    X(L, LRM_VPGetAttributes, 1)                                                                   \
    X(L, LRM_VPList, 1)                                                                            \
    X(L, LRM_VPListTargets, 1)                                                                     \
    X(L, LRM_GetVMFromVPort, 1)                                                                    \
    X(L, LRM_GetVMInfo, 1)

namespace cimple::rm {

enum class Family : uint8 { H, R, L };

// Name, place and cached address of one entry point.
class Symbol {
public:
    constexpr Symbol(Family family, const char* name) noexcept : m_name(name), m_family(family) {}
    Symbol(const Symbol&) = delete;
    Symbol& operator=(const Symbol&) = delete;

    // The address, null when there is none. A failed lookup is repeated at the next call.
    void* find() noexcept;
    // Forgets the address.
    void reset() noexcept { m_address.store(nullptr, std::memory_order_release); }

private:
    void* lookUp() const noexcept;

    std::atomic<void*> m_address{nullptr};
    const char* m_name;
    Family m_family;
};

template <class Function> class EntryPoint;

template <class Result, class... Arguments> class EntryPoint<Result(Arguments...)> : public Symbol {
public:
    constexpr EntryPoint(Family family, const char* name, int failure) noexcept
        : Symbol(family, name), m_failure(failure) {}

    Result operator()(Arguments... arguments) {
        if (auto function = reinterpret_cast<Result (*)(Arguments...)>(find())) {
            return function(arguments...);
        }
        if constexpr (std::is_pointer_v<Result>) {
            return nullptr;
        } else if constexpr (!std::is_void_v<Result>) {
            return static_cast<Result>(m_failure);
        }
    }

private:
    int m_failure;
};

// NOLINTBEGIN(bugprone-macro-parentheses): the argument is the name that is declared
#define TVR_DECLARE_ENTRY_POINT(family, name, failure)                                             \
    extern constinit EntryPoint<decltype(::name)> name;
TVR_ENTRY_POINTS(TVR_DECLARE_ENTRY_POINT)
#undef TVR_DECLARE_ENTRY_POINT
// NOLINTEND(bugprone-macro-parentheses)

// Forgets the addresses of all entry points.
void resetEntryPoints() noexcept;
// Looks all of them up ahead of their first calls. Who closes the module holds the loader's lock
// and waits for its threads: calls of functions that are there don't wait for the loader then.
void findEntryPoints() noexcept;

// While it lives, the calls of its thread end when `stop` comes true: from then on each fails as if
// there were no such function, and no library is entered any more. Opening and closing an adapter
// goes on, so that what is open gets closed; who opens one looks at callsAreStopped() first. `stop`
// doesn't become false again.
class CallsUntil {
public:
    explicit CallsUntil(const std::atomic<bool>& stop) noexcept;
    ~CallsUntil();
    CallsUntil(const CallsUntil&) = delete;
    CallsUntil& operator=(const CallsUntil&) = delete;
};

// Whether the calls of this thread have ended so.
bool callsAreStopped() noexcept;

} // namespace cimple::rm

#endif
