// The named semaphores that order the initialisations of the RM library within one process.
#ifndef TVR_ACCESS_INIT_SEMAPHORE_H
#define TVR_ACCESS_INIT_SEMAPHORE_H

#include "runtime/type.h"

#include <memory>
#include <semaphore.h>

namespace cimple {

// A semaphore's name: a fixed start and the id of this process. It needs no memory of its own, so
// that a name can be removed where nothing may fail.
class SemaphoreName {
public:
    explicit SemaphoreName(const char* start) noexcept;
    const char* c_str() const noexcept { return m_text; }

private:
    char m_text[48];
};

// One life of the first semaphore, whose count of 2 is the protocol: the party that finds 2 takes
// one and initialises; a party that finds less takes one too and then waits until the first has
// given its own back.
//
// A process has one life at a time. It begins with the first construction that finds none, with a
// fresh semaphore: one of that name is then what a dead process with the same id has left, and goes
// first. Where that one belongs to another user and can't be removed, the life has a semaphore
// without a name. Any destruction ends the life and removes the name, so that the next construction
// initialises again; who is still at work with a life that has ended keeps its semaphore.
//
// Threads: any.
class InitSemaphore {
public:
    // The names for this process.
    static SemaphoreName initName() noexcept;
    static SemaphoreName doneName() noexcept;

    // The present life, or a new one. Null if the system refuses a semaphore.
    static std::shared_ptr<InitSemaphore> join();
    // Ends the present life and answers it; null without one, also in a process that was forked
    // from the one it belongs to.
    static std::shared_ptr<InitSemaphore> end() noexcept;

    // Creates or opens the second semaphore, which nobody waits for. It goes at the module's end.
    static void openDone() noexcept;

    // A semaphore without a name.
    InitSemaphore() noexcept;
    ~InitSemaphore();
    InitSemaphore(const InitSemaphore&) = delete;
    InitSemaphore& operator=(const InitSemaphore&) = delete;

    // Takes one, and tells the value right before unless that is null. False if the time limit of
    // setInitLibWait passed without one to take.
    bool take(int* valueBefore) noexcept;
    void post() noexcept { sem_post(semaphore()); }
    int value() noexcept;

private:
    sem_t* semaphore() noexcept { return m_named != nullptr ? m_named : &m_unnamed; }

    sem_t* m_named = nullptr;
    sem_t m_unnamed; // in use without a name
};

} // namespace cimple

#endif
