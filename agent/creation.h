// How instances get into the agent's maps.
#ifndef TVR_AGENT_CREATION_H
#define TVR_AGENT_CREATION_H

#include "agent/namespaces.h"
#include "common/logger.h"
#include "runtime/instance_map.h"

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

// A copy of an instance for the reference fields of associations, which share it with a count each:
// the instance as it is now, whatever changes in it later.
template <class C> class End {
public:
    explicit End(const C& instance) : _copy(clone_of(&instance)) {}

    // For a reference field, with a count.
    operator C*() const noexcept {
        ref(_copy.get());
        return _copy.get();
    }

private:
    Ref<C> _copy;
};

// Hands the finished instance to the map, which owns it from there; the result is the map's. Null,
// with the line `failure` in the log and the instance destroyed, if its key is there already.
template <class C> C* insert(Class_Map<C>& map, Ref<C> instance, const char* failure) {
    if (map.insert(instance.get()) < 0) {
        TVR_LOG("%s", failure);
        return nullptr;
    }
    return instance.release();
}

} // namespace cimple

#endif
