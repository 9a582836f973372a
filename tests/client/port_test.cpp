// TVRHBA_FCPort through the loaded module.
#include "tests/client/client_session.h"

#include <thread>

namespace client {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

class Ports : public Client_Session {
protected:
    Answer ports() { return enumerate("TVRHBA_FCPort"); }
    std::vector<std::string> ids() { return plain(ports(), "DeviceID"); }
};

TVR_SESSIONS(Ports, "port.txt");

TEST_F(Ports, AreFoundByKey) {
    const Cim_Path path = ports().instances.at(2).path;
    EXPECT_EQ(path.keys.size(), 4u);
    const Answer whole = manager().get_instance(path);
    ASSERT_EQ(whole.rc, 0);
    EXPECT_EQ(whole.instance()["DeviceID"].as_string(), "10000254563C7780");

    Cim_Path wrong = path;
    wrong.keys.set("DeviceID", "10000254563c7780");
    EXPECT_EQ(manager().get_instance(wrong).rc, 6) << "keys are compared to the letter";

    const Answer narrow =
        manager().get_instance(path, std::vector<std::string>{"Speed", "nonsense"});
    std::vector<std::string> names;
    for (const tvrhost::Named_Value& property : narrow.instance().properties) {
        names.push_back(property.name);
    }
    EXPECT_THAT(names, UnorderedElementsAre("SystemCreationClassName", "SystemName",
                                            "CreationClassName", "DeviceID", "Speed"));

    const Answer paths = manager().enumerate_instance_names(name_space, "TVRHBA_FCPort");
    ASSERT_EQ(paths.paths.size(), 4u);
    EXPECT_EQ(paths.paths[2], path);
}

TEST_F(Ports, AnswerRequestsFromSeveralThreadsWithOneWholeSet) {
    control(R"({"entryPoints": {"HBA_GetAdapterAttributes": {"latencyMs": 5}}})");
    manager();
    std::vector<std::vector<std::string>> seen(4);
    {
        std::vector<std::jthread> threads;
        threads.reserve(seen.size());
        for (std::vector<std::string>& one : seen) {
            threads.emplace_back([this, &one] { one = ids(); });
        }
    }
    for (const std::vector<std::string>& one : seen) {
        EXPECT_THAT(one, ElementsAre("10000254564A1020", "10000254564A1021", "10000254563C7780",
                                     "10000254563C7781"));
    }
    EXPECT_EQ(calls("HBA_GetNumberOfAdapters"), 1);
}

} // namespace
} // namespace client
