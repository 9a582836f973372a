// A line on the terminal while something takes long.
#ifndef TVR_HOST_TVRCIM_PROGRESS_H
#define TVR_HOST_TVRCIM_PROGRESS_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace tvrcim {

// From half a second on, until its end, it shows `what` and the seconds that have gone by on
// standard error; never if that is no terminal.
class Progress {
public:
    explicit Progress(std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void show();

    std::string _what;
    std::mutex _mutex;
    std::condition_variable _ended;
    bool _over = false;
    std::thread _thread;
};

} // namespace tvrcim

#endif
