#include "runtime/until_closed.h"

#include <atomic>

namespace cimple {

namespace {

constinit std::atomic<bool> closing{false};
constinit std::atomic<bool> process_ends{false};

// When a module is closed, its termination functions run before the destructors of its static
// objects; at the end of a process they run after them.
struct Process_End {
    ~Process_End() { process_ends = !closing; }
} process_end;

__attribute__((destructor)) void close_module() noexcept {
    closing = !process_ends;
}

} // namespace

bool module_is_closing() noexcept {
    return closing;
}

} // namespace cimple
