// The refresh: when one is due, the thread that it runs on, and its stages.
#include "agent/provider_agent.h"
#include "agent/rebuild.h"
#include "agent/san_instances.h"
#include "runtime/clock.h"

#include <limits>

namespace cimple {

namespace {

constexpr uint64 usec_per_minute = 60'000'000;

// Locks the mutex of a stage, withdraws the flag, and sets it and wakes all waiting readers at the
// end, however the stage ends.
class Stage_In_Progress {
public:
    Stage_In_Progress(Mutex& mutex, bool& ready, Cond& cond)
        : _lock(mutex), _ready(ready), _cond(cond) {
        _ready = false;
    }
    ~Stage_In_Progress() {
        _ready = true;
        _cond.broadcast();
    }
    Stage_In_Progress(const Stage_In_Progress&) = delete;
    Stage_In_Progress& operator=(const Stage_In_Progress&) = delete;

private:
    Lock _lock;
    bool& _ready;
    Cond& _cond;
};

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
    const int error = Thread::create_joinable(m_DataFetchThread, DataFetch_Handler, this);
    if (error != 0) {
        TVR_LOG("Could not create DataFetch_Handler thread (%d)", error);
        return false;
    }
    m_bIsThreadRunning = true;
    m_bIsThreadJoinable = true;
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
void ProviderAgent::refresh() {
    if (!runDueStages()) {
        abandonRefresh();
        return;
    }
    while (!endRefresh()) {
        runSANStages();
    }
}

// False if a stage was left out because the agent ends.
bool ProviderAgent::runDueStages() {
    bool adapters_due = m_bForceAdapterRefresh || m_bRefreshAdapterData;
    if (!adapters_due) {
        // Without maps from an earlier refresh there is nothing to make SAN maps from.
        const Lock lock(m_AdapterMapsReadyMutex);
        adapters_due = !m_bIsAdapterMapsReady;
    }
    if (adapters_due && !runAdapterStages()) {
        return false;
    }
    if (m_bIsEnding) {
        return false;
    }
    if (m_bRefreshSANData || m_bForceSANRefresh) {
        runSANStages();
    }
    return true;
}

// False, with the refresh still running, if SAN maps were asked for since their stage began.
bool ProviderAgent::endRefresh() {
    const Lock lock(m_ThreadMutex);
    if (m_bForceSANRefresh && !m_bIsEnding) {
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

// The stages that were left out are not ready and still due: if the agent goes on after all, the
// next request starts another refresh.
void ProviderAgent::abandonRefresh() {
    const Lock lock(m_ThreadMutex);
    m_bForceAdapterRefresh = true;
    m_bIsThreadRunning = false;
}

// False if a stage was left out because the agent ends.
bool ProviderAgent::runAdapterStages() {
    if (m_bIsEnding) {
        return false;
    }
    TVR_LOG("PERF: Building Adapter Data...");
    {
        const Stage_In_Progress stage(m_AdapterDataReadyMutex, m_bIsAdapterDataReady,
                                      m_AdapterDataReadyCond);
        // A method that held the mutex until now may have asked for what begins here.
        m_bForceAdapterRefresh = false;
        if (m_bIsLoaded) {
            const Lock data(m_ProviderDataMutex);
            contain("buildAdapterData", [this] { m_pData->buildAdapterData(); });
        }
    }
    {
        const Lock lock(m_SANMapsReadyMutex);
        m_bIsSANMapsReady = false;
    }
    if (m_bIsEnding) {
        return false;
    }
    const Stage_In_Progress stage(m_AdapterMapsReadyMutex, m_bIsAdapterMapsReady,
                                  m_AdapterMapsReadyCond);
    if (m_bIsLoaded) {
        const Lock data(m_ProviderDataMutex);
        TVR_LOG("PERF: Updating Adapter Maps...");
        contain("updateAdapterMaps", [this] {
            updateAdapterMaps({maps, host, m_pData.get(), m_Config, m_FileLogger});
        });
    }
    return true;
}

// Adapter data and adapter maps are ready here, and no other thread can withdraw them.
void ProviderAgent::runSANStages() {
    {
        const Lock lock(m_SANMapsReadyMutex);
        m_bForceSANRefresh = false;
        m_bIsSANStageRunning = true;
    }
    const Lock adapter_data(m_AdapterDataReadyMutex);
    if (m_bIsLoaded) {
        const Lock data(m_ProviderDataMutex);
        TVR_LOG("PERF: Building SAN Data...");
        contain("buildSANData", [this] { m_pData->buildSANData(); });
    }
    const Lock adapter_maps(m_AdapterMapsReadyMutex);
    const Stage_In_Progress stage(m_SANMapsReadyMutex, m_bIsSANMapsReady, m_SANMapsReadyCond);
    if (m_bIsLoaded) {
        const Lock data(m_ProviderDataMutex);
        TVR_LOG("PERF: Updating SAN Maps...");
        contain("updateSANMaps", [this] { updateSANMaps(maps, m_pData.get()); });
    }
    m_bIsSANStageRunning = false;
}

} // namespace cimple
