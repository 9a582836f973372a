// What a host is published as before any adapter: its computer system, the profiles, the provider
// itself.
#include "tests/agent/agent_fixture.h"

#include "tests/runtime/plain_context.h"

#include <algorithm>

namespace cimple {
namespace {

using testing::ContainerEq;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using Properties = std::map<std::string, std::string>;

// Stands for the object manager: the instances that up-calls find, by namespace.
class Fake_Manager final : public Plain_Context {
public:
    using Instances = std::multimap<std::string, Ref<Instance>>;
    explicit Fake_Manager(const Instances& instances) : _instances(instances) {}

    Thread_Context* thread_create_hook() override {
        return std::make_unique<Fake_Manager>(_instances).release();
    }

    Instance_Enumerator_State* instance_enumerator_create(const char* name_space,
                                                          const Instance* model) override {
        auto state = std::make_unique<State>();
        for (auto [at, end] = _instances.equal_range(name_space); at != end; ++at) {
            if (is_subclass(class_of(model), class_of(at->second.get()))) {
                state->push_back(at->second);
            }
        }
        return reinterpret_cast<Instance_Enumerator_State*>(state.release());
    }
    void instance_enumerator_destroy(Instance_Enumerator_State* state) override {
        delete &of(state);
    }
    bool instance_enumerator_more(Instance_Enumerator_State* state) override {
        return !of(state).empty();
    }
    void instance_enumerator_next(Instance_Enumerator_State* state) override {
        of(state).erase(of(state).begin());
    }
    Instance* instance_enumerator_get(Instance_Enumerator_State* state) override {
        return Ref<Instance>(of(state).front()).release();
    }

private:
    using State = std::vector<Ref<Instance>>;
    static State& of(Instance_Enumerator_State* state) { return *reinterpret_cast<State*>(state); }

    const Instances& _instances;
};

class Host : public With_Agent {
protected:
    Host() : _manager(at_manager) { Thread_Context::push(&_manager); }
    ~Host() override {
        unload();
        Thread_Context::pop();
    }

    void add_profile(const char* name) {
        Ref<CIM_RegisteredProfile> profile(CIM_RegisteredProfile::create(true));
        profile->InstanceID.set(std::string("OM:") + name);
        profile->RegisteredName.set(name);
        at_manager.emplace("root/pg_interop", Ref<Instance>(profile.release()));
    }
    template <class C> Properties only() {
        const Collected all = enumerated<C>();
        EXPECT_EQ(all.size(), 1u) << C::static_meta_class.name;
        return all.size() == 0 ? Properties() : describe(all[0]);
    }
    std::vector<std::string> names(const Collected& profiles, const char* property) {
        std::vector<std::string> names = profiles.texts(property);
        for (std::string& name : names) {
            const std::string before = "TVRHBA_RegisteredProfile.InstanceID=\"TVR:";
            EXPECT_TRUE(name.starts_with(before)) << name;
            name = name.substr(before.size(), name.size() - before.size() - 1);
        }
        return names;
    }

