#include "host/tvrcim/log_tail.h"

#include <chrono>
#include <condition_variable>
#include <fstream>
#include <iostream>
#include <mutex>
#include <utility>

namespace tvrcim {

Log_Tail::Log_Tail(std::filesystem::path file) : _file(std::move(file)) {
    _thread = std::jthread([this](const std::stop_token& stop) {
        using namespace std::chrono_literals;
        std::mutex mutex;
        std::unique_lock lock(mutex);
        std::condition_variable_any ended;
        while (!ended.wait_for(lock, stop, 100ms, [&stop] { return stop.stop_requested(); })) {
            show(false);
        }
    });
}

Log_Tail::~Log_Tail() {
    _thread.request_stop();
    _thread.join();
    show(true);
}

// A line without its end is one that is being written, unless nobody writes any more.
void Log_Tail::show(bool is_over) {
    std::ifstream in(_file);
    in.seekg(_shown);
    for (std::string line; std::getline(in, line) && (is_over || !in.eof());) {
        std::cerr << line << '\n';
        _shown += static_cast<std::streamoff>(line.size()) + 1;
    }
}

} // namespace tvrcim
