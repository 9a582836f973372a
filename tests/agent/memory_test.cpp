// A rebuild in which one allocation fails.
#include "tests/agent/agent_fixture.h"

#include "tests/runtime/failing_allocations.h"

#include <set>
#include <utility>

namespace cimple {
namespace {

using Ports = std::vector<std::string>;

class Exhausted_Memory : public With_Agent {
protected:
    // From the first port's PCI function on, the allocation behind `count` others fails. False if
    // there were fewer.
    bool fails_behind(long count) {
        log.take();
        bool first = true;
        const long before = sample::failures;
        const Log_Hook begin("RM_DiagReadPCIRegistersV2 call failed", [&] {
            if (std::exchange(first, false)) {
                sample::fails_once = true;
                sample::allocations_left = count;
            }
        });
        refresh();
        return sample::failures > before;
    }
    Ports ports() const {
        Ports names;
        for (const TVRHBA_FCPort* port : agent->m_TVRHBA_FCPort_map) {
            names.emplace_back(port->DeviceID.value.c_str());
        }
        return names;
    }
};

// Wherever memory ends, the next rebuild makes all instances again.
TEST_F(Exhausted_Memory, CostsAPortOrEndsTheRebuild) {
    const char* const next_port[] = {
        "Failed to create TVRHBA_PCIDevice",
        "Failed to create TVRHBA_PCIElementConformsToProfile",
        "Failed to create TVRHBA_SystemDevice",
    };
    libraries.adapters = {adapter(1), adapter(2)};
    const Ports all = {"1000AABBCCDD0100", "1000AABBCCDD0200"};
    std::set<std::string> seen;
    std::size_t ended = 0;
    load();
    for (long count = 0; fails_behind(count); count += 1 + count / 32) {
        for (const char* line : next_port) {
            if (logged(line) != 0) {
                seen.insert(line);
                EXPECT_EQ(ports().size(), 1u) << line;
                EXPECT_EQ(logged("PERF: updateAdapterMaps: cleanExit"), 1u) << line;
            }
        }
        ended += logged("No FC card found");
        refresh();
        ASSERT_EQ(ports(), all) << count;
    }
    EXPECT_EQ(seen.size(), std::size(next_port));
    EXPECT_GT(ended, 20u);
}

} // namespace
} // namespace cimple
