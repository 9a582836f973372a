// Link events on their way from the HBA API's thread to the worker that makes alerts of them.
#ifndef TVR_PROVIDERS_LINK_EVENT_QUEUE_H
#define TVR_PROVIDERS_LINK_EVENT_QUEUE_H

#include "access/rm/hba_api.h"
#include "runtime/thread.h"

#include <array>
#include <atomic>
#include <optional>

namespace cimple {

struct Link_Event {
    HBA_WWN port; // that the callback was registered for
    uint32 type;  // HBA_EVENT_PORT_...
    uint32 fabric_port_id;
};
static_assert(sizeof(Link_Event) == 16);

// First in, first out, of a fixed size, so that the HBA API's thread never waits for memory. A
// flapping link can raise events faster than clients take them: then the oldest go, since what
// counts is how the links are now. A pop tells how many went.
class Link_Event_Queue {
public:
    static constexpr std::size_t capacity = 4096;

    void push(const Link_Event& event) noexcept;

    struct Popped {
        Link_Event event;
        uint32 lost; // directly before it
    };
    std::optional<Popped> pop() noexcept;
    void clear() noexcept;

    // Without the mutex, for a wait that holds another one.
    bool empty() const noexcept { return _size == 0; }

private:
    Mutex m_IndicationQueueMutex; // a leaf
    std::array<Link_Event, capacity> _events;
    std::size_t _first = 0;
    std::atomic<std::size_t> _size{0};
    uint32 _lost = 0; // since the last pop
};

} // namespace cimple

#endif
