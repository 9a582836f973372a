// What a host shows once: the provider's settings, the portal, the log.
#include "tests/client/client.h"

namespace client {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(Client, SettingsAreThoseOfTheFile) {
    directory.write("etc/tavrin_fc_provider.conf", "TVR_PROVIDER_CACHE_TIMEOUT = 3\n"
                                                   "TVR_PROVIDER_REFRESH_ADAPTERDATA = TRUE\n"
                                                   "TVR_PROVIDER_REFRESH_SANDATA = FALSE\n");
    EXPECT_THAT(plain(enumerate("TVRHBA_ProviderConfigSetting"), "current"),
                ElementsAre("3", "1", "0"));
    stop();
    EXPECT_THAT(directory.read("etc/tavrin_fc_provider.conf"),
                testing::AllOf(testing::HasSubstr("TVR_PROVIDER_CACHE_TIMEOUT = 3\n"),
                               testing::HasSubstr("TVR_PROVIDER_REFRESH_ADAPTERDATA = TRUE\n"),
                               testing::HasSubstr("TVR_PROVIDER_REFRESH_SANDATA = FALSE\n")));
}

TEST_F(Client, ThePortalIsAnAccessPointOfTheHost) {
    EXPECT_THAT(enumerate("TVRHBA_RemoteServiceAccessPoint").instances, IsEmpty());
    EXPECT_THAT(enumerate("TVRHBA_RemoteHostedAccessPoint").instances, IsEmpty());
    stop();
    directory.write("etc/tvr_smis.conf", "# the portal\n\n  https://fleet.example/fc \n");
    start({computer_system("server-7")});
    EXPECT_EQ(literals(only("TVRHBA_RemoteServiceAccessPoint")), default_host()["portal"]);
    const Cim_Instance hosted = only("TVRHBA_RemoteHostedAccessPoint");
    EXPECT_EQ(hosted["Dependent"].as_path().keys["Name"].as_string(), "Fleetdesk");
    EXPECT_EQ(hosted["Antecedent"].as_path().keys["Name"].as_string(), "server-7");
}

TEST_F(Client, TheProviderLogShowsTheLoggersState) {
    const std::string file = directory.file("trace");
    directory.write("etc/tavrin_fc_provider.dmp", "4,5,1\n" + file);
    const Cim_Instance log = enumerate("TVRHBA_RecordLog").instances.at(0);
    EXPECT_EQ(log["RequestedState"].as_uint(), 2u);
    EXPECT_EQ(log["EnabledState"].as_uint(), 2u);
    EXPECT_EQ(log["LogMode"].as_uint(), 4u);
    EXPECT_EQ(log["LogLevel"].as_uint(), 5u);
    EXPECT_EQ(log["TracePath"].as_string(), file);
    EXPECT_EQ(only("TVRHBA_RecordLogCapabilities")["ManagedElement"].as_path().keys["InstanceID"],
              log["InstanceID"]);
    EXPECT_EQ(enumerate("TVRHBA_ProviderUseOfLog")
                  .instances.at(0)["Antecedent"]
                  .as_path()
                  .keys["InstanceID"],
              log["InstanceID"]);
}

} // namespace
} // namespace client
