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
#include <utility>

namespace cimple {

namespace {

constexpr mode_t permissions = 0644;
constexpr unsigned int initCount = 2;

std::atomic<uint32> waitLimit{60'000};

// What belongs to a process: one that was forked starts anew and leaves the names to its parent.
template <class Handle> struct OfProcess {
    Handle handle = nullptr;
    pid_t process = 0;

    bool isOurs() const noexcept { return handle != nullptr && process == getpid(); }
};

struct State {
    std::mutex mutex;
    OfProcess<std::shared_ptr<InitSemaphore>> life;
    OfProcess<sem_t*> done;
};

// Never destroyed: at a process's end other threads may still be at work.
union Lasting {
    constexpr Lasting() : state() {}
    ~Lasting() {}
    State state;
};
constinit Lasting lasting;

State& state() noexcept {
    return lasting.state;
}

// The rest is called with the lock held.
std::shared_ptr<InitSemaphore> endLife() noexcept {
    const bool isOurs = state().life.isOurs();
    std::shared_ptr<InitSemaphore> life = std::move(state().life.handle);
    if (!isOurs) {
        return nullptr;
    }
    sem_unlink(InitSemaphore::initName().c_str());
    return life;
}

void endDone() noexcept {
    OfProcess<sem_t*>& done = state().done;
    if (done.handle == nullptr) {
        return;
    }
    sem_close(done.handle);
    if (done.isOurs()) {
        sem_unlink(InitSemaphore::doneName().c_str());
    }
    done.handle = nullptr;
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
        const std::lock_guard lock(state().mutex);
        endDone();
        endLife();
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

std::shared_ptr<InitSemaphore> InitSemaphore::join() {
    const SemaphoreName name = initName();
    const std::lock_guard lock(state().mutex);
    OfProcess<std::shared_ptr<InitSemaphore>>& life = state().life;
    if (life.isOurs()) {
        return life.handle;
    }
    const bool isForeign = sem_unlink(name.c_str()) != 0 && errno == EACCES;
    auto fresh = std::make_shared<InitSemaphore>();
    if (!isForeign) {
        sem_t* named = sem_open(name.c_str(), O_CREAT, permissions, initCount);
        if (named == SEM_FAILED) {
            return nullptr;
        }
        fresh->m_named = named;
    }
    life = {fresh, getpid()};
    return fresh;
}

std::shared_ptr<InitSemaphore> InitSemaphore::end() noexcept {
    const std::lock_guard lock(state().mutex);
    return endLife();
}

void InitSemaphore::openDone() noexcept {
    const SemaphoreName name = doneName();
    const std::lock_guard lock(state().mutex);
    if (state().done.isOurs()) {
        return;
    }
    endDone();
    sem_t* semaphore = sem_open(name.c_str(), O_CREAT, permissions, 0);
    if (semaphore != SEM_FAILED) {
        state().done = {semaphore, getpid()};
    }
}

InitSemaphore::InitSemaphore() noexcept {
    sem_init(&m_unnamed, 0, initCount);
}

InitSemaphore::~InitSemaphore() {
    if (m_named != nullptr) {
        sem_close(m_named);
    }
    sem_destroy(&m_unnamed);
}

int InitSemaphore::value() noexcept {
    int value = 0;
    sem_getvalue(semaphore(), &value);
    return value;
}

bool InitSemaphore::take(int* valueBefore) noexcept {
    {
        const std::lock_guard lock(state().mutex);
        if (valueBefore != nullptr) {
            *valueBefore = value();
        }
        if (sem_trywait(semaphore()) == 0) {
            return true;
        }
    }
    const timespec limit = deadline();
    while (sem_timedwait(semaphore(), &limit) != 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace cimple
