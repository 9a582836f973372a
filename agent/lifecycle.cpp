// The life of the agent: the singleton with its count, construction and destruction.
#include "access/libraries.h"
#include "agent/clear_maps.h"
#include "agent/provider_agent.h"
#include "agent/version.h"
#include "common/settings.h"
#include "common/tvr_common.h"
#include "runtime/until_closed.h"

#include <map>
#include <unistd.h>

namespace cimple {

namespace {

// How long destruction waits at a time for a refresh, in microseconds.
constexpr uint64 destruction_pause = 50'000;

constinit std::atomic<ProviderAgent*> agent_instance{nullptr};

// Who the calling class gets its services from; null if from nobody.
const void* current_origin() noexcept {
    const Thread_Context* context = Thread_Context::top();
    return context == nullptr ? nullptr : context->origin();
}

// Owns the agent. An agent that its count has not ended goes when the module is closed. What an
// agent uses to its very end comes into being before the singleton, and so ends after it.
struct Agent_Singleton {
    Agent_Singleton() {
        CLogger::getInstance();
        settings();
    }

    Mutex mutex;
    sint32 count = 0;
    std::map<const void*, uint32> classes; // that count on the agent, by origin
    uint32 releasing = 0; // releases that wait for a refresh; the agent outlives them
    bool is_due = false;  // a release has taken the count to 0, and nobody has come since
    std::unique_ptr<ProviderAgent> agent;
    std::atomic<pid_t> process{0}; // in which the agent was made; 0 without one

    bool is_of_other_process() const noexcept {
        const pid_t made_in = process;
        return made_in != 0 && made_in != ::getpid();
    }

    // Under the mutex.
    ProviderAgent& get() {
        if (!agent) {
            process = ::getpid();
            agent = std::make_unique<ProviderAgent>();
            agent_instance.store(agent.get());
        }
        return *agent;
    }
    void add() {
        TVR_LOG("ProviderAgent::addRef[%d]", count);
        if (const void* origin = current_origin()) {
            ++classes[origin];
        }
        ++count;
        is_due = false;
    }
    // True if no class counts on the agent any more that has this origin.
    bool forget(const void* origin) {
        const auto found = classes.find(origin);
        if (found != classes.end() && --found->second == 0) {
            classes.erase(found);
        }
        return origin != nullptr && !classes.contains(origin);
    }
    void destroy() {
        is_due = false;
        agent_instance.store(nullptr);
        agent.reset();
        process = 0;
    }
    ~Agent_Singleton() {
        if (is_of_other_process()) {
            static_cast<void>(agent.release());
        } else {
            destroy();
        }
    }
};

Agent_Singleton& singleton() {
    static Until_Closed<Agent_Singleton> instance;
    return instance.get();
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
    if (owner.is_of_other_process()) {
        return;
    }
    const void* origin = current_origin();
    std::unique_lock lock(owner.mutex);
    TVR_LOG("ProviderAgent::releaseRef[%d]", owner.count);
    --owner.count;
    const bool is_last_of_origin = owner.forget(origin);
    if (!owner.agent || (owner.count > 0 && !is_last_of_origin)) {
        return;
    }
    if (owner.count == 0) {
        owner.is_due = true;
    }
    ++owner.releasing;
    const void* ending = owner.count > 0 ? origin : nullptr;
    lock.unlock();
    owner.agent->joinRefresh(ending);
    lock.lock();
    if (--owner.releasing == 0 && owner.is_due) {
        owner.destroy();
    }
}

bool ProviderAgent::isInherited() noexcept {
    return singleton().is_of_other_process();
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

// Stops the refresh that was started for that origin, or any without one, and joins its thread,
// also if the refresh has ended: a thread uses its broker to its last instruction.
void ProviderAgent::joinRefresh(const void* origin) {
    std::unique_lock lock(m_ThreadMutex);
    if (origin != nullptr && origin != m_RefreshOrigin) {
        return;
    }
    const bool running = m_bIsThreadRunning;
    const bool joinable = std::exchange(m_bIsThreadJoinable, false);
    Thread thread = m_DataFetchThread;
    m_bStopRefresh = m_bStopRefresh || running;
    lock.unlock();
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
    std::unique_lock data_ready(m_AdapterDataReadyMutex);
    while (!m_bIsAdapterDataReady && isRefreshRunning()) {
        TVR_LOG("PERF: Waiting for m_bIsAdapterDataReady");
        m_AdapterDataReadyCond.wait(data_ready, destruction_pause);
        TVR_LOG("PERF: Woken up from wait for m_bIsAdapterDataReady");
    }
    std::unique_lock maps_ready(m_AdapterMapsReadyMutex);
    while (!m_bIsAdapterMapsReady && isRefreshRunning()) {
        m_AdapterMapsReadyCond.wait(maps_ready, destruction_pause);
    }
    const Lock data(m_ProviderDataMutex);
    m_pData.reset();
    TVR_LOG("MethodWrapper");
    m_pMethodWrapper.reset();
}

} // namespace cimple
