#include "agent/diagnostic_instances.h"

#include <string>

namespace cimple {

namespace {

constexpr char job_settings_name[] = "TVR:FCHBA JobSettingData";

template <class T, class Value>
void append_value(Property<Array<T>>& property, const Value& value) {
    property.value.append(value);
    property.null = 0;
}

// A property of which the table has no value stays NULL.
template <class T, class Values>
void set_values(Property<Array<T>>& property, const Values& values) {
    for (const auto& value : values) {
        append_value(property, value);
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
        append_value(settings->LoopControl, loop.control);
        append_value(settings->LoopControlParameter, loop.parameter);
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

} // namespace

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

} // namespace cimple
