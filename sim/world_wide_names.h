// The banks of world wide names of a port.
#pragma once

#include "sim/json_reader.h"

#include <optional>

namespace tvrsim {

struct NamePair {
    HBA_WWN port = {};
    HBA_WWN node = {};
};

bool operator==(const NamePair& a, const NamePair& b);

enum class NameActivation : uint32_t { reset = 0, reboot = 1 };

/// What a port has for the management of its names. The current names are the port's own.
struct NameManagement {
    NameActivation activation = NameActivation::reset;
    std::optional<uint32_t> capability;     ///< the whole word, when the usual one is not to be
    uint64_t busyTimes = 0;                 ///< changes and restores to come that answer status 97
    std::optional<NamePair> factoryDefault; ///< empty: the names that the scenario gave
    std::optional<NamePair> nonVolatile;    ///< likewise
    std::optional<NamePair> volatileNames;
    bool isVolatileCurrent = false;
    std::optional<uint32_t> waitingBank; ///< volatile or non-volatile, until its names take effect
};

/// Reads the "wwnManagement" field of a port. Throws FormatError.
void readNameManagement(ObjectReader& port, std::optional<NameManagement>& names);

} // namespace tvrsim
