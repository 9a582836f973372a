// Sessions of a client with the shipped module, on simulated hosts.
#pragma once

#include "tests/client/client.h"
#include "tests/common/session.h"
#include "json/json.h"

namespace client {

//   port JSON               a port more, on an adapter of its own
//   default JSON, unit JSON a unit more on one port, and what is told of all units
//   types TYPE...           each unit comes once of each type
//   list CLASS PROPERTY...  literals of each instance, "-" for NULL
//   profiles PROPERTY...    the same of the registered profiles
//   devices PROPERTY...     of all logical units: their number, class and properties
//   calls ENTRY_POINT       how many there were
//   again                   another host, and the module afresh
class Client_Session : public Client {
protected:
    Client_Session();
    void make_host();

    Text_Session session;
    tvrjson::Json ports = tvrjson::Json::array();

private:
    void tell(const Cim_Instance& instance, const Text_Session::Words& properties,
              std::size_t first, std::ostream& answer);

    using Json = tvrjson::Json;
    Json _units = Json::array();
    Json _default = Json::object();
    Text_Session::Words _types;
};

} // namespace client
