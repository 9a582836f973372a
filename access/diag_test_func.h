// The adapter's own tests and its locate beacon.
#ifndef TVR_ACCESS_DIAG_TEST_FUNC_H
#define TVR_ACCESS_DIAG_TEST_FUNC_H

#include "runtime/type.h"

#include <string>

namespace cimple {

// Value map of `LocationIndicator`.
enum Beacon : uint16 {
    BEACON_UNKNOWN = 0,
    BEACON_ON = 2,
    BEACON_OFF = 3,
    BEACON_NOT_SUPPORTED = 4,
};

// Result of an operation on a port whose name or argument is not valid.
constexpr uint32 TVR_INVALID_PORT = 32968;

class TVR_DiagTestFunc {
public:
    // Writes one of the values above, or leaves the output as it was when the adapter answers a
    // state that has none: callers set it to BEACON_UNKNOWN before. 0 also when the library fails;
    // TVR_INVALID_PORT for a null output or a name that doesn't begin with 16 digits.
    static uint32 GetBeaconState(uint16* state, const std::string& deviceId);

    // Switches the beacon on or off. 0; TVR_INVALID_PORT for any other state, or for a name that
    // doesn't begin with 16 digits; or the library's status.
    static uint32 SetBeaconState(uint16 state, const std::string& deviceId);
};

} // namespace cimple

#endif
