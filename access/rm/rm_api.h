/* The RM management library: records, statuses, attribute identifiers and entry points, as far as
 * this project uses them. Plain C, self-contained.
 *
 * Conventions of every entry point:
 *  - the result is a status, 0 for success, unless the declaration tells otherwise;
 *  - a port is named by its WWPN, an HBA_WWN passed by value; no call needs an open handle;
 *  - a sized output is a buffer with a size word, or a record that starts with a count word. One
 *    that is too small is answered with RM_STATUS_MORE_DATA, by some calls with
 *    RM_STATUS_BUFFER_TOO_SMALL, and the need in that word;
 *  - attribute buffers are opaque and read only with RM_GetAttributeValue;
 *  - texts are zero-terminated within their arrays; a careful reader does not rely on it.
 *
 * The functions are declared for their types. Nobody links the library that defines them: it is
 * opened at run time. A library that implements them sets RM_API to its export attribute first.
 */
#ifndef TVR_ACCESS_RM_RM_API_H
#define TVR_ACCESS_RM_RM_API_H

#include "access/rm/hba_api.h"

#include <stddef.h>
#include <stdint.h>

#ifndef RM_API
#define RM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t RM_STATUS;
#define RM_STATUS_OK 0u
#define RM_STATUS_ERROR 1u
#define RM_STATUS_NOT_SUPPORTED 2u
#define RM_STATUS_ILLEGAL_WWN 5u
#define RM_STATUS_MORE_DATA 7u
#define RM_STATUS_DUMP_DIRECTORY 27u /* the directory cannot be opened */
#define RM_STATUS_TEST_NOT_FINISHED 60u
#define RM_STATUS_TOO_MANY_TESTS 62u
#define RM_STATUS_DIAG_NOT_AVAILABLE 63u
#define RM_STATUS_ADAPTER_BUSY 64u
#define RM_STATUS_WWN_BANK_NOT_SUPPORTED 89u
#define RM_STATUS_WWN_NOT_AVAILABLE 92u
#define RM_STATUS_WWN_BUSY 97u
#define RM_STATUS_VPORT_NOT_SUPPORTED 128u
#define RM_STATUS_MAILBOX_FAILED 148u
#define RM_STATUS_MAILBOX_TIMEOUT 149u
#define RM_STATUS_MAILBOX_BUSY 150u
#define RM_STATUS_CONFIG_FILE 160u
#define RM_STATUS_CONFIG_FILE_WRITE 178u
#define RM_STATUS_RESET_NOT_POSSIBLE 190u
#define RM_STATUS_BUFFER_TOO_SMALL 191u
#define RM_STATUS_BOOT_CODE_ENABLED 221u

/* Sizes of the attribute buffers that callers provide. */
#define RM_HBA_ATTRIBUTES_SIZE 2864u
#define RM_PORT_ATTRIBUTES_SIZE 2048u
#define RM_PORT_STATISTICS_SIZE 512u
#define RM_VPD_SIZE 1024u
#define RM_STATUS_TEXT_SIZE 256u
#define RM_DUMP_DIRECTORY_SIZE 256u

/* Attributes of LRM_GetHBAAttributes. Integers are 32 bits, texts without a promised terminator. */
enum RM_HBA_ATTRIBUTE_ID {
    RM_HA_DEVICE_ID = 526,
    RM_HA_MODEL_ID = 527,
    RM_HA_OPERATIONAL_FIRMWARE = 528,
    RM_HA_IEEE_ADDRESS = 531,      /* 6 bytes */
    RM_HA_BOOT_CODE_ENABLED = 532, /* non-zero when enabled */
    RM_HA_BOOT_BIOS_VERSION = 534,
    RM_HA_DIAG_VERSION = 544, /* integer */
    RM_HA_INITIAL_FIRMWARE = 545,
    RM_HA_KERNEL_VERSION = 546,
    RM_HA_SLI_MODE = 549,
    RM_HA_BOARD_TEMPERATURE = 551, /* bytes from the lowest: current, critical, warning */
    RM_HA_PORT_NUMBER = 553,
    RM_HA_FUNCTION_TYPE = 556, /* 1, 2 and 3 are functions of a converged adapter */
    RM_HA_SP_FIRMWARE_VERSION = 563,
    RM_HA_SP_FIRMWARE_NAME = 564,
    RM_HA_ULP_FIRMWARE_VERSION = 565,
    RM_HA_ULP_FIRMWARE_NAME = 566,
    RM_HA_FC_UNIVERSAL_VERSION = 587,
    RM_HA_FC_X86_BIOS_VERSION = 588,
    RM_HA_FC_EFI_VERSION = 589,
    RM_HA_FC_FCODE_VERSION = 590
};

