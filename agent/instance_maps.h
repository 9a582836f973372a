// All instances that the provider answers from.
#ifndef TVR_AGENT_INSTANCE_MAPS_H
#define TVR_AGENT_INSTANCE_MAPS_H

#include "common/logger.h"
#include "runtime/instance_map.h"
#include "schema/classes.h"

namespace cimple {

struct Instance_Maps;

template <class C> struct Served_Map {
    Class_Map<C> Instance_Maps::*map;
    const char* name;
};

// Declares a map that its class is answered from, so that it is found by the class.
#define TVR_NAMED_MAP(class_name, member)                                                          \
    static constexpr Served_Map<class_name> served(const class_name*) noexcept {                   \
        return {&Instance_Maps::member, #member};                                                  \
    }                                                                                              \
    Class_Map<class_name> member
#define TVR_MAP(class_name) TVR_NAMED_MAP(class_name, m_##class_name##_map)

// The agent's instance maps and what else it answers from, in the order of their construction. No
// lock of its own: whoever reads or changes them holds m_ProviderDataMutex of the agent.
struct Instance_Maps {
    // The first instance of its map, on which every logical device hangs. A rebuild of the adapter
    // maps makes it before all else; there must be one.
    const CIM_ComputerSystem& computer_system() const { return *m_CIM_ComputerSystem_map.get(0); }

    TVR_MAP(CIM_ComputerSystem);
    TVR_MAP(TVRHBA_ComputerSystemConformsToProfile);
    TVR_MAP(TVRHBA_ChassisContainsCard);
    TVR_MAP(TVRHBA_ControlledBy);
    TVR_MAP(TVRHBA_DeviceSAPImplementation);
    TVR_NAMED_MAP(TVRHBA_ElementFlashImageSoftwareIdentity,
                  m_TVRHBA_ElementFlashImageSoftwareIdentityInst_map);
    TVR_MAP(TVRHBA_ElementStatisticalData);
    TVR_MAP(TVRHBA_FCPortConformsToProfile);
    TVR_MAP(TVRHBA_PortControllerConformsToProfile);
    TVR_MAP(TVRHBA_FCPort);
    TVR_NAMED_MAP(TVRHBA_ElementSoftwareIdentity, m_TVRHBA_FCPortSoftwareIdentity_map);
    TVR_MAP(TVRHBA_FCPortStatistics);
    TVR_MAP(TVRHBA_FCPortSystemDevice);
    TVR_MAP(TVRHBA_HostedCollection);
    TVR_MAP(TVRHBA_InstalledSoftwareIdentity);
    TVR_MAP(TVRHBA_LocalHostedInitiatorAccessPoint);
    TVR_MAP(TVRHBA_LocalHostedAccessPoint);
    TVR_MAP(TVRHBA_LogicalDisk);
    TVR_MAP(TVRHBA_LogicalDiskSystemDevice);
    TVR_MAP(TVRHBA_LogicalPortGroup);
    TVR_MAP(TVRHBA_MemberOfCollection);
    TVR_MAP(TVRHBA_PhysicalPackage);
    TVR_NAMED_MAP(TVRHBA_Transceiver, m_CIM_PhysicalComponent_map);
    TVR_MAP(TVRHBA_PortController);
    TVR_MAP(TVRHBA_PortControllerSystemDevice);
    TVR_MAP(TVRHBA_Product);
    TVR_MAP(TVRHBA_ProductElementComponent);
    TVR_MAP(TVRHBA_ProductPhysicalComponent);
    TVR_NAMED_MAP(TVRHBA_TransceiverComponent, m_Component_map);
    TVR_MAP(TVRHBA_ProtocolControllerForPort);
    TVR_MAP(TVRHBA_ProviderSoftwareIdentity);
    TVR_MAP(TVRHBA_ProviderConfigSetting);
    TVR_MAP(TVRHBA_Realizes);
    TVR_MAP(TVRHBA_ReferencedProfile);
    TVR_MAP(TVRHBA_BaseServerReferencedProfile);
    TVR_MAP(TVRHBA_RegisteredProfile);
    TVR_MAP(TVRHBA_RemoteHostedAccessPoint);
    TVR_MAP(TVRHBA_RemoteServiceAccessPoint);
    TVR_MAP(TVRHBA_SAPAvailableForElement);
    TVR_MAP(TVRHBA_SCSIArbitraryLogicalUnit);
    TVR_MAP(TVRHBA_SCSIArbitraryLogicalUnitSystemDevice);
    TVR_MAP(TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath);
    TVR_MAP(TVRHBA_SCSIInitiatorTargetLogicalDiskPath);
    TVR_MAP(TVRHBA_SCSIInitiatorTargetStorageExtentPath);
    TVR_MAP(TVRHBA_SCSIInitiatorTargetStorageVolumePath);
    TVR_MAP(TVRHBA_SCSIInitiatorTargetTapeDrivePath);
    TVR_MAP(TVRHBA_SCSIProtocolController);
    TVR_MAP(TVRHBA_SCSIProtocolControllerSystemDevice);
    TVR_MAP(TVRHBA_SCSIProtocolInitiatorEndpoint);
    TVR_MAP(TVRHBA_SCSIProtocolEndpoint);
    TVR_MAP(TVRHBA_SoftwareConformsToProfile);
    TVR_MAP(TVRHBA_SoftwareIdentity);
    TVR_MAP(TVRHBA_StorageExtent);
    TVR_MAP(TVRHBA_StorageExtentSystemDevice);
    TVR_MAP(TVRHBA_StorageVolume);
    TVR_MAP(TVRHBA_StorageVolumeSystemDevice);
    TVR_MAP(TVRHBA_SystemPackaging);
    TVR_MAP(TVRHBA_TapeDrive);
    TVR_MAP(TVRHBA_TapeDriveSystemDevice);
    TVR_MAP(TVRHBA_FlashImageSoftwareIdentity);
    TVR_MAP(TVRHBA_DumpService);
    TVR_MAP(TVRHBA_HostedDumpService);
    TVR_MAP(TVRHBA_DumpServiceAffectsElement);
    TVR_MAP(TVRHBA_DumpData);
    TVR_MAP(TVRHBA_ElementDumpData);
    TVR_MAP(TVRHBA_PCIDevice);
    TVR_MAP(TVRHBA_PCIElementConformsToProfile);
    TVR_MAP(TVRHBA_SystemDevice);
    TVR_MAP(TVRHBA_VitalProductData);
    TVR_MAP(TVRHBA_ElementVPD);
    TVR_MAP(TVRHBA_ResourcePool);
    TVR_MAP(TVRHBA_ElementAllocatedFromPool);
    TVR_MAP(TVRHBA_HostedResourcePool);
    TVR_MAP(TVRHBA_VirtualFCPort);
    TVR_MAP(TVRHBA_VMSystemDevice);
    TVR_MAP(TVRHBA_VPortHostedDependency);
    TVR_NAMED_MAP(TVRHBA_RecordLog, m_TVRHBA_TVRHBA_RecordLog_map);
    TVR_NAMED_MAP(TVRHBA_EnabledRecordLogCapabilities,
                  m_TVRHBA_TVRHBA_EnabledRecordLogCapabilities_map);
    TVR_MAP(TVRHBA_RecordLogCapabilities);
    TVR_MAP(TVRHBA_ProviderUseOfLog);
    TVR_MAP(TVRHBA_RecordLogConformsToProfile);

    // Always empty: the driver's log and its capabilities and use stand in the maps of the
    // provider's log, which their classes are answered from.
    Class_Map<TVRHBA_RecordLog> m_TVRHBA_RecordLog_map;
    Class_Map<TVRHBA_EnabledRecordLogCapabilities> m_TVRHBA_EnabledRecordLogCapabilities_map;
    Class_Map<TVRHBA_ProviderUseOfLog> m_TVRHBA_DriverProviderUseOfLog_map;

    TVR_MAP(TVRHBA_FCDriverLogEntry);

    DeviceLog m_DeviceLog; // the lines that the driver's log entries are made from

    TVR_MAP(TVRHBA_SoftwareInstallationService);
    TVR_MAP(TVRHBA_InstallServiceAffectsFCPort);
    TVR_MAP(TVRHBA_InstallServiceAffectsSystem);
    TVR_MAP(TVRHBA_InstallServiceConformsToProfile);
    TVR_MAP(TVRHBA_HostedInstallationService);
    TVR_MAP(TVRHBA_SoftwareInstallationServiceCapabilities);
    TVR_MAP(TVRHBA_ElementCapabilities);
    TVR_MAP(TVRHBA_DriverParamGlobal);
    TVR_MAP(TVRHBA_DriverParams);
    TVR_MAP(TVRHBA_DriverParameterAffectsFCPort);
    TVR_MAP(TVRHBA_FCHBADriverParamService);
    TVR_MAP(TVRHBA_GlobalDriverServiceElementSettingData);
    TVR_MAP(TVRHBA_DriverServiceElementSettingData);
    TVR_MAP(TVRHBA_FCDriverServiceAffectsDriver);
    TVR_MAP(TVRHBA_HostedFCHBADriverParamService);
    TVR_MAP(TVRHBA_FCHBADriverParamServiceAffectsFCPort);
    TVR_MAP(TVRHBA_FCHBADriverParamServiceAffectsSystem);
    TVR_MAP(TVRHBA_BootBIOSService);
    TVR_MAP(TVRHBA_HostedBootBIOSService);
    TVR_MAP(TVRHBA_BootBIOSServiceAffectsSystem);
    TVR_MAP(TVRHBA_BootBIOSServiceAffectsFCPort);
    TVR_MAP(TVRHBA_FCHBAWWNService);
    TVR_MAP(TVRHBA_HostedFCHBAWWNService);
    TVR_MAP(TVRHBA_FCHBAWWNServiceAffectsSystem);
    TVR_MAP(TVRHBA_FCHBAWWNServiceAffectsFCPort);
    TVR_MAP(TVRHBA_FCHBADiagnosticTest);
    TVR_MAP(TVRHBA_AvailableDiagnosticService);
    TVR_MAP(TVRHBA_FCHBADiagnosticServiceCapabilities);
    TVR_MAP(TVRHBA_DiagElementCapabilities);
    TVR_MAP(TVRHBA_ConcreteJob);
    TVR_MAP(TVRHBA_DiagnosticsLog);
    TVR_MAP(TVRHBA_HelpService);
    TVR_MAP(TVRHBA_ServiceAffectsElement);
    TVR_MAP(TVRHBA_ServiceAvailableToElement);
    TVR_MAP(TVRHBA_OwningJobElement);
    TVR_MAP(TVRHBA_AffectedJobElement);
    TVR_MAP(TVRHBA_JobSettingData);
    TVR_MAP(TVRHBA_UseOfLog);
    TVR_MAP(TVRHBA_DiagnosticServiceRecord);
    TVR_MAP(TVRHBA_LogManagesRecord);
    TVR_MAP(TVRHBA_RecordAppliesToElement);
    TVR_MAP(TVRHBA_DiagElementSettingData);
    TVR_MAP(TVRHBA_HostedService);
    TVR_MAP(TVRHBA_DiagHostedService);
    TVR_MAP(TVRHBA_DiagnosticCompletionRecord);
    TVR_MAP(TVRHBA_FCHBADiagnosticSettingData);
    TVR_MAP(TVRHBA_DiagnosticSettingDataRecord);
    TVR_MAP(TVRHBA_CorrespondingSettingDataRecord);
    TVR_MAP(TVRHBA_DiagServiceConformsToProfile);
    TVR_MAP(TVRHBA_DiagnosticIdentity);
    TVR_MAP(TVRHBA_DiagElementSoftwareIdentity);
    TVR_MAP(TVRHBA_JobElementSettingData);
};

#undef TVR_MAP
#undef TVR_NAMED_MAP

// The map that a class is answered from, as `maps.*map_of<TVRHBA_FCPort>`, and its name. A class
// without one doesn't compile.
template <class C>
inline constexpr Class_Map<C> Instance_Maps::*
    map_of = Instance_Maps::served(static_cast<const C*>(nullptr)).map;
template <class C>
inline constexpr const char* map_name = Instance_Maps::served(static_cast<const C*>(nullptr)).name;

} // namespace cimple

#endif
