// The simulated hardware as data, and its reading from JSON. docs/scenario.md tells the format.
#pragma once

#include "sim/entry_points.h"
#include "sim/json_reader.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tvrsim {

/// A counter that moves with the time since its start and with every read.
struct Counter {
    uint64_t value = 0;
    uint64_t perSecond = 0;
    uint64_t perRead = 0;
};

/// Values by attribute identifier, as the bytes that the library hands out. An attribute that the
/// adapter lacks has no entry.
using Attributes = std::map<uint16_t, std::string>;

enum class Beacon : uint32_t {
    notAvailable = RM_BEACON_NOT_AVAILABLE,
    off = RM_BEACON_OFF,
    on = RM_BEACON_ON,
    notSupported = 100,  ///< the state cannot be asked for: status 2
    noDiagnostics = 101, ///< status 63
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
    std::string identifier; ///< NAA identifier, 8 or 16 bytes
    uint32_t blockSize = 512;
    uint64_t blocks = 0;
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

struct Port {
    HBA_PORTATTRIBUTES hba = {};
    Attributes attributes;
    std::map<uint16_t, Counter> statistics;
    Beacon beacon = Beacon::off;
    std::vector<Target> targets;
};

/// What the HBA API lists as an adapter: one function of a board.
struct Adapter {
    std::string name;
    HBA_ADAPTERATTRIBUTES hba = {};
    Attributes attributes;
    uint32_t driverType = 0;
    std::vector<Port> ports;
};

/// How calls of an entry point are treated. A rule with a forced status or a failing call keeps the
/// entry point from doing its work.
struct Rule {
    std::string where; ///< adapter name or WWPN that the rule is limited to; empty for all
    std::chrono::microseconds latency{0};
    std::optional<uint32_t> status; ///< forced on every call
    uint64_t failCall = 0;          ///< first failing call, counted from 1; 0 for none
    uint64_t failTimes = 1;         ///< calls in a row that fail
    uint32_t failStatus = RM_STATUS_ERROR;
    uint64_t seen = 0; ///< calls that the rule has met so far
};

/// Rules by entry point. Those under EntryPoint::count meet every entry point.
using Rules = std::map<EntryPoint, std::vector<Rule>>;

struct Scenario {
    std::vector<Adapter> adapters;
    Rules rules;
};

/// Most adapters that a scenario can have.
inline constexpr size_t mostAdapters = 4096;

/// Reads a whole scenario. Throws FormatError.
Scenario readScenario(const Json& document, const std::string& path);

/// Changes the named fields of an adapter or port and leaves the others. Throws FormatError.
void changeAdapter(const Json& fields, const std::string& path, Adapter& adapter);
void changePort(const Json& fields, const std::string& path, Port& port);

/// Reads the "entryPoints" object into rules; named entry points lose their former rules.
void readRules(const Json& object, const std::string& path, Rules& rules);

/// The text of the built-in scenario.
std::string_view defaultScenario();

} // namespace tvrsim