/* Attributes of LRM_GetPortAttributes. */
enum RM_PORT_ATTRIBUTE_ID {
    RM_PA_TOPOLOGY = 773,      /* 20 or 21 with a loopback plug */
    RM_PA_LINK_STATE = 774,    /* 22 when the port is disabled */
    RM_PA_FABRIC_NAME = 783,   /* 8 bytes, zero with a loopback plug */
    RM_PA_PHYSICAL_STATE = 802 /* the HBA API's port states, and 20, 21, 22 */
};
#define RM_PORT_STATE_NEEDS_RESET 20u
#define RM_PORT_STATE_DOWN_NEEDS_RESET 21u
#define RM_PORT_STATE_DISABLED 22u

/* Attributes of LRM_GetPortStatistics: 64-bit counters, all ones where the adapter has none. */
enum RM_PORT_STATISTIC_ID {
    RM_PS_SECONDS_SINCE_RESET = 1025,
    RM_PS_EXCHANGES_ORIGINATED = 1026,
    RM_PS_EXCHANGES_RESPONDED = 1027,
    RM_PS_TX_SEQUENCES = 1028,
    RM_PS_RX_SEQUENCES = 1029,
    RM_PS_TX_FRAMES = 1030,
    RM_PS_RX_FRAMES = 1031,
    RM_PS_TX_WORDS = 1032,
    RM_PS_RX_WORDS = 1033,
    RM_PS_LIP_COUNT = 1036,
    RM_PS_NOS_COUNT = 1037,
    RM_PS_ERROR_FRAMES = 1038,
    RM_PS_DUMPED_FRAMES = 1039,
    RM_PS_LINK_FAILURES = 1040,
    RM_PS_LOSS_OF_SYNC = 1041,
    RM_PS_LOSS_OF_SIGNAL = 1042,
    RM_PS_PRIMITIVE_SEQ_ERRORS = 1043,
    RM_PS_INVALID_TX_WORDS = 1044,
    RM_PS_INVALID_CRC = 1045,
    RM_PS_LINK_TRANSITIONS = 1046,
    RM_PS_ACTIVE_RPIS = 1047,
    RM_PS_ACTIVE_XRIS = 1048,
    RM_PS_PRIMITIVE_SEQ_TIMEOUTS = 1057,
    RM_PS_ELASTIC_BUFFER_OVERRUNS = 1058,
    RM_PS_ARBITRATION_TIMEOUTS = 1059
};

/* Banks of world wide names. */
#define RM_WWN_VOLATILE 0u
#define RM_WWN_NON_VOLATILE 1u
#define RM_WWN_FACTORY_DEFAULT 2u
#define RM_WWN_CURRENT 3u
#define RM_WWN_CONFIGURED 4u

/* States that the WWN calls answer. */
#define RM_WWN_STATE_ACTIVE 1u
#define RM_WWN_STATE_CURRENT_VOLATILE 3u
#define RM_WWN_STATE_CURRENT_NON_VOLATILE 4u
#define RM_WWN_STATE_VOLATILE_AFTER_REBOOT 5u
#define RM_WWN_STATE_NON_VOLATILE_AFTER_REBOOT 6u
#define RM_WWN_STATE_VOLATILE_AFTER_RESET 7u
#define RM_WWN_STATE_NON_VOLATILE_AFTER_RESET 8u
#define RM_WWN_STATE_NONE 9u

/* Bits of the capability word. */
#define RM_WWN_CAN_CHANGE_NON_VOLATILE 0x0004u
#define RM_WWN_CAN_CHANGE_VOLATILE 0x0008u
#define RM_WWN_NEEDS_REBOOT 0x1000u
#define RM_WWN_NEEDS_RESET 0x2000u
#define RM_WWN_READ_ONLY 0x8000u

/* Beacon states. */
#define RM_BEACON_NOT_AVAILABLE 1u
#define RM_BEACON_OFF 2u
#define RM_BEACON_ON 3u

/* What LRM_SetPortEnabled can leave in its state byte. */
#define RM_PORT_ENABLED_AFTER_RESET 5u

