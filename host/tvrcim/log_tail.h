// A log that another process writes, on standard error while it grows.
#ifndef TVR_HOST_TVRCIM_LOG_TAIL_H
#define TVR_HOST_TVRCIM_LOG_TAIL_H

#include <filesystem>
#include <string>
#include <thread>

namespace tvrcim {

// Shows the whole lines of a file from its beginning on, soon after they were written; its
// destructor shows the rest. The file may come into being later.
class Log_Tail {
public:
    explicit Log_Tail(std::filesystem::path file);
    ~Log_Tail();
    Log_Tail(const Log_Tail&) = delete;
    Log_Tail& operator=(const Log_Tail&) = delete;

private:
    void show(bool is_over);

    std::filesystem::path _file;
    std::streamoff _shown = 0;
    std::jthread _thread;
};

} // namespace tvrcim

#endif
