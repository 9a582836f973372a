#include "runtime/instance_map.h"

#include "runtime/key_hash.h"
#include "runtime/thread.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <new>

namespace cimple {

namespace {

constexpr std::size_t min_buckets = 16;

// The hash of the keys that an instance has in common with a declared class.
//
// What `key_eq` calls equal must hash equal, whichever of the two is the member. `key_eq` compares
// the keys of the member's own class, by name, in value, type and null flag. So if the member has
// every key of the declared class in the declared form, an equal probe has them too, with equal
// values, and both hash the same over the declared class. An instance that doesn't is called
// irregular. Arrays of references are passed over by `key_eq` and so here.
class Key_Hash {
public:
    Key_Hash(const Meta_Class& declared, const Instance& instance) noexcept {
        add_keys(declared, instance);
    }

    std::size_t hash() const noexcept { return _hash.value(); }
    bool regular() const noexcept { return _regular; }

private:
    // `key` is feature `index` of the declared class. Classes of one hierarchy mostly have a
    // feature at the same place.
    static const Meta_Feature* find_key(const Meta_Structure& structure, const Meta_Feature& key,
                                        uint64 index) noexcept {
        const uint32 mask = key.flags & PROPERTIES_AND_REFERENCES;
        if (index < structure.num_meta_features) {
            const Meta_Feature* feature = structure.meta_features[index];
            if (feature == &key || (feature->has(mask) && eqi(feature->name, key.name))) {
                return feature;
            }
        }
        return find_feature(&structure, key.name, mask);
    }

    static bool same_form(const Meta_Feature& key, const Meta_Feature* found) noexcept {
        if (found == nullptr || !found->has(FLAG_KEY)) {
            return false;
        }
        if (key.has(FLAG_REFERENCE)) {
            return !as_reference(*found).is_array();
        }
        return as_property(key).type == as_property(*found).type &&
               as_property(key).subscript == as_property(*found).subscript;
    }

    void add_keys(const Meta_Class& declared, const Instance& instance) noexcept {
        uint64 left = declared.num_keys;
        for (uint64 i = 0; i < declared.num_meta_features && left > 0; ++i) {
            const Meta_Feature& key = *declared.meta_features[i];
            if (!key.has(FLAG_KEY) || !key.has(PROPERTIES_AND_REFERENCES)) {
                continue;
            }
            --left;
            if (key.has(FLAG_REFERENCE) && as_reference(key).is_array()) {
                continue;
            }
            const Meta_Feature* found = find_key(*instance.__meta_class, key, i);
            if (!same_form(key, found)) {
                _regular = false;
            } else if (key.has(FLAG_PROPERTY)) {
                _hash.add_property(as_property(*found), instance);
            } else if (const Instance* target = reference_field(&instance, as_reference(*found))) {
                add_keys(*as_reference(key).meta_class, *target);
            } else {
                _hash.add_number(0);
            }
        }
    }

