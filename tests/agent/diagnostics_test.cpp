// The catalogue of diagnostic tests, what tests leave behind, and the methods of help and logs.
#include "tests/agent/agent_fixture.h"

#include "agent/clear_maps.h"
#include "agent/diagnostic_catalogue.h"
#include "agent/diagnostic_records.h"
#include "providers/TVRHBA_DiagnosticsLog_Provider.h"
#include "providers/TVRHBA_HelpService_Provider.h"

namespace cimple {
namespace {

using testing::ElementsAre;
using Texts = std::map<std::string, std::string>;
using Test_Class = TVRHBA_FCHBADiagnosticTest;

// Properties as "NAME=TEXT|NAME=TEXT", in which "$" stands for the test's name.
struct Row {
    std::string name, test, settings, capabilities, help;
};
const std::string data = "LoopControl={3}|LoopControlParameter={100}|BufferSizes={8}|"
                         "BufferPattern={49, 97, 50, 98, 51, 99, 52, 100}";
const std::string target = data + "|TargetDevice=|TargetDeviceFormat=2|LUN=0";
const std::string loopback =
    "SupportedServiceModes={4}|SupportedLoopControl={2, 3}|"
    "SupportedExecutionControls={1}|"
    "OtherSupportedExecutionControlsDescriptions={BufferSize, BufferPattern}";
const std::string none = "SupportedServiceModes={32768}|SupportedLoopControl={32768}|"
                         "SupportedExecutionControls={32768}";
std::string with_target(const std::string& mechanism) {
    return "SupportedServiceModes={4}|SupportedLoopControl={3}|SupportedExecutionControls={1}|"
           "OtherSupportedExecutionControlsDescriptions={TargetDevice, " +
           mechanism + ", LUN, BufferSize, BufferPattern}";
}
const Row rows[] = {
    {"Beacon", "FCHBATestType=2|TestTypes={2}", "LoopControl={3}|LoopControlParameter={5}",
     "SupportedLoopControl={3, 4}|" + none,
     "causes a port's LEDs to flash on and off, allowing the port to be easily visually "
     "identified"},
    {"Echo", "FCHBATestType=3|TestTypes={3, 5}|Characteristics={4, 10}",
     target + "|EchoMechanism=2", with_target("EchoMechanism"),
     "verifies the data path from host to target"},
    {"External Loopback", "FCHBATestType=4|TestTypes={2, 5}|Characteristics={4, 10}", data,
     loopback, "verifies that the entire data path through an FCHBA is working properly"},
    {"Host Loopback", "FCHBATestType=5|TestTypes={2}|Characteristics={4}", data, loopback,
     "verifies the FC HBA hostbus interface"},
    {"Internal Loopback", "FCHBATestType=6|TestTypes={2}|Characteristics={4}", data, loopback,
     "verifies the integrity of internal data paths in the FCHBA"},
    {"Ping", "FCHBATestType=7|TestTypes={5}|Characteristics={4, 10}", target + "|PingMechanism=2",
     with_target("PingMechanism"),
     "verifies the existence and accessibility of devices on the SAN"},
    {"Status", "FCHBATestType=10|TestTypes={4}", "", none,
     "checks the health of the FCHBA, not including the FC optics"},
    {"Reset", "FCHBATestType=8|TestTypes={2}|Characteristics={4}", "", none,
     "causes the FCHBA to re-initialize itself"},
    {"Self", "FCHBATestType=9|TestTypes={2}|Characteristics={4}", "", none,
     "allows all components of the FCHBA to be tested"},
};
constexpr std::size_t count = std::size(rows);
std::string name_of(std::size_t row) {
    return "TVR:FCHBA " + rows[row].name + " Test";
}

class Diagnostics : public With_Agent {
protected:
    Diagnostics() {
        libraries.adapters.resize(2);
        libraries.adapters[1].attributes[RM_HA_DIAG_VERSION] = fake::valueOf(uint32{7});
        load();
        refresh();
    }
    template <class C> Class_Map<C>& map() { return agent->maps.*map_of<C>; }
    template <class C> std::string path(std::size_t i) {
        String text;
        EXPECT_EQ(instance_to_model_path(map<C>().get(i), text), 0);
        return text.c_str();
    }
    // A member of a map has what is told of it, and else the defaults of its class.
    template <class C> void expect(std::size_t i, Texts texts) {
        const Ref<C> plain(C::create(true));
        texts.emplace("", "root/tavrin");
        texts.merge(describe(plain.get()));
        EXPECT_EQ(describe(map<C>().get(i)), texts) << C::static_meta_class.name << i;
    }
    // The same of all, one for each test; `told` answers its properties.
    template <class C, class Told> void expect_all(Told&& told) {
        ASSERT_EQ(map<C>().size(), count) << C::static_meta_class.name;
        for (std::size_t i = 0; i < count; ++i) {
            Texts texts;
            std::istringstream fields(told(rows[i]));
            for (std::string text; std::getline(fields, text, '|');) {
                for (auto at = text.find('$'); at != text.npos; at = text.find('$')) {
                    text.replace(at, 1, name_of(i));
                }
                texts.emplace(text.substr(0, text.find('=')), text.substr(text.find('=') + 1));
            }
            expect<C>(i, texts);
        }
    }
    // An association for each test, of members of these maps, the only one or the test's.
    template <class C, class A, class B>
    void expect_joins(const char* a, const char* b, const Texts& more = {}) {
        ASSERT_EQ(map<C>().size(), count) << C::static_meta_class.name;
        for (std::size_t i = 0; i < count; ++i) {
            Texts texts = more;
            texts[a] = path<A>(std::min(i, map<A>().size() - 1));
            texts[b] = path<B>(std::min(i, map<B>().size() - 1));
            expect<C>(i, texts);
        }
    }
    void expect_tests(const std::string& version);
    void expect_associations();

