// `tvrcim list`: a line per port.
#include "host/tvrcim/adapter_check.h"
#include "host/tvrcim/commands.h"
#include "host/tvrcim/host_view.h"
#include "host/tvrcim/output.h"

namespace tvrcim {

using tvrhost::Json;

void list_ports(Session& session, const std::string& port_name) {
    const Host_View host = read_host(session, Units::counted, port_name);
    Json json = Json::array();
    std::vector<std::vector<std::string>> rows = {
        {"WWPN", "MODEL", "FIRMWARE", "STATE", "SPEED", "TYPE", "TARGETS"}};
    for (const Adapter_View& adapter : host.adapters) {
        for (const Port_View& port : adapter.ports) {
            if (session.format == Format::json) {
                json.push_back({{"wwpn", port.wwpn()},
                                {"model", adapter.model()},
                                {"description", port.port["Description"].plain()},
                                {"firmware", port.firmware()},
                                {"state", port.state()},
                                {"speed", number_of(port.port["Speed"])},
                                {"type", port.type()},
                                {"targets", port.targets.size()}});
                continue;
            }
            rows.push_back({port.wwpn(), adapter.model(), port.firmware(), port.state_text(),
                            port.speed(), port.has_link() ? port.type() : "-",
                            std::to_string(port.targets.size())});
        }
    }
    if (session.format == Format::json) {
        print_json(session, json);
    } else if (rows.size() == 1) {
        session.out << "no ports\n";
    } else {
        print_table(session, rows);
    }
    if (port_name.empty()) {
        tell_left_out(session, host.port_names());
    }
}

} // namespace tvrcim
