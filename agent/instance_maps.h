// The agent's instance maps by class: which there are, in which order they stand in the agent, and
// from which of them a class is answered.
#ifndef TVR_AGENT_INSTANCE_MAPS_H
#define TVR_AGENT_INSTANCE_MAPS_H

// MAP(class, member) is a map that its class is answered from. UNSERVED(class, member) is a map of
// the driver's log whose class is answered from the map of the same class for the provider's log.
// Both logs' instances stand there, and these maps stay empty.
#define TVR_INSTANCE_MAPS_FIRST(MAP, UNSERVED)                                                     \
    MAP(CIM_ComputerSystem, m_CIM_ComputerSystem_map)                                              \
    MAP(TVRHBA_ComputerSystemConformsToProfile, m_TVRHBA_ComputerSystemConformsToProfile_map)      \
    MAP(TVRHBA_ChassisContainsCard, m_TVRHBA_ChassisContainsCard_map)                              \
    MAP(TVRHBA_ControlledBy, m_TVRHBA_ControlledBy_map)                                            \
    MAP(TVRHBA_DeviceSAPImplementation, m_TVRHBA_DeviceSAPImplementation_map)                      \
    MAP(TVRHBA_ElementFlashImageSoftwareIdentity,                                                  \
        m_TVRHBA_ElementFlashImageSoftwareIdentityInst_map)                                        \
    MAP(TVRHBA_ElementStatisticalData, m_TVRHBA_ElementStatisticalData_map)                        \
    MAP(TVRHBA_FCPortConformsToProfile, m_TVRHBA_FCPortConformsToProfile_map)                      \
    MAP(TVRHBA_PortControllerConformsToProfile, m_TVRHBA_PortControllerConformsToProfile_map)      \
    MAP(TVRHBA_FCPort, m_TVRHBA_FCPort_map)                                                        \
    MAP(TVRHBA_ElementSoftwareIdentity, m_TVRHBA_FCPortSoftwareIdentity_map)                       \
    MAP(TVRHBA_FCPortStatistics, m_TVRHBA_FCPortStatistics_map)                                    \
    MAP(TVRHBA_FCPortSystemDevice, m_TVRHBA_FCPortSystemDevice_map)                                \
    MAP(TVRHBA_HostedCollection, m_TVRHBA_HostedCollection_map)                                    \
    MAP(TVRHBA_InstalledSoftwareIdentity, m_TVRHBA_InstalledSoftwareIdentity_map)                  \
    MAP(TVRHBA_LocalHostedInitiatorAccessPoint, m_TVRHBA_LocalHostedInitiatorAccessPoint_map)      \
    MAP(TVRHBA_LocalHostedAccessPoint, m_TVRHBA_LocalHostedAccessPoint_map)                        \
    MAP(TVRHBA_LogicalDisk, m_TVRHBA_LogicalDisk_map)                                              \
    MAP(TVRHBA_LogicalDiskSystemDevice, m_TVRHBA_LogicalDiskSystemDevice_map)                      \
    MAP(TVRHBA_LogicalPortGroup, m_TVRHBA_LogicalPortGroup_map)                                    \
    MAP(TVRHBA_MemberOfCollection, m_TVRHBA_MemberOfCollection_map)                                \
    MAP(TVRHBA_PhysicalPackage, m_TVRHBA_PhysicalPackage_map)                                      \
    MAP(TVRHBA_Transceiver, m_CIM_PhysicalComponent_map)                                           \
    MAP(TVRHBA_PortController, m_TVRHBA_PortController_map)                                        \
    MAP(TVRHBA_PortControllerSystemDevice, m_TVRHBA_PortControllerSystemDevice_map)                \
    MAP(TVRHBA_Product, m_TVRHBA_Product_map)                                                      \
    MAP(TVRHBA_ProductElementComponent, m_TVRHBA_ProductElementComponent_map)                      \
    MAP(TVRHBA_ProductPhysicalComponent, m_TVRHBA_ProductPhysicalComponent_map)                    \
    MAP(TVRHBA_TransceiverComponent, m_Component_map)                                              \
    MAP(TVRHBA_ProtocolControllerForPort, m_TVRHBA_ProtocolControllerForPort_map)                  \
    MAP(TVRHBA_ProviderSoftwareIdentity, m_TVRHBA_ProviderSoftwareIdentity_map)                    \
    MAP(TVRHBA_ProviderConfigSetting, m_TVRHBA_ProviderConfigSetting_map)                          \
    MAP(TVRHBA_Realizes, m_TVRHBA_Realizes_map)                                                    \
    MAP(TVRHBA_ReferencedProfile, m_TVRHBA_ReferencedProfile_map)                                  \
    MAP(TVRHBA_BaseServerReferencedProfile, m_TVRHBA_BaseServerReferencedProfile_map)              \
    MAP(TVRHBA_RegisteredProfile, m_TVRHBA_RegisteredProfile_map)                                  \
    MAP(TVRHBA_RemoteHostedAccessPoint, m_TVRHBA_RemoteHostedAccessPoint_map)                      \
    MAP(TVRHBA_RemoteServiceAccessPoint, m_TVRHBA_RemoteServiceAccessPoint_map)                    \
    MAP(TVRHBA_SAPAvailableForElement, m_TVRHBA_SAPAvailableForElement_map)                        \
    MAP(TVRHBA_SCSIArbitraryLogicalUnit, m_TVRHBA_SCSIArbitraryLogicalUnit_map)                    \
    MAP(TVRHBA_SCSIArbitraryLogicalUnitSystemDevice,                                               \
        m_TVRHBA_SCSIArbitraryLogicalUnitSystemDevice_map)                                         \
    MAP(TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath,                                        \
        m_TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath_map)                                  \
    MAP(TVRHBA_SCSIInitiatorTargetLogicalDiskPath,                                                 \
        m_TVRHBA_SCSIInitiatorTargetLogicalDiskPath_map)                                           \
    MAP(TVRHBA_SCSIInitiatorTargetStorageExtentPath,                                               \
        m_TVRHBA_SCSIInitiatorTargetStorageExtentPath_map)                                         \
    MAP(TVRHBA_SCSIInitiatorTargetStorageVolumePath,                                               \
        m_TVRHBA_SCSIInitiatorTargetStorageVolumePath_map)                                         \
    MAP(TVRHBA_SCSIInitiatorTargetTapeDrivePath, m_TVRHBA_SCSIInitiatorTargetTapeDrivePath_map)    \
    MAP(TVRHBA_SCSIProtocolController, m_TVRHBA_SCSIProtocolController_map)                        \
    MAP(TVRHBA_SCSIProtocolControllerSystemDevice,                                                 \
        m_TVRHBA_SCSIProtocolControllerSystemDevice_map)                                           \
    MAP(TVRHBA_SCSIProtocolInitiatorEndpoint, m_TVRHBA_SCSIProtocolInitiatorEndpoint_map)          \
    MAP(TVRHBA_SCSIProtocolEndpoint, m_TVRHBA_SCSIProtocolEndpoint_map)                            \
    MAP(TVRHBA_SoftwareConformsToProfile, m_TVRHBA_SoftwareConformsToProfile_map)                  \
    MAP(TVRHBA_SoftwareIdentity, m_TVRHBA_SoftwareIdentity_map)                                    \
    MAP(TVRHBA_StorageExtent, m_TVRHBA_StorageExtent_map)                                          \
    MAP(TVRHBA_StorageExtentSystemDevice, m_TVRHBA_StorageExtentSystemDevice_map)                  \
    MAP(TVRHBA_StorageVolume, m_TVRHBA_StorageVolume_map)                                          \
    MAP(TVRHBA_StorageVolumeSystemDevice, m_TVRHBA_StorageVolumeSystemDevice_map)                  \
    MAP(TVRHBA_SystemPackaging, m_TVRHBA_SystemPackaging_map)                                      \
    MAP(TVRHBA_TapeDrive, m_TVRHBA_TapeDrive_map)                                                  \
    MAP(TVRHBA_TapeDriveSystemDevice, m_TVRHBA_TapeDriveSystemDevice_map)                          \
    MAP(TVRHBA_FlashImageSoftwareIdentity, m_TVRHBA_FlashImageSoftwareIdentity_map)                \
    MAP(TVRHBA_DumpService, m_TVRHBA_DumpService_map)                                              \
    MAP(TVRHBA_HostedDumpService, m_TVRHBA_HostedDumpService_map)                                  \
    MAP(TVRHBA_DumpServiceAffectsElement, m_TVRHBA_DumpServiceAffectsElement_map)                  \
    MAP(TVRHBA_DumpData, m_TVRHBA_DumpData_map)                                                    \
    MAP(TVRHBA_ElementDumpData, m_TVRHBA_ElementDumpData_map)                                      \
    MAP(TVRHBA_PCIDevice, m_TVRHBA_PCIDevice_map)                                                  \
    MAP(TVRHBA_PCIElementConformsToProfile, m_TVRHBA_PCIElementConformsToProfile_map)              \
    MAP(TVRHBA_SystemDevice, m_TVRHBA_SystemDevice_map)                                            \
    MAP(TVRHBA_VitalProductData, m_TVRHBA_VitalProductData_map)                                    \
    MAP(TVRHBA_ElementVPD, m_TVRHBA_ElementVPD_map)                                                \
    MAP(TVRHBA_ResourcePool, m_TVRHBA_ResourcePool_map)                                            \
    MAP(TVRHBA_ElementAllocatedFromPool, m_TVRHBA_ElementAllocatedFromPool_map)                    \
    MAP(TVRHBA_HostedResourcePool, m_TVRHBA_HostedResourcePool_map)                                \
    MAP(TVRHBA_VirtualFCPort, m_TVRHBA_VirtualFCPort_map)                                          \
    MAP(TVRHBA_VMSystemDevice, m_TVRHBA_VMSystemDevice_map)                                        \
    MAP(TVRHBA_VPortHostedDependency, m_TVRHBA_VPortHostedDependency_map)                          \
    MAP(TVRHBA_RecordLog, m_TVRHBA_TVRHBA_RecordLog_map)                                           \
    MAP(TVRHBA_EnabledRecordLogCapabilities, m_TVRHBA_TVRHBA_EnabledRecordLogCapabilities_map)     \
    MAP(TVRHBA_RecordLogCapabilities, m_TVRHBA_RecordLogCapabilities_map)                          \
    MAP(TVRHBA_ProviderUseOfLog, m_TVRHBA_ProviderUseOfLog_map)                                    \
    MAP(TVRHBA_RecordLogConformsToProfile, m_TVRHBA_RecordLogConformsToProfile_map)                \
    UNSERVED(TVRHBA_RecordLog, m_TVRHBA_RecordLog_map)                                             \
    UNSERVED(TVRHBA_EnabledRecordLogCapabilities, m_TVRHBA_EnabledRecordLogCapabilities_map)       \
    UNSERVED(TVRHBA_ProviderUseOfLog, m_TVRHBA_DriverProviderUseOfLog_map)                         \
    MAP(TVRHBA_FCDriverLogEntry, m_TVRHBA_FCDriverLogEntry_map)