    Fake_Manager::Instances at_manager;

private:
    Fake_Manager _manager;
};

const std::vector<std::string> profile_names = {"Profile Registration",
                                                "Software Inventory",
                                                "Physical Package",
                                                "Host Discovered Resources",
                                                "FC HBA",
                                                "Storage HBA",
                                                "FC Initiator Ports",
                                                "Software",
                                                "Access Points",
                                                "PCI Device",
                                                "FCHBA Diagnostics",
                                                "Software Update",
                                                "Record Log"};

TEST_F(Host, MakesAComputerSystemOfItsOwn) {
    load();
    refresh();
    EXPECT_THAT(
        only<CIM_ComputerSystem>(),
        ContainerEq(Properties{
            {"", "root/tavrin"},
            {"CreationClassName", "CIM_ComputerSystem"},
            {"Name", "host.example"},
            {"ElementName", "host.example"},
            {"NameFormat", "Other"},
            {"Description", "Linux version 7.0 (test) with Tavrin CMPI HBA Provider v2.5.11-1"},
            {"EnabledState", "0"},
            {"RequestedState", "12"},
            {"EnabledDefault", "2"},
            {"TransitioningToState", "12"},
            {"OtherIdentifyingInfo", "{192.0.2.7, Linux version 7.0 (test), Testix 7\n}"},
            {"IdentifyingDescriptions",
             "{TAVRIN:IP_ADDRESS, TAVRIN:OS_NAME, TAVRIN:OS_EXTENDED_INFO}"},
            {"Dedicated", "{0}"},
            {"ResetCapability", "2"},
            {"PowerManagementCapabilities", "{0}"},
            {"OperationalStatus", "{2}"},
        }));
    const Collected conformances = enumerated<TVRHBA_ComputerSystemConformsToProfile>();
    EXPECT_EQ(names(conformances, "ConformantStandard"), profile_names);
    EXPECT_THAT(conformances.texts("ManagedElement"),
                Each("CIM_ComputerSystem.Name=\"host.example\",CreationClassName="
                     "\"CIM_ComputerSystem\""));
    EXPECT_THAT(conformances.texts(""), Each(IsEmpty()));
}

TEST_F(Host, IsNamedUnknownWhereNothingTellsItsName) {
    host_is_resolved = false;
    load();
    refresh();
    Properties system = only<CIM_ComputerSystem>();
    EXPECT_EQ(system["Name"], "host");
    EXPECT_THAT(system["OtherIdentifyingInfo"], testing::StartsWith("{unknown, "));
    EXPECT_EQ(logged("Error! gethostbyname() failed, using 'unknown' for IP address."), 1u);

    host_has_name = false;
    refresh();
    system = only<CIM_ComputerSystem>();
    EXPECT_EQ(system["Name"], "unknown");
    EXPECT_THAT(system["OtherIdentifyingInfo"], testing::StartsWith("{unknown, "));
    EXPECT_EQ(logged("Error! gethostname() failed err : 36 , using 'unknown' for hostname and IP "
                     "address"),
              1u);
}

TEST_F(Host, RefersItsProfilesToProfileRegistration) {
    load();
    refresh();
    const Collected references = enumerated<TVRHBA_ReferencedProfile>();
    EXPECT_THAT(names(references, "Dependent"),
                ElementsAre("Software Inventory", "Physical Package", "Host Discovered Resources",
                            "FC HBA", "Storage HBA", "FC Initiator Ports", "FC HBA", "Software",
                            "Access Points", "PCI Device", "FCHBA Diagnostics"));
    std::vector<std::string> antecedents = names(references, "Antecedent");
    EXPECT_EQ(antecedents[6], "FC Initiator Ports");
    antecedents.erase(antecedents.begin() + 6);
    EXPECT_THAT(antecedents, Each("Profile Registration"));
    EXPECT_THAT(references.texts(""), Each("root/pg_interop"));
    EXPECT_EQ(enumerated<TVRHBA_BaseServerReferencedProfile>().size(), 0u);
    EXPECT_EQ(describe(agent->maps.m_TVRHBA_RegisteredProfile_map.get(0))[""], "root/pg_interop");
    EXPECT_EQ(logged("Generating TVRHBA_ReferencedProfile (Storage HBA / Profile Registration)"),
              1u);
    EXPECT_EQ(logged("Generating TVRHBA_ReferencedProfile (FC HBA / FC Initiator Port)"), 1u);
}

TEST_F(Host, LinksItsProfilesToTheBaseServerProfile) {
    add_profile("Other");
    add_profile("base SERVER");
    add_profile("Base Server");
    load();
    for (std::size_t rebuild = 1; rebuild <= 2; ++rebuild) {
        refresh();
        const Collected references = enumerated<TVRHBA_BaseServerReferencedProfile>();
        EXPECT_EQ(references.size(), 10u);
        EXPECT_THAT(references.texts("Antecedent"),
                    Each("CIM_RegisteredProfile.InstanceID=\"OM:base SERVER\""));
        EXPECT_THAT(references.texts(""), Each("root/pg_interop"));
        EXPECT_EQ(logged("Insert Failed : m_TVRHBA_BaseServerReferencedProfile_map"), rebuild);
        EXPECT_EQ(logged("Destroying the Base Server Profile instance"), rebuild - 1);
        EXPECT_EQ(enumerated<TVRHBA_ReferencedProfile>().size(), 11u);
    }
    at_manager.clear();
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_BaseServerReferencedProfile>().size(), 0u);
}

TEST_F(Host, JoinsTheIdentitiesOfProviderDriverAndDiagnostics) {
    libraries.adapters.resize(1);
    load();
    refresh();
    const Collected identities = enumerated<TVRHBA_SoftwareIdentity>();
    ASSERT_EQ(identities.size(), 3u + 4);
    const std::vector<std::string> paths = {
        "TVRHBA_SoftwareIdentity.InstanceID=\"Tavrin CMPI HBA Provider v2.5.11-1\"",
        "TVRHBA_SoftwareIdentity.InstanceID=\"TVR FC HBA: Driver tvfc v1.2.3\"",
        "TVRHBA_SoftwareIdentity.InstanceID=\"TVRHBA: Diagnostics v5\""};
    // Firmware identities of the port come behind these.
    const auto first = [](std::vector<std::string> texts) {
        texts.resize(3);
        return texts;
    };
    EXPECT_EQ(first(enumerated<TVRHBA_InstalledSoftwareIdentity>().texts("InstalledSoftware")),
              paths);
    const Collected conformances = enumerated<TVRHBA_SoftwareConformsToProfile>();
    EXPECT_EQ(first(conformances.texts("ManagedElement")), paths);
    EXPECT_THAT(first(names(conformances, "ConformantStandard")),
                ElementsAre("Software", "Software Inventory", "Software Inventory"));
    EXPECT_THAT(only<TVRHBA_ProviderSoftwareIdentity>(),
                testing::IsSupersetOf(Properties{{"Antecedent", paths[0]},
                                                 {"UpgradeCondition", "3"},
                                                 {"ElementSoftwareStatus", "{2, 3, 6}"}}));
}

TEST_F(Host, WithoutAnAdapterHasComputerSystemAndProfilesOnly) {
    libraries.adapters.clear();
    load();
    refresh();
    EXPECT_EQ(enumerated<CIM_ComputerSystem>().size(), 1u);
    EXPECT_EQ(enumerated<TVRHBA_ComputerSystemConformsToProfile>().size(),
              profile_names.size() - 2);
    EXPECT_EQ(enumerated<TVRHBA_ReferencedProfile>().size(), 11u);
    EXPECT_EQ(enumerated<TVRHBA_SoftwareIdentity>().size(), 0u);
    EXPECT_EQ(enumerated<TVRHBA_ProviderConfigSetting>().size(), 0u);
    EXPECT_EQ(enumerated<TVRHBA_RecordLog>().size(), 0u);
    EXPECT_EQ(enumerated<TVRHBA_FCPort>().size(), 0u);
    EXPECT_EQ(logged("FC Adapter Not present !!!!, throw error !!!"), 1u);
    EXPECT_EQ(logged("No FC card found"), 1u);
    EXPECT_EQ(logged("PERF: updateAdapterMaps: cleanExit"), 1u);
}

} // namespace
} // namespace cimple
