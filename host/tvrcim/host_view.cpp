#include "host/tvrcim/host_view.h"

#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/progress.h"
#include "host/tvrcim/wwn.h"

#include <algorithm>
#include <sstream>

namespace tvrcim {

using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;

namespace {

constexpr char port_class[] = "TVRHBA_FCPort";
constexpr char package_class[] = "TVRHBA_PhysicalPackage";
constexpr char package_link[] =
    "TVRHBA_Realizes"; // package and controller, which has the port's id
constexpr char endpoint_class[] = "TVRHBA_SCSIProtocolEndpoint";

struct Device_Class {
    const char* device;
    const char* path;
};
constexpr Device_Class device_classes[] = {
    {"TVRHBA_StorageVolume", "TVRHBA_SCSIInitiatorTargetStorageVolumePath"},
    {"TVRHBA_LogicalDisk", "TVRHBA_SCSIInitiatorTargetLogicalDiskPath"},
    {"TVRHBA_StorageExtent", "TVRHBA_SCSIInitiatorTargetStorageExtentPath"},
    {"TVRHBA_TapeDrive", "TVRHBA_SCSIInitiatorTargetTapeDrivePath"},
    {"TVRHBA_SCSIArbitraryLogicalUnit", "TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath"}};

struct Port_Type {
    std::uint64_t code;
    const char* name;
};

// CIM_FCPort.PortType.
constexpr Port_Type port_types[] = {{0, "unknown"}, {1, "other"}, {10, "N"}, {11, "NL"},
                                    {12, "F/NL"},   {13, "Nx"},   {14, "E"}, {15, "F"},
                                    {16, "FL"},     {17, "B"},    {18, "G"}};

struct State {
    std::uint64_t code;
    const char* text;
};

// TVRHBA_FCPort.OperationalStatus, where the module's word for it says less than people know.
constexpr State port_states[] = {{0, "unknown"},
                                 {6, "error"},
                                 {10, "offline"},
                                 {11, "diagnostics"},
                                 {0x8008, "loopback"},
                                 {0x8014, "OK, needs reset"},
                                 {0x8015, "link down, needs reset"},
                                 {0x8016, "disabled"}};
constexpr std::uint64_t other_state = 1;

// Of a class that this module doesn't have there are none.
std::vector<Cim_Instance> instances(Session& session, const char* class_name,
                                    const tvrhost::Properties& properties = {}) {
    if (!session.manager.serves(class_name, tvrhost::Kind::instance)) {
        return {};
    }
    tvrhost::Answer answer = session.manager.enumerate_instances(
        session.name_space_of(session.find_class(class_name)), class_name, properties);
    Session::check(answer, class_name);
    return std::move(answer.instances);
}

std::vector<Cim_Path> paths(Session& session, const char* class_name) {
    if (!session.manager.serves(class_name, tvrhost::Kind::instance)) {
        return {};
    }
    tvrhost::Answer answer = session.manager.enumerate_instance_names(
        session.name_space_of(session.find_class(class_name)), class_name);
    Session::check(answer, class_name);
    return std::move(answer.paths);
}

std::string key(const Cim_Path& association, const char* end, const char* name) {
    return association.keys[end].as_path().keys[name].plain();
}

std::vector<Adapter_View> read_adapters(Session& session) {
    std::vector<Adapter_View> adapters;
    std::map<std::string, std::size_t> by_tag;
    for (Cim_Instance& package : instances(session, package_class)) {
        by_tag[package["Tag"].plain()] = adapters.size();
        adapters.push_back({std::move(package), {}});
    }
    std::map<std::string, std::size_t> by_port;
    for (const Cim_Path& link : paths(session, package_link)) {
        const auto found = by_tag.find(key(link, "Antecedent", "Tag"));
        if (found != by_tag.end()) {
            by_port[key(link, "Dependent", "DeviceID")] = found->second;
        }
    }
    Adapter_View without_package;
    for (Cim_Instance& port : instances(session, port_class)) {
        const auto found = by_port.find(port["DeviceID"].plain());
        (found != by_port.end() ? adapters[found->second] : without_package)
            .ports.push_back({std::move(port), {}});
    }
    if (!without_package.ports.empty()) {
        adapters.push_back(std::move(without_package));
    }
    return adapters;
}

// A device names itself with its kind and, behind that, its number.
Unit_View unit_of(const Cim_Instance& device) {
    const std::string name = device["ElementName"].plain();
    const std::size_t number = name.find_last_not_of("-0123456789") + 1;
    const std::size_t kind = name.find_last_not_of(": ", number == 0 ? 0 : number - 1) + 1;
    return {name.substr(number), name.substr(0, kind), device};
}

void read_units(Session& session, std::vector<Adapter_View>& adapters, Units units) {
    std::map<std::string, Port_View*> ports;
    for (Adapter_View& adapter : adapters) {
        for (Port_View& port : adapter.ports) {
            ports[port.wwpn()] = &port;
        }
    }
    std::map<std::string, Target_View> endpoints; // a remote port as seen for one unit, by name
    for (const Cim_Instance& endpoint :
         instances(session, endpoint_class, std::vector<std::string>{"TargetWWPN", "FCID"})) {
        endpoints[endpoint["Name"].plain()] = {
            endpoint["TargetWWPN"].plain(), number_of(endpoint["FCID"]), {}};
    }
    std::map<std::pair<const Port_View*, std::string>, std::size_t> targets; // by port and WWPN
    for (const auto& [device_class, path_class] : device_classes) {
        std::map<std::string, Cim_Instance> devices;
        if (units == Units::described) {
            const std::vector<std::string> shown = {"ElementName", "Capacity",
                                                    "OtherIdentifyingInfo"};
            for (Cim_Instance& device : instances(session, device_class, shown)) {
                std::string id = device["DeviceID"].plain();
                devices.emplace(std::move(id), std::move(device));
            }
        }
        for (const Cim_Path& path : paths(session, path_class)) {
            const auto found = ports.find(key(path, "Initiator", "Name"));
            if (found == ports.end()) {
                continue;
            }
            Port_View& port = *found->second;
            const Target_View& endpoint = endpoints[key(path, "Target", "Name")];
            const auto [target, is_new] =
                targets.emplace(std::pair(&port, endpoint.wwpn), port.targets.size());
            if (is_new) {
                port.targets.push_back(endpoint);
            }
            port.targets[target->second].units.push_back(
                unit_of(devices[key(path, "LogicalUnit", "DeviceID")]));
        }
    }
    // Units come by their class; people look for them by their number.
    for (const auto& [wwpn, port] : ports) {
        for (Target_View& target : port->targets) {
            std::stable_sort(target.units.begin(), target.units.end(),
                             [](const Unit_View& a, const Unit_View& b) {
                                 return a.number.size() != b.number.size()
                                            ? a.number.size() < b.number.size()
                                            : a.number < b.number;
                             });
        }
    }
}

} // namespace

std::uint64_t number_of(const tvrhost::Cim_Value& value) {
    try {
        return value.is_null() ? 0 : value.as_uint();
    } catch (const tvrhost::Value_Error&) {
        return 0;
    }
}

std::uint64_t Unit_View::capacity() const {
    return number_of(device["Capacity"]);
}

std::string Port_View::os_name() const {
    const tvrhost::Cim_Value& texts = port["OtherIdentifyingInfo"];
    const tvrhost::Cim_Value& meanings = port["IdentifyingDescriptions"];
    if (texts.is_array() && !texts.is_null() && meanings.is_array() && !meanings.is_null()) {
        const std::size_t count = std::min(texts.elements().size(), meanings.elements().size());
        for (std::size_t i = 0; i < count; ++i) {
            if (meanings.elements()[i].plain() == "OS Device Name") {
                return texts.elements()[i].plain();
            }
        }
    }
    return {};
}

bool Port_View::has_link() const {
    return number_of(port["Speed"]) != 0;
}

std::string Port_View::state_text() const {
    const tvrhost::Cim_Value& status = port["OperationalStatus"];
    if (!status.is_array() || status.is_null() || status.elements().empty()) {
        return state();
    }
    const std::uint64_t code = number_of(status.elements().front());
    if (code == other_state && !has_link()) {
        return "link down";
    }
    const auto known = std::find_if(std::begin(port_states), std::end(port_states),
                                    [code](const State& each) { return each.code == code; });
    return known == std::end(port_states) ? state() : known->text;
}

std::string Unit_View::os_name() const {
    const tvrhost::Cim_Value& info = device["OtherIdentifyingInfo"];
    return info.is_array() && !info.is_null() && !info.elements().empty()
               ? info.elements().front().plain()
               : "";
}

std::string Unit_View::inquiry() const {
    const tvrhost::Cim_Value& info = device["OtherIdentifyingInfo"];
    if (!info.is_array() || info.is_null() || info.elements().size() < 2) {
        return {};
    }
    // Its parts are padded.
    std::istringstream words(info.elements()[1].plain());
    std::string text;
    for (std::string word; words >> word;) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

std::string Port_View::type() const {
    std::string other = port["OtherPortType"].plain();
    if (!other.empty()) {
        return other;
    }
    const std::uint64_t code = number_of(port["PortType"]);
    for (const Port_Type& each : port_types) {
        if (each.code == code) {
            return each.name;
        }
    }
    return std::to_string(code);
}

std::string Port_View::speed() const {
    constexpr std::uint64_t giga = 1000000000;
    const std::uint64_t speed = number_of(port["Speed"]);
    return speed == 0 ? "-" : std::to_string((speed + giga / 2) / giga) + "G";
}

std::string Port_View::firmware() const {
    const std::string text = port["OperationalFirmware"].plain();
    return text.substr(text.rfind(':') + 1);
}

std::string Adapter_View::model() const {
    const std::string model = package["Model"].plain();
    return !model.empty() || ports.empty() ? model : ports.front().port["Description"].plain();
}

std::set<std::string> Host_View::port_names() const {
    std::set<std::string> names;
    for (const Adapter_View& adapter : adapters) {
        for (const Port_View& port : adapter.ports) {
            names.insert(port.wwpn());
        }
    }
    return names;
}

Host_View read_host(Session& session, Units units, const std::string& port_name) {
    const std::string beginning = wwn_digits(port_name).value_or(port_name);
    Host_View host;
    {
        const Progress progress("reading adapters and targets");
        host.adapters = read_adapters(session);
        read_units(session, host.adapters, units);
    }
    const std::set<std::string> names = host.port_names();
    if (names.empty()) {
        session.explain_nothing();
        return host;
    }
    for (const Adapter_View& adapter : host.adapters) {
        if (!adapter.ports.empty()) {
            host.name = adapter.ports.front().port["SystemName"].plain();
        }
    }
    if (port_name.empty()) {
        return host;
    }
    for (Adapter_View& adapter : host.adapters) {
        std::erase_if(adapter.ports,
                      [&](const Port_View& port) { return !port.wwpn().starts_with(beginning); });
    }
    std::erase_if(host.adapters, [](const Adapter_View& adapter) { return adapter.ports.empty(); });
    if (host.adapters.empty()) {
        throw Usage_Error("no port's name begins with " + port_name +
                          suggestion(beginning, {names.begin(), names.end()}) +
                          "; 'tvrcim list' shows all");
    }
    return host;
}

} // namespace tvrcim