#define TVR_INSTANCE_MAPS_SECOND(MAP, UNSERVED)                                                    \
    MAP(TVRHBA_SoftwareInstallationService, m_TVRHBA_SoftwareInstallationService_map)              \
    MAP(TVRHBA_InstallServiceAffectsFCPort, m_TVRHBA_InstallServiceAffectsFCPort_map)              \
    MAP(TVRHBA_InstallServiceAffectsSystem, m_TVRHBA_InstallServiceAffectsSystem_map)              \
    MAP(TVRHBA_InstallServiceConformsToProfile, m_TVRHBA_InstallServiceConformsToProfile_map)      \
    MAP(TVRHBA_HostedInstallationService, m_TVRHBA_HostedInstallationService_map)                  \
    MAP(TVRHBA_SoftwareInstallationServiceCapabilities,                                            \
        m_TVRHBA_SoftwareInstallationServiceCapabilities_map)                                      \
    MAP(TVRHBA_ElementCapabilities, m_TVRHBA_ElementCapabilities_map)                              \
    MAP(TVRHBA_DriverParamGlobal, m_TVRHBA_DriverParamGlobal_map)                                  \
    MAP(TVRHBA_DriverParams, m_TVRHBA_DriverParams_map)                                            \
    MAP(TVRHBA_DriverParameterAffectsFCPort, m_TVRHBA_DriverParameterAffectsFCPort_map)            \
    MAP(TVRHBA_FCHBADriverParamService, m_TVRHBA_FCHBADriverParamService_map)                      \
    MAP(TVRHBA_GlobalDriverServiceElementSettingData,                                              \
        m_TVRHBA_GlobalDriverServiceElementSettingData_map)                                        \
    MAP(TVRHBA_DriverServiceElementSettingData, m_TVRHBA_DriverServiceElementSettingData_map)      \
    MAP(TVRHBA_FCDriverServiceAffectsDriver, m_TVRHBA_FCDriverServiceAffectsDriver_map)            \
    MAP(TVRHBA_HostedFCHBADriverParamService, m_TVRHBA_HostedFCHBADriverParamService_map)          \
    MAP(TVRHBA_FCHBADriverParamServiceAffectsFCPort,                                               \
        m_TVRHBA_FCHBADriverParamServiceAffectsFCPort_map)                                         \
    MAP(TVRHBA_FCHBADriverParamServiceAffectsSystem,                                               \
        m_TVRHBA_FCHBADriverParamServiceAffectsSystem_map)                                         \
    MAP(TVRHBA_BootBIOSService, m_TVRHBA_BootBIOSService_map)                                      \
    MAP(TVRHBA_HostedBootBIOSService, m_TVRHBA_HostedBootBIOSService_map)                          \
    MAP(TVRHBA_BootBIOSServiceAffectsSystem, m_TVRHBA_BootBIOSServiceAffectsSystem_map)            \
    MAP(TVRHBA_BootBIOSServiceAffectsFCPort, m_TVRHBA_BootBIOSServiceAffectsFCPort_map)            \
    MAP(TVRHBA_FCHBAWWNService, m_TVRHBA_FCHBAWWNService_map)                                      \
    MAP(TVRHBA_HostedFCHBAWWNService, m_TVRHBA_HostedFCHBAWWNService_map)                          \
    MAP(TVRHBA_FCHBAWWNServiceAffectsSystem, m_TVRHBA_FCHBAWWNServiceAffectsSystem_map)            \
    MAP(TVRHBA_FCHBAWWNServiceAffectsFCPort, m_TVRHBA_FCHBAWWNServiceAffectsFCPort_map)            \
    MAP(TVRHBA_FCHBADiagnosticTest, m_TVRHBA_FCHBADiagnosticTest_map)                              \
    MAP(TVRHBA_AvailableDiagnosticService, m_TVRHBA_AvailableDiagnosticService_map)                \
    MAP(TVRHBA_FCHBADiagnosticServiceCapabilities,                                                 \
        m_TVRHBA_FCHBADiagnosticServiceCapabilities_map)                                           \
    MAP(TVRHBA_DiagElementCapabilities, m_TVRHBA_DiagElementCapabilities_map)                      \
    MAP(TVRHBA_ConcreteJob, m_TVRHBA_ConcreteJob_map)                                              \
    MAP(TVRHBA_DiagnosticsLog, m_TVRHBA_DiagnosticsLog_map)                                        \
    MAP(TVRHBA_HelpService, m_TVRHBA_HelpService_map)                                              \
    MAP(TVRHBA_ServiceAffectsElement, m_TVRHBA_ServiceAffectsElement_map)                          \
    MAP(TVRHBA_ServiceAvailableToElement, m_TVRHBA_ServiceAvailableToElement_map)                  \
    MAP(TVRHBA_OwningJobElement, m_TVRHBA_OwningJobElement_map)                                    \
    MAP(TVRHBA_AffectedJobElement, m_TVRHBA_AffectedJobElement_map)                                \
    MAP(TVRHBA_JobSettingData, m_TVRHBA_JobSettingData_map)                                        \
    MAP(TVRHBA_UseOfLog, m_TVRHBA_UseOfLog_map)                                                    \
    MAP(TVRHBA_DiagnosticServiceRecord, m_TVRHBA_DiagnosticServiceRecord_map)                      \
    MAP(TVRHBA_LogManagesRecord, m_TVRHBA_LogManagesRecord_map)                                    \
    MAP(TVRHBA_RecordAppliesToElement, m_TVRHBA_RecordAppliesToElement_map)                        \
    MAP(TVRHBA_DiagElementSettingData, m_TVRHBA_DiagElementSettingData_map)                        \
    MAP(TVRHBA_HostedService, m_TVRHBA_HostedService_map)                                          \
    MAP(TVRHBA_DiagHostedService, m_TVRHBA_DiagHostedService_map)                                  \
    MAP(TVRHBA_DiagnosticCompletionRecord, m_TVRHBA_DiagnosticCompletionRecord_map)                \
    MAP(TVRHBA_FCHBADiagnosticSettingData, m_TVRHBA_FCHBADiagnosticSettingData_map)                \
    MAP(TVRHBA_DiagnosticSettingDataRecord, m_TVRHBA_DiagnosticSettingDataRecord_map)              \
    MAP(TVRHBA_CorrespondingSettingDataRecord, m_TVRHBA_CorrespondingSettingDataRecord_map)        \
    MAP(TVRHBA_DiagServiceConformsToProfile, m_TVRHBA_DiagServiceConformsToProfile_map)            \
    MAP(TVRHBA_DiagnosticIdentity, m_TVRHBA_DiagnosticIdentity_map)                                \
    MAP(TVRHBA_DiagElementSoftwareIdentity, m_TVRHBA_DiagElementSoftwareIdentity_map)              \
    MAP(TVRHBA_JobElementSettingData, m_TVRHBA_JobElementSettingData_map)

#endif
