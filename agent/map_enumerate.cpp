#include "agent/map_enumerate.h"

#include "agent/locks.h"
#include "runtime/cancellation.h"

#include <optional>

namespace cimple {

namespace {

// Copies of a map's instances on their way to a client. What isn't handed over ends with it.
class Copies {
public:
    // Copies what the selector accepts, or all without one. False, with nothing copied, if two
    // instances of the map have equal keys and all are wanted.
    bool take(const Instance_Map& map, const Instance_Selector* selector) {
        if (selector != nullptr) {
            const std::vector<uint32> selected = map.select(*selector);
            _instances.reserve(selected.size());
            for (const uint32 position : selected) {
                _instances.append(clone(map.get(position)));
            }
            return true;
        }
        Instance_Map copies(map.meta_class());
        std::size_t position = 0;
        if (copies.append_clones(map, position) < 0) {
            TVR_LOG("Insert failed for %u", static_cast<unsigned>(position));
            return false;
        }
        _instances = copies.release();
        return true;
    }

    void deliver(const Enum_Instances_Handler& handler) {
        while (_delivered < _instances.size()) {
            if (_delivered + 1 < _instances.size()) {
                prefetch_texts(_instances[_delivered + 1]);
            }
            handler.handle(_instances[_delivered++]);
        }
    }

    Copies() = default;
    Copies(const Copies&) = delete;
    Copies& operator=(const Copies&) = delete;
    ~Copies() {
        for (; _delivered < _instances.size(); ++_delivered) {
            unref(_instances[_delivered]);
        }
    }

private:
    Array<Instance*> _instances;
    std::size_t _delivered = 0;
};

// Runs an enumeration and answers its status. What goes wrong in it ends it with that line in the
// log; a client is told only if there was nothing to be had. The cancellation of a client's thread
// passes.
template <class Enumeration>
Enum_Instances_Status contain(const char* line, Enumeration&& enumeration) {
    try {
        enumeration();
    } catch (const Refresh_Unavailable&) {
        TVR_LOG("%s", line);
        return ENUM_INSTANCES_FAILED;
    } catch (...) {
        pass_cancellation();
        TVR_LOG("%s", line);
    }
    return ENUM_INSTANCES_OK;
}

} // namespace

Enum_Instances_Status enumerate_adapter_map(ProviderAgent& agent, const Instance_Map& map,
                                            const Enum_Instances_Handler& handler) {
    return contain("Exception in CIM Provider Enumeration - do nothing", [&] {
        Copies copies;
        {
            const Adapter_Maps_Reader reader(agent);
            if (!copies.take(map, handler.selector)) {
                return;
            }
        }
        copies.deliver(handler);
    });
}

// SAN maps are the large ones, and their instances stay as they are until the next rebuild, with
// keys of their own: all of them are copied a few at a time.
Enum_Instances_Status enumerate_SAN_map(ProviderAgent& agent, const Instance_Map& map,
                                        const Enum_Instances_Handler& handler) {
    return contain("Exception in SAN CIM Provider Enumeration - do nothing", [&] {
        Copies copies;
        std::optional<Instance_Cursor> all;
        {
            const SAN_Maps_Reader reader(agent);
            if (handler.selector == nullptr) {
                all.emplace(map);
            } else {
                copies.take(map, handler.selector);
            }
        }
        if (all) {
            while (Instance* instance = all->next()) {
                handler.handle(instance);
            }
        }
        copies.deliver(handler);
    });
}

Enum_Instances_Status enumerate_active_map(ProviderAgent& agent, const Instance_Map& map,
                                           Mutex& mutex, Refresher refresher,
                                           const Enum_Instances_Handler& handler) {
    return contain("Exception in Active CIM Provider Enumeration - do nothing", [&] {
        Copies copies;
        {
            const Active_Reader reader(agent);
            {
                const Lock lock(mutex);
                refresher(agent);
            }
            if (!copies.take(map, handler.selector)) {
                return;
            }
        }
        copies.deliver(handler);
    });
}

} // namespace cimple