/* The argument of RM_GetLocalHBAInfo. */
typedef struct RM_LOCALHBAARGUMENT {
    uint32_t reserved0;
    uint32_t adapterIndex;
    uint32_t adapterCount;
    uint32_t reserved1;
} RM_LOCALHBAARGUMENT;
RM_ASSERT_LAYOUT(offsetof(RM_LOCALHBAARGUMENT, adapterIndex) == 4);
RM_ASSERT_LAYOUT(offsetof(RM_LOCALHBAARGUMENT, adapterCount) == 8);
RM_ASSERT_LAYOUT(sizeof(RM_LOCALHBAARGUMENT) == 16);

/* The answer of RM_GetLocalHBAInfo; what follows the name is the library's own. */
typedef struct RM_LOCALHBAINFO {
    HBA_WWN port;
    uint8_t reserved[4088];
} RM_LOCALHBAINFO;
RM_ASSERT_LAYOUT(sizeof(RM_LOCALHBAINFO) == 4096);

/* The answer of LRM_GetSffData: the transceiver. */
typedef struct RM_SFFDATA {
    uint8_t raw[584];
    uint8_t hasIdentity;    /* identifier to wavelength are good when non-zero */
    uint8_t hasDiagnostics; /* temperature to receive power are good when non-zero */
    uint8_t reserved0[2];
    uint8_t identifier;
    uint8_t extendedIdentifier;
    uint8_t connector;
    uint8_t reserved1;
    uint16_t wavelength; /* nm */
    uint8_t reserved2[2];
    float temperature;   /* degrees Celsius */
    float vcc;           /* volts */
    float txBiasCurrent; /* mA */
    float txPower;       /* mW */
    float rxPower;       /* mW */
    uint8_t vendorOui[3];
    uint8_t reserved3;
    char vendorName[18];
    char vendorPartNumber[18];
    char vendorRevision[6];
    char vendorSerialNumber[18];
    char dateCode[6]; /* YYMMDD in ASCII digits, no terminator */
    uint8_t reserved4[262];
} RM_SFFDATA;
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, hasIdentity) == 584);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, hasDiagnostics) == 585);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, identifier) == 588);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, connector) == 590);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, wavelength) == 592);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, temperature) == 596);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, rxPower) == 612);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, vendorOui) == 616);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, vendorName) == 620);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, vendorPartNumber) == 638);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, vendorRevision) == 656);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, vendorSerialNumber) == 662);
RM_ASSERT_LAYOUT(offsetof(RM_SFFDATA, dateCode) == 680);
RM_ASSERT_LAYOUT(sizeof(RM_SFFDATA) == 948);

/* One image in the flash. */
typedef struct RM_LOADENTRY {
    uint32_t next;
    uint32_t previous;
    uint32_t startAddress;
    uint32_t programLength;
    uint32_t programId[2];
    char description[24];
    uint32_t isWakeupParameter;
    char programType[24];
    char version[24];
} RM_LOADENTRY;
RM_ASSERT_LAYOUT(offsetof(RM_LOADENTRY, programId) == 16);
RM_ASSERT_LAYOUT(offsetof(RM_LOADENTRY, description) == 24);
RM_ASSERT_LAYOUT(offsetof(RM_LOADENTRY, isWakeupParameter) == 48);
RM_ASSERT_LAYOUT(offsetof(RM_LOADENTRY, programType) == 52);
RM_ASSERT_LAYOUT(offsetof(RM_LOADENTRY, version) == 76);
RM_ASSERT_LAYOUT(sizeof(RM_LOADENTRY) == 100);

/* The answer of LRM_DiagGetLoadListParams. count is the number of images plus one. The call carries
 * no size: a library writes as many entries as it has. So a caller gives many times the room of the
 * images that it takes, and does well to watch what lies behind it. */
#define RM_LOADLIST_IMAGES 64u
#define RM_LOADLIST_ENTRIES 1024u
typedef struct RM_LOADLIST {
    uint32_t count;
    RM_LOADENTRY entry[RM_LOADLIST_ENTRIES];
} RM_LOADLIST;
RM_ASSERT_LAYOUT(offsetof(RM_LOADLIST, entry) == 4);

