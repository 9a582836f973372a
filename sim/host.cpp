#include "sim/host.h"

#include "sim/restart.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tvrsim {

namespace {

constexpr HBA_HANDLE highestHandle = 0xFFFF; // a vendor library has 16 bits of a handle
constexpr size_t largestScenario = 64 * 1024 * 1024;

/// Keeps its value until the process has ended.
template <class Value> union NeverDestroyed {
    NeverDestroyed() : value() {}
    ~NeverDestroyed() {}
    Value value;
};

std::string readFile(const char* path) {
    std::error_code error;
    std::ifstream file;
    if (std::filesystem::is_regular_file(path, error)) {
        file.open(path, std::ios::binary);
    }
    if (!file.is_open()) {
        throw std::runtime_error("the file cannot be read");
    }
    std::string text;
    std::array<char, 65536> part;
    while (file.read(part.data(), part.size()) || file.gcount() > 0) {
        text.append(part.data(), static_cast<size_t>(file.gcount()));
        if (text.size() > largestScenario) {
            throw std::runtime_error("the file is too large");
        }
    }
    return text;
}

Scenario readScenarioFile(const char* path) {
    return readScenario(parseJson(readFile(path)), "");
}

/// The first port of a name, with its adapter; nulls without one.
std::pair<Adapter*, Port*> findPort(std::vector<Adapter>& adapters, const HBA_WWN& wwpn) {
    for (Adapter& adapter : adapters) {
        for (Port& port : adapter.ports) {
            if (numberOf(port.hba.PortWWN) == numberOf(wwpn)) {
                return {&adapter, &port};
            }
        }
    }
    return {};
}

/// A counter whose start is all ones stays so: the adapter does not have it.
uint64_t valueNow(const Counter& counter, uint64_t seconds) {
    return counter.value == UINT64_MAX ? UINT64_MAX : counter.value + counter.perSecond * seconds;
}

} // namespace

Link linkOf(const Port& port) {
    return {port.hba.PortWWN, port.hba.PortFcId, port.hba.PortState == HBA_PORTSTATE_ONLINE};
}

Host& Host::instance() {
    static NeverDestroyed<Host> host;
    return host.value;
}

Host::Host() : m_start(std::chrono::steady_clock::now()) {
    const char* const path = secure_getenv("TVRSIM_SCENARIO");
    const char* const source = path != nullptr && *path != '\0' ? path : nullptr;
    try {
        Scenario scenario = source == nullptr ? readScenario(parseJson(defaultScenario()), "")
                                              : readScenarioFile(source);
        m_adapters = std::move(scenario.adapters);
        m_globalDriverParameters = std::move(scenario.globalDriverParameters);
        indexPorts();
        m_rules.replace(std::move(scenario.rules));
        m_usable = true;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tvrsim: scenario %s: %s\n", source == nullptr ? "(built in)" : source,
                     error.what());
    }
}

void Host::check(const char* file) {
    readScenarioFile(file);
}

bool Host::usable() {
    const std::lock_guard lock(m_mutex);
    return m_usable;
}

