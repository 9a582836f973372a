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
    // Behind the first line `from` and `count` allocations one fails. False if there were fewer.
    bool fails_behind(const char* from, long count) {
        log.take();
        clock.time += 5'000'000; // past the time limit of the driver parameters
        bool first = true;
        const long before = sample::failures;
        const Log_Hook begin(from, [&] {
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
        for (const TVRHBA_FCPort* port : agent->maps.m_TVRHBA_FCPort_map) {
            names.emplace_back(port->DeviceID.value.c_str());
        }
        return names;
    }
};

// Wherever memory ends, the next rebuild makes all instances again.
TEST_F(Exhausted_Memory, CostsAnInstanceAPortOrTheRestOfTheRebuild) {
    const struct {
        const char* from;
        std::set<std::string> lines; // with them the rebuild goes on
        std::size_t ports;           // that it then makes
    } cases[] = {
        {"Starting the BootBIOSService",
         {"Could not create the instance of the Association class",
          "Unable to create instance of TVRHBA_FCHBADriverParamServiceAffectsSystem",
          "Unable to create instance of TVRHBA_HostedFCHBADriverParamService"},
         2},
        {"Inside CreateVPD", {"FC port 1000AABBCCDD0100 CreateVPD failed"}, 2},
        {"FunctionalFirmware- Parsing Done",
         {"Could not create the instance of the Association class",
          "Unable to create instance of TVRHBA_FCHBADriverParamServiceAffectsFCPort"},
         2},
        {"RM_GetDriverParams: status=0", {"rm_status = 8"}, 2},
        {"RM_DiagReadPCIRegistersV2 call failed",
         {"Failed to create TVRHBA_PCIDevice",
          "Failed to create TVRHBA_PCIElementConformsToProfile",
          "Failed to create TVRHBA_SystemDevice"},
         1},
        {"CreateFCHBADiagnosticClassFeature",
         {"Failed to create the maps for TVR:FCHBA Beacon Test ,Check the memory availablity",
          "Exception in FCHBA Diagnostics feature class creation"},
         2},
    };
    libraries.adapters = {adapter(1), adapter(2)};
    libraries.adapters[0].ports[0].vpd = {{"PN", "part"}};
    libraries.adapters[0].ports[0].params = {{}};
    load();
    std::size_t ended = 0;
    for (const auto& row : cases) {
        std::set<std::string> seen;
        for (long count = 0; fails_behind(row.from, count); count += 1 + count / 32) {
            for (const std::string& line : row.lines) {
                if (logged(line) != 0) {
                    seen.insert(line);
                    EXPECT_EQ(ports().size(), row.ports) << line;
                    EXPECT_EQ(logged("PERF: updateAdapterMaps: cleanExit"), 1u) << line;
                }
            }
            ended += logged("No FC card found");
            refresh();
            ASSERT_EQ(ports(), (Ports{"1000AABBCCDD0100", "1000AABBCCDD0200"})) << count;
        }
        EXPECT_EQ(seen, row.lines);
    }
    EXPECT_GT(ended, 20u);
}

} // namespace
} // namespace cimple