    Value_Hash _hash;
    bool _regular = true;
};

} // namespace

long Instance_Map::find(const Instance* instance) const {
    if (instance == nullptr || empty()) {
        return -1;
    }
    return find_hashed(instance, _regular ? Key_Hash(*_meta_class, *instance).hash() : 0);
}

long Instance_Map::find_hashed(const Instance* instance, std::size_t hash) const {
    if (!_regular) {
        for (std::size_t i = 0; i < size(); ++i) {
            if (key_eq(get(i), instance)) {
                return static_cast<long>(i);
            }
        }
        return -1;
    }
    if (_buckets.empty()) {
        return -1;
    }
    // Members of one hash stand on one probe sequence in the order of their positions, so that the
    // first hit is the first member.
    const std::size_t mask = _buckets.size() - 1;
    for (std::size_t at = hash & mask; _buckets[at] != 0; at = (at + 1) & mask) {
        const std::size_t position = _buckets[at] - 1;
        if (_hashes[position] == hash && key_eq(get(position), instance)) {
            return static_cast<long>(position);
        }
    }
    return -1;
}

Instance* Instance_Map::lookup(const Instance* instance) const {
    const long position = find(instance);
    return position < 0 ? nullptr : get(static_cast<std::size_t>(position));
}

std::vector<uint32> Instance_Map::select(const Instance_Selector& selector) const {
    std::vector<uint32> selected;
    const auto test = [&](std::size_t position) {
        if (selector.accepts(get(position))) {
            selected.push_back(static_cast<uint32>(position));
        }
    };
    if (selector.is_by_key()) {
        // The model is the first argument of `key_eq`: it is the model that must be regular here.
        const Key_Hash key(*_meta_class, selector.instance());
        if (key.regular() && !_buckets.empty()) {
            const std::size_t mask = _buckets.size() - 1;
            for (std::size_t at = key.hash() & mask; _buckets[at] != 0; at = (at + 1) & mask) {
                const std::size_t position = _buckets[at] - 1;
                if (_hashes[position] == key.hash()) {
                    test(position);
                }
            }
            return selected;
        }
    } else {
        if (_ends == nullptr) {
            _ends = std::make_unique<const End_Index>(_instances);
        }
        if (const auto candidates = _ends->candidates(selector.instance())) {
            for (const uint32 position : *candidates) {
                test(position);
            }
            return selected;
        }
    }
    for (std::size_t position = 0; position < size(); ++position) {
        test(position);
    }
    return selected;
}

long Instance_Map::insert(Instance* instance) {
    if (instance == nullptr) {
        return -1;
    }
    const Key_Hash key(*_meta_class, *instance);
    if (find_hashed(instance, key.hash()) >= 0) {
        return -1;
    }
    grow(size() + 1);
    append(instance, key.hash(), key.regular());
    return static_cast<long>(size() - 1);
}

void Instance_Map::remove(std::size_t position) noexcept {
    if (position >= size()) {
        return;
    }
    leave_cursors();
    _ends.reset();
    _instances.remove(position);
    _hashes.erase(_hashes.begin() + static_cast<std::ptrdiff_t>(position));
    fill_buckets();
}

void Instance_Map::erase(const std::vector<uint32>& positions) noexcept {
    if (positions.empty()) {
        return;
    }
    leave_cursors();
    _ends.reset();
    std::size_t kept = positions.front();
    auto next = positions.begin();
    for (std::size_t position = kept; position < size(); ++position) {
        if (next != positions.end() && *next == position) {
            destroy(_instances[position]);
            ++next;
        } else {
            _instances[kept] = _instances[position];
            _hashes[kept] = _hashes[position];
            ++kept;
        }
    }
    _instances.remove(kept, size() - kept);
    _hashes.resize(kept);
    fill_buckets();
}

void Instance_Map::clear() noexcept {
    leave_cursors();
    _ends.reset();
    for (Instance* instance : _instances) {
        destroy(instance);
    }
    _instances.clear();
    _hashes.clear();
    fill_buckets();
    _regular = true;
}

Array<Instance*> Instance_Map::release() {
    leave_cursors();
    Array<Instance*> members;
    std::swap(members, _instances);
    clear();
    return members;
}

void Instance_Map::reserve(std::size_t size) {
    if (size > this->size()) {
        grow(size);
    }
}

void Instance_Map::grow(std::size_t size) {
    leave_cursors();
    if (size > std::numeric_limits<uint32>::max()) {
        throw std::bad_alloc();
    }
    _instances.reserve(size);
    if (size > _hashes.capacity()) {
        _hashes.reserve(std::bit_ceil(size));
    }
    const std::size_t needed = std::bit_ceil(size + size / 2);
    if (needed > _buckets.size()) {
        std::vector<uint32>(std::max(needed, min_buckets)).swap(_buckets);
        fill_buckets();
    }
}

void Instance_Map::append(Instance* instance, std::size_t hash, bool regular) noexcept {
    _ends.reset();
    _instances.append(instance);
    _hashes.push_back(hash);
    _regular = _regular && regular;
    const std::size_t mask = _buckets.size() - 1;
    std::size_t at = hash & mask;
    while (_buckets[at] != 0) {
        at = (at + 1) & mask;
    }
    _buckets[at] = static_cast<uint32>(size());
}

void Instance_Map::fill_buckets() noexcept {
    std::fill(_buckets.begin(), _buckets.end(), 0);
    const std::size_t mask = _buckets.size() - 1;
    for (std::size_t position = 0; position < _hashes.size(); ++position) {
        std::size_t at = _hashes[position] & mask;
        while (_buckets[at] != 0) {
            at = (at + 1) & mask;
        }
        _buckets[at] = static_cast<uint32>(position + 1);
    }
}

long Instance_Map::append_clones(const Instance_Map& from, std::size_t& position) {
    const std::size_t count = from.size();
    position = 0;
    reserve(size() + count);
    for (; position < count; ++position) {
        const Instance* member = from.get(position);
        const Key_Hash key(*_meta_class, *member);
        if (find_hashed(member, key.hash()) >= 0) {
            return -1;
        }
        append(clone(member), key.hash(), key.regular());
    }
    return static_cast<long>(count);
}

// ---- cursors

// Of one map. The mutex guards what cursors and map know of each other.
struct Instance_Cursors {
    Mutex mutex;
    std::vector<Instance_Cursor*> reading; // the map
};

void Instance_Map::leave_cursors() noexcept {
    if (!_cursors) {
        return;
    }
    const Lock lock(_cursors->mutex);
    for (Instance_Cursor* cursor : _cursors->reading) {
        cursor->leave();
    }
    _cursors->reading.clear();
}

namespace {

std::shared_ptr<Instance_Cursors> cursors_of(std::shared_ptr<Instance_Cursors>& of_map) {
    if (!of_map) {
        of_map = std::make_shared<Instance_Cursors>();
    }
    return of_map;
}

} // namespace

Instance_Cursor::Instance_Cursor(const Instance_Map& map)
    : _cursors(cursors_of(map._cursors)), _map(&map) {
    const Lock lock(_cursors->mutex);
    _cursors->reading.push_back(this);
}

Instance_Cursor::~Instance_Cursor() {
    {
        const Lock lock(_cursors->mutex);
        std::erase(_cursors->reading, this);
    }
    for (; _handed_out < _copies.size(); ++_handed_out) {
        unref(_copies[_handed_out]);
    }
}

void Instance_Cursor::copy(std::size_t count) {
    _copies.reserve(_copies.size() + count);
    for (; count > 0; --count) {
        _copies.append(clone(_map->get(_position)));
        ++_position;
    }
}

void Instance_Cursor::leave() noexcept {
    try {
        copy(_map->size() - _position);
    } catch (const std::bad_alloc&) {
        _is_cut = true;
    }
    _map = nullptr;
}

Instance* Instance_Cursor::next() {
    constexpr std::size_t at_a_time = 32;
    const Lock lock(_cursors->mutex);
    if (_handed_out == _copies.size() && _map != nullptr) {
        _copies.clear();
        _handed_out = 0;
        copy(std::min(at_a_time, _map->size() - _position));
    }
    if (_handed_out < _copies.size()) {
        return _copies[_handed_out++];
    }
    if (_is_cut) {
        throw std::bad_alloc();
    }
    return nullptr;
}

} // namespace cimple