typedef struct RM_DRIVERPARAM {
    char name[32];
    uint32_t low;
    uint32_t high;
    uint32_t defaultValue; /* of a global parameter: the global value */
    uint32_t current;
    uint16_t exportFlag;
    uint16_t dynamic;
    char help[80];
} RM_DRIVERPARAM;
RM_ASSERT_LAYOUT(offsetof(RM_DRIVERPARAM, low) == 32);
RM_ASSERT_LAYOUT(offsetof(RM_DRIVERPARAM, current) == 44);
RM_ASSERT_LAYOUT(offsetof(RM_DRIVERPARAM, exportFlag) == 48);
RM_ASSERT_LAYOUT(offsetof(RM_DRIVERPARAM, help) == 52);
RM_ASSERT_LAYOUT(sizeof(RM_DRIVERPARAM) == 132);

/* Bits of LRM_SetDriverParam's control word. */
#define RM_DRIVER_PARAM_PERMANENT 1u /* clear: temporary */
#define RM_DRIVER_PARAM_GLOBAL 2u    /* clear: of the one port */

/* A list of file names; count is the capacity on the way in. */
typedef struct RM_DUMPFILENAMES {
    uint32_t count;
    uint32_t reserved;
    char name[1][256];
} RM_DUMPFILENAMES;
RM_ASSERT_LAYOUT(offsetof(RM_DUMPFILENAMES, name) == 8);

typedef struct RM_VPORTENTRY {
    HBA_WWN wwpn;
    HBA_WWN wwnn;
    uint32_t fcId;
    uint32_t reserved;
} RM_VPORTENTRY;
RM_ASSERT_LAYOUT(sizeof(RM_VPORTENTRY) == 24);

/* count is the capacity on the way in. */
typedef struct RM_VPORTLIST {
    uint32_t count;
    RM_VPORTENTRY entry[1];
} RM_VPORTLIST;
RM_ASSERT_LAYOUT(offsetof(RM_VPORTLIST, entry) == 4);

#define RM_VPORT_ATTRIBUTES_VERSION 3u
typedef struct RM_VPORTATTRIBUTES {
    uint8_t version; /* RM_VPORT_ATTRIBUTES_VERSION, set by the caller */
    uint8_t reserved0[19];
    char name[256];
    uint8_t reserved1[68];
} RM_VPORTATTRIBUTES;
RM_ASSERT_LAYOUT(offsetof(RM_VPORTATTRIBUTES, name) == 20);
RM_ASSERT_LAYOUT(sizeof(RM_VPORTATTRIBUTES) == 344);

/* A virtual machine: its server and its own name. */
typedef struct RM_VMENTRY {
    char server[256];
    char machine[256];
} RM_VMENTRY;
RM_ASSERT_LAYOUT(sizeof(RM_VMENTRY) == 512);

/* count is the capacity on the way in. */
typedef struct RM_VMLIST {
    uint32_t count;
    RM_VMENTRY entry[1];
} RM_VMLIST;
RM_ASSERT_LAYOUT(sizeof(RM_VMLIST) == 516);

typedef struct RM_VMINFO {
    uint8_t reserved0[4];
    char serverName[256];
    uint8_t reserved1[516];
    char machineName[256];
    uint8_t reserved2[4];
    uint32_t memorySize;
    char guestOsName[256];
} RM_VMINFO;
RM_ASSERT_LAYOUT(offsetof(RM_VMINFO, serverName) == 4);
RM_ASSERT_LAYOUT(offsetof(RM_VMINFO, machineName) == 776);
RM_ASSERT_LAYOUT(offsetof(RM_VMINFO, memorySize) == 1036);
RM_ASSERT_LAYOUT(offsetof(RM_VMINFO, guestOsName) == 1040);
RM_ASSERT_LAYOUT(sizeof(RM_VMINFO) == 1296);

/* States of a diagnostic test. */
#define RM_TEST_PENDING 1u
#define RM_TEST_RUNNING 2u
#define RM_TEST_CANCELED 5u
#define RM_TEST_FINISHED 6u

/* The answer of LRM_DiagGetResults. */
typedef struct RM_DIAGRESULT {
    uint32_t reserved0;
    uint32_t state;
    uint32_t reserved1;
    uint32_t completedCycles;
    uint32_t timeToExecute;
    uint32_t resultCode; /* 0 success */
    uint32_t reserved2;
    uint32_t loopsFailed;
    uint32_t reserved3[4];
} RM_DIAGRESULT;
RM_ASSERT_LAYOUT(offsetof(RM_DIAGRESULT, state) == 4);
RM_ASSERT_LAYOUT(offsetof(RM_DIAGRESULT, completedCycles) == 12);
RM_ASSERT_LAYOUT(offsetof(RM_DIAGRESULT, resultCode) == 20);
RM_ASSERT_LAYOUT(offsetof(RM_DIAGRESULT, loopsFailed) == 28);
RM_ASSERT_LAYOUT(sizeof(RM_DIAGRESULT) == 48);

