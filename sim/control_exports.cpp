// The exported control of the simulation.
#define TVRSIM_API __attribute__((visibility("default")))

#include "sim/tvrsim.h"

#include "sim/host.h"

#include <string_view>

using namespace tvrsim;

namespace {

template <class Work> int report(Work work, char* message, size_t messageSize) {
    std::string reason;
    try {
        work();
    } catch (const std::exception& error) {
        reason = error.what();
    }
    if (message != nullptr && messageSize > 0) {
        message[reason.copy(message, messageSize - 1)] = '\0';
    }
    return reason.empty() ? 0 : -1;
}

} // namespace

extern "C" {

int tvrsim_control(const char* request, char* message, size_t messageSize) {
    return report([&] { Host::instance().control(request == nullptr ? "" : request); }, message,
                  messageSize);
}

int tvrsim_check(const char* file, char* message, size_t messageSize) {
    return report([&] { Host::check(file == nullptr ? "" : file); }, message, messageSize);
}

int64_t tvrsim_calls(const char* entryPoint) {
    const std::string_view name = entryPoint == nullptr ? "" : entryPoint;
    CallRules& rules = Host::instance().rules();
    if (name == "*") {
        return static_cast<int64_t>(rules.allCalls());
    }
    const auto found = entryPointOf(name);
    return found ? static_cast<int64_t>(rules.calls(*found)) : -1;
}

uint32_t tvrsim_open_handles(void) {
    return static_cast<uint32_t>(Host::instance().openHandles());
}

} // extern "C"
