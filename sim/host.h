// The running simulation: the hardware of the scenario, open handles, counts and rules.
#pragma once

#include "sim/call_rules.h"
#include "sim/scenario.h"

#include <map>
#include <mutex>

namespace tvrsim {

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
    Adapter* adapterOf(HBA_HANDLE handle);
    bool isStale(const Adapter& adapter, HBA_HANDLE handle) const;
    Subject subjectOfHandle(HBA_HANDLE handle, std::optional<HBA_UINT32> port);

    std::mutex m_mutex;
    bool m_usable = false;
    std::vector<Adapter> m_adapters;
    std::optional<DriverParams> m_globalDriverParameters;
    std::map<HBA_HANDLE, OpenHandle> m_handles;
    std::map<std::string, Place> m_ports; ///< by the 8 bytes of the WWPN; the first of equals
    HBA_HANDLE m_lastHandle = 0;
    std::chrono::steady_clock::time_point m_start;
    CallRules m_rules;
};

} // namespace tvrsim
