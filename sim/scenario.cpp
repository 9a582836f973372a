#include "sim/scenario.h"

#include "sim/scenario_names.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tvrsim {

namespace {

constexpr uint32_t highestAttribute = UINT16_MAX;

/// What the HBA API says of a port whose physical state is one of the RM library's own.
uint32_t hbaStateOf(uint32_t physicalState) {
    switch (physicalState) {
    case RM_PORT_STATE_NEEDS_RESET:
        return HBA_PORTSTATE_ONLINE;
    case RM_PORT_STATE_DOWN_NEEDS_RESET:
        return HBA_PORTSTATE_LINKDOWN;
    case RM_PORT_STATE_DISABLED:
        return HBA_PORTSTATE_OFFLINE;
    default:
        return physicalState;
    }
}

} // namespace

std::string integerAttribute(uint32_t value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

uint32_t physicalStateOf(const Port& port) {
    uint32_t state = port.hba.PortState;
    const auto found = port.attributes.find(RM_PA_PHYSICAL_STATE);
    if (found != port.attributes.end() && found->second.size() == sizeof state) {
        std::memcpy(&state, found->second.data(), sizeof state);
    }
    return state;
}

void setState(Port& port, uint32_t state) {
    port.hba.PortState = hbaStateOf(state);
    port.attributes[RM_PA_PHYSICAL_STATE] = integerAttribute(state);
    port.attributes[RM_PA_LINK_STATE] = integerAttribute(state);
}

namespace {

template <size_t size> void setChars(char (&out)[size], std::string_view text) {
    std::fill_n(out, size, '\0');
    std::copy_n(text.begin(), std::min(text.size(), size), out);
}

/// The attribute of a name or of a decimal identifier.
AttributeName attributeOf(const std::string& key, const std::string& path,
                          std::span<const AttributeName> names) {
    for (const AttributeName& each : names) {
        if (each.name == key || std::to_string(each.id) == key) {
            return each;
        }
    }
    const bool isNumber =
        !key.empty() && key.size() <= 5 &&
        std::all_of(key.begin(), key.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!isNumber || std::stoul(key) > highestAttribute) {
        throw FormatError(path, "no such attribute");
    }
    return {"", static_cast<uint16_t>(std::stoul(key)), AttributeKind::bytes};
}

std::string readAttribute(const Json& value, const std::string& path, AttributeKind kind) {
    if (value.is_object()) {
        return readTextOrBytes(value, path, 4096);
    }
    switch (kind) {
    case AttributeKind::integer:
        return integerAttribute(static_cast<uint32_t>(readNumber(value, path, UINT32_MAX)));
    case AttributeKind::text:
        return readText(value, path, 4096);
    case AttributeKind::bytes:
        break;
    }
    return readBytes(value, path);
}

/// Values given as null are taken away.
void readAttributes(const Json& object, const std::string& path,
                    std::span<const AttributeName> names, Attributes& out) {
    const ObjectReader reader(object, path);
    for (const auto& field : object.members()) {
        const std::string place = reader.pathOf(field.name);
        const AttributeName attribute = attributeOf(field.name, place, names);
        if (field.value.is_null()) {
            out.erase(attribute.id);
        } else {
            out[attribute.id] = readAttribute(field.value, place, attribute.kind);
        }
    }
}

Counter readCounter(const Json& value, const std::string& path, Counter counter) {
    if (!value.is_object()) {
        return {readNumber(value, path, UINT64_MAX), 0, 0};
    }
    ObjectReader reader(value, path);
    reader.number("value", counter.value);
    reader.number("perSecond", counter.perSecond);
    reader.number("perRead", counter.perRead);
    reader.finish();
    return counter;
}

void readStatistics(const Json& object, const std::string& path, std::map<uint16_t, Counter>& out) {
    const ObjectReader reader(object, path);
    for (const auto& field : object.members()) {
        const std::string place = reader.pathOf(field.name);
        const uint16_t id = attributeOf(field.name, place, statisticNames).id;
        if (field.value.is_null()) {
            out.erase(id);
        } else {
            out[id] = readCounter(field.value, place, out[id]);
        }
    }
}

HBA_FC4TYPES readFc4Types(const Json& value, const std::string& path) {
    const std::string bytes = readBytes(value, path);
    HBA_FC4TYPES types = {};
    if (bytes.size() > sizeof types.bits) {
        throw FormatError(path, "a map of FC-4 types has at most 32 bytes");
    }
    std::copy(bytes.begin(), bytes.end(), types.bits);
    return types;
}

/// Names in a range of locally administered addresses; adapters and ports count upwards in it.
HBA_WWN generatedWwn(uint8_t nameType, size_t adapter, size_t port) {
    const size_t serial = (adapter << 8) + port;
    HBA_WWN wwn = {{nameType, 0x00, 0x02, 0x54, 0x56, 0, 0, 0}};
    wwn.wwn[5] = static_cast<HBA_UINT8>(serial >> 16);
    wwn.wwn[6] = static_cast<HBA_UINT8>(serial >> 8);
    wwn.wwn[7] = static_cast<HBA_UINT8>(serial);
    return wwn;
}

Port defaultPort(size_t adapter, size_t index) {
    Port port;
    HBA_PORTATTRIBUTES& hba = port.hba;
    hba.NodeWWN = generatedWwn(0x20, adapter, 0);
    hba.PortWWN = generatedWwn(0x10, adapter, index);
    hba.PortType = HBA_PORTTYPE_NPORT;
    hba.PortSupportedClassofService = 0x08;
    hba.PortSupportedFc4Types.bits[2] = 0x01;
    hba.PortActiveFc4Types.bits[2] = 0x01;
    hba.PortFcId = static_cast<HBA_UINT32>(0x010000 + ((adapter & 0xFF) << 8) + (index & 0xFF));
    hba.PortSupportedSpeed = HBA_PORTSPEED_4GBIT | HBA_PORTSPEED_8GBIT | HBA_PORTSPEED_16GBIT;
    hba.PortSpeed = HBA_PORTSPEED_16GBIT;
    hba.PortMaxFrameSize = 2048;
    hba.FabricName = HBA_WWN{{0x10, 0x00, 0x02, 0x54, 0x57, 0x00, 0x00, 0x01}};
    setChars(hba.PortSymbolicName,
             "Tavrin FC port " + std::to_string(index) + " of adapter " + std::to_string(adapter));
    setChars(hba.OSDeviceName, "/sys/class/fc_host/host" + std::to_string(adapter + index + 1));
    setState(port, HBA_PORTSTATE_ONLINE);
    port.attributes[RM_PA_TOPOLOGY] = integerAttribute(hba.PortType);
    for (const AttributeName& name : statisticNames) {
        port.statistics[name.id] = {};
    }
    port.statistics[RM_PS_SECONDS_SINCE_RESET] = {0, 1, 0};
    return port;
}

/// The attributes that follow others unless the scenario sets them.
void deriveFabricAttributes(Port& port, bool hasTopology, bool hasFabric) {
    if (!hasTopology) {
        port.attributes[RM_PA_TOPOLOGY] = integerAttribute(port.hba.PortType);
    }
    if (!hasFabric) {
        port.attributes[RM_PA_FABRIC_NAME] =
            std::string(reinterpret_cast<const char*>(port.hba.FabricName.wwn), 8);
    }
}

Adapter defaultAdapter(size_t index) {
    Adapter adapter;
    HBA_ADAPTERATTRIBUTES& hba = adapter.hba;
    setChars(hba.Manufacturer, "Tavrin");
    std::string serial = std::to_string(index);
    serial.insert(0, 8 - std::min<size_t>(8, serial.size()), '0');
    setChars(hba.SerialNumber, "TV" + serial);
    setChars(hba.Model, "TVR-F1601");
    setChars(hba.ModelDescription, "Tavrin TVR-F1601 16Gb 1-port Fibre Channel adapter");
    hba.NodeWWN = generatedWwn(0x20, index, 0);
    setChars(hba.NodeSymbolicName, "Tavrin TVR-F1601 adapter " + std::to_string(index));
    setChars(hba.HardwareVersion, "0000000B");
    setChars(hba.DriverVersion, "10.4.255.16");
    setChars(hba.OptionROMVersion, "5.12a6");
    setChars(hba.FirmwareVersion, "2.82a4");
    hba.VendorSpecificID = 0x01605456;
    setChars(hba.DriverName, "tvrfc");
    adapter.driverType = 4;
    adapter.attributes = {
        {RM_HA_DEVICE_ID, integerAttribute(0x0160u)},
        {RM_HA_MODEL_ID, integerAttribute(0x1601u)},
        {RM_HA_OPERATIONAL_FIRMWARE, "Overlay 3"},
        {RM_HA_IEEE_ADDRESS, std::string(reinterpret_cast<const char*>(hba.NodeWWN.wwn) + 2, 6)},
        {RM_HA_BOOT_CODE_ENABLED, integerAttribute(1u)},
        {RM_HA_BOOT_BIOS_VERSION, "5.12a6"},
        {RM_HA_DIAG_VERSION, integerAttribute(3u)},
        {RM_HA_INITIAL_FIRMWARE, "2.80a1"},
        {RM_HA_KERNEL_VERSION, "1.40a3"},
        {RM_HA_SLI_MODE, integerAttribute(3u)},
        {RM_HA_BOARD_TEMPERATURE, integerAttribute(0x005A6430u)},
        {RM_HA_PORT_NUMBER, integerAttribute(0u)},
        {RM_HA_FUNCTION_TYPE, integerAttribute(0u)},
        {RM_HA_SP_FIRMWARE_VERSION, "2.82a4"},
        {RM_HA_SP_FIRMWARE_NAME, "SP-F16"},
        {RM_HA_ULP_FIRMWARE_VERSION, "2.82a4"},
        {RM_HA_ULP_FIRMWARE_NAME, "ULP-FCP"},
        {RM_HA_FC_UNIVERSAL_VERSION, "5.12a6"},
        {RM_HA_FC_X86_BIOS_VERSION, "5.10a2"},
        {RM_HA_FC_EFI_VERSION, "5.12a1"},
        {RM_HA_FC_FCODE_VERSION, "3.40a0"},
    };
    return adapter;
}

/// Gives a port other surroundings and answers the former ones.
Surroundings exchangeSurroundings(Port& port, Surroundings next) {
    std::swap(port.hba.PortType, next.type);
    std::swap(port.hba.FabricName, next.fabricName);
    std::swap(port.hba.NumberofDiscoveredPorts, next.discoveredPorts);
    std::swap(port.targets, next.targets);
    Attributes former;
    for (const uint16_t id : {RM_PA_TOPOLOGY, RM_PA_FABRIC_NAME}) {
        former.insert(port.attributes.extract(id));
        port.attributes.insert(next.attributes.extract(id));
    }
    next.attributes = std::move(former);
    return next;
}

/// What a port sees whose own signal comes back.
Surroundings loopbackPlug() {
    Surroundings plug;
    plug.attributes = {{RM_PA_TOPOLOGY, integerAttribute(plug.type)},
                       {RM_PA_FABRIC_NAME, std::string(sizeof plug.fabricName.wwn, '\0')}};
    return plug;
}

void readPortFields(const Json& value, const std::string& path, Port& port) {
    ObjectReader reader(value, path);
    bool hasPlug = port.behindPlug.has_value();
    if (hasPlug) {
        exchangeSurroundings(port, *std::exchange(port.behindPlug, std::nullopt));
    }
    reader.flag("loopbackPlug", hasPlug);
    HBA_PORTATTRIBUTES& hba = port.hba;
    reader.wwn("nodeWWN", hba.NodeWWN);
    reader.wwn("portWWN", hba.PortWWN);
    reader.number("fcId", hba.PortFcId, 0xFFFFFF);
    reader.named("type", hba.PortType, portTypeWords);
    if (const Json* state = reader.find("state")) {
        setState(port, readNamed(*state, reader.pathOf("state"), portStateWords));
    }
    reader.number("supportedClassOfService", hba.PortSupportedClassofService);
    if (const Json* types = reader.find("supportedFc4Types")) {
        hba.PortSupportedFc4Types = readFc4Types(*types, reader.pathOf("supportedFc4Types"));
    }
    if (const Json* types = reader.find("activeFc4Types")) {
        hba.PortActiveFc4Types = readFc4Types(*types, reader.pathOf("activeFc4Types"));
    }
    reader.chars("symbolicName", hba.PortSymbolicName);
    reader.chars("osDeviceName", hba.OSDeviceName);
    reader.mask("supportedSpeed", hba.PortSupportedSpeed, speedWords);
    reader.mask("speed", hba.PortSpeed, speedWords);
    reader.number("maxFrameSize", hba.PortMaxFrameSize);
    reader.wwn("fabricName", hba.FabricName);
    if (const Json* targets = reader.find("targets")) {
        port.targets = readTargets(*targets, reader.pathOf("targets"));
        port.failedCommands.clear();
        hba.NumberofDiscoveredPorts = static_cast<HBA_UINT32>(port.targets->targets().size());
    }
    reader.number("discoveredPorts", hba.NumberofDiscoveredPorts);
    if (reader.find("type") != nullptr || reader.find("fabricName") != nullptr) {
        deriveFabricAttributes(port, reader.find("type") == nullptr,
                               reader.find("fabricName") == nullptr);
    }
    if (const Json* attributes = reader.find("attributes")) {
        readAttributes(*attributes, reader.pathOf("attributes"), portAttributeNames,
                       port.attributes);
    }
    if (const Json* statistics = reader.find("statistics")) {
        readStatistics(*statistics, reader.pathOf("statistics"), port.statistics);
    }
    reader.oneOf("beacon", port.beacon, beaconWords);
    readInventory(reader, port.inventory);
    readNameManagement(reader, port.names);
    readVirtualPorts(reader, hba.PortWWN, port.virtualPorts);
    if (const Json* mapping = reader.find("mapping")) {
        readMappingFaults(*mapping, reader.pathOf("mapping"), port.mapping);
    }
    readDiagnostics(reader, port.diagnostics);
    readFlaps(reader, port.flaps);
    reader.flag("enableNeedsReset", port.enableNeedsReset);
    reader.finish();
    if (hasPlug) {
        port.behindPlug = exchangeSurroundings(port, loopbackPlug());
    }
}

Port readPort(const Json& value, const std::string& path, size_t adapter, size_t index) {
    Port port = defaultPort(adapter, index);
    deriveFabricAttributes(port, false, false);
    readPortFields(value, path, port);
    return port;
}

void readTemperature(const Json& value, const std::string& path, Attributes& attributes) {
    uint32_t current = 0;
    uint32_t critical = 0;
    uint32_t warning = 0;
    ObjectReader reader(value, path);
    reader.number("current", current, 0xFF);
    reader.number("critical", critical, 0xFF);
    reader.number("warning", warning, 0xFF);
    reader.finish();
    attributes[RM_HA_BOARD_TEMPERATURE] = integerAttribute(current | critical << 8 | warning << 16);
}

void readAdapterFields(ObjectReader& reader, Adapter& adapter, size_t index) {
    HBA_ADAPTERATTRIBUTES& hba = adapter.hba;
    reader.text("name", adapter.name, 255);
    reader.chars("manufacturer", hba.Manufacturer);
    reader.chars("serialNumber", hba.SerialNumber);
    reader.chars("model", hba.Model);
    reader.chars("modelDescription", hba.ModelDescription);
    reader.wwn("nodeWWN", hba.NodeWWN);
    reader.chars("nodeSymbolicName", hba.NodeSymbolicName);
    reader.chars("hardwareVersion", hba.HardwareVersion);
    reader.chars("driverVersion", hba.DriverVersion);
    reader.chars("optionROMVersion", hba.OptionROMVersion);
    reader.chars("firmwareVersion", hba.FirmwareVersion);
    reader.number("vendorSpecificID", hba.VendorSpecificID);
    reader.chars("driverName", hba.DriverName);
    reader.number("driverType", adapter.driverType);
    reader.oneOf("attributeLengths", adapter.attributeLengths, attributeLengthsWords);
    reader.oneOf("staleness", adapter.staleness, stalenessWords);
    reader.flag("firmwareNeedsReset", adapter.firmware.needsReset);
    reader.flag("firmwareNeedsReboot", adapter.firmware.needsReboot);
    if (const Json* mapping = reader.find("mapping")) {
        readMappingFaults(*mapping, reader.pathOf("mapping"), adapter.mapping);
    }
    if (const Json* ports = reader.find("ports")) {
        adapter.ports.clear();
        forEachElement(*ports, reader.pathOf("ports"),
                       [&](const Json& each, const std::string& place, size_t i) {
                           adapter.ports.push_back(readPort(each, place, index, i));
                       });
        hba.NumberOfPorts = static_cast<HBA_UINT32>(adapter.ports.size());
    }
    reader.number("numberOfPorts", hba.NumberOfPorts);
    if (reader.find("nodeWWN") != nullptr) {
        adapter.attributes[RM_HA_IEEE_ADDRESS] =
            std::string(reinterpret_cast<const char*>(hba.NodeWWN.wwn) + 2, 6);
    }
    if (const Json* temperature = reader.find("temperature")) {
        readTemperature(*temperature, reader.pathOf("temperature"), adapter.attributes);
    }
    if (const Json* attributes = reader.find("attributes")) {
        readAttributes(*attributes, reader.pathOf("attributes"), adapterAttributeNames,
                       adapter.attributes);
    }
    reader.finish();
}

/// One entry of "adapters": one adapter, or several alike. Counts the logical units.
void readAdapter(const Json& value, const std::string& path, std::vector<Adapter>& adapters,
                 size_t& units) {
    size_t copies = 1;
    ObjectReader counting(value, path);
    counting.number("copies", copies, mostAdapters);
    if (copies != 1 && counting.find("name") != nullptr) {
        throw FormatError(counting.pathOf("copies"), "an adapter with a name has no copies");
    }
    if (adapters.size() + copies > mostAdapters) {
        throw FormatError(path, "more than " + std::to_string(mostAdapters) + " adapters");
    }
    for (size_t copy = 0; copy < copies; ++copy) {
        const size_t index = adapters.size();
        Adapter adapter = defaultAdapter(index);
        ObjectReader reader(value, path);
        reader.find("copies");
        const Json* ports = reader.find("ports");
        if (ports == nullptr) {
            adapter.ports.push_back(readPort(Json::object(), path, index, 0));
            adapter.hba.NumberOfPorts = 1;
        }
        readAdapterFields(reader, adapter, index);
        if (adapter.name.empty()) {
            const char* const model = adapter.hba.Model;
            adapter.name =
                "Tavrin-" +
                std::string(model, strnlen(model, sizeof adapter.hba.Model)).substr(0, 200) + '-' +
                std::to_string(index);
        }
        const bool nodeGiven = reader.find("nodeWWN") != nullptr;
        for (size_t i = 0; i < adapter.ports.size(); ++i) {
            // A port without a node name of its own bears its adapter's.
            if (nodeGiven &&
                !(ports != nullptr && ports->elements()[i].find("nodeWWN") != nullptr)) {
                adapter.ports[i].hba.NodeWWN = adapter.hba.NodeWWN;
            }
        }
        for (const Port& port : adapter.ports) {
            units += port.targets->unitCount() + unitCount(port.virtualPorts);
        }
        if (units > mostUnitsOfAll) {
            throw FormatError(path, "more than " + std::to_string(mostUnitsOfAll) +
                                        " logical units in all");
        }
        adapters.push_back(std::move(adapter));
    }
}

Rule readRule(const Json& value, const std::string& path) {
    Rule rule;
    ObjectReader reader(value, path);
    reader.text("where", rule.where, 255);
    if (const Json* latency = reader.find("latencyMs")) {
        const double milliseconds = latency->is_number() ? latency->as_number() : -1;
        if (!(milliseconds >= 0 && milliseconds <= 60000)) {
            throw FormatError(reader.pathOf("latencyMs"),
                              "a number from 0 to 60000 is wanted here");
        }
        rule.latency = std::chrono::microseconds(static_cast<int64_t>(milliseconds * 1000));
    }
    if (const Json* status = reader.find("status")) {
        rule.status =
            static_cast<uint32_t>(readNumber(*status, reader.pathOf("status"), UINT32_MAX));
    }
    reader.number("failCall", rule.failCall);
    reader.number("failTimes", rule.failTimes);
    reader.number("failStatus", rule.failStatus);
    if (rule.failCall == 0) {
        for (const char* name : {"failCall", "failTimes", "failStatus"}) {
            if (reader.find(name) != nullptr) {
                throw FormatError(reader.pathOf(name), "\"failCall\" of 1 or more is wanted");
            }
        }
    } else if (rule.status) {
        throw FormatError(reader.pathOf("status"), "a rule has either \"status\" or \"failCall\"");
    }
    reader.finish();
    return rule;
}

} // namespace

void readRules(const Json& object, const std::string& path, Rules& rules) {
    const ObjectReader reader(object, path);
    for (const auto& field : object.members()) {
        const std::string place = reader.pathOf(field.name);
        const std::optional<EntryPoint> entryPoint =
            field.name == "*" ? EntryPoint::count : entryPointOf(field.name);
        if (!entryPoint) {
            throw FormatError(place, "no such entry point");
        }
        std::vector<Rule>& list = rules[*entryPoint];
        list.clear();
        if (field.value.is_array()) {
            forEachElement(field.value, place,
                           [&](const Json& each, const std::string& where, size_t) {
                               list.push_back(readRule(each, where));
                           });
        } else if (!field.value.is_null()) {
            list.push_back(readRule(field.value, place));
        }
    }
}

Scenario readScenario(const Json& document, const std::string& path) {
    Scenario scenario;
    ObjectReader reader(document, path);
    std::string description;
    reader.text("$schema", description, 4096);
    reader.text("description", description, 4096);
    size_t units = 0;
    if (const Json* adapters = reader.find("adapters")) {
        forEachElement(*adapters, reader.pathOf("adapters"),
                       [&](const Json& each, const std::string& place, size_t) {
                           readAdapter(each, place, scenario.adapters, units);
                       });
    }
    readDriverParams(reader, "globalDriverParameters", scenario.globalDriverParameters);
    if (const Json* entryPoints = reader.find("entryPoints")) {
        readRules(*entryPoints, reader.pathOf("entryPoints"), scenario.rules);
    }
    reader.finish();
    return scenario;
}

void changeAdapter(const Json& fields, const std::string& path, Adapter& adapter) {
    ObjectReader reader(fields, path);
    readAdapterFields(reader, adapter, 0);
}

void changePort(const Json& fields, const std::string& path, Port& port) {
    readPortFields(fields, path, port);
}

} // namespace tvrsim
