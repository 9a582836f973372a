// Events of ports: who wants them, those that wait, and the thread that delivers them.
#pragma once

#include "sim/json_reader.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tvrsim {

/// An event of a port, or several in a row.
struct LinkEvent {
    HBA_WWN port = {};
    uint32_t type = HBA_EVENT_PORT_UNKNOWN;
    uint32_t fabricPortId = 0;
    uint32_t times = 1;
    bool alternates = false;            ///< offline and online take turns
    std::chrono::milliseconds pause{0}; ///< before each of them; the others go on meanwhile
};

/// How the link of a port goes and comes as soon as somebody listens.
struct Flaps {
    uint32_t everyMs = 1000;
    uint32_t times = UINT32_MAX; ///< events, the first one offline
};

/// The link of a port, or of one that is not there.
struct Link {
    HBA_WWN port = {};
    uint32_t fabricPortId = 0;
    bool isUp = false;
};

/// Delivers events on one thread of its own, which there is as long as somebody is registered. Each
/// registration gets the events that were raised since it was made, in their order. Threads may
/// share an object; no lock is held while a callback runs, so callbacks may do whatever they want.
class LinkEvents {
public:
    LinkEvents() = default;
    LinkEvents(const LinkEvents&) = delete;
    LinkEvents& operator=(const LinkEvents&) = delete;
    ~LinkEvents() { end(); }

    /// Answers the handle of the new registration, which is never null.
    HBA_CALLBACKHANDLE add(HBA_PORT_EVENT_CALLBACK callback, void* data, const HBA_WWN& port);

    /// False when there is no such registration. Its callback runs no more when this returns,
    /// except that a callback may remove itself.
    bool remove(HBA_CALLBACKHANDLE handle);

    /// The port that a registration is for.
    std::optional<HBA_WWN> portOf(HBA_CALLBACKHANDLE handle);

    /// Queues events, at the same cost however many they are, and waits for nothing.
    void raise(const LinkEvent& event);

    /// Queues what listeners hear of a change. A link goes and comes with a restart and with the
    /// name of its port.
    void raiseChange(const Link& before, const Link& after, bool restarts);

    /// Drops all registrations and events and ends the thread. A callback that calls this lets the
    /// thread go on, for nobody.
    void end();

private:
    struct Key {
        uint64_t port;
        uint64_t number;                              ///< in the order of registrations
        auto operator<=>(const Key&) const = default; // NOLINT(modernize-use-nullptr)
    };
    struct Registration {
        HBA_WWN port;
        HBA_PORT_EVENT_CALLBACK callback;
        void* data;
    };
    using Clock = std::chrono::steady_clock;
    struct Queued {
        LinkEvent event;
        uint64_t newest;       ///< the last registration that gets it
        Clock::time_point due; ///< of the next one
    };
    using Queue = std::deque<Queued>;
    using Registrations = std::map<Key, Registration>;

    Registrations::iterator find(HBA_CALLBACKHANDLE handle);
    Registrations::iterator nextListener(const Queued& queued, uint64_t after);
    void startThread();
    /// Waits for the thread's end, without the lock meanwhile, and starts it again for those who
    /// have registered by then.
    void endThread(std::unique_lock<std::mutex>& lock);
    void deliverAll();
    void awaitEvent(std::unique_lock<std::mutex>& lock);
    Queued takeOne(const Queue::iterator& from);

    std::mutex m_mutex;
    std::condition_variable m_wanted; ///< for the thread: there is an event, or an end
    std::condition_variable m_done;   ///< for callers: a callback or the thread has ended
    Registrations m_registrations;
    Queue m_queue; ///< those that are due in their order
    std::thread m_thread;
    uint64_t m_lastNumber = 0;
    uint64_t m_running = 0; ///< number of the registration whose callback runs; 0 for none
    bool m_ending = false;
};

/// Reads the "linkEvents" of a control request: one object or an array of them. The caller sees to
/// it that the ports exist. Throws FormatError.
std::vector<LinkEvent> readLinkEvents(const Json& value, const std::string& path);

/// Reads the "flaps" of a port, of which null ends what there was. Throws FormatError.
void readFlaps(ObjectReader& port, std::optional<Flaps>& flaps);

} // namespace tvrsim
