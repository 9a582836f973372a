/* The SNIA HBA API as this project uses it: types, constants and entry points of the published
 * standard, in the layout that 64-bit Linux libraries share. Plain C without further needs, so that
 * nothing here depends on an installed header.
 *
 * The functions are declared for their types. Nobody links the library that defines them: it is
 * opened at run time. A library that implements them sets HBA_API to its export attribute first.
 *
 * Every HBA_STATUS is 0 on success. Texts are zero-terminated within their arrays; a careful reader
 * does not rely on it. Names of ports and nodes are 8 bytes, the first one most significant.
 */
#ifndef TVR_ACCESS_RM_HBA_API_H
#define TVR_ACCESS_RM_HBA_API_H

#ifdef HBA_API_H
#error "hbaapi.h and access/rm/hba_api.h declare the same names: include one of them"
#endif

#ifndef HBA_API
#define HBA_API
#endif

#include <stddef.h>

#ifdef __cplusplus
#define RM_ASSERT_LAYOUT(condition) static_assert(condition, #condition)
extern "C" {
#else
#define RM_ASSERT_LAYOUT(condition) _Static_assert(condition, #condition)
#endif

typedef unsigned char HBA_UINT8;
typedef char HBA_INT8;
typedef unsigned short HBA_UINT16;
typedef short HBA_INT16;
typedef unsigned int HBA_UINT32;
typedef int HBA_INT32;
typedef unsigned long long HBA_UINT64;
typedef long long HBA_INT64;

/* An open adapter; a vendor library's own handles stay within 16 bits. */
typedef HBA_UINT32 HBA_HANDLE;
#define HBA_HANDLE_INVALID 0u

/* The place of one registration for events. */
typedef void* HBA_CALLBACKHANDLE;

typedef HBA_UINT32 HBA_STATUS;
#define HBA_STATUS_OK 0u
#define HBA_STATUS_ERROR 1u
#define HBA_STATUS_ERROR_NOT_SUPPORTED 2u
#define HBA_STATUS_ERROR_INVALID_HANDLE 3u
#define HBA_STATUS_ERROR_ARG 4u
#define HBA_STATUS_ERROR_ILLEGAL_WWN 5u
#define HBA_STATUS_ERROR_ILLEGAL_INDEX 6u
#define HBA_STATUS_ERROR_MORE_DATA 7u  /* buffer too small, its count word holds the need */
#define HBA_STATUS_ERROR_STALE_DATA 8u /* call HBA_RefreshInformation and repeat */
#define HBA_STATUS_SCSI_CHECK_CONDITION 9u
#define HBA_STATUS_ERROR_BUSY 10u
#define HBA_STATUS_ERROR_TRY_AGAIN 11u
#define HBA_STATUS_ERROR_UNAVAILABLE 12u
#define HBA_STATUS_ERROR_NOT_A_TARGET 27u

typedef HBA_UINT32 HBA_PORTTYPE;
#define HBA_PORTTYPE_UNKNOWN 1u
#define HBA_PORTTYPE_OTHER 2u
#define HBA_PORTTYPE_NOTPRESENT 3u
#define HBA_PORTTYPE_NPORT 5u
#define HBA_PORTTYPE_NLPORT 6u
#define HBA_PORTTYPE_FLPORT 7u
#define HBA_PORTTYPE_FPORT 8u
#define HBA_PORTTYPE_LPORT 20u
#define HBA_PORTTYPE_PTP 21u

typedef HBA_UINT32 HBA_PORTSTATE;
#define HBA_PORTSTATE_UNKNOWN 1u
#define HBA_PORTSTATE_ONLINE 2u
#define HBA_PORTSTATE_OFFLINE 3u
#define HBA_PORTSTATE_BYPASSED 4u
#define HBA_PORTSTATE_DIAGNOSTICS 5u
#define HBA_PORTSTATE_LINKDOWN 6u
#define HBA_PORTSTATE_ERROR 7u
#define HBA_PORTSTATE_LOOPBACK 8u

/* A mask where several speeds are supported, one bit for the current speed. */
typedef HBA_UINT32 HBA_PORTSPEED;
#define HBA_PORTSPEED_UNKNOWN 0x00u
#define HBA_PORTSPEED_1GBIT 0x01u
#define HBA_PORTSPEED_2GBIT 0x02u
#define HBA_PORTSPEED_10GBIT 0x04u
#define HBA_PORTSPEED_4GBIT 0x08u
#define HBA_PORTSPEED_8GBIT 0x10u
#define HBA_PORTSPEED_16GBIT 0x20u

/* Classes of service: bit n stands for class n. */
typedef HBA_UINT32 HBA_COS;

typedef struct HBA_fc4types {
    HBA_UINT8 bits[32];
} HBA_FC4TYPES, *PHBA_FC4TYPES;

typedef struct HBA_wwn {
    HBA_UINT8 wwn[8];
} HBA_WWN, *PHBA_WWN;

typedef struct hba_AdapterAttributes {
    char Manufacturer[64];
    char SerialNumber[64];
    char Model[256];
    char ModelDescription[256];
    HBA_WWN NodeWWN;
    char NodeSymbolicName[256];
    char HardwareVersion[256];
    char DriverVersion[256];
    char OptionROMVersion[256];
    char FirmwareVersion[256];
    HBA_UINT32 VendorSpecificID;
    HBA_UINT32 NumberOfPorts;
    char DriverName[256];
} HBA_ADAPTERATTRIBUTES, *PHBA_ADAPTERATTRIBUTES;
RM_ASSERT_LAYOUT(offsetof(HBA_ADAPTERATTRIBUTES, NodeWWN) == 640);
RM_ASSERT_LAYOUT(offsetof(HBA_ADAPTERATTRIBUTES, VendorSpecificID) == 1928);
RM_ASSERT_LAYOUT(offsetof(HBA_ADAPTERATTRIBUTES, DriverName) == 1936);
RM_ASSERT_LAYOUT(sizeof(HBA_ADAPTERATTRIBUTES) == 2192);

typedef struct HBA_PortAttributes {
    HBA_WWN NodeWWN;
    HBA_WWN PortWWN;
    HBA_UINT32 PortFcId;
    HBA_PORTTYPE PortType;
    HBA_PORTSTATE PortState;
    HBA_COS PortSupportedClassofService;
    HBA_FC4TYPES PortSupportedFc4Types;
    HBA_FC4TYPES PortActiveFc4Types;
    char PortSymbolicName[256];
    char OSDeviceName[256];
    HBA_PORTSPEED PortSupportedSpeed;
    HBA_PORTSPEED PortSpeed;
    HBA_UINT32 PortMaxFrameSize;
    HBA_WWN FabricName;
    HBA_UINT32 NumberofDiscoveredPorts;
} HBA_PORTATTRIBUTES, *PHBA_PORTATTRIBUTES;
RM_ASSERT_LAYOUT(offsetof(HBA_PORTATTRIBUTES, PortFcId) == 16);
RM_ASSERT_LAYOUT(offsetof(HBA_PORTATTRIBUTES, PortState) == 24);
RM_ASSERT_LAYOUT(offsetof(HBA_PORTATTRIBUTES, PortSymbolicName) == 96);
RM_ASSERT_LAYOUT(offsetof(HBA_PORTATTRIBUTES, PortSpeed) == 612);
RM_ASSERT_LAYOUT(offsetof(HBA_PORTATTRIBUTES, FabricName) == 620);
RM_ASSERT_LAYOUT(sizeof(HBA_PORTATTRIBUTES) == 632);

/* The operating system's address of a logical unit. */
typedef struct HBA_ScsiId {
    char OSDeviceName[256];
    HBA_UINT32 ScsiBusNumber;
    HBA_UINT32 ScsiTargetNumber;
    HBA_UINT32 ScsiOSLun;
} HBA_SCSIID, *PHBA_SCSIID;
RM_ASSERT_LAYOUT(offsetof(HBA_SCSIID, ScsiOSLun) == 264);
RM_ASSERT_LAYOUT(sizeof(HBA_SCSIID) == 268);

/* The fabric's address of a logical unit. */
typedef struct HBA_FcpId {
    HBA_UINT32 FcId;
    HBA_WWN NodeWWN;
    HBA_WWN PortWWN;
    HBA_UINT64 FcpLun;
} HBA_FCPID, *PHBA_FCPID;
RM_ASSERT_LAYOUT(offsetof(HBA_FCPID, FcpLun) == 24);
RM_ASSERT_LAYOUT(sizeof(HBA_FCPID) == 32);

typedef struct HBA_FcpScsiEntry {
    HBA_SCSIID ScsiId;
    HBA_FCPID FcpId;
} HBA_FCPSCSIENTRY, *PHBA_FCPSCSIENTRY;
RM_ASSERT_LAYOUT(offsetof(HBA_FCPSCSIENTRY, FcpId) == 272);
RM_ASSERT_LAYOUT(sizeof(HBA_FCPSCSIENTRY) == 304);

/* NumberOfEntries is the capacity on the way in and the number of rows on the way out. A caller
 * allocates offsetof(HBA_FCPTARGETMAPPING, entry) and its capacity in rows. */
typedef struct HBA_FCPTargetMapping {
    HBA_UINT32 NumberOfEntries;
    HBA_FCPSCSIENTRY entry[1];
} HBA_FCPTARGETMAPPING, *PHBA_FCPTARGETMAPPING;
RM_ASSERT_LAYOUT(offsetof(HBA_FCPTARGETMAPPING, entry) == 8);
RM_ASSERT_LAYOUT(sizeof(HBA_FCPTARGETMAPPING) == 312);

#define HBA_EVENT_PORT_UNKNOWN 0x200u
#define HBA_EVENT_PORT_OFFLINE 0x201u
#define HBA_EVENT_PORT_ONLINE 0x202u
#define HBA_EVENT_PORT_NEW_TARGETS 0x203u
#define HBA_EVENT_PORT_FABRIC 0x204u

/* Runs on a thread of the library and must return at once. */
typedef void (*HBA_PORT_EVENT_CALLBACK)(void* data, HBA_WWN PortWWN, HBA_UINT32 eventType,
                                        HBA_UINT32 fabricPortID);

HBA_API HBA_UINT32 HBA_GetVersion(void);
HBA_API HBA_STATUS HBA_LoadLibrary(void);
HBA_API HBA_STATUS HBA_FreeLibrary(void);

HBA_API HBA_UINT32 HBA_GetNumberOfAdapters(void);

/* The name goes into a buffer of 256 bytes. */
HBA_API HBA_STATUS HBA_GetAdapterName(HBA_UINT32 adapterindex, char* adaptername);

/* Answers HBA_HANDLE_INVALID when there is no such adapter. */
HBA_API HBA_HANDLE HBA_OpenAdapter(char* adaptername);
HBA_API void HBA_CloseAdapter(HBA_HANDLE handle);

HBA_API HBA_STATUS HBA_GetAdapterAttributes(HBA_HANDLE handle,
                                            HBA_ADAPTERATTRIBUTES* hbaattributes);
HBA_API HBA_STATUS HBA_GetAdapterPortAttributes(HBA_HANDLE handle, HBA_UINT32 portindex,
                                                HBA_PORTATTRIBUTES* portattributes);
HBA_API void HBA_RefreshInformation(HBA_HANDLE handle);
HBA_API HBA_STATUS HBA_GetFcpTargetMapping(HBA_HANDLE handle, HBA_FCPTARGETMAPPING* pmapping);

HBA_API HBA_STATUS HBA_SendScsiInquiry(HBA_HANDLE handle, HBA_WWN PortWWN, HBA_UINT64 fcLUN,
                                       HBA_UINT8 EVPD, HBA_UINT32 PageCode, void* pRspBuffer,
                                       HBA_UINT32 RspBufferSize, void* pSenseBuffer,
                                       HBA_UINT32 SenseBufferSize);
HBA_API HBA_STATUS HBA_SendReadCapacity(HBA_HANDLE handle, HBA_WWN portWWN, HBA_UINT64 fcLUN,
                                        void* pRspBuffer, HBA_UINT32 RspBufferSize,
                                        void* pSenseBuffer, HBA_UINT32 SenseBufferSize);

HBA_API HBA_STATUS HBA_RegisterForAdapterPortEvents(HBA_PORT_EVENT_CALLBACK callback,
                                                    void* userData, HBA_HANDLE handle,
                                                    HBA_WWN PortWWN,
                                                    HBA_CALLBACKHANDLE* callbackHandle);
HBA_API HBA_STATUS HBA_RemoveCallback(HBA_CALLBACKHANDLE callbackHandle);

#ifdef __cplusplus
}
#endif

#endif
