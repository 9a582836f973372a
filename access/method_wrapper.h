// The one class through which providers and data model reach the RM library.
#ifndef TVR_ACCESS_METHOD_WRAPPER_H
#define TVR_ACCESS_METHOD_WRAPPER_H

#include "access/rm/rm_api.h"
#include "runtime/instance.h"
#include "runtime/type.h"

#include <string>
#include <string_view>
#include <vector>

namespace cimple {

// An object stands for an initialised RM library. It has no data of its own: what is here beside
// construction and destruction needs no object.
//
// World wide names have these text forms: 16 digits (the DeviceID form), and 23 characters with
// colons between the pairs of digits.
class TVR_MethodWrapper {
public:
    // Initialises the RM library; throws std::runtime_error when LRM_InitLib answers a positive
    // status, or when another construction in this process does not end in time.
    //
    // Two named semaphores, "/TVR_RM_INIT_LIB_<pid>" and "/TVR_RM_INIT_LIB_DONE_<pid>", order the
    // constructions of one process (see InitSemaphore). Any destruction ends what the constructions
    // before it had in common. What a dead process with the same id has left neither delays a
    // construction nor keeps it from initialising. Every wait has a limit (see setInitLibWait). The
    // second name is removed at the module's end.
    TVR_MethodWrapper();
    ~TVR_MethodWrapper();
    TVR_MethodWrapper(const TVR_MethodWrapper&) = delete;
    TVR_MethodWrapper& operator=(const TVR_MethodWrapper&) = delete;

    // Buffer for a colon form and its terminator.
    static constexpr std::size_t hbaNameTextSize = 24;

    // Puts colons between the pairs of a 16-digit text, after an optional opening quote; no
    // character is checked, and a text that is too short gives a short result. 0, or 1 for a null
    // argument.
    static uint32 Id2HBAName(char* out, const char* deviceId);

    // Reads the colon form. 0, or 1 for any other text, with the output unchanged.
    static uint32 str2HBAName(HBA_WWN* out, const char* text);

    // Reads the 16-digit form. 1 for success, unlike the others; 0 with the output unchanged.
    static uint32 string2HBAName(HBA_WWN& out, std::string_view text);

    // Writes the colon form in upper case; nothing into a null buffer. Answers 0.
    static uint32 hbaNameToText(char* out, const HBA_WWN& name);

    // Id2HBAName and str2HBAName in one; false, with a line in the log, when either fails.
    struct NameLines {
        const char* noText;
        const char* noName;
    };
    static constexpr NameLines usualNameLines{"Id2HBAName failed", "str2HBAName failed"};
    static bool deviceIdToHBAName(HBA_WWN& out, const std::string& deviceId,
                                  const NameLines& lines = usualNameLines);

    // 0 when the name belongs to an adapter of this host, else 1.
    static uint32 Validatewwpn(HBA_WWN name);

    // Logs a status with the library's text for it.
    static void logRMStatus(RM_STATUS status);

    // 1 when the name is in the list, else 0, and the list has it then. When memory is exhausted
    // the list is emptied and the answer 0.
    static uint32 isDuplicateEntryInWWPNList(const HBA_WWN& name, std::vector<HBA_WWN>& list);

    // ---- requests to the adapter of a port ----
    //
    // All but SetPortEnabled answer 1 for a port that is not of this host, and else, unless it is
    // told otherwise, the library's status.

    // Dumps. The directory is terminated, and empty when the library fails to tell it.
    static uint32 tvrcimSetDumpDirectory(const HBA_WWN& port, const std::string& directory);
    static uint32 tvrcimGetDumpDirectory(const HBA_WWN& port,
                                         char (&directory)[RM_DUMP_DIRECTORY_SIZE]);
    // 1 for a count of files outside 1 to 20.
    static uint32 tvrcimSetRetentionCount(const HBA_WWN& port, uint32 count);
    static uint32 tvrcimGetRetentionCount(const HBA_WWN& port, uint32* count);
    static uint32 tvrcimDeleteDumpFiles(const HBA_WWN& port);
    static constexpr uint32 plainDump = 0xFFFFFFFF;
    // A plain dump, or one of an extended type.
    static uint32 tvrcimDumpDiagnostic(const HBA_WWN& port, uint32 type);
    // `names` has room for as many entries as its count says; RM_STATUS_BUFFER_TOO_SMALL when there
    // are more, with their number in the count.
    static uint32 tvrcimGetDumpFileNames(const HBA_WWN& port, RM_DUMPFILENAMES* names);

    // Boot BIOS. The state is non-zero when it is enabled, and 0 also when the adapter doesn't
    // tell; 1 when the library fails.
    static uint32 tvrcimGetBootBiosState(const HBA_WWN& port, uint32* state);
    // 'e' enables, 'd' disables, in either case; 1 for anything else.
    static uint32 tvrcimSetBootBiosState(const HBA_WWN& port, const char* control);

