#include "host/tvrcim/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace tvrcim {

namespace {

constexpr std::size_t widest = 60;
constexpr std::size_t seconds_width = 12; // of what stands behind the text

// So much of the text that a line of the terminal has room for it and the seconds.
std::size_t room() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return widest;
    }
    return std::min(widest, size.ws_col - std::min<std::size_t>(size.ws_col, seconds_width));
}

} // namespace

Progress::Progress(std::string what) : _what(std::move(what)) {
    if (isatty(STDERR_FILENO) != 0) {
        _what.resize(std::min(_what.size(), room()));
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
