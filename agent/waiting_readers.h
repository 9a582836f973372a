// How the readers of the agent's maps wait for a refresh, and a refresh for them.
#ifndef TVR_AGENT_WAITING_READERS_H
#define TVR_AGENT_WAITING_READERS_H

#include "runtime/thread.h"

#include <array>
#include <atomic>
#include <mutex>

namespace cimple {

// The condition that a stage is ready. A plain one would take the stage's mutex again to end the
// wait of a cancelled thread, and a refresh may hold that for the whole of its stage.
class Ready_Cond {
public:
    // Releases the stage's mutex, waits for a broadcast or `usec` microseconds, and takes the mutex
    // again. A request's thread may be cancelled meanwhile (runtime/cancellation.h).
    void wait(std::unique_lock<Mutex>& stage, uint64 usec);
    // Wakes all who wait. Called with the stage's mutex held.
    void broadcast();

private:
    Mutex _mutex; // a leaf
    Cond _cond;
};

// The readers that are on their way to their locks. A refresh lets them pass before it takes a lock
// for long: a mutex alone would leave to chance who comes first.
class Waiting_Readers {
public:
    // A reader's place, from before it looks whether a refresh is due until it has its locks.
    class Place {
    public:
        explicit Place(Waiting_Readers& readers);
        ~Place();
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

    private:
        Waiting_Readers& _readers;
        std::size_t _group;
    };

    // Waits until the readers that are here now have left; who comes later isn't waited for. Ends
    // without them after about `usec` microseconds, or when `stop` comes true. One thread at a time
    // calls this.
    void let_pass(uint64 usec, const std::atomic<bool>& stop);

private:
    Mutex _mutex; // the following
    Cond _group_left;
    std::array<uint32, 2> _waiting{}; // who came before the last change of group, and after
    std::size_t _group = 0;           // the one that newcomers join
};

} // namespace cimple

#endif
