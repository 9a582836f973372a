// Whole instances of the default host through the loaded module, against tables of what its
// scenario says. A table names every property that isn't NULL, one a line.
#include "tests/client/client.h"

#include <dlfcn.h>
#include <sstream>

namespace client {
namespace {

// Of all logical elements that hang on the computer system.
constexpr const char* on_system = R"(
SystemCreationClassName="IBMSD_ComputerSystem"
SystemName="server-7"
)";
// What the classes say of states by themselves.
constexpr const char* enabled = R"(
EnabledState=5
RequestedState=12
EnabledDefault=2
TransitioningToState=12
)";

// Of all services.
constexpr const char* service = R"(
StartMode="Automatic"
Started=TRUE
EnabledState=2
EnabledDefault=2
TransitioningToState=12
TimeOfLastStateChange="19700101000000.000000+000"
OperationalStatus={2}
HealthState=5
)";

struct Table {
    const char* class_name;
    std::size_t position; // in the enumeration
    std::vector<const char*> properties;
};

const Table tables[] = {
    {"TVRHBA_PhysicalPackage", 0, {R"(
Tag="20000254564A1020"
CreationClassName="TVRHBA_PhysicalPackage"
Name="TVR-F1602"
Manufacturer="Tavrin"
Model="TVR-F1602"
PartNumber="TVR-F1602"
SerialNumber="TVF1602S0417"
Version="0000000B"
Description="Tavrin TVR-F1602 16Gb 2-port PCIe Fibre Channel adapter"
ElementName="Tavrin TVR-F1602 FV2.82a4 DV10.4.255.16"
PackageType=9
RemovalConditions=2
SLIMode=3
BoardTemperature=48
ThresholdCriticalTemp=100
ThresholdWarningTemp=90
TemperatureUnit="Celsius"
VendorSpecID=23090262
DeviceID=354
ModelID=5634
)"}},
    {"TVRHBA_Product", 0, {R"(
Name="TVR-F1602"
IdentifyingNumber="20000254564A1020"
Vendor="Tavrin"
Version="0000000B"
Description="Tavrin TVR-F1602 16Gb 2-port PCIe Fibre Channel adapter"
ElementName="Tavrin TVR-F1602 FV2.82a4 DV10.4.255.16"
)"}},
    {"TVRHBA_LogicalPortGroup", 0, {R"(
InstanceID="TVR FC HBA:20000254564A1020"
Name="20000254564A1020"
NameFormat="WWN"
ElementName="TVR-F1602:20000254564A1020"
Description="The Fibre Channel ports of the HBA."
)"}},
    {"TVRHBA_PCIDevice", 1, {on_system, R"(
CreationClassName="TVRHBA_PCIDevice"
DeviceID="10000254564A1021:0x0162"
ElementName="Tavrin:NICAdapter1"
EnabledState=5
RequestedState=5
PrimaryStatus=5
HealthState=5
VendorID=21590
Command=1350
PCIStatus=16
RevisionID=48
ProgIf=0
SubClass=4
BaseClass=12
CacheLineSize=16
LatencyTimer=0
HeaderType=128
BuiltInSelfTest=0
BaseAddresses0=3745447940
BaseAddresses1=0
BaseAddresses2=3745382404
BaseAddresses3=0
BaseAddresses4=0
BaseAddresses5=0
CIS=0
SubVendorID=21590
SubsystemID=5634
ExpansionROMBaseAddress=3744989184
CapabilitiesPtr=88
InterruptLine=11
InterruptPin=2
MinimumGrant=0
MaximumLatency=0
EnabledDefault=2
TransitioningToState=12
)"}},
    {"TVRHBA_VitalProductData", 0, {R"(
InstanceID="10000254564A1020"
ProductName="Tavrin TVR-F1602 16Gb 2-port PCIe Fibre Channel adapter"
PartNumber="TVR-F1602"
VPDSerialNumber="TVF1602S0417"
FieldV0="TVR-F1602"
FieldV1="Tavrin TVR-F1602 16Gb 2-port PCIe Fibre Channel adapter"
FieldV2="Port 0"
FieldVB="TVR"
VPDTags={"Z0"}
VPDTagValues={"Lab unit"}
)"}},
    {"TVRHBA_Transceiver", 0, {R"(
Tag="10000254564A1020:TVO16217"
CreationClassName="TVRHBA_Transceiver"
Name="10000254564A1020:TVO16217"
ElementName="10000254564A1020:TVO16217"
InstanceID="10000254564A1020:TVO16217"
Description="Tavrin PhysicalComponent Data"
RemovalConditions=2
OperationalStatus={0}
StatusDescriptions={"unknown"}
Manufacturer="TVOPTICS"
OUI="02-54-56"
PartNumber="TVO-16G-SW"
Version="B2"
SerialNumber="TVO16217"
ManufactureDate="20130517000000.000000+000"
Identifier=3
ExtIdentifier=4
Connector=7
WaveLength=850
Temperature=41.5
TemperatureUnit="Celsius"
Vcc=3.31
TxBiasCurrent=7.25
TxPower=0.58
RxPower=0.47
)"}},
    // Blanks behind the texts, and no diagnostic values.
    {"TVRHBA_Transceiver", 2, {R"(
Tag="10000254563C7780:TVO08112"
CreationClassName="TVRHBA_Transceiver"
Name="10000254563C7780:TVO08112"
ElementName="10000254563C7780:TVO08112"
InstanceID="10000254563C7780:TVO08112"
Description="Tavrin PhysicalComponent Data"
RemovalConditions=2
OperationalStatus={0}
StatusDescriptions={"unknown"}
Manufacturer="TVOPTICS"
OUI="02-54-56"
PartNumber="TVO-8G-SW         "
Version="A"
SerialNumber="TVO08112"
ManufactureDate="19991203000000.000000+000"
Identifier=3
ExtIdentifier=4
Connector=7
WaveLength=850
)"}},
    {"TVRHBA_SCSIProtocolController", 0, {on_system, enabled, R"(
CreationClassName="TVRHBA_SCSIProtocolController"
DeviceID="10000254564A1020"
Name="10000254564A1020"
Description="Tavrin TVR-F1602 16Gb 2-port PCIe Fibre Channel adapter"
ElementName="Tavrin TVR-F1602 FV2.82a4 DV10.4.255.16"
NameFormat=2
MaxUnitsControlled=1
OperationalStatus={2}
StatusDescriptions={"OK"}
)"}},
    {"TVRHBA_PortController", 3, {on_system, R"(
CreationClassName="TVRHBA_PortController"
DeviceID="10000254563C7781"
Name="Tavrin TVR-F0802 FV2.02a1 DV10.4.255.16"
ElementName="Tavrin TVR-F0802 FV2.02a1 DV10.4.255.16"
Description="Tavrin TVR-F0802 8Gb 2-port PCIe Fibre Channel adapter"
ControllerType=4
ProtocolSupported=10
ProtocolDescription="SCSI Fibre Channel Protocol"
MaxNumberControlled=1
Availability=3
EnabledState=5
RequestedState=5
EnabledDefault=2
TransitioningToState=12
OperationalStatus={0}
StatusDescriptions={"Unknown"}
)"}},
    {"TVRHBA_SCSIProtocolInitiatorEndpoint", 0, {on_system, R"(
CreationClassName="TVRHBA_SCSIProtocolInitiatorEndpoint"
Name="10000254564A1020"
Description="Tavrin TVR-F1602 16Gb 2-port PCIe Fibre Channel adapter"
ElementName="Tavrin TVR-F1602 FV2.82a4 DV10.4.255.16"
ProtocolType=18
ProtocolIFType=56
ConnectionType=2
Role=2
EnabledDefault=5
EnabledState=0
RequestedState=0
TransitioningToState=12
OperationalStatus={0}
)"}},
    // Behind the identities of provider, driver and diagnostics.
    {"TVRHBA_SoftwareIdentity", 3, {R"(
InstanceID="TVR FC HBA:Firmware:v2.82a4 TVR-F1602 10000254564A1020"
ElementName="FC HBA Firmware v2.82a4 TVR-F1602 10000254564A1020"
Name="FC HBA Firmware v2.82a4 TVR-F1602 10000254564A1020"
Description="Tavrin FC HBA Firmware"
VersionString="2.82a4"
Manufacturer="Tavrin"
Classifications={10}
ClassificationDescriptions={"FC HBA Firmware"}
IsEntity=TRUE
MajorVersion=2
MinorVersion=8
RevisionNumber=2
BuildNumber=4
ReleaseType="a"
TestReleaseVersion=""
OperationalFirmware="Overlay 3"
ULPFirmwareVersion="2.82a4"
ULPFirmwareName="ULP-FCP"
SPFirmwareVersion="2.82a4"
SPFirmwareName="SP-F16"
IsLargeBuildNumber=FALSE
)"}},
    {"TVRHBA_SoftwareIdentity", 4, {R"(
InstanceID="Firmware Kernel v1.40a3 TVR-F1602 10000254564A1020"
ElementName="Firmware Kernel v1.40a3 TVR-F1602 10000254564A1020"
Description="Tavrin FC HBA Firmware Kernel"
VersionString="1.40a3"
Manufacturer="Tavrin"
Classifications={10}
ClassificationDescriptions={"Firmware Kernel"}
IsEntity=TRUE
MajorVersion=1
MinorVersion=4
RevisionNumber=0
BuildNumber=3
ReleaseType="a"
TestReleaseVersion=""
IsLargeBuildNumber=FALSE
)"}},
    {"TVRHBA_SoftwareIdentity", 5, {R"(
InstanceID="Boot Code - Expansion ROM v5.12a6 TVR-F1602 10000254564A1020"
ElementName="Boot Code - Expansion ROM v5.12a6 TVR-F1602 10000254564A1020"
Description="Tavrin FC HBA Boot Code"
VersionString="5.12a6"
Manufacturer="Tavrin"
Classifications={11}
ClassificationDescriptions={"BIOS/FCode"}
IsEntity=TRUE
MajorVersion=5
MinorVersion=1
RevisionNumber=2
BuildNumber=6
ReleaseType="a"
TestReleaseVersion=""
FCUniversalVersion="5.12a6"
FC_X86_BIOSVersion="5.10a2"
FC_EFIVersion="5.12a1"
FC_FCODEVersion="3.40a0"
IsLargeBuildNumber=FALSE
)"}},
    {"TVRHBA_SoftwareIdentity", 6, {R"(
InstanceID="Functional Firmware stub v2.80a1 TVR-F1602 10000254564A1020"
ElementName="Functional Firmware stub v2.80a1 TVR-F1602 10000254564A1020"
Description="Tavrin FC HBA Boot Code"
VersionString="2.80a1"
Manufacturer="Tavrin"
Classifications={10}
ClassificationDescriptions={"Functional Firmware Stub"}
IsEntity=TRUE
MajorVersion=2
MinorVersion=8
RevisionNumber=0
BuildNumber=1
ReleaseType="a"
TestReleaseVersion=""
IsLargeBuildNumber=FALSE
)"}},
    {"TVRHBA_FlashImageSoftwareIdentity", 1, {R"(
InstanceID="FC HBA Flash Image Firmware v 2.82a4 TVR-F1602 10000254564A1020"
ElementName="FC HBA Flash Image Firmware v 2.82a4 TVR-F1602 10000254564A1020"
Name="Firmware"
ProgramType="Firmware"
ProgramID={12, 21590}
VersionString="2.82a4"
MajorVersion=2
MinorVersion=8
RevisionNumber=2
BuildNumber=4
ReleaseType="a"
TestReleaseVersion=""
Description="Operational firmware"
Manufacturer="Tavrin"
Classifications={10}
ClassificationDescriptions={"Firmware Kernel"}
IsEntity=TRUE
StartAddress=393216
ProgramLength=1572864
Next=3
Previous=1
IsWakeupParameter=TRUE
IsLargeBuildNumber=FALSE
)"}},
    {"TVRHBA_FCHBAWWNService", 0, {on_system, service, R"(
CreationClassName="TVRHBA_FCHBAWWNService"
Name="TVRHBA_FCHBAWWNService"
Description="Tavrin FC HBA WWN Management Service"
ElementName="Tavrin FC HBA WWN Management Service"
RequestedState=2
Status="Ok"
StatusDescriptions={"ok"}
)"}},
    {"TVRHBA_FCHBADriverParamService", 0, {on_system, service, R"(
CreationClassName="TVRHBA_FCHBADriverParamService"
Name="TVRHBA_FCHBADriverParamService"
Description="Tavrin FC HBA Set Driver Parameters Service"
ElementName="Tavrin FC HBA Set Driver Parameters Service"
RequestedState=12
Status="OK"
StatusDescriptions={"OK"}
)"}},
    {"TVRHBA_BootBIOSService", 0, {on_system, service, R"(
CreationClassName="TVRHBA_BootBIOSService"
Name="TVRHBA_BootBIOSService"
Description="Tavrin FC HBA Boot BIOS Service"
ElementName="Tavrin FC HBA Boot BIOS Service"
RequestedState=2
Status="Ok"
StatusDescriptions={"ok"}
)"}},
    {"TVRHBA_SoftwareInstallationService", 0, {on_system, service, R"(
CreationClassName="TVRHBA_SoftwareInstallationService"
Name="TVRHBA_FCSoftwareInstallationService"
Description="Tavrin FC HBA Software Installation Service"
ElementName="Tavrin FC HBA Software Installation Service"
RequestedState=2
InstallDate="19700101000000.000000+000"
Status="ok"
StatusDescriptions={"ok"}
)"}},
    // A depth of 64 where 32 is usual.
    {"TVRHBA_DriverParams", 9, {R"(
InstanceID="10000254564A1020:unit-depth"
paramno=9
deviceID="10000254564a1020"
paramname="unit-depth"
lowRange=1
highRange=512
def=32
current=64
exportFlag=1
dynamic=1
help="Commands in flight for one logical unit"
)"}},
    {"TVRHBA_DriverParamGlobal", 4, {R"(
InstanceID="event-queue"
paramno=4
paramname="event-queue"
lowRange=64
highRange=65536
glbl=1024
current=1024
exportFlag=1
dynamic=0
help="Events kept for management programs"
)"}},
    {"TVRHBA_SCSIProtocolEndpoint", 0, {on_system, R"(
CreationClassName="TVRHBA_SCSIProtocolEndpoint"
Name="10000254564A1020:5002545670000A01:0000000000000000"
TargetWWPN="5002545670000A01"
TargetWWNN="5002545670000A00"
Description="TVSTORE  ARRAY-2000       Revision 4.10 Serial Number A2000-00000001"
ElementName="ARRAY-2000      "
ProtocolType=18
ProtocolIFType=56
ConnectionType=2
Role=3
EnabledDefault=5
EnabledState=0
RequestedState=0
TransitioningToState=12
OperationalStatus={0}
FCID=68096
SCSIBusNumber=0
SCSITargetNumber=0
OtherIdentifyingInfo={"/dev/sdb"}
IdentifyingDescriptions={"OS Device Name"}
)"}},
    {"TVRHBA_StorageVolume", 1, {on_system, enabled, R"(
CreationClassName="TVRHBA_StorageVolume"
DeviceID="10000254564A1020_5002545670000A01_6002545670000A000000000000000002_0100000000000000"
Description="TVSTORE  ARRAY-2000       Revision 4.10 Serial Number A2000-00000002"
ElementName="Storage Volume: 1"
OperationalStatus={0}
Capacity=214748360704
CapacityUnit="Byte"
BlockSize=4096
NumberOfBlocks=52428799
Name="02545670000A000000000000000002"
NameFormat=9
NameNamespace=2
IsComposite=TRUE
Primordial=FALSE
OtherIdentifyingInfo={"/dev/sdc", "TVSTORE  ARRAY-2000       Revision 4.10"}
IdentifyingDescriptions={"OS Device Name", "Standard SCSI inquiry data"}
)"}},
    {"TVRHBA_TapeDrive", 0, {on_system, enabled, R"(
CreationClassName="TVRHBA_TapeDrive"
DeviceID="10000254564A1020_5002545670000B01_5002545670000B02_0000000000000000"
Description="TVTAPE   LT-8 DRIVE       Revision K1A2 Serial Number LT8-7741"
ElementName="Tape Drive 0"
OperationalStatus={0}
Name="/dev/nst0"
OtherIdentifyingInfo={"/dev/nst0", "TVTAPE   LT-8 DRIVE       K1A2"}
IdentifyingDescriptions={"OS Device Name", "standard SCSI Inquery data"}
)"}},
    {"TVRHBA_SCSIArbitraryLogicalUnit", 1, {on_system, enabled, R"(
CreationClassName="TVRHBA_SCSIArbitraryLogicalUnit"
DeviceID="10000254564A1020_5002545670000A01_5002545670000A0C_0300000000000000"
Description="TVSTORE  ARRAY-2000 CTL   Revision 4.10 Serial Number A2000-CTL-A"
ElementName="Storage array controller 3"
OperationalStatus={0}
Name=""
DeviceType=1
OtherDeviceType="Peripheral devices type is 0x0C"
OtherIdentifyingInfo={"", "TVSTORE  ARRAY-2000 CTL   Revision 4.10"}
IdentifyingDescriptions={"OS Device Name", "Standard SCSI inquiry data"}
)"}},
    {"TVRHBA_StorageExtent", 1, {on_system, enabled, R"(
CreationClassName="TVRHBA_StorageExtent"
DeviceID="10000254563C7780_5002545670000C01_00025456700C0099_0000000000000000"
Description="TVOPTIC  JUKEBOX          Revision 2.2  Serial Number OJ-0099"
ElementName="CD/DVD 0"
OperationalStatus={0}
Capacity=4700370944
CapacityUnit="Byte"
BlockSize=2048
NumberOfBlocks=2295103
Name="00025456700C0099"
IsComposite=TRUE
Primordial=FALSE
OtherIdentifyingInfo={"/dev/sr0", "TVOPTIC  JUKEBOX          Revision 2.2 "}
IdentifyingDescriptions={"Standard SCSI inquiry data", "OS Device Name"}
)"}},
};

std::map<std::string, std::string> parse(const std::vector<const char*>& texts) {
    std::map<std::string, std::string> properties;
    for (const char* text : texts) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (const std::size_t equals = line.find('='); equals != std::string::npos) {
                properties[line.substr(0, equals)] = line.substr(equals + 1);
            }
        }
    }
    return properties;
}

TEST_F(Client, InventoryHasTheValuesOfItsTables) {
    start({computer_system("server-7")});
    for (const Table& table : tables) {
        const Answer answer = enumerate(table.class_name);
        if (answer.instances.size() <= table.position) {
            ADD_FAILURE() << table.class_name << " has " << answer.instances.size();
            continue;
        }
        EXPECT_EQ(literals(answer.instances[table.position]), parse(table.properties))
            << table.class_name;
    }
}

// What can be fetched depends on a library of the host's.
TEST_F(Client, InstallationCapabilitiesTellWhatTheHostCanFetch) {
    std::map<std::string, std::string> capabilities =
        literals(only("TVRHBA_SoftwareInstallationServiceCapabilities"));
    const auto has = [](const char* library) {
        void* handle = dlopen(library, RTLD_NOW);
        return handle != nullptr && dlclose(handle) == 0;
    };
    const bool fetches = has("/lib/libcurl.so.4") || has("/usr/lib/libcurl.so.4") ||
                         has("libcurl.so") || has("curl.dll");
    EXPECT_EQ(capabilities["SupportedURISchemes"], fetches ? "{3, 4, 5, 6, 8}" : "{3}");
    capabilities.erase("SupportedURISchemes");
    EXPECT_EQ(capabilities, parse({R"(
InstanceID="TVR:HBASoftwareInstallationServiceCapabilities"
Description="Tavrin Software Installation Service Capabilities"
ElementName="Tavrin Software Installation Service Capabilities"
SupportedTargetTypes={"FC HBA"}
SupportedAsynchronousActions={2}
SupportedSynchronousActions={4, 5}
SupportedExtendedResourceTypes={2}
CanAddToCollection=FALSE
SupportedInstallOptions={2, 3, 4, 5, 6, 7, 11}
OtherSupportedExtendedResourceTypeDescriptions={"Tavrin FC firmware files"}
SupportedExtendedResourceTypesMajorVersions={0}
SupportedExtendedResourceTypesMinorVersions={0}
SupportedExtendedResourceTypesRevisionNumbers={0}
SupportedExtendedResourceTypesBuildNumbers={0}
)"}));
}

} // namespace
} // namespace client