void Host::control(std::string_view request) {
    const Json document = parseJson(request);
    ObjectReader reader(document, "");
    const std::lock_guard lock(m_mutex);

    std::vector<Adapter> adapters = m_adapters;
    std::optional<DriverParams> parameters = m_globalDriverParameters;
    Rules rules = m_rules.current();
    const Json* const scenario = reader.find("scenario");
    if (scenario != nullptr) {
        Scenario fresh = readScenario(*scenario, reader.pathOf("scenario"));
        adapters = std::move(fresh.adapters);
        parameters = std::move(fresh.globalDriverParameters);
        rules = std::move(fresh.rules);
    }
    if (const Json* changes = reader.find("adapters")) {
        const ObjectReader place(*changes, reader.pathOf("adapters"));
        for (const auto& change : changes->members()) {
            const auto adapter =
                std::find_if(adapters.begin(), adapters.end(),
                             [&](const Adapter& each) { return each.name == change.name; });
            if (adapter == adapters.end()) {
                throw FormatError(place.pathOf(change.name), "no such adapter");
            }
            changeAdapter(change.value, place.pathOf(change.name), *adapter);
            adapter->hasChanged = true;
        }
    }
    if (const Json* changes = reader.find("ports")) {
        const ObjectReader place(*changes, reader.pathOf("ports"));
        for (const auto& change : changes->members()) {
            const std::string path = place.pathOf(change.name);
            const HBA_WWN wwpn = parseWwn(change.name, path);
            const auto [adapter, port] = findPort(adapters, wwpn);
            if (port == nullptr) {
                throw FormatError(path, "no such port");
            }
            changePort(change.value, path, *port);
            adapter->hasChanged = true;
        }
    }
    readDriverParams(reader, "globalDriverParameters", parameters);
    bool reboots = false;
    bool losesPower = false;
    reader.flag("reboot", reboots);
    reader.flag("powerCycle", losesPower);
    if (reboots || losesPower) {
        for (Adapter& adapter : adapters) {
            for (Port& port : adapter.ports) {
                restart(adapter, port, losesPower ? Restart::powerCycle : Restart::reboot);
            }
            adapter.hasChanged = true;
        }
        dropTemporaryValues(parameters);
    }
    bool clear = false;
    bool resetCounts = false;
    reader.flag("clear", clear);
    reader.flag("resetCounts", resetCounts);
    if (clear) {
        rules.clear();
    }
    const Json* const entryPoints = reader.find("entryPoints");
    if (entryPoints != nullptr) {
        readRules(*entryPoints, reader.pathOf("entryPoints"), rules);
    }
    std::vector<LinkEvent> events;
    if (const Json* value = reader.find("linkEvents")) {
        events = readLinkEvents(*value, reader.pathOf("linkEvents"));
        for (LinkEvent& event : events) {
            const Port* const port = findPort(adapters, event.port).second;
            if (port == nullptr) {
                throw FormatError(reader.pathOf("linkEvents"), "no such port");
            }
            event.fabricPortId = port->hba.PortFcId;
        }
    }
    reader.finish();

    const std::map<uint64_t, Link> before = links();
    if (scenario != nullptr) {
        m_handles.clear();
        m_start = std::chrono::steady_clock::now();
        m_usable = true;
    }
    m_adapters = std::move(adapters);
    m_globalDriverParameters = std::move(parameters);
    indexPorts();
    if (scenario != nullptr || clear || entryPoints != nullptr) {
        m_rules.replace(std::move(rules));
    }
    if (resetCounts) {
        m_rules.resetCalls();
    }
    raiseChanges(before, reboots || losesPower);
    for (const LinkEvent& event : events) {
        m_events.raise(event);
    }
}

size_t Host::adapterCount() {
    const std::lock_guard lock(m_mutex);
    return m_adapters.size();
}

std::optional<std::string> Host::adapterName(size_t index) {
    const std::lock_guard lock(m_mutex);
    if (index >= m_adapters.size()) {
        return std::nullopt;
    }
    return m_adapters[index].name;
}

HBA_HANDLE Host::open(std::string_view name) {
    const std::lock_guard lock(m_mutex);
    const auto adapter = std::find_if(m_adapters.begin(), m_adapters.end(),
                                      [&](const Adapter& each) { return each.name == name; });
    if (adapter == m_adapters.end() || m_handles.size() >= highestHandle) {
        return HBA_HANDLE_INVALID;
    }
    do {
        m_lastHandle = m_lastHandle % highestHandle + 1;
    } while (m_handles.contains(m_lastHandle));
    m_handles[m_lastHandle] = {static_cast<size_t>(adapter - m_adapters.begin()), false};
    return m_lastHandle;
}

void Host::close(HBA_HANDLE handle) {
    const std::lock_guard lock(m_mutex);
    m_handles.erase(handle);
}

size_t Host::openHandles() {
    const std::lock_guard lock(m_mutex);
    return m_handles.size();
}

Adapter* Host::adapterOf(HBA_HANDLE handle) {
    const auto found = m_handles.find(handle);
    return found == m_handles.end() || found->second.adapter >= m_adapters.size()
               ? nullptr
               : &m_adapters[found->second.adapter];
}

