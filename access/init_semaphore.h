// The named semaphores that order the initialisations of the RM library within one process.
#ifndef TVR_ACCESS_INIT_SEMAPHORE_H
#define TVR_ACCESS_INIT_SEMAPHORE_H

#include "runtime/type.h"

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

// The first semaphore, whose count of 2 is the protocol: the party that finds 2 takes one and
// initialises; a party that finds less takes one too and then waits until the first has given its
// own back.
//
// The uses of this process are counted. As long as there is none, a semaphore of the name is what a
// dead process with the same id has left, and `open` removes it first. The name goes with the last
// use; whatever is still open goes at the module's end.
//
// Threads: any.
class InitSemaphore {
public:
    // The names for this process.
    static SemaphoreName initName() noexcept;
    static SemaphoreName doneName() noexcept;

    // Begins a use. Null if the system refuses; then there is no use.
    static sem_t* open() noexcept;
    // Ends a use.
    static void close() noexcept;
    // The semaphore of the uses that there are; null without one, also in a process that was forked
    // from the one they belong to.
    static sem_t* inUse() noexcept;

    // Creates or opens the second semaphore, which nobody waits for. It goes at the module's end.
    static void openDone() noexcept;

    // Takes one, and tells the value right before unless that is null. False if the time limit of
    // setInitLibWait passed without one to take.
    static bool take(sem_t* semaphore, int* valueBefore) noexcept;
};

} // namespace cimple

#endif
