// Requests that change how a port works: boot BIOS, reset, enabling, driver parameters.

#include "access/method_wrapper.h"

#include "access/attribute_buffer.h"
#include "access/entry_points.h"
#include "common/logger.h"

namespace cimple {

uint32 TVR_MethodWrapper::tvrcimGetBootBiosState(const HBA_WWN& port, uint32* state) {
    constexpr uint32 attributesSize = 2048;
    TVR_LOG("entering TVR_MethodWrapper::tvrcimGetBootBiosState");
    if (!isLocal(port)) {
        return 1;
    }
    if (state == nullptr) {
        TVR_LOG("Null Pointer Assignment to argument biosState");
        return 1;
    }
    AttributeBuffer buffer(attributesSize);
    const RM_STATUS status = rm::LRM_GetHBAAttributes(port, buffer.data(), &buffer.size);
    if (status != RM_STATUS_OK) {
        TVR_LOG("ERROR: RM_GetHBAAttributes call failed (%d)", status);
        return 1;
    }
    *state = getHBAAttributeInt(buffer, RM_HA_BOOT_CODE_ENABLED, "_BootCodeEnabled");
    TVR_LOG("********* biosState Value: %d", *state);
    return 0;
}

uint32 TVR_MethodWrapper::tvrcimSetBootBiosState(const HBA_WWN& port, const char* control) {
    TVR_LOG("entering TVR_MethodWrapper::tvrcimSetBootBiosState");
    if (!isLocal(port)) {
        return 1;
    }
    if (control == nullptr) {
        TVR_LOG("Null Pointer Assignment to argument CtrlWord");
        return 1;
    }
    TVR_LOG("CtrlWord is %2c", *control);
    switch (*control) {
    case 'e':
    case 'E':
        return rm::LRM_SetBootBiosState(port, 1);
    case 'd':
    case 'D':
        return rm::LRM_SetBootBiosState(port, 0);
    default:
        return 1;
    }
}

uint32 TVR_MethodWrapper::tvrcimResetHBA(const HBA_WWN& port) {
    constexpr uint32 resetMode = 1;
    TVR_LOG("TVR_MethodWrapper::tvrcimReset");
    if (!isLocal(port)) {
        return 1;
    }
    const RM_STATUS status = rm::LRM_ResetHBA(port, resetMode);
    if (status == RM_STATUS_OK) {
        char text[hbaNameTextSize];
        hbaNameToText(text, port);
        TVR_LOG("WWN %s is reset", text);
    } else {
        logRMStatus(status);
    }
    return status;
}

uint32 TVR_MethodWrapper::SetPortEnabled(const std::string& deviceId, uint32 enable) {
    TVR_LOG("Inside SetPortEnabled %s %d", deviceId.c_str(), enable);
    HBA_WWN port;
    if (!deviceIdToHBAName(port, deviceId)) {
        return 1;
    }
    TVR_LOG("Invoking RM_SetPortEnabled API ");
    uint8_t state = 0;
    const RM_STATUS status = rm::LRM_SetPortEnabled(port, static_cast<uint8_t>(enable), &state);
    if (status == RM_STATUS_BOOT_CODE_ENABLED) {
        TVR_LOG("\nERROR: TVRCMD_SetPortEnabled ");
        TVR_LOG("One or more Port Functions have Boot Code enabled. Enable through "
                "EnableBootCode");
        TVR_LOG("Please disable Boot Code and try again.\n");
        return status;
    }
    if (status != RM_STATUS_OK) {
        TVR_LOG("\nERROR: TVRCMD_SetPortEnabled: %d", status);
        TVR_LOG("RM_SetPortEnabled() Failed.\n");
        return status;
    }
    if (state == RM_PORT_ENABLED_AFTER_RESET) {
        TVR_LOG("Please reset the HBA to activate the new setting\n");
    }
    TVR_LOG("Exiting SetPortEnabled in SetPortEnabled \n");
    return 0;
}

uint32 TVR_MethodWrapper::tvrcimSetDriverParam(const std::string& deviceId, const HBA_WWN& port,
                                               uint8 cw1, uint8 cw2, const char* parameter,
                                               const char* value) {
    TVR_LOG("TVR_MethodWrapper::tvrcimSetDriverParam()");
    if (!isLocal(port)) {
        return 1;
    }
    if (cw1 > 1) {
        TVR_LOG("INVALID CW1");
        return 1;
    }
    if (cw2 > 1) {
        TVR_LOG("INVALID CW2");
        return 1;
    }
    if (parameter == nullptr) {
        TVR_LOG("Null pointer assignment in argument pDriverParam");
        return 1;
    }
    if (value == nullptr) {
        TVR_LOG("Null pointer assignment in argument pVal");
        return 1;
    }
    TVR_LOG("tvrcimSetDriverParam Parameters ::");
    TVR_LOG("CW1=%d CW2=%d pDriverParam=%s pVal=%s, deviceID=%s", cw1, cw2, parameter, value,
            deviceId.c_str());
    const std::string assignment = std::string(parameter) + "=" + value;
    if (assignment.size() >= driverParamTextSize) {
        TVR_LOG("Parameter and value are longer than %d characters",
                static_cast<int>(driverParamTextSize) - 1);
        return 1;
    }
    const uint32 control =
        (cw1 == 1 ? RM_DRIVER_PARAM_GLOBAL : 0) | (cw2 == 1 ? RM_DRIVER_PARAM_PERMANENT : 0);
    TVR_LOG("pParamStr:[%s], Ccw:[%d]", assignment.c_str(), control);
    TVR_LOG("Calling RM_SetDriverParam");
    const RM_STATUS status = rm::LRM_SetDriverParam(port, assignment.c_str(), control);
    if (status != RM_STATUS_OK) {
        TVR_LOG("RM_SetDriverParam fails with status : %d", status);
    }
    return status;
}

} // namespace cimple
