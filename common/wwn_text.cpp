#include "common/logger.h"
#include "common/tvr_common.h"

#include <algorithm>
#include <cstring>

namespace cimple {

namespace {

constexpr std::size_t wwnBytes = 8;

void appendHex(char*& out, uint8 byte) noexcept {
    constexpr char digits[] = "0123456789ABCDEF";
    *out++ = digits[byte >> 4];
    *out++ = digits[byte & 15];
    *out = '\0';
}

// -1 for a character that is no hexadecimal digit.
int hexValue(char c) noexcept {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                  : -1;
}

} // namespace

uint32 wwnToText(char* out, const uint8* wwn) {
    if (out != nullptr) {
        std::for_each(wwn, wwn + wwnBytes, [&](uint8 byte) { appendHex(out, byte); });
    }
    return 0;
}

std::string wwnToText(const uint8* wwn) {
    char text[wwnTextSize];
    wwnToText(text, wwn);
    return text;
}

uint32 text2HBAName(uint8* out, std::string_view text) {
    uint8 bytes[wwnBytes] = {};
    bool good = out != nullptr && text.size() == 2 * wwnBytes;
    for (std::size_t i = 0; good && i < wwnBytes; ++i) {
        const int high = hexValue(text[2 * i]);
        const int low = hexValue(text[2 * i + 1]);
        good = high >= 0 && low >= 0;
        bytes[i] = static_cast<uint8>(good ? high * 16 + low : 0);
    }
    if (!good) {
        TVR_LOG("INVALID WWN");
        return 0;
    }
    std::memcpy(out, bytes, wwnBytes);
    return 1;
}

void descriptorToText(char* out, uint32, uint32 length, const uint8* bytes) {
    *out = '\0';
    if (length != 16 && length != 12 && length != 8) {
        TVR_LOG("INVALID Descriptor");
        return;
    }
    std::for_each(bytes, bytes + length, [&](uint8 byte) { appendHex(out, byte); });
}

void bytesToText(char* out, uint32, uint32, const uint8* bytes, uint32 first, uint32 end) {
    if (out == nullptr || bytes == nullptr || first >= end) {
        return;
    }
    out += std::strlen(out);
    end = std::min<uint32>(end, DeviceIdentifier::capacity);
    for (uint32 i = first; i < end; ++i) {
        appendHex(out, bytes[i]);
    }
}

} // namespace cimple