/* Length of the pattern that the echo and loopback tests take. */
#define RM_DIAG_PATTERN_SIZE 50u

/* The type 0 header of the PCI configuration space at its usual offsets, little-endian, then the
 * library's own. */
typedef struct RM_PCIREGISTERS {
    uint8_t config[256];
    uint8_t reserved[64];
} RM_PCIREGISTERS;
RM_ASSERT_LAYOUT(sizeof(RM_PCIREGISTERS) == 320);

/* ---- library life --------------------------------------------------------------------------- */

/* A positive value is a failure. */
RM_API int32_t LRM_InitLib(void);

/* ---- adapters, attributes, data ------------------------------------------------------------- */

/* A pointer into the buffer with the value's length in bytes, or null; status tells why. The length
 * counts for texts: libraries don't agree on what it is for numbers, whose width is known. */
RM_API void* RM_GetAttributeValue(void* buffer, uint16_t attribute, uint16_t* length,
                                  RM_STATUS* status);

/* Copies the entry at the cursor and answers the cursor of the next call, or null when there is no
 * further entry. Some libraries answer null with the last entry, others in the call behind it, with
 * an empty keyword or with nothing copied. The first cursor is the buffer. The keyword has 2
 * characters (4 bytes with terminator and padding), the value at most 255. */
RM_API void* RM_GetNextVpdEntry(void* cursor, char* keyword, uint32_t keywordSize, char* value,
                                uint32_t valueSize);

RM_API uint32_t RM_GetNumberOfLocalAdapters(void);
RM_API RM_STATUS RM_GetLocalHBAInfo(RM_LOCALHBAARGUMENT* argument, RM_LOCALHBAINFO* info);
RM_API RM_STATUS RM_IsLocalHBA(HBA_WWN port, uint32_t* isLocal);

/* The text is empty for a status that the library does not know. */
RM_API RM_STATUS RM_StatusString(RM_STATUS status, char* text, uint32_t textSize);

RM_API RM_STATUS LRM_GetHBAAttributes(HBA_WWN port, void* buffer, uint32_t* size);
RM_API RM_STATUS LRM_GetPortAttributes(HBA_WWN port, void* buffer, uint32_t* size);
RM_API RM_STATUS LRM_GetPortStatistics(HBA_WWN port, void* buffer, uint32_t* size);
RM_API RM_STATUS LRM_GetDriverType(HBA_WWN port, uint32_t* driverType);
RM_API RM_STATUS LRM_GetVPD(HBA_WWN port, void* buffer, uint32_t* size);
RM_API RM_STATUS LRM_GetSffData(HBA_WWN port, void* buffer, uint32_t* size);
RM_API RM_STATUS LRM_GetFcpTargetMapping(HBA_WWN port, HBA_FCPTARGETMAPPING* mapping);
RM_API RM_STATUS LRM_DiagReadPCIRegistersV2(HBA_WWN port, RM_PCIREGISTERS* registers);
RM_API RM_STATUS LRM_DiagGetLoadListParams(HBA_WWN port, RM_LOADLIST* list);

/* ---- world wide names ----------------------------------------------------------------------- */

/* RM_STATUS_ILLEGAL_WWN when the name is not valid. */
RM_API RM_STATUS RM_ValidateWwn(const HBA_WWN* wwn);

RM_API RM_STATUS LRM_GetWWNCapability(HBA_WWN port, uint32_t* capability);
RM_API RM_STATUS LRM_ReadWWN(HBA_WWN port, uint32_t bank, HBA_WWN* wwpn, HBA_WWN* wwnn,
                             uint32_t* state);

/* Both answer RM_STATUS_WWN_BUSY while the library wants to be called again. */
RM_API RM_STATUS LRM_ChangeWWN(HBA_WWN port, HBA_WWN newWwpn, HBA_WWN newWwnn, uint32_t bank,
                               uint32_t* state);
RM_API RM_STATUS LRM_RestoreWWN(HBA_WWN port, uint32_t bank, uint32_t* state);

/* ---- driver parameters ---------------------------------------------------------------------- */

/* count is the capacity in records on the way in and their number on the way out. */
RM_API RM_STATUS LRM_GetDriverParams(HBA_WWN port, RM_DRIVERPARAM* params, uint32_t* count);
RM_API RM_STATUS LRM_GetDriverParamsGlobal(HBA_WWN port, RM_DRIVERPARAM* params, uint32_t* count);

