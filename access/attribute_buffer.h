// Attribute buffers of the RM library: opaque to all but RM_GetAttributeValue.
#ifndef TVR_ACCESS_ATTRIBUTE_BUFFER_H
#define TVR_ACCESS_ATTRIBUTE_BUFFER_H

#include "access/rm/rm_api.h"
#include "runtime/type.h"

#include <cstddef>
#include <optional>
#include <span>

namespace cimple {

// What the library said of one attribute.
struct AttributeValue {
    std::span<const std::byte> bytes; // in the buffer; data() is null when there is no value
    RM_STATUS status;

    explicit operator bool() const noexcept { return status == 0 && bytes.data() != nullptr; }
};

// Room for the answer of LRM_GetHBAAttributes, LRM_GetPortAttributes or LRM_GetPortStatistics, at
// most the largest of the three.
class AttributeBuffer {
public:
    explicit AttributeBuffer(uint32 room) noexcept : size(room <= capacity ? room : capacity) {}
    AttributeBuffer(const AttributeBuffer&) = delete;
    AttributeBuffer& operator=(const AttributeBuffer&) = delete;

    void* data() noexcept { return m_bytes; }

    // The value of an attribute. A length that would reach behind the buffer is cut there; a
    // library that tells no length is taken to mean `expected` bytes.
    AttributeValue find(uint16 attribute, uint16 expected) noexcept;

    uint32 size; // the size word of the call that fills the buffer

private:
    static constexpr uint32 capacity = RM_HBA_ATTRIBUTES_SIZE;

    alignas(8) std::byte m_bytes[capacity] = {};
};

// The first 32 bits of a value; a shorter value fills the low bytes. Logs what it found under the
// label. The one answers 0 when there is no value, the other nothing.
uint32 getHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute, const char* label);
std::optional<uint32> findHBAAttributeInt(AttributeBuffer& buffer, uint16 attribute,
                                          const char* label);

// The first 64 bits of a value, nothing when there is none. Logs nothing.
std::optional<uint64> getAttributeCounter(AttributeBuffer& buffer, uint16 attribute);

// Copies the bytes of a value, at most 255, and fills the rest with zeros; true when there is one.
// Logs what it found under the label.
constexpr std::size_t attributeTextSize = 256;
bool getAttributeText(char (&out)[attributeTextSize], AttributeBuffer& buffer, uint16 attribute,
                      const char* label);

} // namespace cimple

#endif
