// The driver's parameters: their instances, their associations and their current values.
#include "tests/agent/agent_fixture.h"

#include "agent/driver_parameters.h"
#include "agent/locks.h"
#include "providers/TVRHBA_DriverParamGlobal_Provider.h"
#include "providers/TVRHBA_DriverParams_Provider.h"

#include <cstring>

namespace cimple {
namespace {

using testing::ElementsAre;

constexpr uint64 limit = 5'000'000;

RM_DRIVERPARAM param(const std::string& name, uint32 number) {
    RM_DRIVERPARAM param{};
    name.copy(param.name, sizeof param.name); // without terminator if it fills the field
    param.low = number;
    param.high = number + 1;
    param.defaultValue = number + 2;
    param.current = number + 3;
    param.exportFlag = 1;
    param.dynamic = 5;
    ("About " + name).copy(param.help, sizeof param.help);
    return param;
}

class Driver_Parameters : public With_Agent {
protected:
    Driver_Parameters() {
        for (fake::Adapter& adapter : libraries.adapters) {
            adapter.ports[0].params = {param("depth", 10), param("Topology", 20)};
        }
        libraries.globalParams = {param("log-mask", 30)};
    }
    std::vector<RM_DRIVERPARAM>& of_port(std::size_t index) {
        return libraries.adapters[index].ports[0].params;
    }
    template <class Provider> std::vector<std::string> current() {
        Collected parameters;
        Provider().enum_instances(nullptr, parameters.handler());
        return parameters.texts("current");
    }
    auto current_of_ports() { return current<TVRHBA_DriverParams_Provider>(); }
    auto current_of_driver() { return current<TVRHBA_DriverParamGlobal_Provider>(); }
};

TEST_F(Driver_Parameters, AreInstancesJoinedWithServiceAndPort) {
    load();
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_DriverParams>().size(), 6u);
    const Collected effects = enumerated<TVRHBA_DriverParameterAffectsFCPort>();
    ASSERT_EQ(effects.size(), 6u);
    EXPECT_THAT(effects.texts("Dependent")[4],
                "TVRHBA_DriverParams.InstanceID=\"1000AABBCCDD0300:depth\"");
    EXPECT_THAT(effects.texts("Antecedent")[4], testing::HasSubstr("\"1000AABBCCDD0300\""));
    const Collected settings = enumerated<TVRHBA_DriverServiceElementSettingData>();
    EXPECT_EQ(settings.texts("SettingData")[4], effects.texts("Dependent")[4]);
    EXPECT_EQ(enumerated<TVRHBA_GlobalDriverServiceElementSettingData>().texts("SettingData"),
              std::vector<std::string>{"TVRHBA_DriverParamGlobal.InstanceID=\"log-mask\""});
    EXPECT_EQ(enumerated<TVRHBA_FCDriverServiceAffectsDriver>().texts("AffectingElement"),
              std::vector{settings.texts("ManagedElement")[0]});
    EXPECT_EQ(logged("number of driver parameters 1"), 1u) << "the first port tells them";
}

TEST_F(Driver_Parameters, TakeWhatTheLibraryTells) {
    of_port(0).resize(1);
    of_port(1).clear();
    std::memset(&of_port(2)[0], 'x', sizeof(RM_DRIVERPARAM));
    of_port(2)[1] = param("depth", 0);
    of_port(2).push_back(of_port(2)[1]); // a second one of the name ends the port's
    of_port(2).push_back(param("last", 0));
    libraries.statuses["LRM_GetDriverParamsGlobal"] = {9};
    load();
    refresh();
    const Collected all = enumerated<TVRHBA_DriverParams>();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(describe(all[1])["paramname"], std::string(32, 'x'));
    EXPECT_EQ(describe(all[1])["help"], std::string(80, 'x'));
    EXPECT_EQ(logged("Insert Failed : m_TVRHBA_DriverParams_map"), 1u);
    EXPECT_EQ(enumerated<TVRHBA_DriverParamGlobal>().size(), 0u);
    for (const char* line :
         {"Call to tvrcimGetDriverParam to retrieve Global Driver Parameters failed",
          "rm_status = 9",
          "Call to tvrcimGetDriverParam to retrieve Local Driver Parameters failed",
          "rm_status = 1"}) {
        EXPECT_EQ(logged(line), 1u) << line;
    }
}

TEST_F(Driver_Parameters, OfOnePortAreMadeOrRefused) {
    load();
    refresh();
    const Full_Guard guard(*agent);
    const std::string port = "1000AABBCCDD0100";
    EXPECT_EQ(tvrcimGetDriverParam(agent->maps, port + "0", 0), 1u);
    EXPECT_EQ(tvrcimGetDriverParam(agent->maps, "1000AABBCCDD0900", 0), 1u);
    EXPECT_EQ(logged("INVALID wwpn"), 1u);
    EXPECT_EQ(tvrcimGetDriverParam(agent->maps, port, 1), 1u) << "they are there";
    of_port(0).resize(60);
    libraries.globalParams.resize(60);
    libraries.toldNeed = 0xFFFFFFFF;
    EXPECT_EQ(tvrcimGetDriverParam(agent->maps, port, 0), 8u);
    EXPECT_EQ(logged("RM_GetDriverParams:failed"), 1u);
    EXPECT_EQ(tvrcimGetDriverParam(agent->maps, port, 1), 8u);
    EXPECT_EQ(logged("ERROR: tvrcimGetDriverParamsGlobal: Unable to allocate buffer"), 1u);

    of_port(0).resize(1);
    agent->maps.m_TVRHBA_DriverParams_map.clear();
    agent->maps.m_TVRHBA_DriverServiceElementSettingData_map.clear();
    agent->maps.m_TVRHBA_DriverParameterAffectsFCPort_map.clear();
    agent->maps.m_TVRHBA_FCHBADriverParamService_map.clear();
    EXPECT_EQ(tvrcimGetDriverParam(agent->maps, port, 0), 0u);
    EXPECT_TRUE(agent->maps.m_TVRHBA_DriverServiceElementSettingData_map.empty());
    EXPECT_EQ(agent->maps.m_TVRHBA_DriverParameterAffectsFCPort_map.size(), 1u);
    agent->maps.m_TVRHBA_DriverParams_map.clear();
    agent->maps.m_TVRHBA_FCPort_map.clear();
    EXPECT_EQ(tvrcimGetDriverParam(agent->maps, port, 0), 1u);
    EXPECT_EQ(logged("Data Structure is corrupted..."), 1u);
    EXPECT_EQ(agent->maps.m_TVRHBA_DriverParams_map.size(), 1u);
}

// A rebuild empties the maps, and the fetch declines: also for an agent that knows nothing of it.
TEST_F(Driver_Parameters, AreFetchedAtMostEveryFiveSeconds) {
    load();
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_DriverParams>().size(), 6u);
    clock.time += limit - 1;
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_DriverParams>().size(), 0u);
    EXPECT_EQ(enumerated<TVRHBA_FCDriverServiceAffectsDriver>().size(), 0u);
    unload();
    load();
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_DriverParams>().size(), 0u);
    clock.time += 1;
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_DriverParams>().size(), 6u);
}

