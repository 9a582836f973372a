#include "host/tvrcim/ending.h"

#include <poll.h>
#include <semaphore.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace tvrcim {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// So long a request that only reads may still be answered, and the module be unloaded.
constexpr auto patience = 1s;
// A signal that comes so soon after the first is the same one: a terminal sends it to a process and
// to the one that started it, which passes it on.
constexpr auto echo = 250ms;

volatile std::sig_atomic_t pipe_closed = 0;

void note_closed_pipe(int) {
    pipe_closed = 1;
}

std::atomic<bool> has_terminal = false;
termios terminal{};

// Those that would end this process; one that was ignored from the beginning stays so.
sigset_t ending_signals() noexcept {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&set, signal);
        }
    }
    return set;
}

// The number of the next signal; 0 if none comes in time.
int next_signal(int signals, std::chrono::milliseconds wait) noexcept {
    pollfd ready{signals, POLLIN, 0};
    signalfd_siginfo info{};
    if (poll(&ready, 1, static_cast<int>(wait.count())) > 0 &&
        read(signals, &info, sizeof info) == sizeof info) {
        return static_cast<int>(info.ssi_signo);
    }
    return 0;
}

// On a terminal, behind what Progress may have left there.
void tell(const std::string& text) noexcept {
    if (isatty(STDERR_FILENO) != 0) {
        const std::string line = "\r\033[Ktvrcim: " + text + "\n";
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
    }
}

} // namespace

std::atomic<int> Ending::changes{0};
std::atomic<const char*> Ending::changing{"change"};

void survive_closed_pipes() {
    struct sigaction action {};
    action.sa_handler = note_closed_pipe;
    action.sa_flags = SA_RESTART;
    sigaction(SIGPIPE, &action, nullptr);
}

bool is_pipe_closed() noexcept {
    return pipe_closed != 0;
}

void end_by_signal(int signal) noexcept {
    std::signal(signal, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    raise(signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    _exit(128 + signal); // for one that ends nobody
}

void remove_module_names(pid_t process) noexcept {
    for (const char* name : {"/TVR_RM_INIT_LIB_%d", "/TVR_RM_INIT_LIB_DONE_%d"}) {
        char text[64];
        std::snprintf(text, sizeof text, name, static_cast<int>(process));
        sem_unlink(text);
    }
}

Ending::Ending() {
    const sigset_t set = ending_signals();
    _signals = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    _over = eventfd(0, EFD_CLOEXEC);
    if (_signals < 0 || _over < 0) {
        return; // a signal then ends the process as if this object weren't there
    }
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    _thread = std::thread([this] { run(); });
}

Ending::~Ending() {
    if (_thread.joinable()) {
        eventfd_write(_over, 1);
        _thread.join();
        const sigset_t set = ending_signals();
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    }
    for (const int descriptor : {_signals, _over}) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
}

Ending::Watch::Watch(Ending& ending, tvrhost::Object_Manager& manager) : _ending(ending) {
    const std::lock_guard lock(_ending._mutex);
    _ending._manager = &manager;
    _ending._phase = Phase::serving;
}

Ending::Watch::~Watch() {
    std::unique_lock lock(_ending._mutex);
    _ending._changed.wait(lock, [this] { return _ending._phase != Phase::ending; });
    _ending._phase = Phase::finishing;
}

void Ending::keep_terminal() noexcept {
    has_terminal = tcgetattr(STDIN_FILENO, &terminal) == 0;
}

void Ending::run() {
    for (;;) {
        pollfd ready[] = {{_signals, POLLIN, 0}, {_over, POLLIN, 0}};
        if (poll(ready, 2, -1) < 0) {
            continue;
        }
        if ((ready[1].revents & POLLIN) != 0) {
            return;
        }
        if (const int signal = next_signal(_signals, 0ms)) {
            end(signal);
        }
    }
}

void Ending::end(int signal) {
    std::atomic<bool> is_shut_down = false;
    std::unique_lock lock(_mutex);
    const Phase phase = _phase;
    if (phase == Phase::serving) {
        _phase = Phase::ending;
        std::thread([this, &is_shut_down] {
            _manager->shutdown();
            is_shut_down = true;
        }).detach();
    }
    lock.unlock();
    if (phase != Phase::starting) {
        await_shutdown(is_shut_down);
    }
    if (has_terminal) {
        std::signal(SIGTTOU, SIG_IGN);
        tcsetattr(STDIN_FILENO, TCSANOW, &terminal);
    }
    remove_module_names(getpid());
    end_by_signal(signal);
}

// Returns when the module is unloaded, or nobody wants to wait for that any longer.
void Ending::await_shutdown(const std::atomic<bool>& is_shut_down) const {
    const auto begin = Clock::now();
    bool was_told = false;
    pollfd over{_over, POLLIN, 0}; // comes when all else has ended by itself
    while (!is_shut_down && poll(&over, 1, 0) == 0) {
        const bool again = next_signal(_signals, 10ms) != 0 && Clock::now() - begin > echo;
        const bool is_late = Clock::now() - begin > patience;
        if (again || (is_late && changes == 0)) {
            return;
        }
        if (is_late && !was_told) {
            tell(std::string("ends when the ") + changing.load() +
                 " is done; Ctrl-C again ends at once, in the middle of it");
            was_told = true;
        }
    }
}

} // namespace tvrcim
