#include "sim/attribute_buffer.h"

#include <cstring>

namespace tvrsim {

namespace {

struct Head {
    uint32_t mark;
    uint32_t size; ///< of the whole buffer
};

struct Record {
    uint16_t attribute;
    uint16_t length; ///< of the value with what fills its field
    uint16_t told;
};

constexpr uint32_t headMark = 0x41525654;
constexpr size_t generousFilling = 4;

template <class Part> void append(std::string& bytes, const Part& part) {
    bytes.append(reinterpret_cast<const char*>(&part), sizeof part);
}

uint16_t toldLength(size_t length, AttributeLengths lengths) {
    switch (lengths) {
    case AttributeLengths::zero:
        return 0;
    case AttributeLengths::wild:
        return UINT16_MAX;
    default:
        return static_cast<uint16_t>(length);
    }
}

} // namespace

std::string packAttributes(const Attributes& attributes, AttributeLengths lengths) {
    const size_t filling = lengths == AttributeLengths::generous ? generousFilling : 0;
    std::string bytes(sizeof(Head), '\0');
    for (const auto& [attribute, value] : attributes) {
        const size_t length = value.size() + filling;
        append(bytes,
               Record{attribute, static_cast<uint16_t>(length), toldLength(length, lengths)});
        bytes += value;
        bytes.append(filling, '\0');
    }
    const Head head = {headMark, static_cast<uint32_t>(bytes.size())};
    std::memcpy(bytes.data(), &head, sizeof head);
    return bytes;
}

void* findAttribute(void* buffer, uint16_t attribute, uint16_t& length) {
    Head head;
    std::memcpy(&head, buffer, sizeof head);
    if (head.mark != headMark) {
        return nullptr;
    }
    char* const bytes = static_cast<char*>(buffer);
    size_t at = sizeof head;
    while (at + sizeof(Record) <= head.size) {
        Record record;
        std::memcpy(&record, bytes + at, sizeof record);
        at += sizeof record;
        if (record.attribute == attribute) {
            length = record.told;
            return bytes + at;
        }
        at += record.length;
    }
    return nullptr;
}

RM_STATUS answerSized(const std::string& content, void* buffer, uint32_t* size) {
    if (size == nullptr) {
        return RM_STATUS_ERROR;
    }
    const uint32_t room = *size;
    *size = static_cast<uint32_t>(content.size());
    if (buffer == nullptr || room < content.size()) {
        return RM_STATUS_MORE_DATA;
    }
    std::memcpy(buffer, content.data(), content.size());
    return RM_STATUS_OK;
}

} // namespace tvrsim
