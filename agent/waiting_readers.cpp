#include "agent/waiting_readers.h"

#include "runtime/cancellation.h"

#include <algorithm>

namespace cimple {

namespace {

// How long a wait lasts before it looks whether it is to stop, in microseconds.
constexpr uint64 pause = 20'000;

} // namespace

void Ready_Cond::wait(std::unique_lock<Mutex>& stage, uint64 usec) {
    {
        // Held from before the stage's mutex is free, so that no broadcast comes between.
        const Lock lock(_mutex);
        stage.unlock();
        const Cancel_Here here;
        _cond.wait(_mutex, usec);
    }
    Mutex& mutex = *stage.mutex();
    mutex.lock_cancellably();
    stage = std::unique_lock(mutex, std::adopt_lock);
}

void Ready_Cond::broadcast() {
    const Lock lock(_mutex);
    _cond.broadcast();
}

Waiting_Readers::Place::Place(Waiting_Readers& readers) : _readers(readers) {
    const Lock lock(_readers._mutex);
    _group = _readers._group;
    ++_readers._waiting[_group];
}

Waiting_Readers::Place::~Place() {
    const Lock lock(_readers._mutex);
    if (--_readers._waiting[_group] == 0) {
        _readers._group_left.signal();
    }
}

void Waiting_Readers::let_pass(uint64 usec, const std::atomic<bool>& stop) {
    const Lock lock(_mutex);
    const uint32& before = _waiting[_group];
    _group = 1 - _group;
    while (before != 0 && usec != 0 && !stop) {
        if (!_group_left.wait(_mutex, pause)) {
            usec -= std::min(usec, pause);
        }
    }
}

} // namespace cimple
