// The running simulation: the hardware of the scenario, open handles, counts and rules.
#pragma once

#include "sim/call_rules.h"
#include "sim/link_events.h"
#include "sim/scenario.h"

#include <map>
#include <mutex>

namespace tvrsim {

/// The link of a port as it stands.
Link linkOf(const Port& port);

/// One simulated host. There is one per process, made at the first use and never destroyed, since
/// callers may still be at work when the process ends.
class Host {
public:
    static Host& instance();

    Host();

    /// Reads a scenario file and throws std::exception, with where and why, if it can't be used.
    static void check(const char* file);

    /// False when the scenario could not be used.
    bool usable();

    CallRules& rules() { return m_rules; }
    LinkEvents& events() { return m_events; }

    /// Counts the users that have loaded the library; events end with the last that frees it, and
    /// when it is freed without having been loaded.
    void load();
    void free();

    /// Applies a control request, all or nothing. Throws FormatError.
    void control(std::string_view request);

    size_t adapterCount();
    std::optional<std::string> adapterName(size_t index);

    HBA_HANDLE open(std::string_view name);
    void close(HBA_HANDLE handle);
    size_t openHandles();

    /// What a handle and a port index, or a WWPN, stand for.
    Subject subjectOf(HBA_HANDLE handle);
    Subject subjectOf(HBA_HANDLE handle, HBA_UINT32 port);
    Subject subjectOf(const HBA_WWN& port);

    /// Makes the data of a handle's adapter current.
    void refresh(HBA_HANDLE handle);

    /// As withAdapter, unless the adapter's data are stale for the handle.
    template <class Work> HBA_STATUS withCurrentAdapter(HBA_HANDLE handle, Work work) {
        return withAdapter(handle, [&](Adapter& adapter) {
            return isStale(adapter, handle) ? HBA_STATUS_ERROR_STALE_DATA : work(adapter);
        });
    }

    /// Calls work with the adapter of a handle, under the lock.
    template <class Work> HBA_STATUS withAdapter(HBA_HANDLE handle, Work work) {
        const std::lock_guard lock(m_mutex);
        Adapter* const adapter = adapterOf(handle);
        return adapter == nullptr ? HBA_STATUS_ERROR_INVALID_HANDLE : work(*adapter);
    }

    /// Calls work with a port and its adapter, under the lock.
    template <class Work> RM_STATUS withPort(const HBA_WWN& wwpn, Work work) {
        const std::lock_guard lock(m_mutex);
        const Place place = find(wwpn);
        return place.port == nullptr ? RM_STATUS_ILLEGAL_WWN : work(*place.adapter, *place.port);
    }

    /// Calls work with all adapters, under the lock.
    template <class Work> RM_STATUS withAdapters(Work work) {
        const std::lock_guard lock(m_mutex);
        return work(m_adapters);
    }

    bool isLocal(const HBA_WWN& wwpn);

    /// All ports in order of adapters.
    size_t portCount();
    std::optional<HBA_WWN> portName(size_t index);

    /// The parameters of the driver as a whole. Only for work that runs under the lock.
    std::optional<DriverParams>& globalDriverParameters() { return m_globalDriverParameters; }

    /// Enters the ports by their names again. Only for work that runs under the lock and has
    /// changed names.
    void indexPorts();

    /// The counters of a port as they stand now; counts as one read of them.
    Attributes readStatistics(Port& port) const;

private:
    struct OpenHandle {
        size_t adapter; ///< its index
        bool isRefreshed;
    };
    struct Place {
        Adapter* adapter = nullptr;
        Port* port = nullptr;
    };

    Place find(const HBA_WWN& wwpn) const;
    std::map<uint64_t, Link> links() const;
    void raiseChanges(const std::map<uint64_t, Link>& before, bool restarts);
    Adapter* adapterOf(HBA_HANDLE handle);
    bool isStale(const Adapter& adapter, HBA_HANDLE handle) const;
    Subject subjectOfHandle(HBA_HANDLE handle, std::optional<HBA_UINT32> port);

    std::mutex m_mutex;
    bool m_usable = false;
    std::vector<Adapter> m_adapters;
    std::optional<DriverParams> m_globalDriverParameters;
    std::map<HBA_HANDLE, OpenHandle> m_handles;
    std::map<uint64_t, Place> m_ports; ///< by the WWPN; the first of equals
    HBA_HANDLE m_lastHandle = 0;
    std::chrono::steady_clock::time_point m_start;
    CallRules m_rules;
    LinkEvents m_events;
    uint64_t m_loads = 0;
};

} // namespace tvrsim
