// Status and counters of the ports, as fresh as their enumeration.
#include "tests/agent/agent_session.h"

#include "agent/port_refresh.h"

namespace cimple {
namespace {

class Port_Refresh : public With_Session {
protected:
    Port_Refresh() {
        session.on("handles", [this] { return libraries.openHandles; });
        // All counters of a port: 10000 and their number.
        session.on("statistics", [this](const auto& words) {
            for (const auto& [first, last] :
                 {std::pair{1025u, 1033u}, {1036, 1048}, {1057, 1059}}) {
                for (uint32 counter = first; counter <= last; ++counter) {
                    first_port(number(words.at(0))).statistics[static_cast<uint16>(counter)] =
                        fake::valueOf(uint64{10'000 + counter});
                }
            }
        });
        session.rename(Datetime::now().ascii().c_str(), "$NOW");
        load();
        refresh();
    }
};

TVR_SESSIONS(Port_Refresh, "port_refresh.txt");

} // namespace
} // namespace cimple
