// `tvrcim tree`: the host from its adapters down to the logical units.
#include "host/tvrcim/adapter_check.h"
#include "host/tvrcim/commands.h"
#include "host/tvrcim/host_view.h"
#include "host/tvrcim/output.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tvrcim {

using tvrhost::Json;

namespace {

// A line with what hangs below it.
struct Node {
    std::string text;
    std::vector<Node> children;
};

struct Branches {
    const char* inner; // before a child that others follow, and before what is below it
    const char* below_inner;
    const char* last;
    const char* below_last;
};
constexpr Branches lines{"\u251c\u2500 ", "\u2502  ", "\u2514\u2500 ", "   "};
constexpr Branches plain{"|- ", "|  ", "`- ", "   "};

// Lines are drawn where the locale's characters have them.
const Branches& branches() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return strcasestr(value, "UTF-8") != nullptr || strcasestr(value, "utf8") != nullptr
                       ? lines
                       : plain;
        }
    }
    return plain;
}

// `before` stands before the lines below a node.
void print(Session& session, const Node& node, const Branches& style, const std::string& before) {
    for (const Node& child : node.children) {
        const bool is_last = &child == &node.children.back();
        const std::string below = before + (is_last ? style.below_last : style.below_inner);
        const char* const beside = child.children.empty() ? style.below_last : style.below_inner;
        print_wrapped(session, before + (is_last ? style.last : style.inner), below + beside + " ",
                      printable(child.text));
        print(session, child, style, below);
    }
}

// The parts that say something, with two blanks between.
std::string joined(std::initializer_list<std::string> parts) {
    std::string text;
    for (const std::string& part : parts) {
        if (!part.empty()) {
            text += (text.empty() ? "" : "  ") + part;
        }
    }
    return text;
}

std::string labelled(const char* label, const std::string& text) {
    return text.empty() ? "" : std::string(label) + " " + text;
}

std::string fc_id_text(std::uint64_t id) {
    char text[32];
    std::snprintf(text, sizeof text, "%06llX", static_cast<unsigned long long>(id));
    return text;
}

std::vector<Node> unit_nodes(const std::vector<Unit_View>& units) {
    Rows rows;
    for (const Unit_View& unit : units) {
        const std::uint64_t capacity = unit.capacity();
        rows.push_back({"LUN " + unit.number, unit.kind, capacity == 0 ? "" : size_text(capacity),
                        unit.inquiry(), unit.os_name()});
    }
    std::vector<Node> nodes;
    for (std::string& line : aligned(rows)) {
        nodes.push_back({std::move(line), {}});
    }
    return nodes;
}

Node port_node(const Port_View& port) {
    Node node{joined({"port " + port.wwpn(), port.state_text(), port.has_link() ? port.speed() : "",
                      port.has_link() ? port.type() : "", labelled("firmware", port.firmware()),
                      port.os_name()}),
              {}};
    for (const Target_View& target : port.targets) {
        node.children.push_back({"target " + target.wwpn + "  FCID " + fc_id_text(target.fc_id),
                                 unit_nodes(target.units)});
    }
    return node;
}

Node adapter_node(const Adapter_View& adapter) {
    const tvrhost::Cim_Instance& package = adapter.package;
    const std::string temperature = package["BoardTemperature"].plain();
    Node node{
        joined({adapter.model(), labelled("serial", package["SerialNumber"].plain()),
                labelled("node", package["Tag"].plain()),
                temperature.empty() ? "" : temperature + " C", package["Description"].plain()}),
        {}};
    for (const Port_View& port : adapter.ports) {
        node.children.push_back(port_node(port));
    }
    return node;
}

Node host_node(const Host_View& host) {
    Node node{host.name.empty() ? "no ports" : host.name, {}};
    for (const Adapter_View& adapter : host.adapters) {
        node.children.push_back(adapter_node(adapter));
    }
    return node;
}

Json unit_json(const Unit_View& unit) {
    const std::uint64_t capacity = unit.capacity();
    return {{"number", std::strtol(unit.number.c_str(), nullptr, 10)},
            {"kind", unit.kind},
            {"capacity", capacity == 0 ? Json(nullptr) : Json(capacity)},
            {"inquiry", unit.inquiry()},
            {"osDeviceName", unit.os_name()},
            {"device", unit.device.path.text()}};
}

Json host_json(const Host_View& host) {
    Json adapters = Json::array();
    for (const Adapter_View& adapter : host.adapters) {
        Json ports = Json::array();
        for (const Port_View& port : adapter.ports) {
            Json targets = Json::array();
            for (const Target_View& target : port.targets) {
                Json units = Json::array();
                for (const Unit_View& unit : target.units) {
                    units.push_back(unit_json(unit));
                }
                targets.push_back({{"wwpn", target.wwpn},
                                   {"fcId", fc_id_text(target.fc_id)},
                                   {"units", std::move(units)}});
            }
            ports.push_back({{"wwpn", port.wwpn()},
                             {"state", port.state()},
                             {"speed", number_of(port.port["Speed"])},
                             {"type", port.type()},
                             {"firmware", port.firmware()},
                             {"osDeviceName", port.os_name()},
                             {"targets", std::move(targets)}});
        }
        adapters.push_back({{"model", adapter.model()},
                            {"serialNumber", adapter.package["SerialNumber"].plain()},
                            {"description", adapter.package["Description"].plain()},
                            {"temperature", to_json(adapter.package["BoardTemperature"])},
                            {"nodeWWN", adapter.package["Tag"].plain()},
                            {"ports", std::move(ports)}});
    }
    return {{"host", host.name}, {"adapters", std::move(adapters)}};
}

} // namespace

void show_tree(Session& session, const std::string& port_name) {
    const Host_View host = read_host(session, Units::described, port_name);
    if (session.format == Format::json) {
        print_json(session, host_json(host));
    } else {
        const Node root = host_node(host);
        session.out << printable(root.text) << '\n';
        print(session, root, branches(), "");
    }
    if (port_name.empty()) {
        tell_left_out(session, host.port_names());
    }
}

} // namespace tvrcim
