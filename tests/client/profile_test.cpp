// The registered profiles, which need neither agent nor adapter.
#include "tests/client/client.h"

namespace client {
namespace {

using testing::ElementsAre;

TEST_F(Client, RegisteredProfilesInOrder) {
    const Answer answer = manager().enumerate_instances(interop, "TVRHBA_RegisteredProfile");
    ASSERT_EQ(answer.rc, 0);
    EXPECT_TRUE(answer.done);
    std::vector<std::string> standards; // organization and version
    for (const Cim_Instance& profile : answer.instances) {
        standards.push_back(profile["RegisteredOrganization"].plain() + " " +
                            profile["RegisteredVersion"].plain());
        EXPECT_EQ(profile.path.name_space, interop);
    }
    EXPECT_THAT(plain(answer, "RegisteredName"),
                ElementsAre("Profile Registration", "Software Inventory", "Physical Package",
                            "Host Discovered Resources", "FC HBA", "Storage HBA",
                            "FC Initiator Ports", "Software Update", "Record Log", "Software",
                            "Access Points", "PCI Device", "FCHBA Diagnostics"));
    EXPECT_THAT(standards, ElementsAre("2 1.0.0", "2 1.0.0", "11 1.3.0", "11 1.2.0", "11 1.2.0",
                                       "11 1.4.0", "11 1.3.0", "2 1.0.0", "2 1.0.1", "11 1.2.0",
                                       "11 1.3.0", "2 1.0.0", "2 1.0.0"));
    EXPECT_EQ(literals(answer.instances[5]), default_host()["profile"]);
    EXPECT_EQ(calls("*"), 0) << "profiles come without a look at the adapters";
}

TEST_F(Client, AProfileIsFoundByItsKeyToTheLetter) {
    const auto path = [](const char* id) {
        Named_Values keys;
        keys.set("InstanceID", id);
        return Cim_Path(interop, "TVRHBA_RegisteredProfile", keys);
    };
    const Answer found = manager().get_instance(path("TVR:Storage HBA"));
    ASSERT_EQ(found.rc, 0);
    EXPECT_EQ(found.instance()["RegisteredVersion"].as_string(), "1.4.0");
    EXPECT_EQ(manager().get_instance(path("TVR:storage hba")).rc, 6);
}

// By profiles, which need no agent, and by controllers, which need one.
TEST_F(Client, WhatIsntOfferedIsRefused) {
    for (const auto& [name_space, class_name, method] :
         {std::tuple{interop, "TVRHBA_RegisteredProfile", "openCONFORMANTinstances"},
          {client::name_space, "TVRHBA_PortController", "requestSTATEchange"}}) {
        SCOPED_TRACE(class_name);
        const Cim_Instance instance =
            manager().enumerate_instances(name_space, class_name).instances.at(0);
        EXPECT_EQ(manager().create_instance(instance.path, instance).rc, 7);
        EXPECT_EQ(manager().modify_instance(instance.path, instance).rc, 7);
        EXPECT_EQ(manager().delete_instance(instance.path).rc, 7);
        EXPECT_EQ(manager().exec_query(name_space, class_name, "SELECT *").rc, 7);
        EXPECT_EQ(manager().invoke_method(instance.path, method).rc, 7);
        EXPECT_EQ(manager().invoke_method(instance.path, "NoSuchMethod").rc, 17);
    }
}

} // namespace
} // namespace client
