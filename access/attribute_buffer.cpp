#include "access/attribute_buffer.h"

#include "access/entry_points.h"
#include "common/logger.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace cimple {

namespace {

// The first bytes of a value as a number; those that a shorter value lacks are zero.
template <class Number> Number toNumber(std::span<const std::byte> bytes) noexcept {
    Number number = 0;
    std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
    return number;
}

} // namespace

AttributeValue AttributeBuffer::find(uint16 attribute, uint16 expected) noexcept {
    RM_STATUS status = RM_STATUS_ERROR;
    uint16 length = expected;
    const auto* value = static_cast<const std::byte*>(
        rm::RM_GetAttributeValue(m_bytes, attribute, &length, &status));
    if (value == nullptr) {
        return {{}, status};
    }
    // A library that answers with memory of its own is trusted with the length.
    std::size_t count = length;
    const std::less<const std::byte*> before;
    if (!before(value, m_bytes) && before(value, m_bytes + capacity)) {
        count = std::min(count, static_cast<std::size_t>(m_bytes + capacity - value));
    }
    return {{value, count}, status};
}

uint32 getHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute, const char* label) {
    return findHBAAttributeInt(buffer, attribute, label).value_or(0);
}

std::optional<uint32> findHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute,
                                          const char* label) {
    const AttributeValue value = buffer.find(attribute, sizeof(uint32));
    if (!value) {
        TVR_LOG("ERROR: RM_GetHBAAttributeValue HA_%s call failed (%d)", label, value.status);
        return std::nullopt;
    }
    const uint32 number = toNumber<uint32>(value.bytes);
    TVR_LOG("%s: [ %d ]", label, number);
    return number;
}

std::optional<uint64> getAttributeCounter(AttributeBuffer& buffer, uint16 attribute) {
    const AttributeValue value = buffer.find(attribute, sizeof(uint64));
    if (value.bytes.data() == nullptr) {
        return std::nullopt;
    }
    return toNumber<uint64>(value.bytes);
}

bool getAttributeText(char (&out)[attributeTextSize], AttributeBuffer& buffer, uint16 attribute,
                      const char* label) {
    std::memset(out, 0, sizeof out);
    const AttributeValue value = buffer.find(attribute, 0);
    if (!value) {
        TVR_LOG("ERROR: %s: RM_GetHBAAttributes call failed (%d)", label, value.status);
        return false;
    }
    std::memcpy(out, value.bytes.data(), std::min(value.bytes.size(), sizeof out - 1));
    TVR_LOG("%s : [ %s ]", label, out);
    return true;
}

} // namespace cimple
