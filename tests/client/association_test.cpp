// Associations through the loaded module: every one that a rich host has, walked from every
// instance.
#include "host/tvrcim/not_served.h"
#include "tests/client/client.h"

#include <algorithm>
#include <fstream>

namespace client {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

// A path without its namespace, which an end has from its own instance and a source from the
// request.
std::string bare(Cim_Path path) {
    path.name_space.clear();
    return path.text();
}

std::vector<std::string> bare(const std::vector<Cim_Path>& paths) {
    std::vector<std::string> texts;
    texts.reserve(paths.size());
    for (const Cim_Path& path : paths) {
        texts.push_back(bare(path));
    }
    return texts;
}

struct End {
    std::string role;
    std::string path;
};
struct Link {
    std::string class_name;
    Cim_Path path;
    std::vector<End> ends;

    bool refers_to(const std::string& source) const {
        return std::any_of(ends.begin(), ends.end(),
                           [&](const End& end) { return end.path == source; });
    }
};

class Associations : public Client {
protected:
    // A host with everything that an association can join; but for what tests of adapters leave, if
    // none is run.
    void start_rich_host(std::vector<Cim_Instance> instances, bool runs_test = false) {
        std::ofstream(directory.file("etc/tvr_smis.conf")) << "https://portal.example.test/\n";
        control(R"({"ports": {"10000254563C7780": {"targets": [
            {"nodeWWN": "50:02:54:56:70:00:0C:00", "portWWN": "50:02:54:56:70:00:0C:01",
             "luns": [{"type": "cdrom", "identifier": "50:02:54:56:70:00:0C:02"},
                      {"type": "objectStorage", "identifier": "50:02:54:56:70:00:0C:03"}]}]}}})");
        start(std::move(instances));
        if (runs_test) {
            run_test();
        }
        for (const auto& declared : manager().schema()->classes()) {
            if (declared->is_association() &&
                manager().serves(declared->name, tvrhost::Kind::association)) {
                const std::size_t before = links.size();
                read_links(*declared);
                const bool is_filled = links.size() > before;
                filled += is_filled;
                if (is_filled == tvrcim::is_always_empty(*declared)) {
                    unexpected.push_back(declared->name);
                }
            }
        }
    }

    // `through` sends the request to that class, whether the object manager would ask it or not.
    std::vector<std::string> names(const Cim_Path& source,
                                   const tvrhost::Association_Filter& filter = {},
                                   const std::string& through = {}) {
        const Answer answer =
            manager().associator_names(source, filter, tvrhost::Call{through, {}, 0});
        EXPECT_EQ(answer.rc, 0) << source.text();
        return bare(answer.paths);
    }

    std::vector<Link> links;
    int filled = 0;                          // classes with links
    std::vector<std::string> unexpected;     // classes that shouldn't have any, or lack them
    std::map<std::string, Cim_Path> sources; // all ends, by their bare paths

private:
    // Leaves a job, and records that tell of settings as well.
    void run_test() {
        constexpr const char* test = "TVR:FCHBA Internal Loopback Test";
        Cim_Instance settings;
        for (const Cim_Instance& each : enumerate("TVRHBA_FCHBADiagnosticSettingData").instances) {
            if (each["InstanceID"].as_string() == test) {
                settings = each;
            }
        }
        for (const Cim_Path& path :
             manager().enumerate_instance_names(name_space, "TVRHBA_FCHBADiagnosticTest").paths) {
            if (path.keys["Name"].as_string() == test) {
                const Answer answer = manager().invoke_method(
                    path, "RunDiagnosticService",
                    {{"ManagedElement", enumerate("TVRHBA_PortController").instances.at(0).path},
                     {"DiagnosticSettings", settings}});
                EXPECT_EQ(answer.return_value(), Cim_Value(std::uint32_t{0}));
                EXPECT_EQ(answer.out["Job"].as_path().class_name, "TVRHBA_ConcreteJob");
            }
        }
    }
    void read_links(const tvrmof::Class& declared) {
        for (const Cim_Instance& instance : enumerate(declared.name).instances) {
            Link link{declared.name, instance.path, {}};
            for (const tvrmof::Feature* feature : declared.features) {
                if (feature->kind == tvrmof::Feature_Kind::reference) {
                    const Cim_Path& path = instance[feature->name].as_path();
                    link.ends.push_back({feature->name, bare(path)});
                    sources.emplace(bare(path), path);
                }
            }
            links.push_back(std::move(link));
        }
    }
};

