// World wide names between their text forms and their 8 bytes.

#include "access/method_wrapper.h"

#include "common/logger.h"
#include "common/tvr_common.h"

#include <cstdio>
#include <cstring>
#include <new>

namespace cimple {

namespace {

constexpr std::size_t colonTextLength = 23;

// Positions between the pairs of digits.
constexpr bool isSeparator(std::size_t position) noexcept {
    return position % 3 == 2;
}

bool isHexDigit(char c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool hasColonForm(std::string_view text) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isSeparator(i) ? text[i] != ':' && text[i] != ' ' : !isHexDigit(text[i])) {
            return false;
        }
    }
    return true;
}

uint32 invalidName() {
    TVR_LOG("INVALID HBA Name");
    return 1;
}

} // namespace

uint32 TVR_MethodWrapper::Id2HBAName(char* out, const char* deviceId) {
    TVR_LOG("Entering TVR_MethodWrapper::Id2HBAName");
    if (out == nullptr || deviceId == nullptr) {
        TVR_LOG("Null pointer argument in one of the arguments");
        return 1;
    }
    TVR_LOG("DeviceID is:: %s", deviceId);
    if (*deviceId == '"') {
        ++deviceId;
    }
    for (std::size_t i = 0; i < colonTextLength; ++i) {
        if (isSeparator(i)) {
            out[i] = ':';
        } else {
            out[i] = *deviceId;
            deviceId += *deviceId != '\0';
        }
    }
    out[colonTextLength] = '\0';
    TVR_LOG("HBA Name is:: %s", out);
    return 0;
}

uint32 TVR_MethodWrapper::str2HBAName(HBA_WWN* out, const char* text) {
    TVR_LOG("Entering TVR_MethodWrapper::str2HBAName");
    if (out == nullptr) {
        TVR_LOG("Null pointer assignment in argument pHBAName");
        return 1;
    }
    if (text == nullptr || std::strlen(text) != colonTextLength) {
        return invalidName();
    }
    TVR_LOG("wwpn:( %s ) ", text);
    if (!hasColonForm(text)) {
        return invalidName();
    }
    // Blanks pass as separators up to here, yet only colons part the tokens.
    char digits[2 * sizeof(HBA_WWN)];
    std::size_t count = 0;
    for (const char* c = text; *c != '\0'; ++c) {
        if (*c == ' ') {
            return invalidName();
        }
        if (*c != ':') {
            digits[count++] = *c;
        }
    }
    HBA_WWN name{};
    text2HBAName(name.wwn, {digits, count});
    *out = name;
    const HBA_UINT8* b = name.wwn;
    TVR_LOG("After tokenizing wwpn:( %2x %2x %2x %2x %2x %2x %2x %2x )", b[0], b[1], b[2], b[3],
            b[4], b[5], b[6], b[7]);
    return 0;
}

bool TVR_MethodWrapper::deviceIdToHBAName(HBA_WWN& out, const std::string& deviceId,
                                          const NameLines& lines) {
    char text[hbaNameTextSize];
    if (Id2HBAName(text, deviceId.c_str()) != 0) {
        TVR_LOG("%s", lines.noText);
        return false;
    }
    if (str2HBAName(&out, text) != 0) {
        TVR_LOG("%s", lines.noName);
        return false;
    }
    return true;
}

uint32 TVR_MethodWrapper::string2HBAName(HBA_WWN& out, std::string_view text) {
    return text2HBAName(out.wwn, text);
}

uint32 TVR_MethodWrapper::hbaNameToText(char* out, const HBA_WWN& name) {
    if (out != nullptr) {
        const HBA_UINT8* b = name.wwn;
        snprintf(out, hbaNameTextSize, "%02X:%02X:%02X:%02X:%02X:%02X:%02X:%02X", b[0], b[1], b[2],
                 b[3], b[4], b[5], b[6], b[7]);
    }
    return 0;
}

uint32 TVR_MethodWrapper::isDuplicateEntryInWWPNList(const HBA_WWN& name,
                                                     std::vector<HBA_WWN>& list) {
    for (const HBA_WWN& entry : list) {
        if (std::memcmp(entry.wwn, name.wwn, sizeof name.wwn) == 0) {
            return 1;
        }
    }
    try {
        list.push_back(name);
    } catch (const std::bad_alloc&) {
        fputs("\nERROR: isDuplicateEntryInWWPNList: realloc failed", stdout);
        list.clear();
    }
    return 0;
}

} // namespace cimple
