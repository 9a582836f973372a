// Attribute buffers of the RM library: opaque to all but RM_GetAttributeValue.
#ifndef TVR_ACCESS_ATTRIBUTE_BUFFER_H
#define TVR_ACCESS_ATTRIBUTE_BUFFER_H

#include "access/rm/rm_api.h"
#include "runtime/type.h"

#include <cstddef>
#include <optional>

namespace cimple {

// What the library said of one attribute.
struct AttributeValue {
    const std::byte* start; // mostly in the buffer; null when there is no value
    std::size_t readable;   // bytes from there on that can be read
    uint16 length;          // of the value, as the library tells it
    RM_STATUS status;

    explicit operator bool() const noexcept { return status == 0 && start != nullptr; }
};

// Room for the answer of LRM_GetHBAAttributes, LRM_GetPortAttributes or LRM_GetPortStatistics, at
// most `capacity` bytes.
class AttributeBuffer {
public:
    static constexpr uint32 capacity = 4096;
    static_assert(capacity >= RM_HBA_ATTRIBUTES_SIZE);

    explicit AttributeBuffer(uint32 room) noexcept : size(room <= capacity ? room : capacity) {}
    AttributeBuffer(const AttributeBuffer&) = delete;
    AttributeBuffer& operator=(const AttributeBuffer&) = delete;

    void* data() noexcept { return m_bytes; }

    AttributeValue find(uint16 attribute) noexcept;

    uint32 size; // the size word of the call that fills the buffer

private:
    alignas(8) std::byte m_bytes[capacity] = {};
};

// Numbers have a width of their own, so that the length that the library tells counts for texts
// alone. Where the buffer ends within a number, what is missing reads as zero.

// The first 32 bits of a value. Logs what it found under the label. The one answers 0 when there is
// no value, the other nothing.
uint32 getHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute, const char* label);
std::optional<uint32> findHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute,
                                          const char* label);

// The first 32 or 64 bits of a value, nothing when there is none. Log nothing.
std::optional<uint32> getAttributeNumber(AttributeBuffer& buffer, uint16 attribute);
std::optional<uint64> getAttributeCounter(AttributeBuffer& buffer, uint16 attribute);

// Copies the bytes of a value, as many as its length tells but at most 255 and none behind the
// buffer, and fills the rest with zeros; true when there is one. Logs what it found under the
// label.
constexpr std::size_t attributeTextSize = 256;
bool getAttributeText(char (&out)[attributeTextSize], AttributeBuffer& buffer, uint16 attribute,
                      const char* label);

} // namespace cimple

#endif
