#include "sim/vpd.h"

#include <algorithm>
#include <cstring>

namespace tvrsim {

namespace {

constexpr uint32_t entryMark = 0xD9545652;
constexpr int32_t stepOutside = INT32_MIN;
constexpr int32_t noStep = INT32_MAX;
constexpr size_t keywordSize = 4;

struct EntryHead {
    uint32_t mark;
    int32_t next; ///< way to the next entry in bytes
    char keyword[keywordSize];
    uint16_t keywordLength;
    uint16_t valueLength;
};

constexpr size_t padded(size_t length) {
    return (length + 7) / 8 * 8;
}

/// Where a walk that steps outside goes: one entry, then the end.
struct {
    EntryHead head = {entryMark, sizeof head + sizeof value, {'Z', 'Z'}, 2, 7};
    char value[8] = "outside";
    EntryHead end = {};
} outside;

/// A text that fills its buffer has no terminator.
void copyText(const char* text, size_t length, std::span<char> out) {
    const size_t copied = std::min(length, out.size());
    std::copy_n(text, copied, out.begin());
    if (copied < out.size()) {
        out[copied] = '\0';
    }
}

} // namespace

std::string packVpd(const Vpd& vpd) {
    std::string bytes;
    if (vpd.bytes) {
        bytes = *vpd.bytes;
    } else {
        size_t last = 0;
        for (const VpdEntry& entry : vpd.entries) {
            EntryHead head = {};
            last = bytes.size();
            head.mark = entryMark;
            head.next = static_cast<int32_t>(padded(sizeof head + entry.value.size()));
            head.keywordLength =
                static_cast<uint16_t>(entry.keyword.copy(head.keyword, keywordSize));
            head.valueLength = static_cast<uint16_t>(entry.value.size());
            bytes.append(reinterpret_cast<const char*>(&head), sizeof head);
            bytes += entry.value;
            bytes.resize(padded(bytes.size()));
        }
        if (!vpd.entries.empty() && vpd.walk != VpdWalk::ends) {
            const int32_t next = vpd.walk == VpdWalk::outside        ? stepOutside
                                 : vpd.walk == VpdWalk::endsWithLast ? noStep
                                                                     : -static_cast<int32_t>(last);
            std::memcpy(bytes.data() + last + offsetof(EntryHead, next), &next, sizeof next);
        }
    }
    bytes.append(sizeof(EntryHead), '\0');
    return bytes;
}

void* nextVpdEntry(void* cursor, std::span<char> keyword, std::span<char> value) {
    EntryHead head;
    std::memcpy(&head, cursor, sizeof head);
    if (head.mark != entryMark) {
        return nullptr;
    }
    char* const entry = static_cast<char*>(cursor);
    copyText(head.keyword, std::min<size_t>(head.keywordLength, keywordSize), keyword);
    copyText(entry + sizeof head, head.valueLength, value);
    switch (head.next) {
    case stepOutside:
        return &outside;
    case noStep:
        return nullptr;
    default:
        return entry + head.next;
    }
}

} // namespace tvrsim
