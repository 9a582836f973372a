#include "agent/diagnostic_catalogue.h"

#include "access/attribute_buffer.h"
#include "access/entry_points.h"
#include "access/method_wrapper.h"
#include "agent/creation.h"
#include "agent/diagnostic_tests.h"
#include "agent/profiles.h"

#include <optional>
#include <string>
#include <vector>

namespace cimple {

namespace {

constexpr uint32 diagnostic_attributes_size = 4096;

constexpr char job_settings_name[] = "TVR:FCHBA JobSettingData";
constexpr char diagnostics_profile[] = "FCHBA Diagnostics";

// What the instances of all tests are made from.
struct Catalogue_Source {
    const CIM_ComputerSystem& system;
    uint32 version;
    std::vector<End<TVRHBA_PortController>> controllers;
};

// All instances of one test, not yet in the maps.
struct Test_Instances {
    Ref<TVRHBA_FCHBADiagnosticTest> test;
    Ref<TVRHBA_FCHBADiagnosticSettingData> settings;
    Ref<TVRHBA_DiagElementSettingData> element_settings;
    Ref<TVRHBA_FCHBADiagnosticServiceCapabilities> capabilities;
    Ref<TVRHBA_DiagElementCapabilities> element_capabilities;
    Ref<TVRHBA_HelpService> help;
    Ref<TVRHBA_ServiceAvailableToElement> help_available;
    Ref<TVRHBA_DiagnosticIdentity> identity;
    Ref<TVRHBA_DiagElementSoftwareIdentity> element_identity;
    Ref<TVRHBA_JobSettingData> job_settings; // null if those of all tests are there
    Ref<TVRHBA_JobElementSettingData> element_job_settings;
    Ref<TVRHBA_DiagnosticsLog> log;
    Ref<TVRHBA_UseOfLog> use_of_log;
    // For each controller.
    std::vector<Ref<TVRHBA_AvailableDiagnosticService>> available;
    std::vector<Ref<TVRHBA_ServiceAffectsElement>> affected;
};

// ---- instances

// A property of which the table has no value stays NULL.
template <class T, class Values>
void set_values(Property<Array<T>>& property, const Values& values) {
    for (const auto& value : values) {
        property.value.append(value);
        property.null = 0;
    }
}

// The test's name with a word behind.
std::string titled(const Diagnostic_Test& test, const char* word) {
    return std::string(test.name) + " " + word;
}

template <class Service>
Ref<Service> make_diagnostic_service(const CIM_ComputerSystem& system, const char* class_name,
                                     const Diagnostic_Test& test) {
    auto service = make<Service>();
    service->SystemCreationClassName.set(system.CreationClassName.value);
    service->SystemName.set(system.Name.value);
    service->CreationClassName.set(class_name);
    service->Name.set(test.name);
    return service;
}

Ref<TVRHBA_FCHBADiagnosticTest> make_test(const CIM_ComputerSystem& system,
                                          const Diagnostic_Test& test) {
    auto instance = make_diagnostic_service<TVRHBA_FCHBADiagnosticTest>(
        system, "TVRHBA_FCHBADiagnosticTest", test);
    instance->ElementName.set(test.name);
    instance->FCHBATestType.set(test.type);
    set_values(instance->TestTypes, test.test_types);
    set_values(instance->Characteristics, test.characteristics);
    return instance;
}

Ref<TVRHBA_FCHBADiagnosticSettingData> make_test_settings(const Diagnostic_Test& test) {
    auto settings = make<TVRHBA_FCHBADiagnosticSettingData>();
    settings->InstanceID.set(test.name);
    settings->ElementName.set(titled(test, "SettingData"));
    settings->OverridedSettingData.set(0);
    if (test.halt_on_error) {
        settings->HaltOnError.set(*test.halt_on_error);
    }
    settings->ResultPersistence.set(0xFFFFFFFF);
    settings->LogOptions.set(Array<uint16>{2, 6});
    settings->LogStorage.set(Array<uint16>{2});
    for (const Loop_Control& loop : test.loop_control) {
        set_values(settings->LoopControl, Few<uint16, 1>{loop.control});
        set_values(settings->LoopControlParameter, Few<const char*, 1>{loop.parameter});
    }
    if (test.has_data()) {
        settings->BufferSizes.set(Array<uint32>{8});
        settings->BufferPattern.set(Array<uint8>{'1', 'a', '2', 'b', '3', 'c', '4', 'd'});
    }
    if (test.has_target()) {
        settings->LUN.set(0);
        settings->TargetDevice.set("");
        settings->TargetDeviceFormat.set("2");
    }
    if (test.id == Diagnostic_Id::echo) {
        settings->EchoMechanism.set(2);
    }
    if (test.id == Diagnostic_Id::ping) {
        settings->PingMechanism.set(2);
    }
    return settings;
}

Ref<TVRHBA_FCHBADiagnosticServiceCapabilities> make_test_capabilities(const Diagnostic_Test& test) {
    auto capabilities = make<TVRHBA_FCHBADiagnosticServiceCapabilities>();
    capabilities->InstanceID.set(test.name);
    capabilities->ElementName.set(titled(test, "Capabilites"));
    capabilities->SupportedServiceModes.set(
        Array<uint16>{static_cast<uint16>(test.has_data() ? 4 : 32768)});
    capabilities->SupportedLogStorage.set(Array<uint16>{2});
    capabilities->SupportedLogOptions.set(Array<uint16>{2, 6});
    set_values(capabilities->SupportedLoopControl, test.supported_loop_control);
    set_values(capabilities->SupportedExecutionControls, test.supported_execution_controls);
    set_values(capabilities->OtherSupportedExecutionControlsDescriptions,
               test.other_execution_controls);
    return capabilities;
}

Ref<TVRHBA_HelpService> make_help_service(const CIM_ComputerSystem& system,
                                          const Diagnostic_Test& test) {
    auto help = make_diagnostic_service<TVRHBA_HelpService>(system, "TVRHBA_HelpService", test);
    help->ElementName.set(titled(test, "HelpService"));
    help->DeliveryOptions.set(Array<uint16>{1});
    help->OtherDeliveryOptionDescription.set("String");
    help->DocumentFormat.set(Array<uint16>{1});
    help->OtherDocumentFormatDescription.set("String");
    help->DocumentsAvailable.set(Array<String>{test.name});
    help->DocumentDescriptions.set(Array<String>{test.description});
    return help;
}

Ref<TVRHBA_DiagnosticIdentity> make_test_identity(const Diagnostic_Test& test, uint32 version) {
    auto identity = make<TVRHBA_DiagnosticIdentity>();
    identity->InstanceID.set(test.name);
    identity->Name.set(test.name);
    identity->ElementName.set(titled(test, "DiagnosticIdentity"));
    identity->MajorVersion.set(1);
    identity->MinorVersion.set(version);
    identity->RevisionNumber.set(1);
    identity->VersionString.set("1." + std::to_string(static_cast<sint32>(version)) + ".1");
    identity->Manufacturer.set("Tavrin");
    identity->Classifications.set(Array<uint16>{7});
    identity->ClassificationDescriptions.set(Array<String>{"TVR: FCHBA Diagnostics"});
    identity->IsEntity.set(true);
    return identity;
}

Ref<TVRHBA_JobSettingData> make_job_settings() {
    auto settings = make<TVRHBA_JobSettingData>();
    settings->InstanceID.set(job_settings_name);
    settings->ElementName.set(job_settings_name);
    settings->DeleteOnCompletion.set(false);
    return settings;
}

Ref<TVRHBA_DiagnosticsLog> make_test_log(const Diagnostic_Test& test) {
    auto log = make<TVRHBA_DiagnosticsLog>();
    log->InstanceID.set(test.name);
    log->ElementName.set(titled(test, "DiagnosticLog"));
    log->Description.set("TVRHBA_DiagnosticsLog represents the logs for FCHBA CDM tests");
    return log;
}

// An association of two ends in these reference fields.
template <class C, class A, class B>
Ref<C> join(A* C::*first_field, const End<A>& first, B* C::*second_field, const End<B>& second) {
    auto association = make<C>();
    (*association).*first_field = first;
    (*association).*second_field = second;
    return association;
}

Test_Instances make_test_instances(const Instance_Maps& maps, const Diagnostic_Test& row,
                                   const Catalogue_Source& source) {
    Test_Instances made;
    made.test = make_test(source.system, row);
    const End test(*made.test);

    made.settings = make_test_settings(row);
    made.element_settings = join(&TVRHBA_DiagElementSettingData::ManagedElement, test,
                                 &TVRHBA_DiagElementSettingData::SettingData, End(*made.settings));
    made.element_settings->IsDefault.set(1);

    made.capabilities = make_test_capabilities(row);
    made.element_capabilities =
        join(&TVRHBA_DiagElementCapabilities::ManagedElement, test,
             &TVRHBA_DiagElementCapabilities::Capabilities, End(*made.capabilities));
    TVR_LOG("TVRHBA_DiagElementCapabilities instance (NIC) is created");

    made.help = make_help_service(source.system, row);
    made.help_available = join(&TVRHBA_ServiceAvailableToElement::ServiceProvided, End(*made.help),
                               &TVRHBA_ServiceAvailableToElement::UserOfService, test);

    made.identity = make_test_identity(row, source.version);
    made.element_identity =
        join(&TVRHBA_DiagElementSoftwareIdentity::Antecedent, End(*made.identity),
             &TVRHBA_DiagElementSoftwareIdentity::Dependent, test);

    auto job_settings = first_end(maps.m_TVRHBA_JobSettingData_map);
    if (!job_settings) {
        made.job_settings = make_job_settings();
        job_settings.emplace(*made.job_settings);
    }
    made.element_job_settings = join(&TVRHBA_JobElementSettingData::ManagedElement, test,
                                     &TVRHBA_JobElementSettingData::SettingData, *job_settings);
    made.element_job_settings->IsDefault.set(1);

    made.log = make_test_log(row);
    made.use_of_log =
        join(&TVRHBA_UseOfLog::Antecedent, End(*made.log), &TVRHBA_UseOfLog::Dependent, test);

    for (const auto& controller : source.controllers) {
        auto available = join(&TVRHBA_AvailableDiagnosticService::ServiceProvided, test,
                              &TVRHBA_AvailableDiagnosticService::UserOfService, controller);
        available->EstimatedDurationOfService.set(0);
        made.available.push_back(std::move(available));
        made.affected.push_back(join(&TVRHBA_ServiceAffectsElement::AffectedElement, controller,
                                     &TVRHBA_ServiceAffectsElement::AffectingElement, test));
    }
    return made;
}

// ---- the maps

// What a test has put into the maps so far: their last members. `room` is for all of them.
class Test_Insertions {
public:
    Test_Insertions(Instance_Maps& maps, std::size_t room) : _maps(maps) { _filled.reserve(room); }

