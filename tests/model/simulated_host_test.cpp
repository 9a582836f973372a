// Discovery of the simulator's own host, as a user of it has it.

#include "access/libraries.h"
#include "access/method_wrapper.h"
#include "model/data.h"

#include <gtest/gtest.h>

#include <set>

namespace cimple {
namespace {

TEST(SimulatedHost, HasFourAdaptersWithOnePort) {
    loadManagementLibraries();
    {
        const TVR_MethodWrapper wrapper;
        Data data;
        data.buildAdapterData();
        ASSERT_EQ(data.getAdapters().size(), 4u);
        ASSERT_EQ(data.getPorts().size(), 4u);
        EXPECT_EQ(data.getAdapterCount(), 4u);
        std::set<std::string> names;
        for (Port* port : data.getPorts()) {
            const auto& facts =
                *static_cast<const FCAdapter*>(port->getAdapter())->getFCAttributes();
            names.insert(port->getPortName());
            EXPECT_EQ(port->getPortName().size(), 16u);
            EXPECT_EQ(facts.NumberOfPorts, 1u);
            EXPECT_FALSE(facts.Model.empty());
            EXPECT_FALSE(facts.operationalFirmware.empty());
            EXPECT_EQ(facts.ieeeAddress.size(), 17u);
            HBA_WWN name;
            ASSERT_EQ(TVR_MethodWrapper::string2HBAName(name, port->getPortName()), 1u);
            EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(name), 0u);
            const auto* counters = static_cast<const FCPortStatistics*>(port->getStatistics());
            EXPECT_NE(counters->txFrames, FCPortStatistics::notReported);
        }
        EXPECT_EQ(names.size(), 4u);
    }
    unloadManagementLibraries();
}

} // namespace
} // namespace cimple
