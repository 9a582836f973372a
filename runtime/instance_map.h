// `Instance_Map`: the instances of one class in insertion order, unique by key.
#ifndef TVR_RUNTIME_INSTANCE_MAP_H
#define TVR_RUNTIME_INSTANCE_MAP_H

#include "runtime/end_index.h"

#include <memory>
#include <vector>

namespace cimple {

// A map owns its members and destroys them, whatever their count, when it is cleared or ends: what
// leaves a map is always a clone. A hash of the keys beside the array makes find, lookup, insert
// and the copy of a map linear in its size, and an index of the ends of associations makes `select`
// cost what it selects; answers and order are those of a linear search.
// The keys of a member, its references and the keys of what they refer to stay as they are while it
// is in the map.
// No lock of its own: its owner provides it, for const members too. Growth that fails throws
// std::bad_alloc with the map unchanged.
struct Instance_Cursors;

class Instance_Map {
public:
    explicit Instance_Map(const Meta_Class* meta_class) noexcept : _meta_class(meta_class) {}
    Instance_Map(const Instance_Map&) = delete;
    Instance_Map& operator=(const Instance_Map&) = delete;
    ~Instance_Map() { clear(); }

    const Meta_Class* meta_class() const noexcept { return _meta_class; }

    // Position of the first member whose keys equal those of `instance` (`key_eq(member,
    // instance)`), or -1.
    long find(const Instance* instance) const;
    Instance* lookup(const Instance* instance) const;

    // Positions, ascending, of the members that the selector accepts. The first call for the end of
    // an association since the map last changed reads all members, to index their ends.
    std::vector<uint32> select(const Instance_Selector& selector) const;

    // Appends the instance, takes over the caller's count and gives the position; or -1, and takes
    // nothing, if a member has the same keys.
    long insert(Instance* instance);

    std::size_t size() const noexcept { return _instances.size(); }
    bool empty() const noexcept { return _instances.empty(); }
    Instance* get(std::size_t position) const noexcept { return _instances[position]; }
    const Array<Instance*>& instances() const noexcept { return _instances; }

    // Drops the entry without ending the instance; a position behind the end is ignored. Those
    // behind it move up.
    void remove(std::size_t position) noexcept;

    // Ends the members at these positions, ascending and each one in the map. Those behind them
    // move up.
    void erase(const std::vector<uint32>& positions) noexcept;

    void clear() noexcept;
    // Empties the map and hands its members, in order and each with its count, to the caller.
    Array<Instance*> release();
    void reserve(std::size_t size);

    // Appends clones of all members of `from`, a map of the same class. -1 at the first whose keys
    // are already here, else the number appended; `position` gets where in `from` it stopped. What
    // was appended before a failure stays.
    long append_clones(const Instance_Map& from, std::size_t& position);

private:
    friend class Instance_Cursor;
    // Before anything changes: the cursors copy what they have not read.
    void leave_cursors() noexcept;

    long find_hashed(const Instance* instance, std::size_t hash) const;
    // Room for so many members; nothing of them changes.
    void grow(std::size_t size);
    // Appends, after `grow`.
    void append(Instance* instance, std::size_t hash, bool regular) noexcept;
    void fill_buckets() noexcept;

    const Meta_Class* _meta_class;
    Array<Instance*> _instances;
    std::vector<std::size_t> _hashes; // of the members, by position
    std::vector<uint32> _buckets;     // open addressing: position + 1, 0 free
    // False once a member lacks a key of the map's class, or has it in another form: such a member
    // can equal a probe of another hash, so that from then on every search is linear.
    bool _regular = true;
    mutable std::unique_ptr<const End_Index> _ends;     // null until it is asked for
    mutable std::shared_ptr<Instance_Cursors> _cursors; // null until there is one
};

// Reads all members of a map as they are when it is made, in clones of a few at a time: so that a
// long enumeration needs little memory. When the map changes the cursor first copies what it has
// not read; until then the members must not be changed in place.
//
// It is made under the lock that guards the map, and then used by one thread without that lock,
// whatever becomes of the map.
class Instance_Cursor {
public:
    explicit Instance_Cursor(const Instance_Map& map);
    ~Instance_Cursor();
    Instance_Cursor(const Instance_Cursor&) = delete;
    Instance_Cursor& operator=(const Instance_Cursor&) = delete;

    // The next clone, with its count for the caller; null at the end. Throws std::bad_alloc if
    // memory doesn't suffice, or did not when the map changed.
    Instance* next();

private:
    friend class Instance_Map;
    // Under the mutex of the cursors.
    void copy(std::size_t count);
    void leave() noexcept;

    const std::shared_ptr<Instance_Cursors> _cursors;
    const Instance_Map* _map;  // null once the rest is copied
    std::size_t _position = 0; // in the map, of the next to be copied
    Array<Instance*> _copies;
    std::size_t _handed_out = 0; // of the copies
    bool _is_cut = false;        // the rest is lost
};

// A map whose members are all of class `C`.
template <class C> class Class_Map : public Instance_Map {
public:
    Class_Map() noexcept : Instance_Map(&C::static_meta_class) {}

    C* get(std::size_t position) const noexcept {
        return static_cast<C*>(Instance_Map::get(position));
    }
    C* lookup(const Instance* instance) const {
        return static_cast<C*>(Instance_Map::lookup(instance));
    }

    class iterator {
    public:
        explicit iterator(Instance* const* at) noexcept : _at(at) {}
        C* operator*() const noexcept { return static_cast<C*>(*_at); }
        iterator& operator++() noexcept {
            ++_at;
            return *this;
        }
        bool operator==(const iterator&) const noexcept = default;

    private:
        Instance* const* _at;
    };
    iterator begin() const noexcept { return iterator(instances().begin()); }
    iterator end() const noexcept { return iterator(instances().end()); }
};

} // namespace cimple

#endif
