#include "access/attribute_buffer.h"
#include "access/method_wrapper.h"
#include "common/tvr_common.h"
#include "model/adapter.h"
#include "model/hba_access.h"

#include <algorithm>
#include <cstdio>

namespace cimple {

namespace {

// Attributes of the RM library in the order in which they are read, with their labels in the log.
struct IntegerAttribute {
    uint16 id;
    const char* label;
    uint32 FCAdapterAttributes::*field;
};

struct TextAttribute {
    uint16 id;
    const char* label;
    std::string FCAdapterAttributes::*field;
};

constexpr IntegerAttribute identity[] = {
    {RM_HA_DEVICE_ID, "_DeviceID", &FCAdapterAttributes::deviceID},
    {RM_HA_MODEL_ID, "_ModelID", &FCAdapterAttributes::modelID},
    {RM_HA_DIAG_VERSION, "_DiagVersion", &FCAdapterAttributes::diagVersion},
};

constexpr TextAttribute firmware[] = {
    {RM_HA_BOOT_BIOS_VERSION, "_BOOTBIOS_VERSION", &FCAdapterAttributes::bootBiosVersion},
    {RM_HA_KERNEL_VERSION, "_KERNEL_VERSION", &FCAdapterAttributes::kernelVersion},
    {RM_HA_INITIAL_FIRMWARE, "INITIAL_FW_LOAD", &FCAdapterAttributes::initialFirmwareLoad},
    {RM_HA_OPERATIONAL_FIRMWARE, "Operational Firmware", &FCAdapterAttributes::operationalFirmware},
};

constexpr IntegerAttribute function[] = {
    {RM_HA_PORT_NUMBER, "_PortNumber", &FCAdapterAttributes::portNumber},
    {RM_HA_SLI_MODE, "_SLIMode", &FCAdapterAttributes::sliMode},
};

constexpr TextAttribute bootCode[] = {
    {RM_HA_FC_UNIVERSAL_VERSION, "_FCUniversalVersion", &FCAdapterAttributes::fcUniversalVersion},
    {RM_HA_FC_X86_BIOS_VERSION, "FC_X86_BIOSVersion", &FCAdapterAttributes::fcX86BiosVersion},
    {RM_HA_FC_EFI_VERSION, "_FC_EFIVersion", &FCAdapterAttributes::fcEfiVersion},
    {RM_HA_FC_FCODE_VERSION, "_FC_FCODEVersion", &FCAdapterAttributes::fcFcodeVersion},
    {RM_HA_ULP_FIRMWARE_VERSION, "_ULPFirmwareVersion", &FCAdapterAttributes::ulpFirmwareVersion},
    {RM_HA_ULP_FIRMWARE_NAME, "_ULPFirmwareName", &FCAdapterAttributes::ulpFirmwareName},
    {RM_HA_SP_FIRMWARE_VERSION, "_SPFirmwareVersion", &FCAdapterAttributes::spFirmwareVersion},
    {RM_HA_SP_FIRMWARE_NAME, "_SPFirmwareName", &FCAdapterAttributes::spFirmwareName},
};

} // namespace

FCAdapterAttributes::FCAdapterAttributes(const Adapter& adapter) {
    readRMAttributes(readHBAAttributes(adapter));
}

// Answers the name of port 0, by which the RM library knows the adapter.
std::string FCAdapterAttributes::readHBAAttributes(const Adapter& adapter) {
    const std::string& name = adapter.getAdapterName();
    TVR_LOG("FCAdapterName:%s", name.c_str());
    const OpenAdapter open(name);

    HBA_ADAPTERATTRIBUTES record;
    HBA_STATUS status = open.read(record, [](HBA_HANDLE handle, HBA_ADAPTERATTRIBUTES* attributes) {
        return rm::HBA_GetAdapterAttributes(handle, attributes);
    });
    if (status != HBA_STATUS_OK) {
        TVR_LOG("Error hbaStatus=%d, skipping Adapter %s", status, name.c_str());
        throw std::runtime_error("HBA_GetAdapterAttributes failed");
    }
    Manufacturer = toString(record.Manufacturer);
    SerialNumber = toString(record.SerialNumber);
    Model = toString(record.Model);
    ModelDescription = toString(record.ModelDescription);
    NodeSymbolicName = toString(record.NodeSymbolicName);
    HardwareVersion = toString(record.HardwareVersion);
    DriverVersion = toString(record.DriverVersion);
    OptionROMVersion = toString(record.OptionROMVersion);
    FirmwareVersion = toString(record.FirmwareVersion);
    DriverName = toString(record.DriverName);
    NodeWWN = wwnToText(record.NodeWWN.wwn);
    VendorSpecificID = record.VendorSpecificID;
    NumberOfPorts = record.NumberOfPorts;
    TVR_LOG("_NodeSymbolicName=%s", NodeSymbolicName.c_str());

    HBA_PORTATTRIBUTES port;
    status = open.readPort(0, port);
    if (status != HBA_STATUS_OK) {
        TVR_LOG("(portIndex=%d) failed with hbaStatus %d", 0, status);
        throw std::runtime_error("HBA_GetAdapterPortAttributes failed");
    }
    std::string portName = wwnToText(port.PortWWN.wwn);
    TVR_LOG("Port 0's WWPN: %s", portName.c_str());
    return portName;
}

void FCAdapterAttributes::readRMAttributes(const std::string& portName) {
    HBA_WWN wwn;
    if (TVR_MethodWrapper::string2HBAName(wwn, portName) == 0) {
        TVR_LOG("TVR_MethodWrapper::string2HBAName failed");
        throw std::runtime_error("not a port name");
    }
    AttributeBuffer buffer(RM_HBA_ATTRIBUTES_SIZE);
    RM_STATUS status = rm::LRM_GetHBAAttributes(wwn, buffer.data(), &buffer.size);
    if (status != RM_STATUS_OK) {
        TVR_LOG("ERROR: RM_GetHBAAttributes call failed (%d)", status);
        throw std::runtime_error("LRM_GetHBAAttributes failed");
    }

    const uint32 temperatures =
        getHBAAttributeInt(buffer, RM_HA_BOARD_TEMPERATURE, "_BoardTemperature");
    boardTemperature = temperatures & 0xFF;
    thresholdCriticalTemp = temperatures >> 8 & 0xFF;
    thresholdWarningTemp = temperatures >> 16 & 0xFF;

    const auto readInteger = [&](const IntegerAttribute& attribute) {
        this->*attribute.field = getHBAAttributeInt(buffer, attribute.id, attribute.label);
    };
    char text[attributeTextSize];
    const auto readText = [&](const TextAttribute& attribute) {
        if (getAttributeText(text, buffer, attribute.id, attribute.label)) {
            this->*attribute.field = text;
        }
    };

    std::ranges::for_each(identity, readInteger);
    uint32_t type = 0;
    status = rm::LRM_GetDriverType(wwn, &type);
    if (status == RM_STATUS_OK) {
        driverType = type;
        TVR_LOG("_DriverType: [ %d ]", driverType);
    } else {
        TVR_LOG("ERROR: RM_GetDriverType call failed (%d)", status);
    }
    functionType = getHBAAttributeInt(buffer, RM_HA_FUNCTION_TYPE, "_FunctionType");
    TVR_LOG("Adapter _FunctionType: [ %d ]", functionType);
    if (getAttributeText(text, buffer, RM_HA_IEEE_ADDRESS, "_IEEE_ADDRESS")) {
        char address[sizeof "00:00:00:00:00:00"];
        const auto byte = [&](int i) { return static_cast<unsigned>(static_cast<uint8>(text[i])); };
        snprintf(address, sizeof address, "%02x:%02x:%02x:%02x:%02x:%02x", byte(0), byte(1),
                 byte(2), byte(3), byte(4), byte(5));
        ieeeAddress = address;
    }
    std::ranges::for_each(firmware, readText);
    bootCodeEnabled = getHBAAttributeInt(buffer, RM_HA_BOOT_CODE_ENABLED, "_BootCodeEnabled") != 0;
    std::ranges::for_each(function, readInteger);
    std::ranges::for_each(bootCode, readText);
}

} // namespace cimple
