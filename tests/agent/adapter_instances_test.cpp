// A rebuild of the adapter maps: its order, and what it does where a step fails.
#include "tests/agent/agent_session.h"

#include "agent/locks.h"
#include "agent/port_lookup.h"

namespace cimple {
namespace {

class Rebuild : public With_Session {
protected:
    Rebuild() {
        session.on("portal", [this](const auto& words) {
            directory.write("etc/tvr_smis.conf", words.at(0) + '\n');
        });
        // The second adapter gets a name of the first one's.
        session.on("same-node", [this] {
            libraries.adapters[1].record.NodeWWN = libraries.adapters[0].record.NodeWWN;
        });
        session.on("same-port",
                   [this] { first_port(1).record.PortWWN = first_port(0).record.PortWWN; });
        session.on("valid", [this](const auto& words, std::ostream& answer) {
            const Full_Guard guard(*agent);
            const auto is_valid = words.at(0) == "FCPort" ? IsValidFCPort : IsValidLogicalPort;
            log.take();
            answer << is_valid(agent->maps, words.at(1)) << ' ' << log.take().back() << '\n';
        });
    }
};

TVR_SESSIONS(Rebuild, "adapter_instances.txt");

} // namespace
} // namespace cimple