void Host::refresh(HBA_HANDLE handle) {
    const std::lock_guard lock(m_mutex);
    if (Adapter* const adapter = adapterOf(handle)) {
        adapter->hasChanged = false;
        m_handles.at(handle).isRefreshed = true;
    }
}

bool Host::isStale(const Adapter& adapter, HBA_HANDLE handle) const {
    switch (adapter.staleness) {
    case Staleness::afterChanges:
        return adapter.hasChanged;
    case Staleness::everyHandle:
        return !m_handles.at(handle).isRefreshed;
    default:
        return false;
    }
}

Subject Host::subjectOfHandle(HBA_HANDLE handle, std::optional<HBA_UINT32> port) {
    const std::lock_guard lock(m_mutex);
    const Adapter* const adapter = adapterOf(handle);
    if (adapter == nullptr) {
        return {};
    }
    Subject subject{adapter->name, ""};
    if (port && *port < adapter->ports.size()) {
        subject.port = wwnText(adapter->ports[*port].hba.PortWWN);
    }
    return subject;
}

Subject Host::subjectOf(HBA_HANDLE handle) {
    return subjectOfHandle(handle, std::nullopt);
}

Subject Host::subjectOf(HBA_HANDLE handle, HBA_UINT32 port) {
    return subjectOfHandle(handle, port);
}

Subject Host::subjectOf(const HBA_WWN& port) {
    const std::lock_guard lock(m_mutex);
    const Place place = find(port);
    return {place.adapter == nullptr ? "" : place.adapter->name, wwnText(port)};
}

Host::Place Host::find(const HBA_WWN& wwpn) const {
    const auto found = m_ports.find(numberOf(wwpn));
    return found == m_ports.end() ? Place{} : found->second;
}

void Host::indexPorts() {
    m_ports.clear();
    for (Adapter& adapter : m_adapters) {
        for (Port& port : adapter.ports) {
            m_ports.try_emplace(numberOf(port.hba.PortWWN), Place{&adapter, &port});
        }
    }
}

std::map<uint64_t, Link> Host::links() const {
    std::map<uint64_t, Link> links;
    for (const auto& [name, place] : m_ports) {
        links.emplace(name, linkOf(*place.port));
    }
    return links;
}

void Host::raiseChanges(const std::map<uint64_t, Link>& before, bool restarts) {
    const std::map<uint64_t, Link> after = links();
    for (const auto& [name, link] : before) {
        const auto present = after.find(name);
        m_events.raiseChange(link, present == after.end() ? Link{} : present->second, restarts);
    }
    for (const auto& [name, link] : after) {
        if (!before.contains(name)) {
            m_events.raiseChange({}, link, restarts);
        }
    }
}

void Host::load() {
    const std::lock_guard lock(m_mutex);
    ++m_loads;
}

void Host::free() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_loads > 1) {
            --m_loads;
            return;
        }
        m_loads = 0;
    }
    m_events.end();
}

bool Host::isLocal(const HBA_WWN& wwpn) {
    const std::lock_guard lock(m_mutex);
    return find(wwpn).port != nullptr;
}

size_t Host::portCount() {
    const std::lock_guard lock(m_mutex);
    size_t count = 0;
    for (const Adapter& adapter : m_adapters) {
        count += adapter.ports.size();
    }
    return count;
}

std::optional<HBA_WWN> Host::portName(size_t index) {
    const std::lock_guard lock(m_mutex);
    for (const Adapter& adapter : m_adapters) {
        if (index < adapter.ports.size()) {
            return adapter.ports[index].hba.PortWWN;
        }
        index -= adapter.ports.size();
    }
    return std::nullopt;
}

Attributes Host::readStatistics(Port& port) const {
    const auto elapsed = std::chrono::steady_clock::now() - m_start;
    const auto seconds =
        static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(elapsed).count());
    Attributes values;
    for (auto& [attribute, counter] : port.statistics) {
        const uint64_t value = valueNow(counter, seconds);
        values[attribute] = std::string(reinterpret_cast<const char*>(&value), sizeof value);
        if (counter.value != UINT64_MAX) {
            counter.value += counter.perRead;
        }
    }
    return values;
}

} // namespace tvrsim
