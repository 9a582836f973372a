// An index of association instances by the keys of their ends.
#ifndef TVR_RUNTIME_END_INDEX_H
#define TVR_RUNTIME_END_INDEX_H

#include "runtime/association.h"

#include <optional>
#include <vector>

namespace cimple {

// Stands for a list of instances as it was when the index was made: who changes the list, or the
// references or keys behind it, makes a new one. 8 bytes a reference. Not changed by reading.
class End_Index {
public:
    // Throws std::bad_alloc. A position fits 32 bits.
    explicit End_Index(const Array<Instance*>& members);

    // Positions, ascending and each once, of few members among which are all that have the source
    // at an end; nothing if the index can't tell.
    std::optional<std::vector<uint32>> candidates(const Instance& source) const;

private:
    // The class that a reference is declared with, and that of a target.
    struct Target_Class {
        const Meta_Class* declared;
        const Meta_Structure* actual;

        bool operator==(const Target_Class&) const noexcept = default;
    };

    void note(const Target_Class& target_class);

    std::vector<uint64> _entries; // sorted: hash of an end's keys, and below it the position
    std::vector<Target_Class> _target_classes; // that occur, each pair once
};

} // namespace cimple

#endif
