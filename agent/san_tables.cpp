#include "agent/san_tables.h"

#include <iterator>

namespace cimple {

namespace {

using enum Device_Class;

struct Kind_Row {
    uint32 from;
    Device_Kind to;
};
constexpr Kind_Row device_kinds[] = {
    {0, {storage_volume, "Storage Volume: "}},
    {14, {storage_volume, "Storage Volume: "}},
    {1, {tape_drive, "Tape Drive "}},
    {12, {arbitrary, "Storage array controller "}},
    {13, {arbitrary, "Enclosure services "}},
    {16, {arbitrary, "Bridge controller "}},
    {17, {logical_disk, "Object-based storage device: "}},
    {2, {storage_extent, "Printer "}},
    {3, {storage_extent, "Processor "}},
    {4, {storage_extent, "Write-once device "}},
    {5, {storage_extent, "CD/DVD "}},
    {6, {storage_extent, "Scanner "}},
    {7, {storage_extent, "Optical memory device "}},
    {8, {storage_extent, "Jukebox "}},
    {9, {storage_extent, "Communications device "}},
    {15, {storage_extent, "Optical card reader/writer "}},
};
constexpr Device_Kind unknown_kind{storage_extent, "Unknown device "};

// By the type of the identifier.
constexpr Name_Format name_formats[] = {
    {6, 1, nullptr, "Vendor specific"},
    {5, 4, nullptr, nullptr},
    {10, 3, nullptr, nullptr},
    {9, 2, nullptr, nullptr},
    {1, 1, "Relative target port identifier", "Relative target port idientifier"},
    {1, 1, "Target port group", "Target port group"},
    {1, 1, "Logical port group", "Logical unit group"},
    {1, 1, "MD5 logical unit identifier", "MD5 logical unit identifier"},
    {1, 1, "SCSI name std::string", "SCSI name std::string"},
};
constexpr uint32 naa_identifier = 3;

// Index of the first byte of a registered name that tells more than its kind; 0 for other names.
uint32 naa_start(uint8 first_byte) noexcept {
    switch (first_byte >> 4) {
    case 1:
    case 2:
    case 5:
        return 2;
    case 6:
        return 1;
    default:
        return 0;
    }
}

} // namespace

Device_Kind device_kind(uint32 peripheral_type) noexcept {
    for (const Kind_Row& row : device_kinds) {
        if (row.from == peripheral_type) {
            return row.to;
        }
    }
    return unknown_kind;
}

Name_Format name_format(uint32 identifier_type) noexcept {
    return identifier_type < std::size(name_formats) ? name_formats[identifier_type]
                                                     : Name_Format{};
}

uint16 device_type(uint32 peripheral_type) noexcept {
    switch (peripheral_type) {
    case 0:
    case 14:
        return 2;
    case 13:
        return 4;
    case 8:
    case 18:
        return 5;
    case 30:
        return 6;
    case 31:
        return 0;
    default:
        return 1;
    }
}

std::string identifier_text(const DeviceIdentifier& identifier) {
    char text[33] = "";
    descriptorToText(text, identifier.identifierType, identifier.identifierLength,
                     identifier.identifier);
    return text;
}

std::string identifier_name(const DeviceIdentifier& identifier) {
    const uint32 start = naa_start(identifier.identifier[0]);
    if (identifier.identifierType != naa_identifier || start == 0) {
        return identifier_text(identifier);
    }
    char text[2 * DeviceIdentifier::capacity + 1] = "";
    bytesToText(text, identifier.identifierType, identifier.identifierLength, identifier.identifier,
                start, identifier.identifierLength);
    return text;
}

} // namespace cimple
