// The FCP target mapping of an adapter: a row for each logical unit that a port sees.
#ifndef TVR_MODEL_TARGET_MAPPING_H
#define TVR_MODEL_TARGET_MAPPING_H

#include "access/rm/hba_api.h"
#include "runtime/type.h"

#include <cstdlib>
#include <memory>

namespace cimple {

// A mapping with the room that it was allocated with.
class TargetMapping {
public:
    // The most rows that room is made for; a library that asks for more gets none.
    static constexpr uint32 maxRows = 1'048'576;

    TargetMapping() = default;

    // Room for so many rows, all zero, in place of what was there. False when there is no memory
    // for them or they are more than the most; the mapping is then empty.
    bool allocate(uint32 rows) noexcept;

    explicit operator bool() const noexcept { return m_mapping != nullptr; }
    HBA_FCPTARGETMAPPING* get() noexcept { return m_mapping.get(); }
    // What the library says of its rows, whatever it may mean.
    uint32 toldRows() const noexcept { return m_mapping->NumberOfEntries; }
    // Those that are there to be read. Where the library tells of more than there was room for: up
    // to the last one that it has written.
    uint32 size() const noexcept;
    const HBA_FCPSCSIENTRY& row(uint32 index) const noexcept { return m_mapping->entry[index]; }

private:
    struct Free {
        void operator()(HBA_FCPTARGETMAPPING* mapping) const noexcept { std::free(mapping); }
    };
    std::unique_ptr<HBA_FCPTARGETMAPPING, Free> m_mapping;
    uint32 m_capacity = 0;
};

// Asks the open adapter for its mapping, in three attempts at most: a larger one where the library
// has more rows, a refreshed one where its data is stale. Answers the last status, 1 without any;
// only with 0 do the rows count. `mapping` is empty after any status but 0, 7 and 8.
HBA_STATUS fetchTargetMapping(HBA_HANDLE handle, TargetMapping& mapping);

} // namespace cimple

#endif
