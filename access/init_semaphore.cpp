#include "access/init_semaphore.h"

#include "access/method_wrapper.h"
#include "runtime/until_closed.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

namespace cimple {

namespace {

constexpr mode_t permissions = 0644;
constexpr unsigned int initCount = 2;

std::atomic<uint32> waitLimit{60'000};

// Guards the rest, and makes the reading of the count and the taking one step.
constinit std::mutex stateMutex;
constinit sem_t* initSemaphore = nullptr;
constinit uint32 uses = 0;
constinit pid_t process = 0; // which the uses belong to: a fork starts anew
constinit sem_t* doneSemaphore = nullptr;
constinit pid_t doneProcess = 0;

// Both are called with the lock held. A process that was forked meanwhile leaves the names alone:
// they are its parent's.
void endDone() noexcept {
    if (doneSemaphore == nullptr) {
        return;
    }
    sem_close(doneSemaphore);
    doneSemaphore = nullptr;
    if (doneProcess == getpid()) {
        sem_unlink(InitSemaphore::doneName().c_str());
    }
}

void endUse() noexcept {
    if (uses == 0) {
        return;
    }
    sem_close(initSemaphore);
    if (--uses == 0) {
        initSemaphore = nullptr;
        if (process == getpid()) {
            sem_unlink(InitSemaphore::initName().c_str());
        }
    }
}

// At the end of the process other threads may still wait for the semaphores, and a fork may have
// left the lock held; the names alone go then, which bear the id of this very process.
struct ModuleEnd {
    ~ModuleEnd() {
        if (!module_is_closing()) {
            sem_unlink(InitSemaphore::doneName().c_str());
            sem_unlink(InitSemaphore::initName().c_str());
            return;
        }
        std::lock_guard lock(stateMutex);
        endDone();
        while (uses > 0) {
            endUse();
        }
    }
} moduleEnd;

timespec deadline() noexcept {
    constexpr long msPerSecond = 1000;
    constexpr long nsPerMs = 1'000'000;
    constexpr long nsPerSecond = 1'000'000'000;
    const long limit = waitLimit.load();
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    time.tv_sec += limit / msPerSecond;
    time.tv_nsec += limit % msPerSecond * nsPerMs;
    if (time.tv_nsec >= nsPerSecond) {
        time.tv_nsec -= nsPerSecond;
        ++time.tv_sec;
    }
    return time;
}

} // namespace

uint32 setInitLibWait(uint32 milliseconds) noexcept {
    return waitLimit.exchange(milliseconds);
}

SemaphoreName::SemaphoreName(const char* start) noexcept {
    snprintf(m_text, sizeof m_text, "%s%d", start, static_cast<int>(getpid()));
}

SemaphoreName InitSemaphore::initName() noexcept {
    return SemaphoreName("/TVR_RM_INIT_LIB_");
}

SemaphoreName InitSemaphore::doneName() noexcept {
    return SemaphoreName("/TVR_RM_INIT_LIB_DONE_");
}

sem_t* InitSemaphore::open() noexcept {
    const SemaphoreName name = initName();
    std::lock_guard lock(stateMutex);
    while (process != getpid() && uses > 0) {
        endUse();
    }
    process = getpid();
    if (uses == 0) {
        sem_unlink(name.c_str());
    }
    sem_t* semaphore = sem_open(name.c_str(), O_CREAT, permissions, initCount);
    if (semaphore == SEM_FAILED) {
        return nullptr;
    }
    initSemaphore = semaphore;
    ++uses;
    return semaphore;
}

void InitSemaphore::close() noexcept {
    std::lock_guard lock(stateMutex);
    endUse();
}

sem_t* InitSemaphore::inUse() noexcept {
    std::lock_guard lock(stateMutex);
    return process == getpid() ? initSemaphore : nullptr;
}

void InitSemaphore::openDone() noexcept {
    const SemaphoreName name = doneName();
    std::lock_guard lock(stateMutex);
    if (doneSemaphore != nullptr && doneProcess == getpid()) {
        return;
    }
    endDone();
    sem_t* semaphore = sem_open(name.c_str(), O_CREAT, permissions, 0);
    if (semaphore != SEM_FAILED) {
        doneSemaphore = semaphore;
        doneProcess = getpid();
    }
}

bool InitSemaphore::take(sem_t* semaphore, int* valueBefore) noexcept {
    {
        std::lock_guard lock(stateMutex);
        if (valueBefore != nullptr && sem_getvalue(semaphore, valueBefore) != 0) {
            return false;
        }
        if (sem_trywait(semaphore) == 0) {
            return true;
        }
    }
    const timespec limit = deadline();
    while (sem_timedwait(semaphore, &limit) != 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace cimple
