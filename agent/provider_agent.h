// The one object behind all class providers: it owns settings, log, adapter data and instance maps,
// and runs the refresh that keeps them.
//
// A request passes the gate `BuildCimpleInfo`, which starts a refresh when one is due, waits until
// the stage that it depends on is ready, copies what it needs under locks and delivers the copies
// without them (agent/map_enumerate.h, agent/locks.h). The refresh runs on a thread of its own, one
// at a time: adapter data, adapter maps, SAN maps. Maps are rebuilt whole, so that a client
// sees old instances or new ones, never a mixture.
//
// Lock order, outermost first: m_AdapterDataReadyMutex, m_AdapterMapsReadyMutex,
// m_SANMapsReadyMutex, m_ProviderDataMutex. m_ThreadMutex is a leaf; the gate may be called with
// any of the others held.
#ifndef TVR_AGENT_PROVIDER_AGENT_H
#define TVR_AGENT_PROVIDER_AGENT_H

#include "access/method_wrapper.h"
#include "agent/host_facts.h"
#include "agent/indication_state.h"
#include "agent/instance_maps.h"
#include "agent/waiting_readers.h"
#include "common/config_file.h"
#include "common/logger.h"
#include "model/data.h"
#include "runtime/datetime.h"
#include "runtime/thread.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace cimple {

// The agent comes into being with the first `load` of a class provider and ends with the last
// `unload`; a later load makes a fresh one. No signal is handled: a crash is the object manager's
// to report, in whose process the agent is a guest.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): what belongs together stands together
class ProviderAgent {
public:
    // The agent, constructed at the first call. It may stand there unusable: look at m_bIsLoaded.
    // Threads: any; a second caller waits for the first one's construction.
    static ProviderAgent& getInstance();
    // The agent without constructing one; null outside the time between a load and its unload.
    static ProviderAgent* instance() noexcept;
    // getInstance and, for an agent that is usable, addRef in one step, so that no release comes
    // between. False without a count.
    static bool acquire();
    // One count a loaded provider. The agent ends when releaseRef takes the count to exactly 0;
    // releases without an addRef before can take it below, and the agent then stays until the
    // module is closed. At the end of a process that still counts on it the agent is left alone;
    // so it is in a process that was forked from its own.
    //
    // A refresh lives on the broker of the class whose request started it. The release of the last
    // class on that broker stops the refresh and waits for its thread, longest for the library call
    // that this is in; other classes' requests then start another one. The last release of all
    // waits for any refresh, and so does a release without a count: it may be the last thing that
    // the object manager asks of the module. They wait without any lock: the refresh may be inside
    // the object manager, which may be about to load a class of this module. A class that is loaded
    // meanwhile keeps the agent.
    static void addRef();
    static void releaseRef();

    // True in a process that was forked from the agent's: its threads aren't here, its locks may be
    // held for ever, and its files are the other one's.
    static bool isInherited() noexcept;

    // Called by the operations above alone, under the mutex of the singleton. What goes wrong in
    // construction is logged and leaves m_bIsLoaded false. Destruction stops a refresh that runs
    // and waits for its thread, and for nothing else.
    ProviderAgent();
    ~ProviderAgent();
    ProviderAgent(const ProviderAgent&) = delete;
    ProviderAgent& operator=(const ProviderAgent&) = delete;

    // The gate: starts a refresh if the cache has expired or a refresh is forced, and none runs.
    // Never waits for a refresh. Answers 0, also when no thread could be started: the next call,
    // and every request that waits, tries again.
    uint32 BuildCimpleInfo();

    // Starts a refresh for a request that waits: sets `force` and starts the thread, unless a
    // refresh runs. False if there is none and no thread could be started either.
    bool ensureRefresh(std::atomic<bool>& force);

    // Asks for the SAN stages if the SAN maps are neither ready nor being made ready. Called with
    // m_SANMapsReadyMutex held.
    void requestSANMaps() noexcept;

    // Empties all maps but those that outlive a rebuild (agent/clear_maps.h).
    void ClearMaps();

    // One-shot requests and settings; read and written without a lock.
    std::atomic<bool> m_bForceAdapterRefresh{true}; // rebuild adapter data and maps
    std::atomic<bool> m_bRefreshAdapterData{false}; // do so at every refresh
    std::atomic<bool> m_bForceSANRefresh{false};    // rebuild SAN data and maps
    std::atomic<bool> m_bRefreshSANData{false};     // do so at every refresh
    std::atomic<uint32> m_CacheTimeout{0};          // minutes
    std::atomic<bool> m_bIsLoaded{false};           // the agent is usable

    // Made and freed under m_AdapterDataReadyMutex and m_ProviderDataMutex; either is enough to
    // read the pointers, the first one to read or scan the targets in the tree.
    std::unique_ptr<Data> m_pData;
    std::unique_ptr<TVR_MethodWrapper> m_pMethodWrapper;

    TVR_FileLogger m_FileLogger;
    TVR_CIMLogger m_CIMLogger;
    std::optional<TVR_SysLogger> m_SysLogger;
    TvrConfigFile m_Config;

    Mutex m_ProviderDataMutex; // the data object and all maps

    // A ready flag is read and written under its mutex; the condition tells that it became true.
    bool m_bIsAdapterDataReady = false;
    Mutex m_AdapterDataReadyMutex;
    Ready_Cond m_AdapterDataReadyCond;
    bool m_bIsAdapterMapsReady = false;
    Mutex m_AdapterMapsReadyMutex;
    Ready_Cond m_AdapterMapsReadyCond;
    bool m_bIsSANMapsReady = false;
    Mutex m_SANMapsReadyMutex;
    Ready_Cond m_SANMapsReadyCond;
    Waiting_Readers m_WaitingReaders; // those of adapter data and adapter maps

    // What the rebuilds keep, under m_ProviderDataMutex. They know nothing else of the agent
    // (agent/rebuild.h).
    Host_Facts host;
    Instance_Maps maps;

    Indication_State indications;

    Datetime m_LoadedTime; // end of the last refresh; zero before the first
    Thread m_DataFetchThread;
    Mutex m_ThreadMutex; // the refresh decision, m_LoadedTime, and the two flags below
    bool m_bIsThreadRunning = false;
    bool m_bIsThreadJoinable = false; // a thread was started and not yet joined

private:
    void construct();
    void joinRefresh(const void* origin = nullptr);
    void freeData();

    // Under m_ThreadMutex.
    bool isCacheTimedOut();
    bool startRefresh();
    bool isRefreshRunning();

    static void* DataFetch_Handler(void* argument);
    void refresh();
    bool runDueStages();
    bool endRefresh();
    bool runAdapterStages();
    bool runSANStages();
    bool scanSAN();

    bool m_bIsSANStageRunning = false; // under m_SANMapsReadyMutex

    // Of the refresh that runs; set under m_ThreadMutex.
    const void* m_RefreshOrigin = nullptr;   // Thread_Context::origin
    std::atomic<bool> m_bStopRefresh{false}; // true until the next one starts
};

} // namespace cimple

#endif