    // False, with that line in the log, if the map doesn't take it.
    template <class C> bool add(Ref<C>& instance, const char* failure) {
        Class_Map<C>& map = _maps.*map_of<C>;
        if (try_insert(map, std::move(instance), failure) == nullptr) {
            return false;
        }
        _filled.push_back(&map);
        return true;
    }
    void take_back() noexcept {
        while (!_filled.empty()) {
            Instance_Map& map = *_filled.back();
            const std::size_t last = map.size() - 1;
            const Ref<Instance> ended(map.get(last));
            map.remove(last);
            _filled.pop_back();
        }
    }

private:
    Instance_Maps& _maps;
    std::vector<Instance_Map*> _filled;
};

// False at the first that a map doesn't take.
bool insert_all(Test_Insertions& insertions, Test_Instances& made) {
    const bool is_inserted =
        insertions.add(made.test, "Insert Failed : TVRHBA_FCHBADiagnosticTest_map") &&
        insertions.add(made.help, "Insert Failed : TVRHBA_HelpService_map") &&
        insertions.add(made.help_available,
                       "Insert Failed : TVRHBA_ServiceAvailableToElement_map") &&
        insertions.add(made.identity, "Insert Failed : TVRHBA_DiagnosticIdentity_map") &&
        insertions.add(made.element_identity,
                       "Insert Failed : TVRHBA_DiagElementSoftwareIdentity_map") &&
        insertions.add(made.settings, "Insert Failed : TVRHBA_FCHBADiagnosticSettingData_map") &&
        insertions.add(made.element_settings, "Insert Failed : TVRHBA_DiagElementSettingData") &&
        insertions.add(made.capabilities,
                       "Insert Failed : TVRHBA_FCHBADiagnosticServiceCapabilities_map") &&
        insertions.add(made.element_capabilities,
                       "Insert Failed : TVRHBA_FCHBAElementCapabilities_map") &&
        (!made.job_settings ||
         insertions.add(made.job_settings, "Insert Failed : TVRHBA_JobSettingData_map")) &&
        insertions.add(made.element_job_settings, "Insert Failed : TVRHBA_JobElementSettingData") &&
        insertions.add(made.log, "Insert Failed : DiagnosticsLog_map") &&
        insertions.add(made.use_of_log, "Insert Failed : UseOfLog_map");
    if (!is_inserted) {
        return false;
    }
    for (std::size_t i = 0; i < made.available.size(); ++i) {
        if (!insertions.add(made.available[i],
                            "Insert Failed : TVRHBA_AvailableDiagnosticService_map") ||
            !insertions.add(made.affected[i], "Insert Failed : TVRHBA_ServiceAffectsElement_map")) {
            return false;
        }
    }
    return true;
}

void create_test(Instance_Maps& maps, const Diagnostic_Test& row, const Catalogue_Source& source) {
    constexpr std::size_t per_test = 13;
    constexpr std::size_t per_controller = 2;
    try {
        Test_Instances made = make_test_instances(maps, row, source);
        Test_Insertions insertions(maps, per_test + per_controller * source.controllers.size());
        if (!insert_all(insertions, made)) {
            TVR_LOG("Failed to insert the Diag Instances into map for DiagTest %s", row.name);
            insertions.take_back();
        }
    } catch (const std::bad_alloc&) {
        TVR_LOG("Failed to create the maps for %s ,Check the memory availablity", row.name);
    }
}

// The version of the first controller that tells one.
std::optional<uint32> find_version(const Class_Map<TVRHBA_PortController>& controllers) {
    for (const TVRHBA_PortController* controller : controllers) {
        uint32 version = 0;
        if (GetDiagnosticVersion(controller->DeviceID.value.c_str(), &version) == 0) {
            return version;
        }
    }
    return std::nullopt;
}

void conform_tests(Instance_Maps& maps) {
    const TVRHBA_RegisteredProfile* profile = find_registered_profile(maps, diagnostics_profile);
    if (profile == nullptr) {
        TVR_LOG("FCHBA Registration Profile instance missing");
        return;
    }
    const End standard(*profile);
    for (const TVRHBA_FCHBADiagnosticTest* test : maps.m_TVRHBA_FCHBADiagnosticTest_map) {
        insert(maps.m_TVRHBA_DiagServiceConformsToProfile_map,
               join(&TVRHBA_DiagServiceConformsToProfile::ConformantStandard, standard,
                    &TVRHBA_DiagServiceConformsToProfile::ManagedElement, End(*test)),
               "Insert failed : TVRHBA_ServiceConformsToProfile_map");
    }
}

void host_services(Instance_Maps& maps) {
    TVR_LOG("Updating the CDM DiagHostService profile ");
    const End system(maps.computer_system());
    for (const TVRHBA_FCHBADiagnosticTest* test : maps.m_TVRHBA_FCHBADiagnosticTest_map) {
        insert(maps.m_TVRHBA_DiagHostedService_map,
               join(&TVRHBA_DiagHostedService::Antecedent, system,
                    &TVRHBA_DiagHostedService::Dependent, End(*test)),
               "Insert failed : TVRHBA_DiagHostedService_map");
    }
    for (const TVRHBA_HelpService* help : maps.m_TVRHBA_HelpService_map) {
        insert(maps.m_TVRHBA_HostedService_map,
               join(&TVRHBA_HostedService::Antecedent, system, &TVRHBA_HostedService::Dependent,
                    End(*help)),
               "Insert failed : TVRHBA_HostedService_map");
    }
}

} // namespace

uint32 GetDiagnosticVersion(const std::string& deviceID, uint32* version) {
    constexpr TVR_MethodWrapper::NameLines lines{"TVRHBA_DiagTestFunc::Id2HBAName failed",
                                                 "TVR_Diagnostics::GetDiagnosticVersion"};
    TVR_LOG("TVR_Diagnostics::GetDiagnosticVersion");
    if (version == nullptr) {
        TVR_LOG("Invalid Argument");
        return DIAGNOSTICS_NO_VERSION;
    }
    HBA_WWN port{};
    if (!TVR_MethodWrapper::deviceIdToHBAName(port, deviceID, lines)) {
        return DIAGNOSTICS_NO_VERSION;
    }
    AttributeBuffer buffer(diagnostic_attributes_size);
    if (rm::LRM_GetHBAAttributes(port, buffer.data(), &buffer.size) != RM_STATUS_OK) {
        return DIAGNOSTICS_NO_VERSION;
    }
    *version = getHBAAttributeInt(buffer, RM_HA_DIAG_VERSION, "DiagVersion");
    return 0;
}

uint32 CreateFCHBADiagnosticClassFeature(Instance_Maps& maps) {
    TVR_LOG("CreateFCHBADiagnosticClassFeature");
    const auto& controllers = maps.m_TVRHBA_PortController_map;
    if (controllers.empty()) {
        TVR_LOG("Unable to create the FCHBA Diagnostic feature, No managed element exist");
        return DIAGNOSTICS_NO_CONTROLLER;
    }
    TVR_LOG("Number of FCHBA ManagedElement : %d", static_cast<int>(controllers.size()));
    const std::optional<uint32> version = find_version(controllers);
    if (!version || maps.m_CIM_ComputerSystem_map.empty()) {
        TVR_LOG("FCHBA Diagnostics are not supported in any of the managed element");
        return DIAGNOSTICS_NOT_SUPPORTED;
    }
    Catalogue_Source source{maps.computer_system(), *version, {}};
    for (const TVRHBA_PortController* controller : controllers) {
        source.controllers.emplace_back(*controller);
    }
    for (const Diagnostic_Test& row : diagnostic_tests) {
        create_test(maps, row, source);
    }
    conform_tests(maps);
    host_services(maps);
    return 0;
}

} // namespace cimple
