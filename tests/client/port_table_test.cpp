// What the numbers of the adapters are called in CIM, read as a client reads them: a host with a
// port for each row.
#include "tests/client/client_session.h"

namespace client {
namespace {

class Port_Tables : public Client_Session {
protected:
    Port_Tables() {
        // For each bit what it is called alone, eight in a line.
        session.on("fc4", [this](const Text_Session::Words&, std::ostream& answer) {
            for (std::size_t bit = 0; bit < 256; ++bit) {
                std::string bytes(64, '0');
                bytes[bit / 8 * 2 + (bit % 8 < 4 ? 1 : 0)] = "1248"[bit % 4];
                ports.push_back({{"supportedFc4Types", bytes}});
            }
            make_host();
            std::size_t bit = 0;
            for (const Cim_Instance& port : enumerate("TVRHBA_FCPort").instances) {
                answer << port["SupportedFC4Types"].literal() << (++bit % 8 == 0 ? '\n' : ' ');
            }
        });
    }
};

TVR_SESSIONS(Port_Tables, "port_table.txt");

} // namespace
} // namespace client
