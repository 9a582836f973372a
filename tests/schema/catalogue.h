// The class catalogue, as the module promises it to its clients.
#ifndef TVR_TESTS_SCHEMA_CATALOGUE_H
#define TVR_TESTS_SCHEMA_CATALOGUE_H

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace catalogue {

// The tables are groups of classes that share the facts before the colon. Class names stand without
// their prefix, which is that of the base classes or, in a table of served classes, of these; base
// classes among the targets of an association have it.

// Classes without a provider: PARENT: CLASS FLAGS FEATURES, ...; where the flags are in hexadecimal
// and the features those of the flattened list. "-" is the parent of a root.
inline constexpr const char* base_classes = R"(
-: AffectedJobElement 80 4, Component d0 2, CorrespondingSettingDataRecord 8080 2, Dependency 90 2,
  DiagnosticResult 8 24, ElementCapabilities 80 3, ElementConformsToProfile 80 2,
  ElementSettingData 80 8, ElementStatisticalData 80 2, Error 80000 15, Indication 80010 8,
  InitiatorTargetLogicalUnitPath 8080 4, InstalledSoftwareIdentity 80 2, LogManagesRecord c0 2,
  ManagedElement 18 5, MemberOfCollection c0 2, OwningJobElement 80 2, SAPAvailableForElement 80 2,
  ServiceAffectsElement 80 5, ServiceAvailableToElement 80 2;
Capabilities: DiagnosticServiceCapabilities 8 17, EnabledLogicalElementCapabilities 8 11,
  SoftwareInstallationServiceCapabilities 8 18; Chassis: IBMSD_Chassis 8 62;
Collection: CollectionOfMSEs 18 6, SystemSpecificCollection 8 5;
Component: Container c0 3, ProductElementComponent 80c0 2, SystemComponent c0 2;
ComputerSystem: IBMSD_ComputerSystem 8 36; Controller: PCIController 8 63, PortController 8 55;
Dependency: DeviceConnection 80 4, DeviceSAPImplementation 80 2, ElementAllocatedFromPool 80 2,
  ElementSoftwareIdentity 80 5, HostedDependency 80 2, ProtocolControllerForDevice 90 5,
  Realizes 80 2, RecordAppliesToElement 80 2, ReferencedSpecification 8080 2, SystemPackaging 80 2,
  UseOfLog 80 3; DeviceConnection: ControlledBy 80 11;
DiagnosticRecord: DiagnosticServiceRecord 8 26, DiagnosticSettingDataRecord 8 23;
DiagnosticService: DiagnosticTest 8 45;
DiagnosticServiceCapabilities: FCHBADiagnosticServiceCapabilities 8008 19;
DiagnosticServiceRecord: DiagnosticCompletionRecord 8 28;
DiagnosticSettingData: FCHBADiagnosticSettingData 8008 31;
DiagnosticTest: FCHBADiagnosticTest 8008 47;
EnabledLogicalElement: Log 18 28, LogicalDevice 18 48, Service 18 33, ServiceAccessPoint 18 26,
  System 18 30; HostedDependency: HostedAccessPoint 80 2, HostedCollection 80 2, HostedService 80 2;
Indication: ProcessIndication 80010 8;
InitiatorTargetLogicalUnitPath: SCSIInitiatorTargetLogicalUnitPath 80 8; Job: ConcreteJob 8 46;
Log: RecordLog 8 28; LogEntry: DiagnosticRecord 8 22;
LogicalDevice: Controller 18 52, LogicalPort 8 54, MediaAccessDevice 8 72, ProtocolController 18 49,
  SCSIArbitraryLogicalUnit 8008 50, StorageExtent 8 75;
LogicalElement: EnabledLogicalElement 18 23, Job 18 37, ResourcePool 8 26, SoftwareIdentity 8 40;
LogicalPort: NetworkPort 8 64;
ManagedElement: Capabilities 18 6, Collection 18 5, ManagedSystemElement 18 15, Product 8 13,
  RecordForLog 18 9, RegisteredSpecification 8008 13, Setting 18 14, SettingData 18 7,
  StatisticalData 18 9; ManagedSystemElement: LogicalElement 18 15, PhysicalElement 18 29;
MediaAccessDevice: TapeDrive 8 76; NetworkPort: FCPort 8 73;
NetworkPortStatistics: FCPortStatistics 8 55; PCIController: PCIDevice 8 75;
PhysicalElement: PhysicalComponent 8 33, PhysicalPackage 8 41; PhysicalFrame: Chassis 8 62;
PhysicalPackage: PhysicalFrame 8 50; ProcessIndication: AlertIndication 80000 27;
ProductElementComponent: ProductPhysicalComponent c0 2;
ProtocolController: SCSIProtocolController 8 51;
ProtocolControllerForDevice: ProtocolControllerForPort 80 5;
ProtocolEndpoint: SCSIProtocolEndpoint 8 36; RecordForLog: LogEntry 8 17;
RecordLog: DiagnosticsLog 8 28; ReferencedSpecification: ReferencedProfile 80 2;
RegisteredSpecification: RegisteredProfile 8 17;
Service: DiagnosticService 18 35, HelpService 8 40, SoftwareInstallationService 8 37;
ServiceAccessPoint: ProtocolEndpoint 8 32, RemoteServiceAccessPoint 8 31;
ServiceAvailableToElement: AvailableDiagnosticService 80 5; Setting: DiagnosticSetting 8 31;
SettingData: DiagnosticSettingData 8008 21, JobSettingData 8 20;
StatisticalData: NetworkPortStatistics 8 13; StorageExtent: LogicalDisk 8 75, StorageVolume 8 75;
System: ComputerSystem 8 35; SystemComponent: HostedResourcePool c0 2, SystemDevice c0 2;
SystemSpecificCollection: LogicalPortGroup 8 8;
)";