    static uint32 tvrcimResetHBA(const HBA_WWN& port);
    // Validatewwpn with the callers' line in the log.
    static bool isLocal(const HBA_WWN& port);

    // By the low byte of `enable`. 1 for a name that can't be converted.
    static uint32 SetPortEnabled(const std::string& deviceId, uint32 enable);

    // Sets a parameter of the driver as a whole (cw1 is 1) or of the port (0), permanently (cw2 is
    // 1) or until the driver's next start (0). 1 for other words, for null texts, and when
    // parameter and value don't fit together into a text of driverParamTextSize bytes.
    static constexpr std::size_t driverParamTextSize = 256;
    static uint32 tvrcimSetDriverParam(const std::string& deviceId, const HBA_WWN& port, uint8 cw1,
                                       uint8 cw2, const char* parameter, const char* value);

    // ---- firmware ----

    // Brings an image to the adapter of the port; returns when the download has ended. 1 for a port
    // that is not of this host and for a file that isn't there, else the library's status.
    static uint32 tvrcimDownloadFW(const HBA_WWN& port, const std::string& file);

    // The local file that a URI stands for: itself, if there is such a file. Else it is fetched
    // with libcurl into the working directory, under the name behind its last "/"; the answer is
    // that name, or the URI where nothing could come of it. `removeFile` turns true once a transfer
    // was tried, whatever came of it, and the file is then the caller's to remove. `status` is set
    // to 4 if libcurl lacks a function or refuses an option, and else left alone: only the file
    // tells if there is one. Servers are not asked for certificates. A transfer ends when it can't
    // be begun, or hardly anything has come, for as long as setTransferPatience says.
    static std::string downloadFileUsingCurl(const std::string& uri, Property<uint32>& status,
                                             bool& removeFile);

    // ---- world wide names ----
    //
    // `result` is always set: 0, or 40000 and the library's status. A change or restoration that
    // comes to 0 leaves the data of the adapters stale: the caller has them read anew. What is not
    // told of an output leaves it as it was.

    static void GetWWNCapability(const HBA_WWN& port, Property<uint32>& capability,
                                 Property<uint32>& result);
    // The names of a bank (RM_WWN_VOLATILE and so on) in the colon form, lower case. Without names
    // when there are none, which is no failure for the configured bank.
    static void ReadWWN(const HBA_WWN& port, uint32 bank, Property<String>& wwpn,
                        Property<String>& wwnn, Property<uint16>& state, Property<uint32>& result);
    // Also 40005 for a new name that isn't valid, and wwnInUse, with a DuplicateWWN as the state,
    // for one that a virtual port of this host has. Waits for a busy library for up to 300 s, like
    // RestoreWWN, which knows other banks: 0 is the factory default, 1 the non-volatile names.
    static constexpr uint32 wwnInUse = 91;
    static void ChangeWWN(const HBA_WWN& port, const HBA_WWN& newWwpn, const HBA_WWN& newWwnn,
                          uint32 bank, Property<uint16>& state, Property<uint32>& result);
    static void RestoreWWN(const HBA_WWN& port, uint32 bank, Property<uint16>& state,
                           Property<uint32>& result);

    // ---- virtual ports ----
    //
    // 4 for a null output, and 1 for any other failure; first of all for a port that is not of
    // this host. The output is set with 0 only. Longer lists than maxVirtualPorts and
    // maxVirtualMachines are failures.

    static constexpr uint32 noOutput = 4;
    static constexpr uint32 maxVirtualPorts = 65536;
    static constexpr uint32 maxVirtualMachines = 4096;
    static uint32 ListVPorts(const HBA_WWN& port, std::vector<RM_VPORTENTRY>* list);
    static uint32 ListVPortAttributes(const HBA_WWN& port, const HBA_WWN& virtualPort,
                                      RM_VPORTATTRIBUTES* attributes);
    // Only tells the log how it went: nobody has asked for the rows yet.
    static uint32 ListVPortTargets(const HBA_WWN& port, const HBA_WWN& virtualPort);
    // 0 without an output for a port that doesn't tell that it maps virtual ports to machines.
    static uint32 ListVMfromVPort(const HBA_WWN& port, const RM_VPORTENTRY& virtualPort,
                                  std::vector<RM_VMINFO>* machines);
};

// How long a construction waits for another one of the same process, in milliseconds; one minute at
// start. Returns what was set before.
uint32 setInitLibWait(uint32 milliseconds) noexcept;

// How long a transfer waits for a server that does nothing, in seconds; one minute at start.
// Returns what was set before.
uint32 setTransferPatience(uint32 seconds) noexcept;

} // namespace cimple

#endif
