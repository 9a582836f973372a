// The refresh: when one is due, the thread that it runs on, and its stages.
#include "access/entry_points.h"
#include "agent/provider_agent.h"
#include "agent/rebuild.h"
#include "agent/san_instances.h"

#include <mutex>

namespace cimple {

namespace {

constexpr uint64 usec_per_minute = 60'000'000;

// How long the SAN stages let readers pass at most, and how long a wait for a mutex lasts before it
// looks whether the refresh is to stop, in microseconds.
constexpr uint64 longest_passing = 5'000'000;
constexpr uint64 stop_pause = 20'000;

// Withdraws the flag of a stage, and wakes all waiting readers at the end. The stage's mutex is
// held.
class Stage_In_Progress {
public:
    Stage_In_Progress(bool& ready, Ready_Cond& cond) : _ready(ready), _cond(cond) {
        _ready = false;
    }
    ~Stage_In_Progress() { _cond.broadcast(); }
    Stage_In_Progress(const Stage_In_Progress&) = delete;
    Stage_In_Progress& operator=(const Stage_In_Progress&) = delete;

    // Sets the flag, whether the rebuild went well or not; but not, and false, if the refresh was
    // stopped on the way.
    bool finish(const std::atomic<bool>& stop) {
        _ready = !stop;
        return _ready;
    }

private:
    bool& _ready;
    Ready_Cond& _cond;
};

// Locks a mutex that a method may hold for long. Not locked if the refresh is to stop.
std::unique_lock<Mutex> lock_unless(const std::atomic<bool>& stop, Mutex& mutex) {
    while (!stop) {
        if (mutex.try_lock_for(stop_pause)) {
            return {mutex, std::adopt_lock};
        }
    }
    return {mutex, std::defer_lock};
}

// Runs one rebuild. What it throws ends there, and readers find what it made so far.
template <class Rebuild> void contain(const char* name, Rebuild&& rebuild) noexcept {
    try {
        rebuild();
    } catch (...) {
        TVR_LOG("Exception in %s", name);
    }
}

} // namespace

bool ProviderAgent::isCacheTimedOut() {
    TVR_LOG("Checking if TimeOut...");
    const Datetime now = Datetime::now();
    const uint32 timeout = m_CacheTimeout;
    TVR_LOG("loadedtime = %s; currenttime = %s; cache timeout = %d",
            m_LoadedTime.ascii(true).c_str(), now.ascii(true).c_str(), static_cast<int>(timeout));
    // A clock that was set back gives an immense difference, and so a refresh.
    const uint64 elapsed = now.get_usec() - m_LoadedTime.get_usec();
    if (elapsed >= timeout * usec_per_minute) {
        TVR_LOG("PERF: TimeOut");
        return true;
    }
    TVR_LOG("PERF: Refresh Not yet required");
    return false;
}

uint32 ProviderAgent::BuildCimpleInfo() {
    TVR_LOG("PERF: ---BuildCimpleInfo BEGIN---");
    if (!m_bIsLoaded) {
        TVR_LOG("Tavrin Provider dependent library load has failed..do nothing is the only option");
    }
    const Lock lock(m_ThreadMutex);
    if (!isCacheTimedOut() && !m_bForceAdapterRefresh && !m_bForceSANRefresh) {
        TVR_LOG("PERF: ---No timeout BuildCimpleInfo END---");
        return 0;
    }
    if (m_bIsThreadRunning) {
        TVR_LOG("PERF: ---DataFetch_Handler thread already running -BuildCimpleInfo END---");
        return 0;
    }
    startRefresh();
    return 0;
}

bool ProviderAgent::ensureRefresh(std::atomic<bool>& force) {
    const Lock lock(m_ThreadMutex);
    if (m_bIsThreadRunning) {
        return true;
    }
    force = true;
    return startRefresh();
}

// The thread is started under m_ThreadMutex, so that whoever finds m_bIsThreadRunning set finds a
// thread, too.
bool ProviderAgent::startRefresh() {
    if (m_bIsThreadJoinable) {
        TVR_LOG("PERF: Clearing the previous thread...with join");
        void* result = nullptr;
        Thread::join(m_DataFetchThread, result);
        m_bIsThreadJoinable = false;
    }
    TVR_LOG("PERF: Creating DataFetch_Handler Thread.");
    m_bStopRefresh = false;
    const int error = Thread::create_joinable(m_DataFetchThread, DataFetch_Handler, this);
    if (error != 0) {
        TVR_LOG("Could not create DataFetch_Handler thread (%d)", error);
        return false;
    }
    m_bIsThreadRunning = true;
    m_bIsThreadJoinable = true;
    const Thread_Context* context = Thread_Context::top();
    m_RefreshOrigin = context == nullptr ? nullptr : context->origin();
    TVR_LOG("PERF: ---Created DataFetch_Handler thread -- BuildCimpleInfo END---");
    return true;
}

bool ProviderAgent::isRefreshRunning() {
    const Lock lock(m_ThreadMutex);
    return m_bIsThreadRunning;
}

void ProviderAgent::requestSANMaps() noexcept {
    if (!m_bIsSANMapsReady && !m_bIsSANStageRunning) {
        m_bForceSANRefresh = true;
    }
}

void* ProviderAgent::DataFetch_Handler(void* argument) {
    TVR_LOG("PERF: DataFetch_Handler Thread BEGIN");
    if (argument == nullptr) {
        TVR_LOG("Error in converting the pointer to ProviderAgent");
    } else {
        static_cast<ProviderAgent*>(argument)->refresh();
    }
    TVR_LOG("PERF: DataFetch_Handler Thread END");
    return nullptr;
}

// A forced stage takes its flag when it begins, so that a request made meanwhile stands for another
// run. Whoever asks for SAN maps may wait for them, so a request that came after the test for it is
// served before the thread ends; one for adapter data is left to the next refresh.
//
// A refresh that is told to stop leaves the library at the end of the call that it is in. What was
// to be made and wasn't is not ready and still due: the next request, or the first that waits,
// starts another refresh.
void ProviderAgent::refresh() {
    const rm::CallsUntil stop(m_bStopRefresh);
    bool goes_on = runDueStages();
    while (goes_on && !endRefresh()) {
        goes_on = runSANStages();
    }
    if (!goes_on) {
        const Lock lock(m_ThreadMutex);
        m_bIsThreadRunning = false;
    }
}

// False if the refresh was stopped; likewise the functions of the stages.
bool ProviderAgent::runDueStages() {
    bool adapters_due = m_bForceAdapterRefresh || m_bRefreshAdapterData;
    if (!adapters_due) {
        // Without maps from an earlier refresh there is nothing to make SAN maps from.
        const Lock lock(m_AdapterMapsReadyMutex);
        adapters_due = !m_bIsAdapterMapsReady;
    }
    if (adapters_due && !runAdapterStages()) {
        m_bForceAdapterRefresh = true;
        return false;
    }
    return (!m_bRefreshSANData && !m_bForceSANRefresh) || runSANStages();
}

// False, with the refresh still running, if SAN maps were asked for since their stage began.
bool ProviderAgent::endRefresh() {
    const Lock lock(m_ThreadMutex);
    if (m_bForceSANRefresh && !m_bStopRefresh) {
        return false;
    }
    m_bIsThreadRunning = false;
    try {
        m_LoadedTime = Datetime::now();
    } catch (...) {
        TVR_LOG("Could not take the time of the refresh"); // the next one comes early
    }
    return true;
}

bool ProviderAgent::runAdapterStages() {
    if (m_bStopRefresh) {
        return false;
    }
    TVR_LOG("PERF: Building Adapter Data...");
    {
        const std::unique_lock lock = lock_unless(m_bStopRefresh, m_AdapterDataReadyMutex);
        if (!lock) {
            return false;
        }
        Stage_In_Progress stage(m_bIsAdapterDataReady, m_AdapterDataReadyCond);
        // A method that held the mutex until now may have asked for what begins here.
        m_bForceAdapterRefresh = false;
        if (m_bIsLoaded) {
            const Lock data(m_ProviderDataMutex);
            contain("buildAdapterData", [this] { m_pData->buildAdapterData(); });
        }
        if (!stage.finish(m_bStopRefresh)) {
            return false;
        }
    }
    {
        const Lock lock(m_SANMapsReadyMutex);
        m_bIsSANMapsReady = false;
    }
    const std::unique_lock lock = lock_unless(m_bStopRefresh, m_AdapterMapsReadyMutex);
    if (!lock) {
        return false;
    }
    Stage_In_Progress stage(m_bIsAdapterMapsReady, m_AdapterMapsReadyCond);
    if (m_bIsLoaded) {
        const Lock data(m_ProviderDataMutex);
        TVR_LOG("PERF: Updating Adapter Maps...");
        contain("updateAdapterMaps", [this] {
            updateAdapterMaps({maps, host, m_pData.get(), m_Config, m_FileLogger});
        });
    }
    return stage.finish(m_bStopRefresh);
}

// Adapter data and adapter maps are ready here, and no other thread can withdraw them. The scan
// runs without m_ProviderDataMutex, so that maps can be read meanwhile: whoever reads the tree of
// adapters, or frees it, holds m_AdapterDataReadyMutex as well.
bool ProviderAgent::runSANStages() {
    m_WaitingReaders.let_pass(longest_passing, m_bStopRefresh);
    {
        const Lock lock(m_SANMapsReadyMutex);
        m_bForceSANRefresh = false;
        m_bIsSANStageRunning = true;
    }
    if (!scanSAN()) {
        const Lock lock(m_SANMapsReadyMutex);
        m_bForceSANRefresh = true;
        m_bIsSANStageRunning = false;
        return false;
    }
    return true;
}

bool ProviderAgent::scanSAN() {
    const std::unique_lock adapter_data = lock_unless(m_bStopRefresh, m_AdapterDataReadyMutex);
    if (!adapter_data) {
        return false;
    }
    if (m_bIsLoaded) {
        TVR_LOG("PERF: Building SAN Data...");
        contain("buildSANData", [this] { m_pData->buildSANData(); });
    }
    if (m_bStopRefresh) {
        return false;
    }
    const Lock adapter_maps(m_AdapterMapsReadyMutex);
    const Lock SAN_maps(m_SANMapsReadyMutex);
    Stage_In_Progress stage(m_bIsSANMapsReady, m_SANMapsReadyCond);
    if (m_bIsLoaded) {
        const Lock data(m_ProviderDataMutex);
        TVR_LOG("PERF: Updating SAN Maps...");
        contain("updateSANMaps", [this] { updateSANMaps(maps, m_pData.get()); });
    }
    m_bIsSANStageRunning = false;
    return stage.finish(m_bStopRefresh);
}

} // namespace cimple
