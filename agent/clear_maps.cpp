// Which maps a rebuild empties, in groups.
#include "agent/provider_agent.h"

namespace cimple {

namespace {

template <class... Maps> void clear(Maps&... maps) noexcept {
    (maps.clear(), ...);
}

} // namespace

void ProviderAgent::ClearMaps() {
    TVR_LOG("Entered ClearMaps()");
    {
        const Lock lock(m_AdapterMapsReadyMutex);
        clearAdapterMaps();
        clearDriverMaps();
    }
    {
        const Lock lock(m_SANMapsReadyMutex);
        clearSANMaps();
    }
    TVR_LOG("Exiting ClearMaps()");
}

void ProviderAgent::clearAdapterMaps() {
    TVR_LOG("PERF: Entered clearAdapterMaps()");
    try {
        clear(m_CIM_ComputerSystem_map, m_TVRHBA_FCPort_map, m_TVRHBA_FCPortStatistics_map,
              m_TVRHBA_LogicalPortGroup_map, m_TVRHBA_PhysicalPackage_map,
              m_CIM_PhysicalComponent_map, m_TVRHBA_PortController_map, m_TVRHBA_Product_map,
              m_TVRHBA_RegisteredProfile_map, m_TVRHBA_RemoteServiceAccessPoint_map,
              m_TVRHBA_SCSIProtocolController_map, m_TVRHBA_SoftwareIdentity_map,
              m_TVRHBA_ProviderConfigSetting_map, m_TVRHBA_PCIDevice_map,
              m_TVRHBA_PCIElementConformsToProfile_map, m_TVRHBA_SystemDevice_map,
              m_TVRHBA_DumpService_map, m_TVRHBA_HostedDumpService_map,
              m_TVRHBA_DumpServiceAffectsElement_map, m_TVRHBA_DumpData_map,
              m_TVRHBA_ElementDumpData_map, m_TVRHBA_VitalProductData_map, m_TVRHBA_ElementVPD_map);
        ClearFCDriverLogClasses();
        ClearPortVirtualizationMaps();
        TVR_LOG("Clearing Record Log maps");
        clear(m_TVRHBA_TVRHBA_RecordLog_map, m_TVRHBA_TVRHBA_EnabledRecordLogCapabilities_map,
              m_TVRHBA_RecordLogCapabilities_map, m_TVRHBA_ProviderUseOfLog_map,
              m_TVRHBA_RecordLogConformsToProfile_map, m_TVRHBA_SCSIProtocolInitiatorEndpoint_map,
              m_TVRHBA_LocalHostedInitiatorAccessPoint_map);
        TVR_LOG("Clearing SoftwareUpdate maps");
        clear(m_TVRHBA_SoftwareInstallationService_map,
              m_TVRHBA_SoftwareInstallationServiceCapabilities_map, m_TVRHBA_FCHBAWWNService_map,
              m_TVRHBA_BootBIOSService_map, m_TVRHBA_FCHBADriverParamService_map,
              m_TVRHBA_DriverParamGlobal_map, m_TVRHBA_DriverParams_map,
              m_TVRHBA_DriverParameterAffectsFCPort_map,
              m_TVRHBA_GlobalDriverServiceElementSettingData_map,
              m_TVRHBA_DriverServiceElementSettingData_map,
              m_TVRHBA_FCDriverServiceAffectsDriver_map,
              m_TVRHBA_ComputerSystemConformsToProfile_map, m_TVRHBA_FCPortConformsToProfile_map,
              m_TVRHBA_PortControllerConformsToProfile_map, m_TVRHBA_SoftwareConformsToProfile_map,
              m_TVRHBA_ControlledBy_map, m_TVRHBA_DeviceSAPImplementation_map,
              m_TVRHBA_ElementStatisticalData_map, m_TVRHBA_FCPortSoftwareIdentity_map,
              m_TVRHBA_FCPortSystemDevice_map, m_TVRHBA_HostedCollection_map,
              m_TVRHBA_InstalledSoftwareIdentity_map, m_TVRHBA_MemberOfCollection_map,
              m_TVRHBA_PortControllerSystemDevice_map, m_TVRHBA_ProductElementComponent_map,
              m_TVRHBA_ProductPhysicalComponent_map, m_Component_map,
              m_TVRHBA_ProtocolControllerForPort_map, m_TVRHBA_ProviderSoftwareIdentity_map,
              m_TVRHBA_ElementFlashImageSoftwareIdentityInst_map, m_TVRHBA_Realizes_map,
              m_TVRHBA_ReferencedProfile_map, m_TVRHBA_BaseServerReferencedProfile_map,
              m_TVRHBA_RemoteHostedAccessPoint_map, m_TVRHBA_SAPAvailableForElement_map,
              m_TVRHBA_SCSIProtocolControllerSystemDevice_map, m_TVRHBA_SystemPackaging_map,
              m_TVRHBA_FlashImageSoftwareIdentity_map);
        TVR_LOG("Clearing Software Update maps");
        clear(m_TVRHBA_ElementCapabilities_map, m_TVRHBA_InstallServiceAffectsFCPort_map,
              m_TVRHBA_InstallServiceAffectsSystem_map, m_TVRHBA_HostedInstallationService_map,
              m_TVRHBA_InstallServiceConformsToProfile_map, m_TVRHBA_HostedBootBIOSService_map,
              m_TVRHBA_BootBIOSServiceAffectsSystem_map, m_TVRHBA_BootBIOSServiceAffectsFCPort_map,
              m_TVRHBA_HostedFCHBAWWNService_map, m_TVRHBA_FCHBAWWNServiceAffectsSystem_map,
              m_TVRHBA_FCHBAWWNServiceAffectsFCPort_map, m_TVRHBA_HostedFCHBADriverParamService_map,
              m_TVRHBA_FCHBADriverParamServiceAffectsFCPort_map,
              m_TVRHBA_FCHBADriverParamServiceAffectsSystem_map);
        TVR_LOG("Clearing TVR CDM maps");
        ClearDiagnosticClassMaps(0);
        TVR_LOG("Done with Clearing CDM maps");
    } catch (...) {
        TVR_LOG("Error in clearAdapterMaps()");
    }
    TVR_LOG("Exiting clearAdapterMaps()");
}

void ProviderAgent::clearSANMaps() {
    TVR_LOG("PERF: Entered clearSANMaps()");
    try {
        clear(m_TVRHBA_SCSIProtocolEndpoint_map, m_TVRHBA_LogicalDisk_map,
              m_TVRHBA_StorageVolume_map, m_TVRHBA_TapeDrive_map, m_TVRHBA_StorageExtent_map,
              m_TVRHBA_SCSIArbitraryLogicalUnit_map, m_TVRHBA_LocalHostedAccessPoint_map,
              m_TVRHBA_LogicalDiskSystemDevice_map, m_TVRHBA_StorageVolumeSystemDevice_map,
              m_TVRHBA_TapeDriveSystemDevice_map, m_TVRHBA_StorageExtentSystemDevice_map,
              m_TVRHBA_SCSIArbitraryLogicalUnitSystemDevice_map,
              m_TVRHBA_SCSIInitiatorTargetLogicalDiskPath_map,
              m_TVRHBA_SCSIInitiatorTargetStorageVolumePath_map,
              m_TVRHBA_SCSIInitiatorTargetTapeDrivePath_map,
              m_TVRHBA_SCSIInitiatorTargetStorageExtentPath_map,
              m_TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath_map);
    } catch (...) {
        TVR_LOG("Error in clearSANMaps()");
    }
    TVR_LOG("Exiting clearSANMaps()");
}

// Driver parameters are emptied with the adapter maps.
void ProviderAgent::clearDriverMaps() {
    TVR_LOG("PERF: Entered clearDriverMaps: Entry");
    TVR_LOG("PERF: Entered clearDriverMaps: cleanExit");
}

uint32 ProviderAgent::ClearFCDriverLogClasses() {
    clear(m_TVRHBA_RecordLog_map, m_TVRHBA_EnabledRecordLogCapabilities_map,
          m_TVRHBA_DriverProviderUseOfLog_map, m_TVRHBA_FCDriverLogEntry_map);
    return 0;
}

uint32 ProviderAgent::ClearPortVirtualizationMaps() {
    TVR_LOG("ClearPortVirtualizationMaps for FC invoked");
    clear(m_TVRHBA_ResourcePool_map, m_TVRHBA_ElementAllocatedFromPool_map,
          m_TVRHBA_HostedResourcePool_map, m_TVRHBA_VirtualFCPort_map,
          m_TVRHBA_VPortHostedDependency_map, m_TVRHBA_VMSystemDevice_map);
    TVR_LOG("Exiting ClearPortVirtualizationMaps ");
    return 0;
}

uint32 ProviderAgent::ClearDiagnosticClassMaps(uint32 mode) {
    TVR_LOG("TVR_Diagnostics::ClearDiagnosticClassMaps");
    switch (mode) {
    case 0:
        clear(m_TVRHBA_FCHBADiagnosticTest_map, m_TVRHBA_FCHBADiagnosticSettingData_map,
              m_TVRHBA_DiagElementSettingData_map, m_TVRHBA_FCHBADiagnosticServiceCapabilities_map,
              m_TVRHBA_DiagElementCapabilities_map, m_TVRHBA_HelpService_map,
              m_TVRHBA_ServiceAvailableToElement_map, m_TVRHBA_DiagnosticIdentity_map,
              m_TVRHBA_DiagElementSoftwareIdentity_map, m_TVRHBA_JobSettingData_map,
              m_TVRHBA_JobElementSettingData_map, m_TVRHBA_DiagnosticsLog_map,
              m_TVRHBA_UseOfLog_map, m_TVRHBA_AvailableDiagnosticService_map,
              m_TVRHBA_ServiceAffectsElement_map, m_TVRHBA_DiagServiceConformsToProfile_map,
              m_TVRHBA_DiagHostedService_map, m_TVRHBA_HostedService_map);
        break;
    case 1:
        clear(m_TVRHBA_LogManagesRecord_map, m_TVRHBA_RecordAppliesToElement_map,
              m_TVRHBA_DiagnosticCompletionRecord_map, m_TVRHBA_DiagnosticServiceRecord_map,
              m_TVRHBA_CorrespondingSettingDataRecord_map,
              m_TVRHBA_DiagnosticSettingDataRecord_map);
        break;
    case 2:
        clear(m_TVRHBA_ConcreteJob_map, m_TVRHBA_OwningJobElement_map,
              m_TVRHBA_AffectedJobElement_map);
        break;
    default:
        break;
    }
    return 0;
}

} // namespace cimple
