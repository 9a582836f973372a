// The simulated hardware as data, and its reading from JSON. docs/scenario.md tells the format.
#pragma once

#include "sim/diagnostics.h"
#include "sim/entry_points.h"
#include "sim/firmware.h"
#include "sim/inventory.h"
#include "sim/link_events.h"
#include "sim/targets.h"
#include "sim/virtual_ports.h"
#include "sim/world_wide_names.h"

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

/// What the library tells as the length of an attribute's value.
enum class AttributeLengths : uint32_t {
    exact = 0,
    zero = 1,
    generous = 2, ///< of a field with zeros behind the value
    wild = 3,     ///< 65535
};

/// When the HBA API's data of an adapter are stale: calls for them answer status 8.
enum class Staleness : uint32_t {
    never = 0,
    afterChanges = 1, ///< from the start and after each change until somebody refreshes them
    everyHandle = 2,  ///< for each handle until it is refreshed itself
};

enum class Beacon : uint32_t {
    notAvailable = RM_BEACON_NOT_AVAILABLE,
    off = RM_BEACON_OFF,
    on = RM_BEACON_ON,
    notSupported = 100,  ///< the state cannot be asked for: status 2
    noDiagnostics = 101, ///< status 63
    unanswered = 102,    ///< status 0 without a state
    unknown = 103,       ///< a state that means nothing
};

/// Executions of commands that a scenario lets fail, by unit and command.
using CommandCounts = std::map<std::pair<const Lun*, UnitCommand>, uint64_t>;

/// What a port shows of what it is connected to.
struct Surroundings {
    HBA_PORTTYPE type = HBA_PORTTYPE_LPORT;
    HBA_WWN fabricName = {};
    HBA_UINT32 discoveredPorts = 0;
    Attributes attributes; ///< topology and fabric name
    std::shared_ptr<const TargetTable> targets = std::make_shared<const TargetTable>();
};

struct Port {
    HBA_PORTATTRIBUTES hba = {};
    Attributes attributes;
    std::map<uint16_t, Counter> statistics;
    Beacon beacon = Beacon::off;
    Inventory inventory;
    std::optional<NameManagement> names;      ///< empty: none
    std::optional<VirtualPorts> virtualPorts; ///< empty: not supported
    std::shared_ptr<const TargetTable> targets = std::make_shared<const TargetTable>();
    CommandCounts failedCommands;           ///< of units in the table of targets
    std::optional<Surroundings> behindPlug; ///< put aside while a loopback plug is in their place
    std::optional<Diagnostics> diagnostics = usualDiagnostics();
    MappingFaults mapping;      ///< of LRM_GetFcpTargetMapping
    std::optional<Flaps> flaps; ///< empty: events come of changes and requests alone
    bool enableNeedsReset = false;
    uint32_t stateWhenEnabled = HBA_PORTSTATE_LINKDOWN;
    std::optional<uint32_t> stateAfterReset; ///< set by a change that waits for a reset
};

/// What the HBA API lists as an adapter: one function of a board.
struct Adapter {
    std::string name;
    HBA_ADAPTERATTRIBUTES hba = {};
    Attributes attributes;
    uint32_t driverType = 0;
    AttributeLengths attributeLengths = AttributeLengths::exact; ///< also of its ports
    Staleness staleness = Staleness::never;
    bool hasChanged = true; ///< since the last refresh
    MappingFaults mapping;  ///< of HBA_GetFcpTargetMapping
    FirmwareUpdate firmware;
    std::optional<DiagnosticTest> test;
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
    std::optional<DriverParams> globalDriverParameters;
    Rules rules;
};

/// Most adapters, and most logical units behind all of them, that a scenario can have.
inline constexpr size_t mostAdapters = 4096;
inline constexpr size_t mostUnitsOfAll = 262144;

/// An attribute of 32 bits.
std::string integerAttribute(uint32_t value);

/// The physical state of a port as the RM library tells it; where it tells none, the HBA API's.
uint32_t physicalStateOf(const Port& port);

/// Puts a port into a physical state; the HBA API shows the nearest that it knows.
void setState(Port& port, uint32_t state);

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