// Served classes of instances: KEY KEY...: CLASS PARENT OWN, ...; where the keys are in feature
// order,
// "=" is the base class of the same name and OWN counts the features that the class declares.
inline constexpr const char* instance_classes = R"(
InstanceID: ConcreteJob = 2, DiagnosticCompletionRecord = 2, DiagnosticIdentity SoftwareIdentity 0,
  DiagnosticServiceRecord = 2, DiagnosticSettingDataRecord = 0, DiagnosticsLog = 0,
  DriverParamGlobal SettingData 11, DriverParams SettingData 12, DumpData SettingData 4,
  EnabledRecordLogCapabilities EnabledLogicalElementCapabilities 1, FCDriverLogEntry LogEntry 0,
  FCHBADiagnosticServiceCapabilities = 0, FCHBADiagnosticSettingData = 1, FCPortStatistics = 10,
  FlashImageSoftwareIdentity SoftwareIdentity 10, JobSettingData = 0, LogEntry = 1,
  LogicalPortGroup = 0, ProviderConfigSetting SettingData 7, RecordLog = 4, RegisteredProfile = 0,
  ResourcePool = 0, SoftwareIdentity = 11, SoftwareInstallationServiceCapabilities = 0,
  VitalProductData SettingData 12; Name IdentifyingNumber Vendor Version: Product = 0;
Name SystemCreationClassName SystemName CreationClassName: BootBIOSService Service 3,
  DumpService Service 3, FCHBADiagnosticTest = 0, FCHBADriverParamService Service 1,
  FCHBAWWNService Service 4, HelpService = 0, RemoteServiceAccessPoint = 0,
  SCSIProtocolEndpoint = 7, SCSIProtocolInitiatorEndpoint SCSIProtocolEndpoint 7,
  SoftwareInstallationService = 2;
SystemCreationClassName SystemName CreationClassName DeviceID: FCPort = 4, LogicalDisk = 3,
  PCIDevice = 19, PortController = 0, SCSIArbitraryLogicalUnit = 3, SCSIProtocolController = 0,
  StorageExtent = 3, StorageVolume = 3, TapeDrive = 3, VirtualFCPort FCPort 3;
Tag CreationClassName: PhysicalPackage = 8, Transceiver PhysicalComponent 12;
)";

// Served associations: PARENT END END... .PROPERTY...: CLASS TARGET TARGET..., ...; where each end
// refers to the target in its place and the properties are those that the classes declare. "=" is a
// class named like its parent. "+" marks an aggregation, "@" the end that is the aggregate, "^" a
// weak one.
inline constexpr const char* association_classes = R"(
+Component @GroupComponent PartComponent: TransceiverComponent PhysicalPackage Transceiver;
+Container @GroupComponent PartComponent: ChassisContainsCard CIM_PhysicalPackage
  CIM_PhysicalElement;
+HostedResourcePool @GroupComponent ^PartComponent: = CIM_ComputerSystem ResourcePool;
+LogManagesRecord @Log Record: DriverRecordLogManagesRecord RecordLog FCDriverLogEntry, =
  DiagnosticsLog CIM_DiagnosticRecord, RecordLogManagesRecord RecordLog LogEntry;