TEST_F(Driver_Parameters, FollowTheDriverEveryFiveSeconds) {
    load();
    refresh();
    EXPECT_THAT(current_of_ports(), ElementsAre("13", "23", "13", "23", "13", "23"));
    EXPECT_THAT(current_of_driver(), ElementsAre("33"));
    std::strcpy(of_port(1)[0].name, "DEPTH"); // the same name to the refresh
    of_port(1)[0].current = 1;
    of_port(1).insert(of_port(1).begin(), 60, param("new", 5));
    of_port(2)[1].current = 2;
    of_port(2)[1].high = 99;
    libraries.globalParams[0].current = 3;
    clock.time += limit - 1;
    EXPECT_THAT(current_of_ports(), ElementsAre("13", "23", "13", "23", "13", "23"));
    EXPECT_THAT(current_of_driver(), ElementsAre("33"));
    clock.time += 1;
    EXPECT_THAT(current_of_ports(), ElementsAre("13", "23", "1", "23", "13", "2"));
    EXPECT_THAT(current_of_driver(), ElementsAre("3"));
    EXPECT_EQ(enumerated<TVRHBA_DriverParams>().texts("highRange")[5], "21");
}

TEST_F(Driver_Parameters, KeepTheirValuesWhereTheLibraryFails) {
    load();
    refresh();
    for (std::size_t i = 0; i < 3; ++i) {
        of_port(i)[0].current = 1;
    }
    libraries.globalParams[0].current = 1;
    libraries.statuses["LRM_GetDriverParams"] = {0, 9};
    libraries.statuses["LRM_GetDriverParamsGlobal"] = {9};
    EXPECT_THAT(current_of_ports(), ElementsAre("1", "23", "13", "23", "13", "23"));
    EXPECT_EQ(logged("RM_GetDriverParams:failed"), 1u);
    EXPECT_THAT(current_of_driver(), ElementsAre("33"));
    EXPECT_EQ(logged("ERROR: tvrcimGetDriverParamsGlobal: RM_GetDriverParamsGlobal call failed "
                     "(b) (9)"),
              1u);
    libraries.globalParams.resize(60);
    libraries.statuses["LRM_GetDriverParamsGlobal"] = {0, 9};
    clock.time += limit;
    EXPECT_THAT(current_of_driver(), ElementsAre("33"));
    EXPECT_EQ(logged("ERROR: tvrcimGetDriverParamsGlobal: RM_GetDriverParamsGlobal call failed "
                     "(a) (9)"),
              1u);
}

} // namespace
} // namespace cimple
