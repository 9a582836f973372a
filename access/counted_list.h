// Records of the RM library that begin with a count.
#ifndef TVR_ACCESS_COUNTED_LIST_H
#define TVR_ACCESS_COUNTED_LIST_H

#include "access/rm/rm_api.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace cimple {

// Room for such a list: a head, which begins with the count word, and entries behind it.
template <class Entry, std::size_t headSize> class CountedList {
public:
    // Makes a zeroed list of that capacity, which its count word says. False if there is no memory
    // for it or it is more than `most`; the list is then as it was.
    bool makeRoom(uint32_t capacity, uint32_t most) noexcept try {
        if (capacity > most) {
            return false;
        }
        const std::size_t size = headSize + std::size_t{std::max(capacity, 1u)} * sizeof(Entry);
        m_words.assign((size + sizeof(uint64_t) - 1) / sizeof(uint64_t), 0);
        m_capacity = capacity;
        std::memcpy(m_words.data(), &capacity, sizeof capacity);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }

    // The memory, as the record that the library takes. Null before there is room.
    template <class Record> Record* as() noexcept {
        return m_words.empty() ? nullptr : reinterpret_cast<Record*>(m_words.data());
    }
    void* entries() noexcept { return reinterpret_cast<char*>(m_words.data()) + headSize; }

    // The count word as it is now.
    uint32_t count() const noexcept {
        uint32_t count = 0;
        if (!m_words.empty()) {
            std::memcpy(&count, m_words.data(), sizeof count);
        }
        return count;
    }
    // The entries that the count tells of, no more than there is room for.
    std::vector<Entry> read() const {
        std::vector<Entry> list(std::min(count(), m_capacity));
        if (!list.empty()) {
            std::memcpy(list.data(), reinterpret_cast<const char*>(m_words.data()) + headSize,
                        list.size() * sizeof(Entry));
        }
        return list;
    }

private:
    std::vector<uint64_t> m_words;
    uint32_t m_capacity = 0;
};

using VPortList = CountedList<RM_VPORTENTRY, offsetof(RM_VPORTLIST, entry)>;

} // namespace cimple

#endif
