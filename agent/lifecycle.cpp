// The life of the agent: the singleton with its count, construction and destruction.
#include "access/libraries.h"
#include "agent/clear_maps.h"
#include "agent/provider_agent.h"
#include "agent/version.h"
#include "common/settings.h"
#include "common/tvr_common.h"

#include <unistd.h>

namespace cimple {

namespace {

// How long destruction waits at a time for a refresh, in microseconds.
constexpr uint64 destruction_pause = 50'000;

constinit std::atomic<ProviderAgent*> agent_instance{nullptr};

// Owns the agent. Ends with the module, and with it an agent that its count has not ended. What an
// agent uses to its very end comes into being before the singleton, and so ends after it.
struct Agent_Singleton {
    Agent_Singleton() {
        CLogger::getInstance();
        settings();
    }

    Mutex mutex;
    sint32 count = 0;
    uint32 releasing = 0; // releases that wait for a refresh; the agent outlives them
    bool is_due = false;  // a release has taken the count to 0, and nobody has come since
    std::unique_ptr<ProviderAgent> agent;

    // Under the mutex.
    ProviderAgent& get() {
        if (!agent) {
            agent = std::make_unique<ProviderAgent>();
            agent_instance.store(agent.get());
        }
        return *agent;
    }
    void add() {
        TVR_LOG("ProviderAgent::addRef[%d]", count);
        ++count;
        is_due = false;
        if (agent) {
            agent->m_bIsEnding = false;
        }
    }
    void destroy() {
        is_due = false;
        agent.reset();
        agent_instance.store(nullptr);
    }
    ~Agent_Singleton() { destroy(); }
};

Agent_Singleton& singleton() {
    static Agent_Singleton instance;
    return instance;
}

} // namespace

ProviderAgent& ProviderAgent::getInstance() {
    Agent_Singleton& owner = singleton();
    const Lock lock(owner.mutex);
    return owner.get();
}

ProviderAgent* ProviderAgent::instance() noexcept {
    return agent_instance.load();
}

bool ProviderAgent::acquire() {
    Agent_Singleton& owner = singleton();
    const Lock lock(owner.mutex);
    if (!owner.get().m_bIsLoaded) {
        return false;
    }
    owner.add();
    return true;
}

void ProviderAgent::addRef() {
    Agent_Singleton& owner = singleton();
    const Lock lock(owner.mutex);
    owner.add();
}

void ProviderAgent::releaseRef() {
    Agent_Singleton& owner = singleton();
    std::unique_lock lock(owner.mutex);
    TVR_LOG("ProviderAgent::releaseRef[%d]", owner.count);
    if (--owner.count > 0 || !owner.agent) {
        return;
    }
    if (owner.count == 0) {
        owner.is_due = true;
        owner.agent->m_bIsEnding = true;
    }
    ++owner.releasing;
    lock.unlock();
    owner.agent->joinRefresh();
    lock.lock();
    if (--owner.releasing == 0 && owner.is_due) {
        owner.destroy();
    }
}

ProviderAgent::ProviderAgent() : m_LoadedTime(Datetime::interval(0)) {
    CLogger& logger = CLogger::getInstance();
    logger.addLogger(&m_FileLogger);
    logger.addLogger(&m_CIMLogger);
    m_SysLogger.emplace();
    try {
        construct();
        m_bIsLoaded = true;
    } catch (...) {
        TVR_LOG("Tavrin CIM Provider load failure");
    }
}

void ProviderAgent::construct() {
    m_Config.load(settings().configFile.c_str());
    CLogger::getInstance().loadConfigData();
    m_Config.logPassedOver();
    m_CacheTimeout = static_cast<uint32>(m_Config.getCacheTimeout());
    m_bRefreshAdapterData = m_Config.getRefreshAdapterData();
    m_bRefreshSANData = m_Config.getRefreshSANData();
    if (getOSInformation(host.m_OSName, host.m_OSVersion) != 0) {
        TVR_LOG("getOSInformation() failed");
    }
    TVR_LOG("Initializing RM API ");
    loadManagementLibraries();
    m_pMethodWrapper = std::make_unique<TVR_MethodWrapper>();
    TVR_LOG("Initializing Data Pointer ");
    m_pData = std::make_unique<Data>();
    TVR_LOG("Tavrin Provider v%d.%d.%d-%d Loaded[%d]", version_major, version_minor,
            version_revision, version_build, static_cast<int>(::getpid()));
}

void ProviderAgent::ClearMaps() {
    TVR_LOG("Entered ClearMaps()");
    {
        const Lock lock(m_AdapterMapsReadyMutex);
        clearAdapterMaps(maps);
        clearDriverMaps();
    }
    {
        const Lock lock(m_SANMapsReadyMutex);
        clearSANMaps(maps);
    }
    TVR_LOG("Exiting ClearMaps()");
}

ProviderAgent::~ProviderAgent() {
    TVR_LOG("Entering the function ~ProviderAgent()");
    m_bIsEnding = true;
    m_bIsLoaded = false;
    try {
        joinRefresh();
        TVR_LOG("Deleting Data pointer");
        freeData();
        ClearMaps();
        if (host.m_pBaseServerProfile) {
            TVR_LOG("Destroying the Base Server Profile instance");
            host.m_pBaseServerProfile.reset();
        }
        CLogger::getInstance().saveConfigData();
        TVR_LOG("Tavrin Provider Unloaded");
        unloadManagementLibraries();
        CLogger::getInstance().clearLoggers();
    } catch (...) {
        TVR_LOG("Error in ProviderAgent unload. Just continue");
    }
}

// Joins the refresh thread, whether it runs or has ended. A refresh that runs begins no further
// stage of an agent that ends.
void ProviderAgent::joinRefresh() {
    m_ThreadMutex.lock();
    const bool running = m_bIsThreadRunning;
    const bool joinable = std::exchange(m_bIsThreadJoinable, false);
    Thread thread = m_DataFetchThread;
    m_ThreadMutex.unlock();
    if (running) {
        TVR_LOG("PERF: Clearing the previous thread...with join");
    }
    if (joinable) {
        void* result = nullptr;
        Thread::join(thread, result);
    }
}

// Data and wrapper end when nobody reads them any more. Their ready flags never come true if no
// request ever started a refresh, so that only a refresh that runs is waited for.
void ProviderAgent::freeData() {
    const Lock data_ready(m_AdapterDataReadyMutex);
    while (!m_bIsAdapterDataReady && isRefreshRunning()) {
        TVR_LOG("PERF: Waiting for m_bIsAdapterDataReady");
        m_AdapterDataReadyCond.wait(m_AdapterDataReadyMutex, destruction_pause);
        TVR_LOG("PERF: Woken up from wait for m_bIsAdapterDataReady");
    }
    const Lock maps_ready(m_AdapterMapsReadyMutex);
    while (!m_bIsAdapterMapsReady && isRefreshRunning()) {
        m_AdapterMapsReadyCond.wait(m_AdapterMapsReadyMutex, destruction_pause);
    }
    const Lock data(m_ProviderDataMutex);
    m_pData.reset();
    TVR_LOG("MethodWrapper");
    m_pMethodWrapper.reset();
}

} // namespace cimple
