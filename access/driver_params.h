// The parameters that the adapters' driver has.
#ifndef TVR_ACCESS_DRIVER_PARAMS_H
#define TVR_ACCESS_DRIVER_PARAMS_H

#include "access/rm/rm_api.h"

#include <vector>

namespace cimple {

enum class DriverParamScope { port, global };

// What a read has come to. `params` is empty unless it is `read`.
enum class DriverParamOutcome {
    read,
    noMemory,        // for the records that the library is expected to have
    refused,         // the first call failed
    noMemoryForNeed, // for as many records as the library then asked for
    refusedAgain,    // the call with that room failed
};

struct DriverParamAnswer {
    DriverParamOutcome outcome;
    RM_STATUS status; // of the library's last answer
    std::vector<RM_DRIVERPARAM> params;
};

// The most records that are taken from a library; one that asks for more room gets none.
constexpr uint32_t maxDriverParams = 65536;

// Reads the parameters of the port, or those that hold for the whole driver. Starts with room for
// 52; a library that asks for more is called once more. The status of the first call is logged.
DriverParamAnswer readDriverParams(const HBA_WWN& port, DriverParamScope scope);

} // namespace cimple

#endif
