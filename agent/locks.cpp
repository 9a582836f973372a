#include "agent/locks.h"

#include <algorithm>

namespace cimple {

namespace {

// Pauses of a wait, in microseconds. Readiness is signalled; the time limit serves to notice that
// nobody is left to signal it.
constexpr uint64 first_pause = 1'000;
constexpr uint64 longest_pause = 256'000;

// How long a wait for a mutex lasts before it looks whether its thread is to stop, in microseconds.
constexpr uint64 mutex_pause = 20'000;

// How often in a row a request tries to start a refresh: half a second of pauses in all.
constexpr int start_attempts = 10;

// One ready flag with all that belongs to it.
struct Stage {
    bool& ready;
    Mutex& mutex;
    Ready_Cond& cond;
    std::atomic<bool>& force;
    const char* waiting;
    const char* woken;
};

Stage adapter_data(ProviderAgent& agent) {
    return {agent.m_bIsAdapterDataReady,
            agent.m_AdapterDataReadyMutex,
            agent.m_AdapterDataReadyCond,
            agent.m_bForceAdapterRefresh,
            "PERF: Waiting for m_AdapterDataReadyMutex",
            "PERF: Woken up from wait for m_AdapterDataReadyMutex"};
}

Stage adapter_maps(ProviderAgent& agent) {
    return {agent.m_bIsAdapterMapsReady,
            agent.m_AdapterMapsReadyMutex,
            agent.m_AdapterMapsReadyCond,
            agent.m_bForceAdapterRefresh,
            "PERF: Waiting for m_AdapterMapsReadyMutex",
            "PERF: Woken up from wait for m_AdapterMapsReadyMutex"};
}

Stage SAN_maps(ProviderAgent& agent) {
    return {agent.m_bIsSANMapsReady,
            agent.m_SANMapsReadyMutex,
            agent.m_SANMapsReadyCond,
            agent.m_bForceSANRefresh,
            nullptr,
            nullptr};
}

std::unique_lock<Mutex> locked(Mutex& mutex) {
    mutex.lock_cancellably();
    return {mutex, std::adopt_lock};
}

// A flag that never comes true.
constexpr std::atomic<bool> never{false};

// Waits with the stage's mutex held by `lock`, until the stage is ready or `stop` comes true; ends
// at once if the stage is ready.
void wait_until_ready(ProviderAgent& agent, Stage stage, std::unique_lock<Mutex>& lock,
                      Wait_Log log = Wait_Log::silent, const std::atomic<bool>& stop = never) {
    if (stage.ready || stop) {
        return;
    }
    if (log == Wait_Log::told) {
        TVR_LOG("%s", stage.waiting);
    }
    int failures = 0;
    for (uint64 pause = first_pause; !stage.ready && !stop;
         pause = std::min(pause * 2, longest_pause)) {
        if (&stage.force == &agent.m_bForceSANRefresh) {
            agent.requestSANMaps();
        }
        if (agent.ensureRefresh(stage.force)) {
            failures = 0;
        } else if (++failures == start_attempts) {
            throw Refresh_Unavailable();
        }
        stage.cond.wait(lock, pause);
    }
    if (log == Wait_Log::told) {
        TVR_LOG("%s", stage.woken);
    }
}

} // namespace

Adapter_Maps_Reader::Adapter_Maps_Reader(ProviderAgent& agent) {
    const Waiting_Readers::Place place(agent.m_WaitingReaders);
    agent.BuildCimpleInfo();
    _maps = locked(agent.m_AdapterMapsReadyMutex);
    wait_until_ready(agent, adapter_maps(agent), _maps);
    _data = locked(agent.m_ProviderDataMutex);
}

SAN_Maps_Reader::SAN_Maps_Reader(ProviderAgent& agent) {
    {
        const std::unique_lock lock = locked(agent.m_SANMapsReadyMutex);
        agent.requestSANMaps();
    }
    agent.BuildCimpleInfo();
    _maps = locked(agent.m_SANMapsReadyMutex);
    wait_until_ready(agent, SAN_maps(agent), _maps);
    _data = locked(agent.m_ProviderDataMutex);
}

Active_Reader::Active_Reader(ProviderAgent& agent, Wait_Log log) {
    const Waiting_Readers::Place place(agent.m_WaitingReaders);
    agent.BuildCimpleInfo();
    const Stage maps = adapter_maps(agent);
    for (;;) {
        _adapter_data = locked(agent.m_AdapterDataReadyMutex);
        wait_until_ready(agent, adapter_data(agent), _adapter_data, log);
        _maps = locked(maps.mutex);
        if (maps.ready) {
            break;
        }
        // A refresh needs the outer mutex, so a wait for one doesn't keep it.
        _adapter_data.unlock();
        wait_until_ready(agent, maps, _maps, log);
        _maps.unlock();
    }
    _data = locked(agent.m_ProviderDataMutex);
}

Adapter_Data_Reader::Adapter_Data_Reader(ProviderAgent& agent) {
    const Waiting_Readers::Place place(agent.m_WaitingReaders);
    Stage stage = adapter_data(agent);
    stage.waiting = "PERF: Waiting for m_bIsAdapterDataReady";
    stage.woken = "PERF: Woken up from wait for m_bIsAdapterDataReady";
    _adapter_data = locked(stage.mutex);
    wait_until_ready(agent, stage, _adapter_data, Wait_Log::told);
}

Stoppable_Maps_Reader::Stoppable_Maps_Reader(ProviderAgent& agent, const std::atomic<bool>& stop) {
    const Waiting_Readers::Place place(agent.m_WaitingReaders);
    agent.BuildCimpleInfo();
    Stage stage = adapter_maps(agent);
    stage.waiting = "PERF: Waiting for m_bIsAdapterMapsReady";
    stage.woken = "PERF: Woken up from wait for m_bIsAdapterMapsReady";
    bool is_held = stage.mutex.try_lock();
    while (!is_held && !stop) {
        is_held = stage.mutex.try_lock_for(mutex_pause);
    }
    if (!is_held) {
        return;
    }
    _maps = {stage.mutex, std::adopt_lock};
    wait_until_ready(agent, stage, _maps, Wait_Log::told, stop);
    if (!stage.ready) {
        _maps.unlock();
    }
}

} // namespace cimple
