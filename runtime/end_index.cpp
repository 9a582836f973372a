#include "runtime/end_index.h"

#include "runtime/key_hash.h"

#include <algorithm>
#include <array>

namespace cimple {

namespace {

constexpr unsigned position_bits = 32;

bool is_key(const Meta_Feature& feature) noexcept {
    return feature.has(FLAG_KEY) && feature.has(FLAG_PROPERTY);
}

// The hash of the key properties of an instance, the same in whatever order its class has them.
uint64 hash_of(const Instance& instance) noexcept {
    std::size_t sum = 0;
    for (const Meta_Feature* feature : *instance.__meta_class) {
        if (is_key(*feature)) {
            Value_Hash hash;
            hash.add_property(as_property(*feature), instance);
            sum += hash.value();
        }
    }
    return static_cast<uint64>(sum) << position_bits;
}

// What the classes of a source and of a target tell about `key_eq` of two such instances.
enum class Verdict {
    never,   // the source's class has a key that the target's doesn't have
    by_hash, // equal only if the hashes are
    open,    // the target's class has more keys, which the source knows nothing of
};

Verdict compare(const Meta_Structure& source, const Meta_Structure& target) noexcept {
    std::ptrdiff_t more = std::count_if(target.begin(), target.end(),
                                        [](const Meta_Feature* key) { return is_key(*key); });
    for (const Meta_Feature* key : source) {
        if (!is_key(*key)) {
            continue;
        }
        const Meta_Feature* found = find_feature(&target, key->name, PROPERTIES);
        if (found == nullptr || !is_key(*found) ||
            as_property(*found).type != as_property(*key).type ||
            as_property(*found).subscript != as_property(*key).subscript) {
            return Verdict::never;
        }
        --more;
    }
    return more == 0 ? Verdict::by_hash : Verdict::open;
}

} // namespace

End_Index::End_Index(const Array<Instance*>& members) {
    // Neighbours mostly share an end or two.
    struct Seen {
        const Instance* target = nullptr;
        uint64 hash = 0;
    };
    std::array<Seen, 4> last;

    std::size_t position = 0;
    for (const Instance* member : members) {
        std::size_t number = 0;
        for (const Meta_Feature* feature : *member->__meta_class) {
            if (!feature->has(FLAG_REFERENCE) || as_reference(*feature).is_array()) {
                continue;
            }
            Seen& seen = last[number++ % last.size()];
            const Instance* target = reference_field(member, as_reference(*feature));
            if (target == nullptr) {
                continue;
            }
            if (target != seen.target) {
                seen = {target, hash_of(*target)};
            }
            note({as_reference(*feature).meta_class, target->__meta_class});
            _entries.push_back(seen.hash | position);
        }
        ++position;
    }
    _entries.shrink_to_fit();
    std::sort(_entries.begin(), _entries.end());
}

void End_Index::note(const Target_Class& target_class) {
    if (std::find(_target_classes.begin(), _target_classes.end(), target_class) ==
        _target_classes.end()) {
        _target_classes.push_back(target_class);
    }
}

std::optional<std::vector<uint32>> End_Index::candidates(const Instance& source) const {
    std::vector<uint32> positions;
    bool any = false;
    for (const Target_Class& target_class : _target_classes) {
        if (!is_subclass(target_class.declared, class_of(&source))) {
            continue;
        }
        switch (compare(*source.__meta_class, *target_class.actual)) {
        case Verdict::never:
            break;
        case Verdict::by_hash:
            any = true;
            break;
        case Verdict::open:
            return std::nullopt;
        }
    }
    if (!any) {
        return positions;
    }
    const uint64 hash = hash_of(source);
    const uint64 last = hash | ((uint64{1} << position_bits) - 1);
    for (auto at = std::lower_bound(_entries.begin(), _entries.end(), hash);
         at != _entries.end() && *at <= last; ++at) {
        const uint32 position = static_cast<uint32>(*at);
        if (positions.empty() || positions.back() != position) {
            positions.push_back(position);
        }
    }
    return positions;
}

} // namespace cimple
