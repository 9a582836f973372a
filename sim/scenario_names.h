// The words of the scenario format and what they stand for.
#pragma once

#include "sim/json_reader.h"

#include <array>

namespace tvrsim {

/// How the bytes of an attribute are given.
enum class AttributeKind : uint8_t { integer, text, bytes };

struct AttributeName {
    std::string_view name;
    uint16_t id;
    AttributeKind kind;
};

inline constexpr std::array adapterAttributeNames = {
    AttributeName{"deviceId", RM_HA_DEVICE_ID, AttributeKind::integer},
    AttributeName{"modelId", RM_HA_MODEL_ID, AttributeKind::integer},
    AttributeName{"operationalFirmware", RM_HA_OPERATIONAL_FIRMWARE, AttributeKind::text},
    AttributeName{"ieeeAddress", RM_HA_IEEE_ADDRESS, AttributeKind::bytes},
    AttributeName{"bootCodeEnabled", RM_HA_BOOT_CODE_ENABLED, AttributeKind::integer},
    AttributeName{"bootBiosVersion", RM_HA_BOOT_BIOS_VERSION, AttributeKind::text},
    AttributeName{"diagVersion", RM_HA_DIAG_VERSION, AttributeKind::integer},
    AttributeName{"initialFirmware", RM_HA_INITIAL_FIRMWARE, AttributeKind::text},
    AttributeName{"kernelVersion", RM_HA_KERNEL_VERSION, AttributeKind::text},
    AttributeName{"sliMode", RM_HA_SLI_MODE, AttributeKind::integer},
    AttributeName{"boardTemperature", RM_HA_BOARD_TEMPERATURE, AttributeKind::integer},
    AttributeName{"portNumber", RM_HA_PORT_NUMBER, AttributeKind::integer},
    AttributeName{"functionType", RM_HA_FUNCTION_TYPE, AttributeKind::integer},
    AttributeName{"spFirmwareVersion", RM_HA_SP_FIRMWARE_VERSION, AttributeKind::text},
    AttributeName{"spFirmwareName", RM_HA_SP_FIRMWARE_NAME, AttributeKind::text},
    AttributeName{"ulpFirmwareVersion", RM_HA_ULP_FIRMWARE_VERSION, AttributeKind::text},
    AttributeName{"ulpFirmwareName", RM_HA_ULP_FIRMWARE_NAME, AttributeKind::text},
    AttributeName{"fcUniversalVersion", RM_HA_FC_UNIVERSAL_VERSION, AttributeKind::text},
    AttributeName{"fcX86BiosVersion", RM_HA_FC_X86_BIOS_VERSION, AttributeKind::text},
    AttributeName{"fcEfiVersion", RM_HA_FC_EFI_VERSION, AttributeKind::text},
    AttributeName{"fcFcodeVersion", RM_HA_FC_FCODE_VERSION, AttributeKind::text},
};

inline constexpr std::array portAttributeNames = {
    AttributeName{"topology", RM_PA_TOPOLOGY, AttributeKind::integer},
    AttributeName{"linkState", RM_PA_LINK_STATE, AttributeKind::integer},
    AttributeName{"fabricName", RM_PA_FABRIC_NAME, AttributeKind::bytes},
    AttributeName{"physicalState", RM_PA_PHYSICAL_STATE, AttributeKind::integer},
};

/// The values of a counter are 64 bits, whatever the kind says.
inline constexpr std::array statisticNames = {
    AttributeName{"secondsSinceReset", RM_PS_SECONDS_SINCE_RESET, AttributeKind::integer},
    AttributeName{"exchangesOriginated", RM_PS_EXCHANGES_ORIGINATED, AttributeKind::integer},
    AttributeName{"exchangesResponded", RM_PS_EXCHANGES_RESPONDED, AttributeKind::integer},
    AttributeName{"txSequences", RM_PS_TX_SEQUENCES, AttributeKind::integer},
    AttributeName{"rxSequences", RM_PS_RX_SEQUENCES, AttributeKind::integer},
    AttributeName{"txFrames", RM_PS_TX_FRAMES, AttributeKind::integer},
    AttributeName{"rxFrames", RM_PS_RX_FRAMES, AttributeKind::integer},
    AttributeName{"txWords", RM_PS_TX_WORDS, AttributeKind::integer},
    AttributeName{"rxWords", RM_PS_RX_WORDS, AttributeKind::integer},
    AttributeName{"lipCount", RM_PS_LIP_COUNT, AttributeKind::integer},
    AttributeName{"nosCount", RM_PS_NOS_COUNT, AttributeKind::integer},
    AttributeName{"errorFrames", RM_PS_ERROR_FRAMES, AttributeKind::integer},
    AttributeName{"dumpedFrames", RM_PS_DUMPED_FRAMES, AttributeKind::integer},
    AttributeName{"linkFailures", RM_PS_LINK_FAILURES, AttributeKind::integer},
    AttributeName{"lossOfSync", RM_PS_LOSS_OF_SYNC, AttributeKind::integer},
    AttributeName{"lossOfSignal", RM_PS_LOSS_OF_SIGNAL, AttributeKind::integer},
    AttributeName{"primitiveSeqErrors", RM_PS_PRIMITIVE_SEQ_ERRORS, AttributeKind::integer},
    AttributeName{"invalidTxWords", RM_PS_INVALID_TX_WORDS, AttributeKind::integer},
    AttributeName{"invalidCrc", RM_PS_INVALID_CRC, AttributeKind::integer},
    AttributeName{"linkTransitions", RM_PS_LINK_TRANSITIONS, AttributeKind::integer},
    AttributeName{"activeRpis", RM_PS_ACTIVE_RPIS, AttributeKind::integer},
    AttributeName{"activeXris", RM_PS_ACTIVE_XRIS, AttributeKind::integer},
    AttributeName{"primitiveSeqTimeouts", RM_PS_PRIMITIVE_SEQ_TIMEOUTS, AttributeKind::integer},
    AttributeName{"elasticBufferOverruns", RM_PS_ELASTIC_BUFFER_OVERRUNS, AttributeKind::integer},
    AttributeName{"arbitrationTimeouts", RM_PS_ARBITRATION_TIMEOUTS, AttributeKind::integer},
};

inline constexpr std::array portTypeWords = {
    Named{"unknown", HBA_PORTTYPE_UNKNOWN},
    Named{"other", HBA_PORTTYPE_OTHER},
    Named{"notPresent", HBA_PORTTYPE_NOTPRESENT},
    Named{"nport", HBA_PORTTYPE_NPORT},
    Named{"nlport", HBA_PORTTYPE_NLPORT},
    Named{"flport", HBA_PORTTYPE_FLPORT},
    Named{"fport", HBA_PORTTYPE_FPORT},
    Named{"lport", HBA_PORTTYPE_LPORT},
    Named{"ptp", HBA_PORTTYPE_PTP},
};

inline constexpr std::array portStateWords = {
    Named{"unknown", HBA_PORTSTATE_UNKNOWN},
    Named{"online", HBA_PORTSTATE_ONLINE},
    Named{"offline", HBA_PORTSTATE_OFFLINE},
    Named{"bypassed", HBA_PORTSTATE_BYPASSED},
    Named{"diagnostics", HBA_PORTSTATE_DIAGNOSTICS},
    Named{"linkDown", HBA_PORTSTATE_LINKDOWN},
    Named{"error", HBA_PORTSTATE_ERROR},
    Named{"loopback", HBA_PORTSTATE_LOOPBACK},
    Named{"needsReset", RM_PORT_STATE_NEEDS_RESET},
    Named{"linkDownNeedsReset", RM_PORT_STATE_DOWN_NEEDS_RESET},
    Named{"disabled", RM_PORT_STATE_DISABLED},
};

inline constexpr std::array speedWords = {
    Named{"unknown", HBA_PORTSPEED_UNKNOWN}, Named{"1G", HBA_PORTSPEED_1GBIT},
    Named{"2G", HBA_PORTSPEED_2GBIT},        Named{"4G", HBA_PORTSPEED_4GBIT},
    Named{"8G", HBA_PORTSPEED_8GBIT},        Named{"10G", HBA_PORTSPEED_10GBIT},
    Named{"16G", HBA_PORTSPEED_16GBIT},
};

inline constexpr std::array linkEventWords = {
    Named{"offline", HBA_EVENT_PORT_OFFLINE},
    Named{"online", HBA_EVENT_PORT_ONLINE},
};

inline constexpr std::array beaconWords = {
    Named{"notAvailable", 1},
    Named{"off", 2},
    Named{"on", 3},
    Named{"notSupported", 100},
    Named{"noDiagnostics", 101},
    Named{"unanswered", 102},
    Named{"unknown", 103},
};

/// States of a diagnostic test.
inline constexpr std::array testStateWords = {
    Named{"pending", RM_TEST_PENDING},
    Named{"running", RM_TEST_RUNNING},
    Named{"canceled", RM_TEST_CANCELED},
    Named{"finished", RM_TEST_FINISHED},
};

/// SCSI peripheral device types.
inline constexpr std::array peripheralWords = {
    Named{"disk", 0x00},           Named{"tape", 0x01},       Named{"printer", 0x02},
    Named{"processor", 0x03},      Named{"worm", 0x04},       Named{"cdrom", 0x05},
    Named{"scanner", 0x06},        Named{"optical", 0x07},    Named{"changer", 0x08},
    Named{"communications", 0x09}, Named{"array", 0x0C},      Named{"enclosure", 0x0D},
    Named{"reducedDisk", 0x0E},    Named{"cardReader", 0x0F}, Named{"bridge", 0x10},
    Named{"objectStorage", 0x11},  Named{"wellKnown", 0x1E},  Named{"unknownDevice", 0x1F},
};

/// Identifiers of a logical unit.
inline constexpr std::array designatorTypeWords = {
    Named{"vendorSpecific", 0}, Named{"t10", 1},       Named{"eui64", 2},     Named{"naa", 3},
    Named{"relativePort", 4},   Named{"portGroup", 5}, Named{"unitGroup", 6}, Named{"md5", 7},
    Named{"scsiName", 8},
};
inline constexpr std::array codeSetWords = {
    Named{"binary", 1},
    Named{"ascii", 2},
    Named{"utf8", 3},
};
inline constexpr std::array associationWords = {
    Named{"unit", 0},
    Named{"port", 1},
    Named{"device", 2},
};

/// How the walk over a VPD buffer goes on behind its last entry.
inline constexpr std::array vpdWalkWords = {
    Named{"ends", 0},
    Named{"endless", 1},
    Named{"outside", 2},
    Named{"endsWithLast", 3},
};

inline constexpr std::array attributeLengthsWords = {
    Named{"exact", 0},
    Named{"zero", 1},
    Named{"generous", 2},
    Named{"wild", 3},
};

inline constexpr std::array stalenessWords = {
    Named{"never", 0},
    Named{"afterChanges", 1},
    Named{"everyHandle", 2},
};

/// What world wide names wait for.
inline constexpr std::array nameActivationWords = {
    Named{"reset", 0},
    Named{"reboot", 1},
};

inline constexpr std::array nameCapabilityWords = {
    Named{"changeNonVolatile", RM_WWN_CAN_CHANGE_NON_VOLATILE},
    Named{"changeVolatile", RM_WWN_CAN_CHANGE_VOLATILE},
    Named{"needsReboot", RM_WWN_NEEDS_REBOOT},
    Named{"needsReset", RM_WWN_NEEDS_RESET},
    Named{"readOnly", RM_WWN_READ_ONLY},
};

} // namespace tvrsim