+MemberOfCollection @Collection Member: = LogicalPortGroup FCPort;
+ProductElementComponent @GroupComponent PartComponent: = Product PortController;
+ProductPhysicalComponent @GroupComponent PartComponent: = Product PhysicalPackage;
+SCSIInitiatorTargetLogicalUnitPath Initiator Target LogicalUnit:
  SCSIInitiatorTargetArbitraryLogicalUnitPath SCSIProtocolInitiatorEndpoint SCSIProtocolEndpoint
  SCSIArbitraryLogicalUnit, SCSIInitiatorTargetLogicalDiskPath SCSIProtocolInitiatorEndpoint
  SCSIProtocolEndpoint LogicalDisk, SCSIInitiatorTargetStorageExtentPath
  SCSIProtocolInitiatorEndpoint SCSIProtocolEndpoint StorageExtent,
  SCSIInitiatorTargetStorageVolumePath SCSIProtocolInitiatorEndpoint SCSIProtocolEndpoint
  StorageVolume, SCSIInitiatorTargetTapeDrivePath SCSIProtocolInitiatorEndpoint SCSIProtocolEndpoint
  TapeDrive;
+SystemDevice @GroupComponent ^PartComponent: FCPortSystemDevice CIM_ComputerSystem FCPort,
  LogicalDiskSystemDevice CIM_ComputerSystem LogicalDisk, PortControllerSystemDevice
  CIM_ComputerSystem PortController, SCSIArbitraryLogicalUnitSystemDevice CIM_ComputerSystem
  SCSIArbitraryLogicalUnit, SCSIProtocolControllerSystemDevice CIM_ComputerSystem
  SCSIProtocolController, StorageExtentSystemDevice CIM_ComputerSystem StorageExtent,
  StorageVolumeSystemDevice CIM_ComputerSystem StorageVolume, = CIM_ComputerSystem PCIDevice,
  TapeDriveSystemDevice CIM_ComputerSystem TapeDrive;
+SystemDevice @GroupComponent ^PartComponent .VMName .VirtualPortId: VMSystemDevice
  CIM_ComputerSystem VirtualFCPort;
AffectedJobElement AffectedElement AffectingElement: = PortController ConcreteJob;
AvailableDiagnosticService ServiceProvided UserOfService: = FCHBADiagnosticTest PortController;
ControlledBy Antecedent Dependent: = PortController FCPort;
CorrespondingSettingDataRecord DataRecord SettingsRecord: = CIM_DiagnosticRecord
  DiagnosticSettingDataRecord;
Dependency Antecedent ^Dependent: DriverParameterAffectsFCPort FCPort DriverParams;
DeviceSAPImplementation Antecedent Dependent: = FCPort SCSIProtocolInitiatorEndpoint;
ElementAllocatedFromPool Antecedent Dependent: = ResourcePool VirtualFCPort;
ElementCapabilities ManagedElement Capabilities: DiagElementCapabilities FCHBADiagnosticTest
  FCHBADiagnosticServiceCapabilities, = SoftwareInstallationService
  SoftwareInstallationServiceCapabilities, RecordLogCapabilities RecordLog
  EnabledRecordLogCapabilities;
ElementConformsToProfile ConformantStandard ManagedElement: ComputerSystemConformsToProfile
  RegisteredProfile CIM_ComputerSystem, DiagServiceConformsToProfile RegisteredProfile
  FCHBADiagnosticTest, FCPortConformsToProfile RegisteredProfile FCPort,
  InstallServiceConformsToProfile RegisteredProfile SoftwareInstallationService,
  PCIElementConformsToProfile RegisteredProfile PCIDevice, PortControllerConformsToProfile
  RegisteredProfile PortController, RecordLogConformsToProfile RegisteredProfile RecordLog,
  SoftwareConformsToProfile RegisteredProfile SoftwareIdentity;
ElementSettingData ManagedElement SettingData: JobElementSettingData FCHBADiagnosticTest
  JobSettingData;
ElementSettingData ManagedElement SettingData .IsMinimum .IsMaximum .IsPending:
  DiagElementSettingData FCHBADiagnosticTest FCHBADiagnosticSettingData,
  DriverServiceElementSettingData FCHBADriverParamService DriverParams, ElementDumpData DumpService
  DumpData, ElementVPD PCIDevice VitalProductData, GlobalDriverServiceElementSettingData
  FCHBADriverParamService DriverParamGlobal;
