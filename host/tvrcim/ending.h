// How this process ends when a signal ends it: with the module unloaded, and with nothing left in
// the system that carries its name.
#ifndef TVR_HOST_TVRCIM_ENDING_H
#define TVR_HOST_TVRCIM_ENDING_H

#include "host/object_manager.h"

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace tvrcim {

// Lets a write to a pipe that nobody reads any more fail instead of ending the process.
void survive_closed_pipes();
// True if such a write has failed.
bool is_pipe_closed() noexcept;

// Ends this process by the signal, as if nothing had been set up for it.
[[noreturn]] void end_by_signal(int signal) noexcept;

// Removes the names that the module keeps in the system while a process uses it. For a process
// that can't unload the module, or couldn't.
void remove_module_names(pid_t process) noexcept;

// While it lives, SIGINT, SIGTERM and SIGHUP are taken by a thread of its own. At the first one it
// shuts the object manager down, which waits for the request that is being answered, and ends the
// process by that signal. At a second one, or where the request only reads and isn't answered soon,
// the process ends at once; the module's names are removed then too.
//
// To be made before any other thread, so that none of them gets the signals.
class Ending {
public:
    Ending();
    ~Ending();
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;

    // While it lives, which is less long than the object manager does, that one is shut down at a
    // signal; afterwards a signal waits for the process's own end. The destructor doesn't return
    // if a signal is ending the process.
    class Watch {
    public:
        Watch(Ending& ending, tvrhost::Object_Manager& manager);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        Ending& _ending;
    };

    // The terminal of standard input is left as it is now, whatever is done to it until the end.
    static void keep_terminal() noexcept;

    // While it lives a request changes something, and has to be answered whatever it takes; a word
    // for people tells what it is.
    class Change {
    public:
        explicit Change(const char* what = "change") {
            changing = what;
            ++changes;
        }
        ~Change() { --changes; }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
    };

private:
    enum class Phase { starting, serving, ending, finishing };

    void run();
    [[noreturn]] void end(int signal);
    void await_shutdown(const std::atomic<bool>& is_shut_down) const;

    static std::atomic<int> changes;
    static std::atomic<const char*> changing;

    std::mutex _mutex;
    std::condition_variable _changed;
    Phase _phase = Phase::starting;
    tvrhost::Object_Manager* _manager = nullptr;
    int _signals = -1; // descriptors that tell of a signal, and of the end of this object
    int _over = -1;
    std::thread _thread;
};

} // namespace tvrcim

#endif
