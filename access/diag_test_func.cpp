#include "access/diag_test_func.h"

#include "access/entry_points.h"
#include "access/method_wrapper.h"
#include "common/logger.h"

namespace cimple {

uint32 TVR_DiagTestFunc::GetBeaconState(uint16* state, const std::string& deviceId) {
    TVR_LOG("TVR_DiagTestFunc::GetBeaconState");
    HBA_WWN port;
    if (!TVR_MethodWrapper::deviceIdToHBAName(port, deviceId)) {
        return TVR_INVALID_PORT;
    }
    if (state == nullptr) {
        TVR_LOG("INVALID Parameter");
        return TVR_INVALID_PORT;
    }
    uint32_t beacon = 0;
    switch (rm::LRM_DiagBeaconState(port, &beacon)) {
    case RM_STATUS_OK:
        break;
    case RM_STATUS_NOT_SUPPORTED:
        TVR_LOG("Beaconing not supported on host or adapter");
        *state = BEACON_NOT_SUPPORTED;
        return 0;
    case RM_STATUS_DIAG_NOT_AVAILABLE:
        TVR_LOG("Diagnostics not available");
        *state = BEACON_NOT_SUPPORTED;
        return 0;
    default:
        TVR_LOG("Unable to get the beacon state");
        *state = BEACON_UNKNOWN;
        return 0;
    }
    switch (beacon) {
    case RM_BEACON_NOT_AVAILABLE:
        TVR_LOG("Beacon state = 'Not available'");
        break;
    case RM_BEACON_OFF:
        TVR_LOG("Beacon state = 'Off'");
        *state = BEACON_OFF;
        break;
    case RM_BEACON_ON:
        TVR_LOG("Beacon state = 'On'");
        *state = BEACON_ON;
        break;
    default:
        TVR_LOG("Beacon state = 'Unknown'");
        break;
    }
    return 0;
}

uint32 TVR_DiagTestFunc::SetBeaconState(uint16 state, const std::string& deviceId) {
    TVR_LOG("TVR_DiagTestFunc::SetBeaconState");
    HBA_WWN port;
    if ((state != BEACON_ON && state != BEACON_OFF) ||
        !TVR_MethodWrapper::deviceIdToHBAName(port, deviceId)) {
        return TVR_INVALID_PORT;
    }
    const uint32_t beacon = state == BEACON_ON ? RM_BEACON_ON : RM_BEACON_OFF;
    const RM_STATUS status = rm::LRM_DiagBeacon(port, beacon);
    if (status != RM_STATUS_OK) {
        TVR_LOG("Failed to set the beacon state to %d", beacon);
        return status;
    }
    TVR_LOG("Successfully set the beacon state");
    return 0;
}

} // namespace cimple
