// `tvrcim list`: a line per port.
#include "host/cim_json.h"
#include "host/tvrcim/commands.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/places.h"
#include "host/tvrcim/progress.h"

namespace tvrcim {

using tvrhost::Cim_Instance;
using tvrhost::Cim_Type;
using tvrhost::Cim_Value;
using tvrhost::Json;

namespace {

constexpr char port_class[] = "TVRHBA_FCPort";

struct Port_Type {
    std::uint64_t code;
    const char* name;
};

// CIM_FCPort.PortType.
constexpr Port_Type port_types[] = {{0, "unknown"}, {1, "other"}, {10, "N"}, {11, "NL"},
                                    {12, "F/NL"},   {13, "Nx"},   {14, "E"}, {15, "F"},
                                    {16, "FL"},     {17, "B"},    {18, "G"}};

std::uint64_t number(const Cim_Value& value) {
    try {
        return value.is_null() ? 0 : value.as_uint();
    } catch (const tvrhost::Value_Error&) {
        return 0;
    }
}

std::string type_of(const Cim_Instance& port) {
    const std::string other = port["OtherPortType"].plain();
    if (!other.empty()) {
        return other;
    }
    const std::uint64_t code = number(port["PortType"]);
    for (const Port_Type& each : port_types) {
        if (each.code == code) {
            return each.name;
        }
    }
    return std::to_string(code);
}

// In gigabits per second; "-" where the link has no speed.
std::string speed_of(const Cim_Instance& port) {
    constexpr std::uint64_t giga = 1000000000;
    const std::uint64_t speed = number(port["Speed"]);
    return speed == 0 ? "-" : std::to_string((speed + giga / 2) / giga) + "G";
}

} // namespace

void list_ports(Session& session) {
    const tvrmof::Class& model = session.find_class(port_class);
    tvrhost::Answer answer;
    {
        const Progress progress("reading ports");
        answer = session.manager.enumerate_instances(session.name_space_of(model), model.name);
    }
    Session::check(answer, model.name);
    if (answer.instances.empty() && !adapter_libraries_present()) {
        throw Cim_Error("this machine has no adapter libraries (libHBAAPI.so, and liblrmapi.so or "
                        "librmapi.so); --sim shows simulated adapters");
    }
    if (session.format == Format::json) {
        Json json = Json::array();
        for (const Cim_Instance& port : answer.instances) {
            json.push_back({{"wwpn", to_json(port["DeviceID"])},
                            {"model", to_json(port["Description"])},
                            {"firmware", to_json(port["OperationalFirmware"])},
                            {"state", port["StatusDescriptions"].plain()},
                            {"speed", number(port["Speed"])},
                            {"type", type_of(port)}});
        }
        session.out << tvrhost::json_text(json) << '\n';
        return;
    }
    if (answer.instances.empty()) {
        session.out << "no ports\n";
        return;
    }
    std::vector<std::vector<std::string>> rows = {
        {"WWPN", "MODEL", "FIRMWARE", "STATE", "SPEED", "TYPE"}};
    for (const Cim_Instance& port : answer.instances) {
        rows.push_back({port["DeviceID"].plain(), port["Description"].plain(),
                        port["OperationalFirmware"].plain(), port["StatusDescriptions"].plain(),
                        speed_of(port), type_of(port)});
    }
    print_table(session.out, rows);
}

} // namespace tvrcim
