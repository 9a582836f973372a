#include "providers/link_event_queue.h"

namespace cimple {

void Link_Event_Queue::push(const Link_Event& event) noexcept {
    const Lock lock(m_IndicationQueueMutex);
    _events[(_first + _size) % capacity] = event;
    if (_size < capacity) {
        ++_size;
    } else {
        _first = (_first + 1) % capacity;
        ++_lost;
    }
}

std::optional<Link_Event_Queue::Popped> Link_Event_Queue::pop() noexcept {
    const Lock lock(m_IndicationQueueMutex);
    if (_size == 0) {
        return std::nullopt;
    }
    const Popped popped{_events[_first], _lost};
    _first = (_first + 1) % capacity;
    --_size;
    _lost = 0;
    return popped;
}

void Link_Event_Queue::clear() noexcept {
    const Lock lock(m_IndicationQueueMutex);
    _first = 0;
    _size = 0;
    _lost = 0;
}

} // namespace cimple
