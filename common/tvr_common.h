// Helpers that the data model and the agent share: text forms of names and identifiers, firmware
// versions, what the operating system says of itself.
#ifndef TVR_COMMON_TVR_COMMON_H
#define TVR_COMMON_TVR_COMMON_H

#include "runtime/type.h"

#include <string>
#include <string_view>

namespace cimple {

// General failure of helpers and of the map rebuilds.
constexpr uint32 TVR_FAILURE = 32769;

// Buffer for the 16-digit text of a world wide name and its terminator.
constexpr std::size_t wwnTextSize = 17;

// Writes the 8 bytes of `wwn` as 16 upper-case digits, nothing into a null buffer. Answers 0.
uint32 wwnToText(char* out, const uint8* wwn);
std::string wwnToText(const uint8* wwn);

// Reads 16 hexadecimal digits of either case into 8 bytes. 1 for success; 0 for any other text,
// with `out` unchanged and the line "INVALID WWN" in the log.
uint32 text2HBAName(uint8* out, std::string_view text);

// What a target tells of itself on page 0x83, its first identifier only.
struct DeviceIdentifier {
    static constexpr std::size_t capacity = 256;

    uint8 peripheralType = 0;
    uint8 pageCode = 0;
    uint32 pageLength = 0;
    uint32 identifierType = 0;
    uint32 identifierLength = 0;
    uint8 identifier[capacity] = {};
};

// Writes the digits of an identifier of 16, 12 or 8 bytes, and the empty text, with a line in the
// log, for any other length. `out` has at least 33 bytes.
void descriptorToText(char* out, uint32 type, uint32 length, const uint8* bytes);

// Appends two upper-case digits for each byte from index `first` up to, not including, `end` to the
// text in `out`, which has room for them. Bytes lie in a record of DeviceIdentifier::capacity, and
// none behind it is read.
void bytesToText(char* out, uint32 type, uint32 length, const uint8* bytes, uint32 first,
                 uint32 end);

// A firmware version such as "2.82a4r1": every number is one digit.
struct ParsedVersion {
    uint16 major = 0;
    uint16 minor = 0;
    uint16 revision = 0;
    uint16 build = 0;
    std::string releaseType; // the letter
    std::string testRelease; // "r" and a digit, or empty
};

// 0, or TVR_FAILURE for a null or invalid text. The two texts are appended to: `out` is a fresh
// record.
uint32 parseVersion(const char* text, ParsedVersion& out);

// The kernel's banner line without its line end, and the whole text of the login banner. What can't
// be read is "Unknown", and the result then TVR_FAILURE; else 0.
uint32 getOSInformation(std::string& name, std::string& version);

// The URL in settings().webPortalFile: the first line with anything but white space that is no
// comment, from its first character to its end. Empty when there is none.
std::string readWebPortalURL();

} // namespace cimple

#endif
