// What a host shows once: its computer system, profiles, the provider's identity and settings, the
// log.
#include "tests/client/client.h"

#include <unistd.h>

namespace client {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<std::string> plain(const Answer& answer, const char* property) {
    std::vector<std::string> out;
    for (const Cim_Instance& instance : answer.instances) {
        out.push_back(instance[property].plain());
    }
    return out;
}

TEST_F(Client, AComputerSystemOfAnotherProviderIsTakenAndNotClaimed) {
    start({computer_system("server-7"), base_server_profile()});
    EXPECT_EQ(only("TVRHBA_RecordLog")["InstanceID"].as_string(), "TVRHBA:ProviderLog:server-7");
    EXPECT_THAT(enumerate("TVRHBA_ComputerSystemConformsToProfile").instances, IsEmpty());

    const Answer installed = enumerate("TVRHBA_InstalledSoftwareIdentity");
    ASSERT_THAT(installed.instances, testing::Not(IsEmpty()));
    const Cim_Path& system = installed.instances[0]["System"].as_path();
    EXPECT_EQ(system.class_name, "IBMSD_ComputerSystem");
    EXPECT_EQ(system.name_space, "root/ibmse");
    EXPECT_EQ(system.keys["Name"].as_string(), "server-7");

    const Answer base =
        manager().enumerate_instances(interop, "TVRHBA_BaseServerReferencedProfile");
    EXPECT_THAT(base.instances, SizeIs(10));
    for (const Cim_Instance& reference : base.instances) {
        EXPECT_EQ(reference["Antecedent"].as_path().keys["InstanceID"].as_string(),
                  "SRV:Base Server");
    }
}

TEST_F(Client, AHostWithoutOneGetsAComputerSystemOfItsOwn) {
    EXPECT_THAT(
        manager().enumerate_instances(interop, "TVRHBA_BaseServerReferencedProfile").instances,
        IsEmpty());
    const Answer references = manager().enumerate_instances(interop, "TVRHBA_ReferencedProfile");
    EXPECT_THAT(references.instances, SizeIs(11));

    const Answer conforms = enumerate("TVRHBA_ComputerSystemConformsToProfile");
    ASSERT_THAT(conforms.instances, SizeIs(13));
    const Cim_Path& system = conforms.instances[0]["ManagedElement"].as_path();
    EXPECT_EQ(system.class_name, "CIM_ComputerSystem");
    EXPECT_EQ(system.keys["CreationClassName"].as_string(), "CIM_ComputerSystem");
    EXPECT_EQ(system.name_space, name_space);
    EXPECT_EQ(enumerate("TVRHBA_FCPort").instances[0]["SystemName"], system.keys["Name"]);
}

TEST_F(Client, IdentitiesAndSettings) {
    directory.write("etc/tavrin_fc_provider.conf", "TVR_PROVIDER_CACHE_TIMEOUT = 7\n"
                                                   "TVR_PROVIDER_REFRESH_SANDATA = FALSE\n");
    const Answer identities = enumerate("TVRHBA_SoftwareIdentity");
    ASSERT_THAT(identities.instances, SizeIs(testing::Ge(3u)));
    std::map<std::string, std::string> provider = literals(identities.instances[0]);
    EXPECT_EQ(provider["InstanceID"], "\"Tavrin CMPI HBA Provider v2.5.11-1\"");
    EXPECT_EQ(provider["VersionString"], "\"2.5.11-1\"");
    EXPECT_EQ(provider["MajorVersion"] + provider["MinorVersion"] + provider["RevisionNumber"] +
                  provider["BuildNumber"],
              "25111");
    EXPECT_EQ(provider["ClassificationDescriptions"], "{\"CMPI HBA CIM Provider\"}");
    EXPECT_EQ(provider["IsEntity"], "TRUE");
    std::map<std::string, std::string> driver = literals(identities.instances[1]);
    EXPECT_THAT(driver["InstanceID"], testing::StartsWith("\"TVR FC HBA: Driver "));
    EXPECT_EQ(driver["IdentityInfoType"],
              "{\"TAVRIN:DRIVER_NAME\", \"TAVRIN:DRIVER_VERSION\", \"TAVRIN:TVFC_DRIVER_TYPE\"}");
    EXPECT_EQ(driver.count("MajorVersion"), 0u);
    EXPECT_THAT(literals(identities.instances[2])["InstanceID"],
                testing::StartsWith("\"TVRHBA: Diagnostics v"));

    const Answer settings = enumerate("TVRHBA_ProviderConfigSetting");
    EXPECT_THAT(plain(settings, "paramname"),
                ElementsAre("cachetimeout", "adapterrefresh", "sanrefresh"));
    EXPECT_THAT(plain(settings, "current"), ElementsAre("7", "0", "0"));
    EXPECT_THAT(plain(settings, "lowRange"), ElementsAre("5", "0", "0"));
    EXPECT_THAT(plain(settings, "highRange"), ElementsAre("30", "1", "1"));
    EXPECT_THAT(plain(settings, "def"), ElementsAre("10", "0", "1"));
}

TEST_F(Client, ThePortalIsAnAccessPointOfTheHost) {
    EXPECT_THAT(enumerate("TVRHBA_RemoteServiceAccessPoint").instances, IsEmpty());
    stop();
    directory.write("etc/tvr_smis.conf", "# the portal\n\n  https://fleet.example/fc \n");
    const Cim_Instance point = only("TVRHBA_RemoteServiceAccessPoint");
    EXPECT_EQ(point["AccessInfo"].as_string(), "https://fleet.example/fc ");
    EXPECT_EQ(point["Name"].as_string(), "Fleetdesk");
    EXPECT_EQ(point["InfoFormat"].as_uint(), 200u);
    EXPECT_EQ(
        only("TVRHBA_RemoteHostedAccessPoint")["Dependent"].as_path().keys["Name"].as_string(),
        "Fleetdesk");
}

TEST_F(Client, TheProviderLogShowsTheLoggersState) {
    Cim_Instance log = only("TVRHBA_RecordLog");
    EXPECT_EQ(log["RequestedState"].as_uint(), 5u);
    EXPECT_EQ(log["EnabledState"].as_uint(), 3u);
    EXPECT_EQ(log["MaxNumberOfRecords"].as_uint(), 1024u);
    EXPECT_FALSE(log.has("TracePath"));
    stop();
    const std::string file = directory.file("trace");
    directory.write("etc/tavrin_fc_provider.dmp", "4,5,1\n" + file);
    log = only("TVRHBA_RecordLog");
    EXPECT_EQ(log["RequestedState"].as_uint(), 2u);
    EXPECT_EQ(log["EnabledState"].as_uint(), 2u);
    EXPECT_EQ(log["LogMode"].as_uint(), 4u);
    EXPECT_EQ(log["LogLevel"].as_uint(), 5u);
    EXPECT_EQ(log["TracePath"].as_string(), file);
    const Cim_Instance capabilities = only("TVRHBA_EnabledRecordLogCapabilities");
    EXPECT_EQ(capabilities["RequestedStatesSupported"].literal(), "{2, 3}");
    EXPECT_EQ(only("TVRHBA_ProviderUseOfLog")["Antecedent"].as_path().keys["InstanceID"],
              log["InstanceID"]);
}

// Entries of indications, which this version doesn't offer.
TEST_F(Client, IndicationsAreRefused) {
    EXPECT_EQ(manager().enable_indications("TVRHBA_AlertIndication").rc, 7);
}

} // namespace
} // namespace client