ElementSoftwareIdentity Antecedent Dependent: DiagElementSoftwareIdentity DiagnosticIdentity
  FCHBADiagnosticTest, ElementFlashImageSoftwareIdentity FlashImageSoftwareIdentity PortController,
  = SoftwareIdentity PortController, ProviderSoftwareIdentity SoftwareIdentity CIM_ComputerSystem;
ElementStatisticalData ManagedElement Stats: = FCPort FCPortStatistics;
HostedAccessPoint Antecedent ^Dependent: LocalHostedAccessPoint CIM_ComputerSystem
  SCSIProtocolEndpoint, LocalHostedInitiatorAccessPoint CIM_ComputerSystem
  SCSIProtocolInitiatorEndpoint, RemoteHostedAccessPoint CIM_ComputerSystem
  RemoteServiceAccessPoint;
HostedCollection Antecedent Dependent: = CIM_ComputerSystem LogicalPortGroup;
HostedDependency Antecedent Dependent: VPortHostedDependency FCPort VirtualFCPort;
HostedService Antecedent ^Dependent: DiagHostedService CIM_ComputerSystem FCHBADiagnosticTest,
  HostedBootBIOSService CIM_ComputerSystem BootBIOSService, HostedDumpService CIM_ComputerSystem
  DumpService, HostedFCHBADriverParamService CIM_ComputerSystem FCHBADriverParamService,
  HostedFCHBAWWNService CIM_ComputerSystem FCHBAWWNService, HostedInstallationService
  CIM_ComputerSystem SoftwareInstallationService, = CIM_ComputerSystem HelpService;
InstalledSoftwareIdentity System InstalledSoftware: = CIM_ComputerSystem SoftwareIdentity;
OwningJobElement OwningElement OwnedElement: = FCHBADiagnosticTest ConcreteJob;
ProtocolControllerForPort Antecedent Dependent: = SCSIProtocolController FCPort;
Realizes Antecedent Dependent: = PhysicalPackage PortController;
RecordAppliesToElement Antecedent Dependent: = CIM_RecordForLog PortController;
ReferencedProfile Antecedent Dependent: BaseServerReferencedProfile CIM_RegisteredProfile
  RegisteredProfile, = RegisteredProfile RegisteredProfile;
SAPAvailableForElement AvailableSAP ManagedElement: = RemoteServiceAccessPoint FCPort;
ServiceAffectsElement AffectedElement AffectingElement: BootBIOSServiceAffectsFCPort FCPort
  BootBIOSService, BootBIOSServiceAffectsSystem CIM_ComputerSystem BootBIOSService,
  DumpServiceAffectsElement PortController DumpService, FCDriverServiceAffectsDriver
  SoftwareIdentity FCHBADriverParamService, FCHBADriverParamServiceAffectsFCPort FCPort
  FCHBADriverParamService, FCHBADriverParamServiceAffectsSystem CIM_ComputerSystem
  FCHBADriverParamService, FCHBAWWNServiceAffectsFCPort FCPort FCHBAWWNService,
  FCHBAWWNServiceAffectsSystem CIM_ComputerSystem FCHBAWWNService, InstallServiceAffectsFCPort
  FCPort SoftwareInstallationService, InstallServiceAffectsSystem CIM_ComputerSystem
  SoftwareInstallationService, = PortController FCHBADiagnosticTest;
ServiceAvailableToElement ServiceProvided UserOfService: = HelpService FCHBADiagnosticTest;
SystemPackaging Antecedent Dependent: = PhysicalPackage CIM_ComputerSystem;
UseOfLog Antecedent Dependent: ProviderUseOfLog RecordLog SoftwareIdentity, = DiagnosticsLog
  FCHBADiagnosticTest;
)";

using Words = std::vector<std::string>;

struct Entry {
    Words group; // what stands before the colon
    Words words; // of the class
};

inline Words words_of(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

inline std::vector<Entry> entries(const char* table) {
    std::vector<Entry> result;
    std::istringstream stream(table);
    for (std::string group, part; std::getline(stream, group, ';');) {
        std::istringstream parts(group);
        std::getline(parts, part, ':');
        const Words head = words_of(part);
        while (std::getline(parts, part, ',')) {
            result.push_back({head, words_of(part)});
            std::string& name = result.back().words.at(0);
            name = name == "=" ? head[0].substr(head[0][0] == '+') : name;
        }
    }
    return result;
}

inline std::string base(const std::string& name) {
    return (name.find('_') == std::string::npos ? "CIM_" : "") + name;
}
inline std::string served(const std::string& name) {
    return (name.find('_') == std::string::npos ? "TVRHBA_" : "") + name;
}

} // namespace catalogue

#endif
