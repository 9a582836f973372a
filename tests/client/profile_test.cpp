// The registered profiles, which need neither agent nor adapter.
#include "tests/client/client_session.h"

namespace client {
namespace {

class Profiles : public Client_Session {};

TVR_SESSIONS(Profiles, "profile.txt");

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
