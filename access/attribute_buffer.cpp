#include "access/attribute_buffer.h"

#include "access/entry_points.h"
#include "common/logger.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>

namespace cimple {

namespace {

// The first bytes of a value, which is there.
template <class Number> Number toNumber(const AttributeValue& value) noexcept {
    Number number = 0;
    std::memcpy(&number, value.start, std::min(value.readable, sizeof number));
    return number;
}

template <class Number>
std::optional<Number> findNumber(AttributeBuffer& buffer, uint16 attribute) {
    const AttributeValue value = buffer.find(attribute);
    if (value.start == nullptr) {
        return std::nullopt;
    }
    return toNumber<Number>(value);
}

} // namespace

AttributeValue AttributeBuffer::find(uint16 attribute) noexcept {
    RM_STATUS status = RM_STATUS_ERROR;
    uint16 length = 0;
    const auto* start = static_cast<const std::byte*>(
        rm::RM_GetAttributeValue(m_bytes, attribute, &length, &status));
    const std::byte* const end = m_bytes + capacity;
    const std::less<const std::byte*> before;
    // A library that answers with memory of its own is trusted with it.
    const bool isInside = !before(start, m_bytes) && !before(end, start);
    return {start, isInside ? static_cast<std::size_t>(end - start) : SIZE_MAX, length, status};
}

uint32 getHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute, const char* label) {
    return findHBAAttributeInt(buffer, attribute, label).value_or(0);
}

std::optional<uint32> findHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute,
                                          const char* label) {
    const AttributeValue value = buffer.find(attribute);
    if (!value) {
        TVR_LOG("ERROR: RM_GetHBAAttributeValue HA_%s call failed (%d)", label, value.status);
        return std::nullopt;
    }
    const uint32 number = toNumber<uint32>(value);
    TVR_LOG("%s: [ %d ]", label, number);
    return number;
}

std::optional<uint32> getAttributeNumber(AttributeBuffer& buffer, uint16 attribute) {
    return findNumber<uint32>(buffer, attribute);
}

std::optional<uint64> getAttributeCounter(AttributeBuffer& buffer, uint16 attribute) {
    return findNumber<uint64>(buffer, attribute);
}

bool getAttributeText(char (&out)[attributeTextSize], AttributeBuffer& buffer, uint16 attribute,
                      const char* label) {
    std::memset(out, 0, sizeof out);
    const AttributeValue value = buffer.find(attribute);
    if (!value) {
        TVR_LOG("ERROR: %s: RM_GetHBAAttributes call failed (%d)", label, value.status);
        return false;
    }
    const std::size_t length = std::min<std::size_t>(value.length, value.readable);
    std::memcpy(out, value.start, std::min(length, sizeof out - 1));
    TVR_LOG("%s : [ %s ]", label, out);
    return true;
}

} // namespace cimple
