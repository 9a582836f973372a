#include "sim/link_events.h"

#include "sim/part_reader.h"
#include "sim/scenario_names.h"

#include <algorithm>

namespace tvrsim {

namespace {

thread_local bool isEventThread = false;

uint64_t numberOfHandle(HBA_CALLBACKHANDLE handle) {
    return reinterpret_cast<uintptr_t>(handle);
}

constexpr uint32_t otherTurn(uint32_t type) {
    return type == HBA_EVENT_PORT_ONLINE ? HBA_EVENT_PORT_OFFLINE : HBA_EVENT_PORT_ONLINE;
}

} // namespace

HBA_CALLBACKHANDLE LinkEvents::add(HBA_PORT_EVENT_CALLBACK callback, void* data,
                                   const HBA_WWN& port) {
    const std::lock_guard lock(m_mutex);
    startThread();
    m_registrations[{numberOf(port), ++m_lastNumber}] = {port, callback, data};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a number is never used twice, an address is
    return reinterpret_cast<HBA_CALLBACKHANDLE>(m_lastNumber);
}

bool LinkEvents::remove(HBA_CALLBACKHANDLE handle) {
    std::unique_lock lock(m_mutex);
    const auto found = find(handle);
    if (found == m_registrations.end()) {
        return false;
    }
    m_registrations.erase(found);
    if (!isEventThread) {
        m_done.wait(lock, [&] { return m_running != numberOfHandle(handle); });
        if (m_registrations.empty()) {
            endThread(lock);
        }
    }
    return true;
}

std::optional<HBA_WWN> LinkEvents::portOf(HBA_CALLBACKHANDLE handle) {
    const std::lock_guard lock(m_mutex);
    const auto found = find(handle);
    if (found == m_registrations.end()) {
        return std::nullopt;
    }
    return found->second.port;
}

void LinkEvents::raise(const LinkEvent& event) {
    const std::lock_guard lock(m_mutex);
    const Queued queued{event, m_lastNumber, Clock::now() + event.pause};
    if (event.times > 0 && nextListener(queued, 0) != m_registrations.end()) {
        m_queue.push_back(queued);
        m_wanted.notify_one();
    }
}

void LinkEvents::raiseChange(const Link& before, const Link& after, bool restarts) {
    if (before.isUp && after.isUp && !restarts && numberOf(before.port) == numberOf(after.port)) {
        return;
    }
    if (before.isUp) {
        raise({before.port, HBA_EVENT_PORT_OFFLINE, before.fabricPortId});
    }
    if (after.isUp) {
        raise({after.port, HBA_EVENT_PORT_ONLINE, after.fabricPortId});
    }
}

void LinkEvents::end() {
    std::unique_lock lock(m_mutex);
    m_registrations.clear();
    m_queue.clear();
    if (!isEventThread) {
        endThread(lock);
    }
}

void LinkEvents::endThread(std::unique_lock<std::mutex>& lock) {
    m_done.wait(lock, [this] { return !m_ending; });
    if (!m_thread.joinable()) {
        return;
    }
    m_ending = true;
    m_wanted.notify_one();
    lock.unlock();
    m_thread.join();
    lock.lock();
    m_ending = false;
    if (!m_registrations.empty()) { // made by others in the meantime
        startThread();
    }
    m_done.notify_all();
}

LinkEvents::Registrations::iterator LinkEvents::find(HBA_CALLBACKHANDLE handle) {
    return std::find_if(m_registrations.begin(), m_registrations.end(), [&](const auto& each) {
        return each.first.number == numberOfHandle(handle);
    });
}

LinkEvents::Registrations::iterator LinkEvents::nextListener(const Queued& queued, uint64_t after) {
    const uint64_t port = numberOf(queued.event.port);
    const auto next = m_registrations.upper_bound({port, after});
    const bool isListener = next != m_registrations.end() && next->first.port == port &&
                            next->first.number <= queued.newest;
    return isListener ? next : m_registrations.end();
}

/// A thread that is about to end is left to end(), which starts the next.
void LinkEvents::startThread() {
    if (!m_ending && !m_thread.joinable()) {
        m_thread = std::thread([this] { deliverAll(); });
    }
}

void LinkEvents::deliverAll() {
    isEventThread = true;
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (m_ending) {
            return;
        }
        const Clock::time_point now = Clock::now();
        const auto first = std::find_if(m_queue.begin(), m_queue.end(),
                                        [&](const Queued& each) { return each.due <= now; });
        if (first == m_queue.end()) {
            awaitEvent(lock);
            continue;
        }
        const Queued queued = takeOne(first);
        uint64_t last = 0;
        for (auto next = nextListener(queued, last); next != m_registrations.end();
             next = nextListener(queued, last)) {
            last = m_running = next->first.number;
            const Registration listener = next->second;
            lock.unlock();
            listener.callback(listener.data, queued.event.port, queued.event.type,
                              queued.event.fabricPortId);
            lock.lock();
            m_running = 0;
            m_done.notify_all();
        }
    }
}

/// Until something is raised or due, or the thread is to end.
void LinkEvents::awaitEvent(std::unique_lock<std::mutex>& lock) {
    const auto next =
        std::min_element(m_queue.begin(), m_queue.end(),
                         [](const Queued& a, const Queued& b) { return a.due < b.due; });
    if (next == m_queue.end()) {
        m_wanted.wait(lock);
    } else {
        const Clock::time_point due = next->due; // the queue may change meanwhile
        m_wanted.wait_until(lock, due);
    }
}

/// The next single event. Those that nobody waits for any more are dropped together.
LinkEvents::Queued LinkEvents::takeOne(const Queue::iterator& from) {
    const Queued one = *from;
    if (--from->event.times == 0 || nextListener(one, 0) == m_registrations.end()) {
        m_queue.erase(from);
        return one;
    }
    from->due += from->event.pause;
    if (from->event.alternates) {
        from->event.type = otherTurn(from->event.type);
    }
    return one;
}

namespace {

LinkEvent readLinkEvent(const Json& value, const std::string& path) {
    LinkEvent event;
    ObjectReader reader(value, path);
    if (reader.find("port") == nullptr || reader.find("type") == nullptr) {
        throw FormatError(path, "\"port\" and \"type\" are wanted here");
    }
    reader.wwn("port", event.port);
    reader.named("type", event.type, linkEventWords);
    reader.number("times", event.times);
    reader.flag("alternate", event.alternates);
    if (event.alternates && event.type != HBA_EVENT_PORT_OFFLINE &&
        event.type != HBA_EVENT_PORT_ONLINE) {
        throw FormatError(reader.pathOf("alternate"), "only offline and online take turns");
    }
    reader.finish();
    return event;
}

} // namespace

std::vector<LinkEvent> readLinkEvents(const Json& value, const std::string& path) {
    std::vector<LinkEvent> events;
    if (!value.is_array()) {
        events.push_back(readLinkEvent(value, path));
        return events;
    }
    forEachElement(value, path, [&](const Json& each, const std::string& place, size_t) {
        events.push_back(readLinkEvent(each, place));
    });
    return events;
}

void readFlaps(ObjectReader& port, std::optional<Flaps>& flaps) {
    constexpr uint32_t longest = 60000;
    constexpr auto usual = +[] { return Flaps{}; };
    readPart(port, "flaps", flaps, usual, [](ObjectReader& reader, Flaps& read) {
        reader.number("everyMs", read.everyMs, longest);
        reader.number("times", read.times);
    });
}

} // namespace tvrsim
