// The agent's locks as scoped types: who reads what, in the one order of the agent's mutexes.
//
// Each of them passes the gate, waits until the stages that it reads from are ready, and holds its
// locks until it ends. A wait never relies on a refresh that isn't there: it looks again with
// growing pauses and starts one itself if none runs.
//
// A refresh lets pass who waits for adapter stages before it scans the SAN. While it scans, adapter
// maps can be read; who works on adapters comes after the scan, which holds the data mutex for it.
//
// The constructors throw Refresh_Unavailable, holding nothing, when no refresh thread can be
// started for about half a second. In them, and nowhere else, a request's thread may be cancelled
// (runtime/cancellation.h); nothing is held then either.
#ifndef TVR_AGENT_LOCKS_H
#define TVR_AGENT_LOCKS_H

#include "agent/provider_agent.h"

#include <mutex>
#include <stdexcept>

namespace cimple {

class Refresh_Unavailable : public std::runtime_error {
public:
    Refresh_Unavailable() : std::runtime_error("no thread for the refresh of adapter data") {}
};

// Whether the waits of a reader are told in the log.
enum class Wait_Log { silent, told };

// Reads adapter maps.
class Adapter_Maps_Reader {
public:
    explicit Adapter_Maps_Reader(ProviderAgent& agent);

private:
    std::unique_lock<Mutex> _maps;
    std::unique_lock<Mutex> _data;
};

// Reads SAN maps, and has them built if they are not there.
class SAN_Maps_Reader {
public:
    explicit SAN_Maps_Reader(ProviderAgent& agent);

private:
    std::unique_lock<Mutex> _maps;
    std::unique_lock<Mutex> _data;
};

// Reads adapter maps and changes their instances from the adapters.
class Active_Reader {
public:
    explicit Active_Reader(ProviderAgent& agent, Wait_Log log = Wait_Log::silent);

private:
    std::unique_lock<Mutex> _adapter_data;
    std::unique_lock<Mutex> _maps;
    std::unique_lock<Mutex> _data;
};

// Reads the tree of adapters; maps may be read meanwhile. The one of them that leaves the gate to
// its caller.
class Adapter_Data_Reader {
public:
    explicit Adapter_Data_Reader(ProviderAgent& agent);

private:
    std::unique_lock<Mutex> _adapter_data;
};

// Reads adapter maps on a thread that is told to stop by `stop`. A wait ends then, and the reader
// is false and holds nothing; where there is nothing to wait for it holds the maps all the same. It
// leaves m_ProviderDataMutex alone, for it may be held for long by whoever takes what is made of
// the maps: nobody changes adapter maps without m_AdapterMapsReadyMutex.
class Stoppable_Maps_Reader {
public:
    Stoppable_Maps_Reader(ProviderAgent& agent, const std::atomic<bool>& stop);
    explicit operator bool() const noexcept { return _maps.owns_lock(); }

private:
    std::unique_lock<Mutex> _maps;
};

// What a method holds while it works on adapters: no refresh and no enumeration runs meanwhile. It
// may set m_bForceAdapterRefresh and pass the gate again; the refresh then begins when it ends.
class Full_Guard {
public:
    explicit Full_Guard(ProviderAgent& agent) : _reader(agent, Wait_Log::told) {}

private:
    Active_Reader _reader;
};

} // namespace cimple

#endif
