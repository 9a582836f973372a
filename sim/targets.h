// What stands behind the ports: remote ports and their logical units, as data.
#pragma once

#include "sim/json_reader.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvrsim {

/// A command to a logical unit: an Inquiry page by its code, or one of the two others.
using UnitCommand = uint16_t;
inline constexpr UnitCommand standardInquiryCommand = 0x100;
inline constexpr UnitCommand readCapacityCommand = 0x101;

/// One identifier in the device identification page.
struct Designator {
    uint8_t codeSet = 1; ///< binary
    uint8_t type = 3;    ///< NAA
    uint8_t association = 0;
    uint8_t protocol = 0;
    std::string bytes;
    std::optional<uint8_t> length; ///< the length that the page states, when it lies
};

/// The first executions of a command that fail.
struct CommandFault {
    uint64_t times = UINT64_MAX;
    HBA_STATUS status = HBA_STATUS_SCSI_CHECK_CONDITION;
    std::string sense;
};

/// A logical unit behind a target port.
struct Lun {
    uint64_t fcpLun = 0;
    uint32_t osLun = 0;
    std::string osDeviceName;
    uint32_t peripheralType = 0;
    std::string vendor;
    std::string product;
    std::string revision;
    std::string serialNumber;
    std::vector<Designator> designators;
    uint32_t blockSize = 512;
    uint64_t blocks = 0;
    std::map<UnitCommand, std::optional<std::string>> raw; ///< whole answers; none: refused
    std::map<UnitCommand, CommandFault> faults;
};

/// A remote port and its logical units.
struct Target {
    HBA_WWN nodeWwn = {};
    HBA_WWN portWwn = {};
    uint32_t fcId = 0;
    uint32_t scsiBus = 0;
    uint32_t scsiTarget = 0;
    std::vector<Lun> luns;
};

/// The remote ports that a local port sees. A table never changes, so copies of a port share one.
class TargetTable {
public:
    TargetTable() = default;
    explicit TargetTable(std::vector<Target> targets);
    TargetTable(const TargetTable&) = delete;
    TargetTable& operator=(const TargetTable&) = delete;

    const std::vector<Target>& targets() const { return m_targets; }

    /// Logical units of all targets.
    size_t unitCount() const { return m_units.size(); }

    bool hasPort(const HBA_WWN& wwpn) const;

    /// The first unit of that address, or null. Its cost grows with the logarithm of their number.
    const Lun* find(const HBA_WWN& wwpn, uint64_t fcpLun) const;

private:
    struct Address {
        uint64_t port;
        uint64_t lun;
        auto operator<=>(const Address&) const = default; // NOLINT(modernize-use-nullptr)
    };
    struct Unit {
        Address address;
        const Lun* lun;
    };

    std::vector<Target> m_targets;
    std::vector<uint64_t> m_ports; ///< in ascending order
    std::vector<Unit> m_units;     ///< by address
};

/// How the target mapping calls of an adapter or a port misbehave. The two counts run down with the
/// calls that they meet.
struct MappingFaults {
    uint64_t staleTimes = 0;      ///< calls that answer status 8
    uint64_t moreDataTimes = 0;   ///< then calls that answer status 7, whatever room they had
    std::optional<uint32_t> need; ///< count left with status 7
    std::optional<uint32_t> rows; ///< count left with status 0
};

/// Most logical units behind one port.
inline constexpr size_t mostUnits = 65536;

/// Reads the "targets" array of a port. Throws FormatError.
std::shared_ptr<const TargetTable> readTargets(const Json& array, const std::string& path);

/// Changes the named fields.
void readMappingFaults(const Json& value, const std::string& path, MappingFaults& faults);

} // namespace tvrsim
