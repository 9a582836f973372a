#include "agent/map_enumerate.h"

#include "agent/locks.h"

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

} // namespace

void enumerate_adapter_map(ProviderAgent& agent, const Instance_Map& map,
                           const Enum_Instances_Handler& handler) noexcept {
    try {
        Copies copies;
        {
            const Adapter_Maps_Reader reader(agent);
            if (!copies.take(map, handler.selector)) {
                return;
            }
        }
        copies.deliver(handler);
    } catch (...) {
        TVR_LOG("Exception in CIM Provider Enumeration - do nothing");
    }
}

void enumerate_SAN_map(ProviderAgent& agent, const Instance_Map& map,
                       const Enum_Instances_Handler& handler) noexcept {
    try {
        Copies copies;
        {
            const SAN_Maps_Reader reader(agent);
            if (!copies.take(map, handler.selector)) {
                return;
            }
        }
        copies.deliver(handler);
    } catch (...) {
        TVR_LOG("Exception in SAN CIM Provider Enumeration - do nothing");
    }
}

void enumerate_active_map(ProviderAgent& agent, const Instance_Map& map, Mutex& mutex,
                          Refresher refresher, const Enum_Instances_Handler& handler) noexcept {
    try {
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
    } catch (...) {
        TVR_LOG("Exception in Active CIM Provider Enumeration - do nothing");
    }
}

} // namespace cimple
