#include "agent/clear_maps.h"

namespace cimple {

namespace {

template <class... Classes> void clear(Instance_Maps& maps) noexcept {
    ((maps.*map_of<Classes>).clear(), ...);
}

} // namespace

void clearAdapterMaps(Instance_Maps& maps) {
    TVR_LOG("PERF: Entered clearAdapterMaps()");
    try {
        clear<CIM_ComputerSystem, TVRHBA_FCPort, TVRHBA_FCPortStatistics, TVRHBA_LogicalPortGroup,
              TVRHBA_PhysicalPackage, TVRHBA_Transceiver, TVRHBA_PortController, TVRHBA_Product,
              TVRHBA_RegisteredProfile, TVRHBA_RemoteServiceAccessPoint,
              TVRHBA_SCSIProtocolController, TVRHBA_SoftwareIdentity, TVRHBA_ProviderConfigSetting,
              TVRHBA_PCIDevice, TVRHBA_PCIElementConformsToProfile, TVRHBA_SystemDevice,
              TVRHBA_DumpService, TVRHBA_HostedDumpService, TVRHBA_DumpServiceAffectsElement,
              TVRHBA_DumpData, TVRHBA_ElementDumpData, TVRHBA_VitalProductData, TVRHBA_ElementVPD>(
            maps);
        ClearFCDriverLogClasses(maps);
        ClearPortVirtualizationMaps(maps);
        TVR_LOG("Clearing Record Log maps");
        clear<TVRHBA_RecordLog, TVRHBA_EnabledRecordLogCapabilities, TVRHBA_RecordLogCapabilities,
              TVRHBA_ProviderUseOfLog, TVRHBA_RecordLogConformsToProfile,
              TVRHBA_SCSIProtocolInitiatorEndpoint, TVRHBA_LocalHostedInitiatorAccessPoint>(maps);
        TVR_LOG("Clearing SoftwareUpdate maps");
        clear<TVRHBA_SoftwareInstallationService, TVRHBA_SoftwareInstallationServiceCapabilities,
              TVRHBA_FCHBAWWNService, TVRHBA_BootBIOSService, TVRHBA_FCHBADriverParamService,
              TVRHBA_DriverParamGlobal, TVRHBA_DriverParams, TVRHBA_DriverParameterAffectsFCPort,
              TVRHBA_GlobalDriverServiceElementSettingData, TVRHBA_DriverServiceElementSettingData,
              TVRHBA_FCDriverServiceAffectsDriver, TVRHBA_ComputerSystemConformsToProfile,
              TVRHBA_FCPortConformsToProfile, TVRHBA_PortControllerConformsToProfile,
              TVRHBA_SoftwareConformsToProfile, TVRHBA_ControlledBy, TVRHBA_DeviceSAPImplementation,
              TVRHBA_ElementStatisticalData, TVRHBA_ElementSoftwareIdentity,
              TVRHBA_FCPortSystemDevice, TVRHBA_HostedCollection, TVRHBA_InstalledSoftwareIdentity,
              TVRHBA_MemberOfCollection, TVRHBA_PortControllerSystemDevice,
              TVRHBA_ProductElementComponent, TVRHBA_ProductPhysicalComponent,
              TVRHBA_TransceiverComponent, TVRHBA_ProtocolControllerForPort,
              TVRHBA_ProviderSoftwareIdentity, TVRHBA_ElementFlashImageSoftwareIdentity,
              TVRHBA_Realizes, TVRHBA_ReferencedProfile, TVRHBA_BaseServerReferencedProfile,
              TVRHBA_RemoteHostedAccessPoint, TVRHBA_SAPAvailableForElement,
              TVRHBA_SCSIProtocolControllerSystemDevice, TVRHBA_SystemPackaging,
              TVRHBA_FlashImageSoftwareIdentity>(maps);
        TVR_LOG("Clearing Software Update maps");
        clear<TVRHBA_ElementCapabilities, TVRHBA_InstallServiceAffectsFCPort,
              TVRHBA_InstallServiceAffectsSystem, TVRHBA_HostedInstallationService,
              TVRHBA_InstallServiceConformsToProfile, TVRHBA_HostedBootBIOSService,
              TVRHBA_BootBIOSServiceAffectsSystem, TVRHBA_BootBIOSServiceAffectsFCPort,
              TVRHBA_HostedFCHBAWWNService, TVRHBA_FCHBAWWNServiceAffectsSystem,
              TVRHBA_FCHBAWWNServiceAffectsFCPort, TVRHBA_HostedFCHBADriverParamService,
              TVRHBA_FCHBADriverParamServiceAffectsFCPort,
              TVRHBA_FCHBADriverParamServiceAffectsSystem>(maps);
        TVR_LOG("Clearing TVR CDM maps");
        ClearDiagnosticClassMaps(maps, 0);
        TVR_LOG("Done with Clearing CDM maps");
    } catch (...) {
        TVR_LOG("Error in clearAdapterMaps()");
    }
    TVR_LOG("Exiting clearAdapterMaps()");
}

void clearSANMaps(Instance_Maps& maps) {
    TVR_LOG("PERF: Entered clearSANMaps()");
    try {
        clear<TVRHBA_SCSIProtocolEndpoint, TVRHBA_LogicalDisk, TVRHBA_StorageVolume,
              TVRHBA_TapeDrive, TVRHBA_StorageExtent, TVRHBA_SCSIArbitraryLogicalUnit,
              TVRHBA_LocalHostedAccessPoint, TVRHBA_LogicalDiskSystemDevice,
              TVRHBA_StorageVolumeSystemDevice, TVRHBA_TapeDriveSystemDevice,
              TVRHBA_StorageExtentSystemDevice, TVRHBA_SCSIArbitraryLogicalUnitSystemDevice,
              TVRHBA_SCSIInitiatorTargetLogicalDiskPath,
              TVRHBA_SCSIInitiatorTargetStorageVolumePath, TVRHBA_SCSIInitiatorTargetTapeDrivePath,
              TVRHBA_SCSIInitiatorTargetStorageExtentPath,
              TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath>(maps);
    } catch (...) {
        TVR_LOG("Error in clearSANMaps()");
    }
    TVR_LOG("Exiting clearSANMaps()");
}

void clearDriverMaps() {
    TVR_LOG("PERF: Entered clearDriverMaps: Entry");
    TVR_LOG("PERF: Entered clearDriverMaps: cleanExit");
}

uint32 ClearFCDriverLogClasses(Instance_Maps& maps) {
    maps.m_TVRHBA_RecordLog_map.clear();
    maps.m_TVRHBA_EnabledRecordLogCapabilities_map.clear();
    maps.m_TVRHBA_DriverProviderUseOfLog_map.clear();
    maps.m_TVRHBA_FCDriverLogEntry_map.clear();
    return 0;
}

uint32 ClearPortVirtualizationMaps(Instance_Maps& maps) {
    TVR_LOG("ClearPortVirtualizationMaps for FC invoked");
    clear<TVRHBA_ResourcePool, TVRHBA_ElementAllocatedFromPool, TVRHBA_HostedResourcePool,
          TVRHBA_VirtualFCPort, TVRHBA_VPortHostedDependency, TVRHBA_VMSystemDevice>(maps);
    TVR_LOG("Exiting ClearPortVirtualizationMaps ");
    return 0;
}

uint32 ClearDiagnosticClassMaps(Instance_Maps& maps, uint32 mode) {
    TVR_LOG("TVR_Diagnostics::ClearDiagnosticClassMaps");
    switch (mode) {
    case 0:
        clear<TVRHBA_FCHBADiagnosticTest, TVRHBA_FCHBADiagnosticSettingData,
              TVRHBA_DiagElementSettingData, TVRHBA_FCHBADiagnosticServiceCapabilities,
              TVRHBA_DiagElementCapabilities, TVRHBA_HelpService, TVRHBA_ServiceAvailableToElement,
              TVRHBA_DiagnosticIdentity, TVRHBA_DiagElementSoftwareIdentity, TVRHBA_JobSettingData,
              TVRHBA_JobElementSettingData, TVRHBA_DiagnosticsLog, TVRHBA_UseOfLog,
              TVRHBA_AvailableDiagnosticService, TVRHBA_ServiceAffectsElement,
              TVRHBA_DiagServiceConformsToProfile, TVRHBA_DiagHostedService, TVRHBA_HostedService>(
            maps);
        break;
    case 1:
        clear<TVRHBA_LogManagesRecord, TVRHBA_RecordAppliesToElement,
              TVRHBA_DiagnosticCompletionRecord, TVRHBA_DiagnosticServiceRecord,
              TVRHBA_CorrespondingSettingDataRecord, TVRHBA_DiagnosticSettingDataRecord>(maps);
        break;
    case 2:
        clear<TVRHBA_ConcreteJob, TVRHBA_OwningJobElement, TVRHBA_AffectedJobElement>(maps);
        break;
    default:
        break;
    }
    return 0;
}

} // namespace cimple
