#include "host/tvrcim/progress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace tvrcim {

namespace {

constexpr std::size_t widest = 60; // with the seconds behind it on a line of any terminal

} // namespace

Progress::Progress(std::string what) : _what(std::move(what)) {
    if (_what.size() > widest) {
        _what.resize(widest);
    }
    if (isatty(STDERR_FILENO) != 0) {
        _thread = std::thread([this] { show(); });
    }
}

Progress::~Progress() {
    if (!_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(_mutex);
        _over = true;
    }
    _ended.notify_all();
    _thread.join();
}

void Progress::show() {
    using namespace std::chrono_literals;
    const auto start = std::chrono::steady_clock::now();
    std::unique_lock lock(_mutex);
    if (_ended.wait_for(lock, 500ms, [this] { return _over; })) {
        return;
    }
    do {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(
            std::chrono::steady_clock::now() - start);
        std::fprintf(stderr, "\r%s ... %lld s", _what.c_str(),
                     static_cast<long long>(seconds.count()));
        std::fflush(stderr);
    } while (!_ended.wait_for(lock, 1s, [this] { return _over; }));
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
}

} // namespace tvrcim
