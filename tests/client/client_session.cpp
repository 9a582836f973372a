#include "tests/client/client_session.h"

namespace client {

using Words = Text_Session::Words;

Client_Session::Client_Session() {
    session.on("port", [this] { ports.push_back(Json::parse(session.rest())); });
    session.on("default", [this] { _default = Json::parse(session.rest()); });
    session.on("types", [this](const Words& words) { _types = words; });
    session.on("unit", [this] {
        const Json own = Json::parse(session.rest());
        for (std::size_t i = 0; i < std::max<std::size_t>(_types.size(), 1); ++i) {
            Json unit = _default;
            for (const auto& [field, value] : own.members()) {
                unit.append(field, value);
            }
            if (!_types.empty()) {
                unit.append("type", _types[i]);
            }
            _units.push_back(unit);
        }
    });
    session.on("list", [this](const Words& words, std::ostream& answer) {
        make_host();
        for (const Cim_Instance& instance : enumerate("TVRHBA_" + words.at(0)).instances) {
            tell(instance, words, 1, answer);
        }
    });
    session.on("profiles", [this](const Words& words, std::ostream& answer) {
        const Answer all = manager().enumerate_instances(interop, "TVRHBA_RegisteredProfile");
        for (const Cim_Instance& instance : all.instances) {
            EXPECT_EQ(instance.path.name_space, interop);
            tell(instance, words, 0, answer);
        }
    });
    session.on("devices", [this](const Words& words, std::ostream& answer) {
        make_host();
        std::map<int, std::string> told; // by the number that ends the name
        for (const char* class_name : {"StorageVolume", "TapeDrive", "LogicalDisk", "StorageExtent",
                                       "SCSIArbitraryLogicalUnit"}) {
            const Answer devices = enumerate(std::string("TVRHBA_") + class_name);
            for (const Cim_Instance& device : devices.instances) {
                const std::string name = device["ElementName"].as_string();
                std::ostringstream line;
                line << class_name << ": ";
                tell(device, words, 0, line);
                told[std::stoi(name.substr(name.rfind(' ')))] = line.str();
            }
        }
        for (const auto& [number, line] : told) {
            answer << number << ' ' << line;
        }
    });
    session.on("calls", [](const Words& words) { return calls(words.at(0).c_str()); });
    session.on("again", [this] { stop(); });
}

// Of the ports or units that were told since the last one.
void Client_Session::make_host() {
    Json adapters = Json::array();
    for (const Json& port : ports.elements()) {
        adapters.push_back({{"ports", {port}}});
    }
    if (_units.size() != 0) {
        const Json port = {{"portWWN", "10:00:02:54:56:4A:10:20"},
                           {"targets",
                            {{{"nodeWWN", "50:02:54:56:70:00:0A:00"},
                              {"portWWN", "50:02:54:56:70:00:0A:01"},
                              {"luns", _units}}}}};
        adapters.push_back({{"ports", {port}}});
    }
    if (adapters.size() != 0) {
        control(Json{{"scenario", {{"adapters", adapters}}}}.text());
    }
    ports = _units = Json::array();
}

void Client_Session::tell(const Cim_Instance& instance, const Words& properties, std::size_t first,
                          std::ostream& answer) {
    for (std::size_t i = first; i < properties.size(); ++i) {
        answer << (i == first ? "" : " | ")
               << (instance.has(properties[i]) ? instance[properties[i]].literal() : "-");
    }
    answer << '\n';
}

} // namespace client
