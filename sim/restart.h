// What takes effect, and what is lost, when an adapter is reset or its host starts again.
#pragma once

#include "sim/scenario.h"

namespace tvrsim {

enum class Restart {
    reset,      ///< of one adapter
    reboot,     ///< of the host, which keeps its power
    powerCycle, ///< of the host
};

/// Brings a port, and its adapter as far as the port's function is concerned, through a restart.
void restart(Adapter& adapter, Port& port, Restart how);

/// The part of a restart that concerns world wide names.
void activateNames(Adapter& adapter, Port& port, Restart how);

/// The part that concerns the adapter's firmware.
void activateFirmware(Adapter& adapter, Restart how);

/// Gives parameters their permanent values.
void dropTemporaryValues(std::optional<DriverParams>& parameters);

} // namespace tvrsim
