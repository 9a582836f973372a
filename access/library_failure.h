// How a failure of the adapter libraries reaches a client.
#ifndef TVR_ACCESS_LIBRARY_FAILURE_H
#define TVR_ACCESS_LIBRARY_FAILURE_H

#include "runtime/type.h"

namespace cimple {

// Added to the status of the library or of a wrapper around it.
constexpr uint32 TVR_LIBRARY_FAILED = 40000;

// The result of a method that failed with the status. One that is too large to be added never turns
// into success.
constexpr uint32 libraryFailure(uint32 status) noexcept {
    return status > UINT32_MAX - TVR_LIBRARY_FAILED ? UINT32_MAX : TVR_LIBRARY_FAILED + status;
}

} // namespace cimple

#endif
