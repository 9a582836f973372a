#include "common/logger.h"
#include "common/tvr_common.h"

namespace cimple {

namespace {

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

uint16 digit(char c) noexcept {
    return static_cast<uint16>(c - '0');
}

uint32 invalidVersion() {
    TVR_LOG("parseVersion Error: Invalid Firmware String");
    return TVR_FAILURE;
}

uint32 parse(std::string_view text, ParsedVersion& out) {
    constexpr std::size_t plainLength = 6;
    constexpr std::size_t testLength = 8;
    if (text.size() < plainLength || !isDigit(text[0]) || text[1] != '.' || !isDigit(text[2]) ||
        !isDigit(text[3]) || !isLetter(text[4]) || !isDigit(text[5])) {
        return invalidVersion();
    }
    TVR_LOG("Parsed the major, minor, revision & build numbers");
    if (text.size() >= testLength && (text[6] == 'r' || text[6] == 'R')) {
        if (!isDigit(text[7])) {
            return invalidVersion();
        }
        TVR_LOG("parseVersion: This seems to be a Test Release Firmware...");
        out.testRelease.append("r").append(1, text[7]);
    }
    TVR_LOG("Parsed the revision for Test Firmwares");
    out.major = digit(text[0]);
    out.minor = digit(text[2]);
    out.revision = digit(text[3]);
    out.build = digit(text[5]);
    TVR_LOG("Filled Major, Minor, Revision & Build Numbers");
    out.releaseType.append(1, text[4]);
    TVR_LOG("Filled ReleaseType");
    TVR_LOG("parseVersion: Version parsing success");
    return 0;
}

} // namespace

uint32 parseVersion(const char* text, ParsedVersion& out) {
    if (text == nullptr) {
        TVR_LOG("parseVersion Error: Input FirmwareVersion is Null");
        return TVR_FAILURE;
    }
    TVR_LOG("Input Version String: [%s]", text);
    try {
        return parse(text, out);
    } catch (...) {
        TVR_LOG("parseVersion: error occurred while parsing...");
        return TVR_FAILURE;
    }
}

} // namespace cimple
