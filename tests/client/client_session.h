// Sessions of a client with the shipped module, on simulated hosts.
#pragma once

#include "tests/client/client.h"
#include "tests/common/session.h"
#include "json/json.h"

namespace client {

//   control JSON                    the simulator's requests
//   port JSON, fc4 BYTE             a port more, on an adapter of its own; for each bit of a byte
//   one default JSON, unit JSON...      a unit more on one port, with what is told of all types
//   TYPE...                   each unit comes once of each type start NAME with a computer system
//   of that name list CLASS PROPERTY...          literals of each instance, "-" for NULL devices
//   PROPERTY...             all logical units: their number, class and properties profiles
//   PROPERTY...            as `list`, of the other namespace calls ENTRY_POINT again another host,
//   and the module afresh
class Client_Session : public Client {
protected:
    Client_Session();
    void make_host();

    Text_Session session;
    tvrjson::Json ports = tvrjson::Json::array();

private:
    void tell(const Cim_Instance& instance, const Text_Session::Words& properties, std::size_t first,
              std::ostream& answer);

    using Json = tvrjson::Json;
    Json _units = Json::array();
    Json _default = Json::object();
    Text_Session::Words _types;
};

} // namespace client
