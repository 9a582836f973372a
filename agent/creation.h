// How instances are made and get into the maps.
#ifndef TVR_AGENT_CREATION_H
#define TVR_AGENT_CREATION_H

#include "agent/instance_maps.h"
#include "agent/namespaces.h"
#include "common/logger.h"
#include "runtime/instance_map.h"

#include <new>
#include <optional>

namespace cimple {

// A new instance with the class's defaults, in `name_space` unless that is null: then it belongs to
// whatever namespace a client asks in.
template <class C> Ref<C> make(const char* name_space = implementation_namespace) {
    Ref<C> instance(C::create(true));
    if (name_space != nullptr) {
        instance->__name_space = name_space;
    }
    return instance;
}

inline constexpr const char* any_namespace = nullptr;

// The same; null when memory is exhausted.
template <class C> Ref<C> try_make(const char* name_space = implementation_namespace) noexcept {
    try {
        return make<C>(name_space);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

// A copy of an instance for the reference fields of associations, which share it with a count each:
// the instance as it is now, whatever changes in it later.
template <class C> class End {
public:
    explicit End(const C& instance) : _copy(clone_of(&instance)) {}

    // For a field that refers to a class above `C`.
    template <class Base> End<Base> as() const {
        ref(_copy.get());
        return End<Base>(Ref<Base>(static_cast<Base*>(static_cast<Instance*>(_copy.get()))));
    }

    // For a reference field, with a count.
    operator C*() const noexcept {
        ref(_copy.get());
        return _copy.get();
    }

private:
    template <class> friend class End;
    explicit End(Ref<C> copy) : _copy(std::move(copy)) {}

    Ref<C> _copy;
};

// An association of two ends in these reference fields.
template <class C, class A, class B>
Ref<C> join(A* C::*first_field, const End<A>& first, B* C::*second_field, const End<B>& second) {
    auto association = make<C>();
    (*association).*first_field = first;
    (*association).*second_field = second;
    return association;
}

// The end that the first instance of a map is; nothing for an empty map.
template <class C> std::optional<End<C>> first_end(const Class_Map<C>& map) {
    if (map.empty()) {
        return std::nullopt;
    }
    return End<C>(*map.get(0));
}

// Hands the finished instance to the map, which owns it from there; the result is the map's. Null,
// with the line `failure` in the log and the instance destroyed, if its key is there already.
template <class C> C* insert(Class_Map<C>& map, Ref<C> instance, const char* failure) {
    if (map.insert(instance.get()) < 0) {
        TVR_LOG("%s", failure);
        return nullptr;
    }
    return instance.release();
}

// As `insert`; a map that lacks memory for the instance doesn't take it either.
template <class C> C* try_insert(Class_Map<C>& map, Ref<C> instance, const char* failure) noexcept {
    try {
        return insert(map, std::move(instance), failure);
    } catch (const std::bad_alloc&) {
        TVR_LOG("%s", failure);
        return nullptr;
    }
}

// Hands the finished instance to the map that its class is answered from. Null if its key is there
// already; the log then has a line with the map's name.
template <class C> C* add(Instance_Maps& maps, Ref<C> instance) {
    const long position = (maps.*map_of<C>).insert(instance.get());
    if (position < 0) {
        TVR_LOG("Insert Failed : %s", map_name<C>);
        return nullptr;
    }
    return instance.release();
}

// Thrown where a failed insert ends a rebuild early: the maps keep what was made so far.
struct Rebuild_Ended {};

// As `add`, for instances that a rebuild can't go on without.
template <class C> C& add_or_end(Instance_Maps& maps, Ref<C> instance) {
    C* added = add(maps, std::move(instance));
    if (added == nullptr) {
        throw Rebuild_Ended();
    }
    return *added;
}

} // namespace cimple

#endif