    uint32 create_anew() {
        ClearDiagnosticClassMaps(agent->maps, 0);
        log.take();
        return CreateFCHBADiagnosticClassFeature(agent->maps);
    }
    template <class... Classes> std::vector<std::size_t> sizes() {
        return {map<Classes>().size()...};
    }
    // With an instance of class C in the way of the first test that test is taken back.
    template <class C> void collide(const std::string& line, std::size_t place = 0) {
        Ref<C> other(map<C>().get(place)->clone());
        ClearDiagnosticClassMaps(agent->maps, 0);
        map<C>().insert(other.release());
        log.take();
        EXPECT_EQ(CreateFCHBADiagnosticClassFeature(agent->maps), 0u);
        const std::string failed =
            "Failed to insert the Diag Instances into map for DiagTest " + name_of(0);
        EXPECT_THAT(sequence({"Insert Failed : " + line, failed}),
                    ElementsAre("Insert Failed : " + line, failed));
        map<C>().erase({0});
        EXPECT_THAT((sizes<Test_Class, TVRHBA_HelpService, TVRHBA_ServiceAvailableToElement,
                           TVRHBA_DiagnosticIdentity, TVRHBA_DiagElementSoftwareIdentity,
                           TVRHBA_FCHBADiagnosticSettingData, TVRHBA_DiagElementSettingData,
                           TVRHBA_FCHBADiagnosticServiceCapabilities,
                           TVRHBA_DiagElementCapabilities, TVRHBA_JobSettingData,
                           TVRHBA_JobElementSettingData, TVRHBA_DiagnosticsLog, TVRHBA_UseOfLog,
                           TVRHBA_AvailableDiagnosticService, TVRHBA_ServiceAffectsElement>()),
                    ElementsAre(8, 8, 8, 8, 8, 8, 8, 8, 8, 1, 8, 8, 8, 16, 16))
            << line;
        create_anew();
    }
};

void Diagnostics::expect_tests(const std::string& version) {
    const std::string system =
        "SystemCreationClassName=CIM_ComputerSystem|SystemName=host.example|Name=$|";
    expect_all<Test_Class>([&](const Row& row) {
        return system + "CreationClassName=TVRHBA_FCHBADiagnosticTest|ElementName=$|" + row.test;
    });
    expect_all<TVRHBA_FCHBADiagnosticSettingData>([](const Row& row) {
        return "InstanceID=$|ElementName=$ SettingData|OverridedSettingData=0|HaltOnError=false|"
               "ResultPersistence=4294967295|LogOptions={2, 6}|LogStorage={2}|" +
               row.settings;
    });
    expect_all<TVRHBA_FCHBADiagnosticServiceCapabilities>([](const Row& row) {
        return "InstanceID=$|ElementName=$ Capabilites|SupportedLogStorage={2}|"
               "SupportedLogOptions={2, 6}|" +
               row.capabilities;
    });
    expect_all<TVRHBA_HelpService>([&](const Row& row) {
        return system +
               "CreationClassName=TVRHBA_HelpService|ElementName=$ HelpService|"
               "DeliveryOptions={1}|OtherDeliveryOptionDescription=String|"
               "DocumentFormat={1}|OtherDocumentFormatDescription=String|"
               "DocumentsAvailable={$}|DocumentDescriptions={Test " +
               row.help + "}";
    });
    expect_all<TVRHBA_DiagnosticIdentity>([&](const Row&) {
        return "InstanceID=$|Name=$|ElementName=$ DiagnosticIdentity|MajorVersion=1|MinorVersion=" +
               version + "|RevisionNumber=1|VersionString=1." + version +
               ".1|Manufacturer=Tavrin|Classifications={7}|"
               "ClassificationDescriptions={TVR: FCHBA Diagnostics}|IsEntity=true";
    });
    expect_all<TVRHBA_DiagnosticsLog>([](const Row&) {
        return "InstanceID=$|ElementName=$ DiagnosticLog|"
               "Description=TVRHBA_DiagnosticsLog represents the logs for FCHBA CDM tests";
    });
    ASSERT_EQ(map<TVRHBA_JobSettingData>().size(), 1u);
    const std::string jobs = "TVR:FCHBA JobSettingData";
    expect<TVRHBA_JobSettingData>(
        0, {{"InstanceID", jobs}, {"ElementName", jobs}, {"DeleteOnCompletion", "false"}});
}

void Diagnostics::expect_associations() {
    const Texts is_default = {{"IsDefault", "1"}};
    expect_joins<TVRHBA_DiagElementSettingData, Test_Class, TVRHBA_FCHBADiagnosticSettingData>(
        "ManagedElement", "SettingData", is_default);
    expect_joins<TVRHBA_JobElementSettingData, Test_Class, TVRHBA_JobSettingData>(
        "ManagedElement", "SettingData", is_default);
    expect_joins<TVRHBA_DiagElementCapabilities, Test_Class,
                 TVRHBA_FCHBADiagnosticServiceCapabilities>("ManagedElement", "Capabilities");
    expect_joins<TVRHBA_ServiceAvailableToElement, TVRHBA_HelpService, Test_Class>(
        "ServiceProvided", "UserOfService");
    expect_joins<TVRHBA_DiagElementSoftwareIdentity, TVRHBA_DiagnosticIdentity, Test_Class>(
        "Antecedent", "Dependent");
    expect_joins<TVRHBA_UseOfLog, TVRHBA_DiagnosticsLog, Test_Class>("Antecedent", "Dependent");
    expect_joins<TVRHBA_DiagHostedService, CIM_ComputerSystem, Test_Class>("Antecedent",
                                                                           "Dependent");
    expect_joins<TVRHBA_HostedService, CIM_ComputerSystem, TVRHBA_HelpService>("Antecedent",
                                                                               "Dependent");
    ASSERT_THAT((sizes<TVRHBA_DiagServiceConformsToProfile, TVRHBA_AvailableDiagnosticService,
                       TVRHBA_ServiceAffectsElement>()),
                ElementsAre(count, 2 * count, 2 * count));
    for (std::size_t i = 0; i < 2 * count; ++i) {
        const std::string test = path<Test_Class>(i / 2);
        const std::string controller = path<TVRHBA_PortController>(i % 2);
        expect<TVRHBA_AvailableDiagnosticService>(i, {{"ServiceProvided", test},
                                                      {"UserOfService", controller},
                                                      {"EstimatedDurationOfService", "0"}});
        expect<TVRHBA_ServiceAffectsElement>(
            i, {{"AffectingElement", test}, {"AffectedElement", controller}});
        expect<TVRHBA_DiagServiceConformsToProfile>(
            i / 2, {{"ConformantStandard",
                     "TVRHBA_RegisteredProfile.InstanceID=\"TVR:FCHBA Diagnostics\""},
                    {"ManagedElement", test}});
    }
}

TEST_F(Diagnostics, AreCataloguedForAllControllers) {
    expect_tests("5");
    expect_associations();
    libraries.statuses["LRM_GetHBAAttributes"] = {9}; // of the first adapter
    EXPECT_EQ(create_anew(), 0u);
    expect_tests("7");
    EXPECT_EQ(logged("Number of FCHBA ManagedElement : 2"), 1u);
    EXPECT_EQ(logged("TVRHBA_DiagElementCapabilities instance (NIC) is created"), count);

    libraries.statuses["LRM_GetHBAAttributes"] = {9, 9};
    EXPECT_EQ(create_anew(), 40002u);
    EXPECT_EQ(log.lines().back().text,
              "FCHBA Diagnostics are not supported in any of the managed element");
    uint32 version = 3;
    EXPECT_EQ(GetDiagnosticVersion("1000AABBCCDD0200", nullptr), 32768u);
    EXPECT_EQ(GetDiagnosticVersion("nonsense", &version), 32768u);
    EXPECT_EQ(version, 3u);
    libraries.adapters.clear();
    log.take();
    refresh();
    const std::vector<std::string> lines = {
        "No FC card found", "CreateFCHBADiagnosticClassFeature",
        "Unable to create the FCHBA Diagnostic feature, No managed element exist",
        "FCHBA Diagnositcss either Not Supported/Failed to Create the feature",
        "Create the Diagnostic classes"};
    EXPECT_EQ(sequence(lines), lines);
}

TEST_F(Diagnostics, AreTakenBackWhenOneInstanceIsRefused) {
    collide<Test_Class>("TVRHBA_FCHBADiagnosticTest_map");
    collide<TVRHBA_HelpService>("TVRHBA_HelpService_map");
    collide<TVRHBA_ServiceAvailableToElement>("TVRHBA_ServiceAvailableToElement_map");
    collide<TVRHBA_DiagnosticIdentity>("TVRHBA_DiagnosticIdentity_map");
    collide<TVRHBA_DiagElementSoftwareIdentity>("TVRHBA_DiagElementSoftwareIdentity_map");
    collide<TVRHBA_FCHBADiagnosticSettingData>("TVRHBA_FCHBADiagnosticSettingData_map");
    collide<TVRHBA_DiagElementSettingData>("TVRHBA_DiagElementSettingData");
    collide<TVRHBA_FCHBADiagnosticServiceCapabilities>(
        "TVRHBA_FCHBADiagnosticServiceCapabilities_map");
    collide<TVRHBA_DiagElementCapabilities>("TVRHBA_FCHBAElementCapabilities_map");
    collide<TVRHBA_JobElementSettingData>("TVRHBA_JobElementSettingData");
    collide<TVRHBA_DiagnosticsLog>("DiagnosticsLog_map");
    collide<TVRHBA_UseOfLog>("UseOfLog_map");
    collide<TVRHBA_AvailableDiagnosticService>("TVRHBA_AvailableDiagnosticService_map");
    collide<TVRHBA_ServiceAffectsElement>("TVRHBA_ServiceAffectsElement_map", 1);
}

} // namespace
} // namespace cimple