TEST_F(Associations, OfARichHostAreAllThereAndWalkableFromEverywhere) {
    start_rich_host({computer_system("server-7"), base_server_profile()}, true);
    EXPECT_THAT(unexpected, testing::ElementsAre("TVRHBA_ComputerSystemConformsToProfile",
                                                 "TVRHBA_DriverRecordLogManagesRecord",
                                                 "TVRHBA_RecordLogManagesRecord"))
        << "the computer system is another provider's, and the logs have no records";
    EXPECT_EQ(filled, 83);

    for (const auto& [text, source] : sources) {
        EXPECT_EQ(manager().get_instance(source).rc, 0) << text;
        std::vector<std::string> references;
        std::vector<std::string> others;
        for (const Link& link : links) {
            if (!link.refers_to(text)) {
                continue;
            }
            references.push_back(bare(link.path));
            for (const End& end : link.ends) {
                if (end.path != text) {
                    others.push_back(end.path);
                }
            }
        }
        ASSERT_THAT(bare(manager().reference_names(source).paths),
                    UnorderedElementsAreArray(references))
            << text;
        ASSERT_THAT(names(source), UnorderedElementsAreArray(others)) << text;
    }
}

TEST_F(Associations, FollowRolesClassesAndPropertyLists) {
    start_rich_host({computer_system("server-7")});
    const Cim_Path port = enumerate("TVRHBA_FCPort").instances.at(0).path;
    const Cim_Path controller = enumerate("TVRHBA_PortController").instances.at(0).path;
    const std::string controlled_by = "TVRHBA_ControlledBy";
    EXPECT_EQ(names(port, {controlled_by, "tvrhba_portcontroller", "Dependent", "Antecedent"}),
              std::vector{bare(controller)});
    EXPECT_THAT(names(port, {controlled_by, "", "Antecedent", ""}, controlled_by), IsEmpty());

    // Without a list all properties are there, those that were NULL as zero; with one the named.
    const Cim_Instance whole = manager().references(port, controlled_by, "Dependent").instance();
    EXPECT_EQ(whole["AccessState"].plain(), "1");
    EXPECT_EQ(whole["NegotiatedSpeed"].plain(), "0");
    const Cim_Instance narrow =
        manager()
            .references(port, controlled_by, {}, std::vector<std::string>{"AccessState"})
            .instance();
    EXPECT_FALSE(narrow.has("NegotiatedSpeed"));
    EXPECT_EQ(narrow["AccessState"].plain(), "1");

    // An associated instance comes from its own provider.
    const Cim_Instance current =
        manager()
            .associators(port, {controlled_by, "", "", ""}, std::vector<std::string>{"Name"})
            .instance();
    EXPECT_TRUE(current.has("Name"));
    EXPECT_FALSE(current.has("Description"));
    EXPECT_EQ(bare(current.path), bare(controller));

    Cim_Path strange = port;
    strange.keys.set("DeviceID", "10000254564a1020");
    EXPECT_THAT(names(strange), IsEmpty());
    EXPECT_EQ(manager()
                  .associator_names(Cim_Path(name_space, "TVRHBA_Nonsense", port.keys),
                                    {controlled_by, "", "", ""},
                                    tvrhost::Call{controlled_by, {}, 0})
                  .rc,
              0);
}

// Nobody but the module's maps knows the computer system that the module makes: it is named, and
// where it should be delivered the answer ends without a word.
TEST_F(Associations, EndSilentlyAtAComputerSystemThatNobodyServes) {
    start_rich_host({});
    const Cim_Path port = enumerate("TVRHBA_FCPort").instances.at(0).path;
    const std::string system_device = "TVRHBA_FCPortSystemDevice";
    EXPECT_EQ(names(port, {system_device, "", "", ""}).size(), 1u);
    const Answer answer = manager().associators(port, {system_device, "", "", ""});
    EXPECT_EQ(answer.rc, 0);
    EXPECT_THAT(answer.instances, IsEmpty());

    const Cim_Path controller = enumerate("TVRHBA_PortController").instances.at(0).path;
    const Answer packages = manager().associators(controller, {"TVRHBA_Realizes", "", "", ""});
    EXPECT_EQ(packages.instances.size(), 1u);
}

} // namespace
} // namespace client
