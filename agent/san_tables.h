// What the types of SCSI devices and of their identifiers are called in CIM.
#ifndef TVR_AGENT_SAN_TABLES_H
#define TVR_AGENT_SAN_TABLES_H

#include "common/tvr_common.h"

#include <string>

namespace cimple {

// The class that a device is published as.
enum class Device_Class { storage_volume, tape_drive, logical_disk, storage_extent, arbitrary };

struct Device_Kind {
    Device_Class device_class;
    const char* element_name; // its number in the operating system comes behind
};
// Of a SCSI peripheral type, 0 to 31.
Device_Kind device_kind(uint32 peripheral_type) noexcept;

// How the name of a volume is to be read. A format of 0 is none.
struct Name_Format {
    uint16 format;
    uint16 name_space;
    const char* other_format; // null where the format says it all
    const char* other_name_space;
};
// Of the type of an identifier, 0 to 15.
Name_Format name_format(uint32 identifier_type) noexcept;

// `DeviceType` of an arbitrary logical unit, from its peripheral type.
uint16 device_type(uint32 peripheral_type) noexcept;

// The digits of an identifier of 8, 12 or 16 bytes, else empty.
std::string identifier_text(const DeviceIdentifier& identifier);

// The name that the identifier gives to its device: of a registered (NAA) name the digits behind
// its leading bytes, else the identifier's text.
std::string identifier_name(const DeviceIdentifier& identifier);

} // namespace cimple

#endif
