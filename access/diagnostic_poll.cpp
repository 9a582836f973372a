#include "access/diagnostic_poll.h"

#include "access/entry_points.h"
#include "common/logger.h"
#include "runtime/thread.h"

#include <array>

namespace cimple {

namespace {

constexpr uint64 poll_pause = 1'000'000; // microseconds
constexpr int cancel_attempts = 122;

constexpr std::array<const char*, 20> result_texts = {
    "Success",
    "General Error",
    "Link Down",
    "I/O Error",
    "Timeout",
    "Transmit Error",
    "Receive Error",
    "Mailbox Error",
    "Error: Echo test not supported",
    "Error: Echo Failed",
    "Error: Target Unreachable",
    "Error: HBA temperature exceeded operational range. Adapter stopped."
    "\n\nPlease see the product documentation",
    "Error: Failed to allocate resource",
    "Error: Another diagnostic test is running. Please try again",
    "Error: Sequence Timeout",
    "Error: Bus reset received during test",
    "Error: Read-Write test is running",
    "Error: Driver busy. Please try again",
    "Error: Mailbox not ready",
    "Error: Port not ready",
};

bool is_running(const RM_DIAGRESULT& result) noexcept {
    return result.state == RM_TEST_PENDING || result.state == RM_TEST_RUNNING;
}

} // namespace

const char* MapDiagResultStatus(uint32 code) noexcept {
    return code < result_texts.size() ? result_texts[code] : "Unknown";
}

const char* MapDiagStatus(uint32 status) noexcept {
    switch (status) {
    case RM_STATUS_OK:
        return "Successful";
    case RM_STATUS_ERROR:
        return "An unspecified error occurred";
    case RM_STATUS_TOO_MANY_TESTS:
        return "There are too many pending/running requests in diag. results table";
    case RM_STATUS_DIAG_NOT_AVAILABLE:
        return "Diagnostics not available/Port not supported";
    case RM_STATUS_ADAPTER_BUSY:
        return "Adapter Busy: Another critical application may be running";
    default:
        return "Unknown";
    }
}

Diagnostic_Poll poll_results(const Running_Test& test, bool with_status) {
    Diagnostic_Poll poll{};
    for (int left = 121; left >= 0; --left) {
        Thread::sleep(poll_pause);
        poll.status = rm::LRM_DiagGetResults(test.port, test.id, &poll.result);
        if (with_status) {
            TVR_LOG("Polling for the results.. %d", poll.status);
        } else {
            TVR_LOG("Polling for the results.. ");
        }
        const bool is_ready = poll.status == RM_STATUS_OK;
        if (!is_ready && poll.status != RM_STATUS_TEST_NOT_FINISHED) {
            break;
        }
        if (is_running(poll.result)) {
            if (left == 1 && CancelTest(test) == 0) {
                break;
            }
        } else if (is_ready) {
            poll.is_over = true;
            break;
        }
    }
    return poll;
}

uint32 CancelTest(const Running_Test& test) {
    TVR_LOG("TVR_Diagnostics::CancelTest");
    if (test.name == nullptr || test.id == 0) {
        TVR_LOG("Invalid Parameter");
        return 1;
    }
    RM_DIAGRESULT result{};
    uint32 status = RM_STATUS_OK;
    for (int attempt = 0; attempt < cancel_attempts; ++attempt) {
        status = rm::LRM_DiagCancelDiagnostic(test.port, test.id);
        TVR_LOG("Polling for the Cancel status .. ");
        Thread::sleep(poll_pause);
        if (status != RM_STATUS_OK) {
            TVR_LOG("Unknown error, Unable to cancel the test, Exited with the error code : %d",
                    status);
            continue;
        }
        status = rm::LRM_DiagGetResults(test.port, test.id, &result);
        TVR_LOG("Polling for the results.. ");
        if (status == RM_STATUS_OK && result.state == RM_TEST_CANCELED) {
            TVR_LOG("Canceled the %s", test.name);
            return 0;
        }
    }
    return status;
}

} // namespace cimple
