// The entry tables of an HBA API vendor library, in the layout of the published standard. Entries
// that this library does not offer stay null: the HBA API library then answers "not supported".
#pragma once

#include "access/rm/hba_api.h"

#include <cstddef>

namespace tvrsim {

using NoEntry = void (*)();

struct VendorTable {
    decltype(&HBA_GetVersion) getVersion;
    decltype(&HBA_LoadLibrary) loadLibrary;
    decltype(&HBA_FreeLibrary) freeLibrary;
    decltype(&HBA_GetNumberOfAdapters) getNumberOfAdapters;
    decltype(&HBA_GetAdapterName) getAdapterName;
    decltype(&HBA_OpenAdapter) openAdapter;
    decltype(&HBA_CloseAdapter) closeAdapter;
    decltype(&HBA_GetAdapterAttributes) getAdapterAttributes;
    decltype(&HBA_GetAdapterPortAttributes) getAdapterPortAttributes;
    NoEntry getPortStatistics;
    NoEntry getDiscoveredPortAttributes;
    NoEntry getPortAttributesByWwn;
    NoEntry sendCtPassThru;
    decltype(&HBA_RefreshInformation) refreshInformation;
    NoEntry resetStatistics;
    decltype(&HBA_GetFcpTargetMapping) getFcpTargetMapping;
    NoEntry getFcpPersistentBinding;
    NoEntry getEventBuffer;
    NoEntry setRnidMgmtInfo;
    NoEntry getRnidMgmtInfo;
    NoEntry sendRnid;
    decltype(&HBA_SendScsiInquiry) sendScsiInquiry;
    NoEntry sendReportLuns;
    decltype(&HBA_SendReadCapacity) sendReadCapacity;
};

/// What the standard's second edition has added.
struct VendorTableAddition {
    NoEntry openAdapterByWwn;
    NoEntry getFcpTargetMappingV2;
    NoEntry sendCtPassThruV2;
    NoEntry refreshAdapterConfiguration;
    NoEntry getBindingCapability;
    NoEntry getBindingSupport;
    NoEntry setBindingSupport;
    NoEntry setPersistentBindingV2;
    NoEntry getPersistentBindingV2;
    NoEntry removePersistentBinding;
    NoEntry removeAllPersistentBindings;
    NoEntry sendRnidV2;
    NoEntry scsiInquiryV2;
    NoEntry scsiReportLunsV2;
    NoEntry scsiReadCapacityV2;
    NoEntry getVendorLibraryAttributes;
    decltype(&HBA_RemoveCallback) removeCallback;
    NoEntry registerForAdapterAddEvents;
    NoEntry registerForAdapterEvents;
    decltype(&HBA_RegisterForAdapterPortEvents) registerForAdapterPortEvents;
    NoEntry registerForAdapterPortStatEvents;
    NoEntry registerForTargetEvents;
    NoEntry registerForLinkEvents;
    NoEntry sendRpl;
    NoEntry sendRps;
    NoEntry sendSrl;
    NoEntry sendLirr;
    NoEntry getFc4Statistics;
    NoEntry getFcpStatistics;
    NoEntry sendRls;
};

/// The table of the second edition.
struct VendorTableV2 : VendorTable, VendorTableAddition {};

static_assert(offsetof(VendorTable, getAdapterPortAttributes) == 8 * sizeof(NoEntry));
static_assert(offsetof(VendorTable, refreshInformation) == 13 * sizeof(NoEntry));
static_assert(offsetof(VendorTable, getFcpTargetMapping) == 15 * sizeof(NoEntry));
static_assert(offsetof(VendorTable, sendScsiInquiry) == 21 * sizeof(NoEntry));
static_assert(sizeof(VendorTable) == 24 * sizeof(NoEntry));
static_assert(offsetof(VendorTableAddition, removeCallback) == 16 * sizeof(NoEntry));
static_assert(offsetof(VendorTableAddition, registerForAdapterPortEvents) == 19 * sizeof(NoEntry));
static_assert(sizeof(VendorTableV2) == 54 * sizeof(NoEntry));

} // namespace tvrsim
