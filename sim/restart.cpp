#include "sim/restart.h"

#include <utility>

namespace tvrsim {

void dropTemporaryValues(std::optional<DriverParams>& parameters) {
    if (!parameters) {
        return;
    }
    for (DriverParam& each : parameters->entries) {
        each.record.current = each.permanent;
    }
}

void restart(Adapter& adapter, Port& port, Restart how) {
    if (port.stateAfterReset) {
        setState(port, *std::exchange(port.stateAfterReset, std::nullopt));
    } else if (physicalStateOf(port) == RM_PORT_STATE_NEEDS_RESET) {
        setState(port, HBA_PORTSTATE_ONLINE);
    } else if (physicalStateOf(port) == RM_PORT_STATE_DOWN_NEEDS_RESET) {
        setState(port, HBA_PORTSTATE_LINKDOWN);
    }
    dropTemporaryValues(port.inventory.driverParameters);
    activateNames(adapter, port, how);
    activateFirmware(adapter, how);
    abortTest(adapter.test);
}

} // namespace tvrsim
