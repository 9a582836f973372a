// Virtual ports on top of a port, with the remote ports that they see and the virtual machines that
// use them, as data.
#pragma once

#include "sim/targets.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvrsim {

struct VirtualMachine {
    std::string server;
    std::string name;
    uint32_t memorySize = 0;
    std::string guestOs;
};

/// What a list call tells of its number of entries, where that is not the truth. Never changes how
/// much is written.
struct ListCounts {
    std::optional<uint32_t> need;  ///< with status 7
    std::optional<uint32_t> count; ///< with status 0
};

struct VirtualPort {
    HBA_WWN portWwn = {};
    HBA_WWN nodeWwn = {};
    uint32_t fcId = 0;
    std::string name;
    std::shared_ptr<const TargetTable> targets = std::make_shared<const TargetTable>();
    MappingFaults mapping; ///< of LRM_VPListTargets
    std::vector<VirtualMachine> machines;
    ListCounts machineCounts;
};

struct VirtualPorts {
    std::vector<VirtualPort> entries;
    ListCounts counts;
};

/// Most virtual ports of a port, and virtual machines of one of them.
inline constexpr size_t mostVirtualPorts = 2047;
inline constexpr size_t mostMachines = 4096;

/// Reads the "virtualPorts" field of a port of that name. Throws FormatError.
void readVirtualPorts(ObjectReader& port, const HBA_WWN& wwpn, std::optional<VirtualPorts>& ports);

/// Logical units behind virtual ports.
size_t unitCount(const std::optional<VirtualPorts>& ports);

} // namespace tvrsim