/* The assignment is "name=value". */
RM_API RM_STATUS LRM_SetDriverParam(HBA_WWN port, const char* assignment, uint32_t control);

/* ---- firmware and boot ---------------------------------------------------------------------- */

RM_API RM_STATUS RM_ImportHBAFileA(const char* path);
RM_API RM_STATUS RM_VerifyFirmwareA(HBA_WWN host, HBA_WWN port, const char* path);

/* Returns when the download has ended. */
RM_API RM_STATUS LRM_DownloadFirmware(HBA_WWN port, const char* path, uint32_t flags);
RM_API RM_STATUS LRM_ResetHBA(HBA_WWN port, uint32_t mode);
RM_API RM_STATUS LRM_SetBootBiosState(HBA_WWN port, uint32_t enable);
RM_API RM_STATUS LRM_SetPortEnabled(HBA_WWN port, uint8_t enable, uint8_t* state);

/* ---- dumps ---------------------------------------------------------------------------------- */

RM_API RM_STATUS LRM_GenerateDump(HBA_WWN host, HBA_WWN port);
RM_API RM_STATUS LRM_GenerateEfdDump(HBA_WWN port, uint32_t type, uint32_t flags);
RM_API RM_STATUS LRM_GetDumpDirectoryA(HBA_WWN port, char* directory, uint32_t size);
RM_API RM_STATUS LRM_SetDumpDirectory(HBA_WWN port, const char* directory);
RM_API RM_STATUS LRM_GetDumpRetentionCount(HBA_WWN port, uint32_t* count);
RM_API RM_STATUS LRM_SetDumpRetentionCount(HBA_WWN port, uint32_t count);
RM_API RM_STATUS LRM_GetDumpFileNames(HBA_WWN port, RM_DUMPFILENAMES* names);
RM_API RM_STATUS LRM_DeleteDumpFiles(HBA_WWN port);

/* ---- diagnostics ---------------------------------------------------------------------------- */

RM_API RM_STATUS LRM_DiagBeacon(HBA_WWN port, uint32_t state);

/* May leave the output as it was. */
RM_API RM_STATUS LRM_DiagBeaconState(HBA_WWN port, uint32_t* state);

/* The pattern has RM_DIAG_PATTERN_SIZE bytes; the answered identifier names the running test. */
RM_API RM_STATUS LRM_DiagEchoTestV2(HBA_WWN port, HBA_WWN target, uint32_t cycles,
                                    uint32_t haltOnError, uint32_t* testId, uint32_t flags,
                                    const void* pattern);
RM_API RM_STATUS LRM_DiagLoopBackTestV3(HBA_WWN port, uint32_t internal, uint32_t cycles,
                                        uint32_t haltOnError, uint32_t* testId, uint32_t flags,
                                        const void* pattern);
RM_API RM_STATUS LRM_DiagPciLoopBackTestV2(HBA_WWN port, uint32_t cycles, uint32_t haltOnError,
                                           uint32_t* testId, uint32_t flags, const void* pattern);
RM_API RM_STATUS LRM_DiagRunPOST(HBA_WWN port, uint32_t* testId);
RM_API RM_STATUS LRM_DiagGetResults(HBA_WWN port, uint32_t testId, RM_DIAGRESULT* result);
RM_API RM_STATUS LRM_DiagCancelDiagnostic(HBA_WWN port, uint32_t testId);

/* ---- virtual ports -------------------------------------------------------------------------- */

RM_API RM_STATUS LRM_VPList(HBA_WWN port, RM_VPORTLIST* list);
RM_API RM_STATUS LRM_VPGetAttributes(HBA_WWN port, HBA_WWN virtualPort,
                                     RM_VPORTATTRIBUTES* attributes);
RM_API RM_STATUS LRM_VPListTargets(HBA_WWN port, HBA_WWN virtualPort,
                                   HBA_FCPTARGETMAPPING* targets);

/* firstEntry is the first entry of an RM_VMLIST: the count word stands right before it. */
RM_API RM_STATUS LRM_GetVMFromVPort(const RM_VPORTENTRY* virtualPort, RM_VMENTRY* firstEntry);
RM_API RM_STATUS LRM_GetVMInfo(const RM_VMENTRY* machine, RM_VMINFO* info);

#ifdef __cplusplus
}
#endif

#endif
