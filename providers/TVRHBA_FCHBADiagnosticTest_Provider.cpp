#include "providers/TVRHBA_FCHBADiagnosticTest_Provider.h"

#include "agent/creation.h"
#include "agent/diagnostic_runs.h"
#include "agent/diagnostic_tests.h"
#include "providers/diagnostic_settings.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr uint32 unknown_test = 1;

// What a client asks for.
struct Request {
    const TVRHBA_FCHBADiagnosticTest* self;
    const Instance* element;
    const Instance* settings;     // may be null
    const Instance* job_settings; // may be null
};

// True for an instance whose keys a member of the map has; the map may not be empty.
template <class C> bool is_member(const Class_Map<C>& map, const Instance* instance) {
    return is_a<C>(instance) && map.find(instance) >= 0;
}

const TVRHBA_PortController* find_controller(const Instance_Maps& maps, const String& device_id) {
    for (const TVRHBA_PortController* controller : maps.m_TVRHBA_PortController_map) {
        if (controller->DeviceID.value == device_id) {
            return controller;
        }
    }
    TVR_LOG("Could not find the passed PORTController in the map");
    return nullptr;
}

TVRHBA_JobSettingData* choose_job_settings(const Instance_Maps& maps, const Instance* input) {
    if (input == nullptr) {
        TVR_LOG("Using the default TVRHBA_JobSettingData Instance");
        return getDefaultTVRHBA_JobSettingDataInstance(maps);
    }
    TVRHBA_JobSettingData* settings = getTVRHBA_JobSettingDataInstance(maps, input);
    if (settings == nullptr) {
        TVR_LOG("Invalid input instance: TVRHBA_JobSettingData");
    }
    return settings;
}

TVRHBA_FCHBADiagnosticSettingData* choose_settings(const Instance_Maps& maps, const Instance* input,
                                                   const String& test) {
    if (input == nullptr) {
        TVR_LOG("Using default TVRHBA_FCHBADiagnosticSettingData Instance");
        return getDefaultTVRHBA_FCHBADiagnosticSettingDataInstance(maps, test);
    }
    TVR_LOG("Entered embedded instance");
    TVRHBA_FCHBADiagnosticSettingData* settings =
        getTVRHBA_FCHBADiagnosticSettingDataInstance(maps, input, test);
    if (settings == nullptr) {
        TVR_LOG("Invalid input instance: TVRHBA_FCHBADiagnosticSettingData");
    }
    return settings;
}

using Test_Function = uint32 (*)(const Diagnostic_Request&, Ref<TVRHBA_ConcreteJob>&);

template <Loopback_Type type>
uint32 loop_back(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job) {
    return LoopBackTest(request, type, job);
}

Test_Function function_of(Diagnostic_Id id) {
    switch (id) {
    case Diagnostic_Id::beacon:
        return BeaconTest;
    case Diagnostic_Id::status:
        return StatusTest;
    case Diagnostic_Id::reset:
        return FCHBAResetTest;
    case Diagnostic_Id::self:
        return SelfTest;
    case Diagnostic_Id::external_loopback:
        return loop_back<LOOPBACK_EXTERNAL>;
    case Diagnostic_Id::host_loopback:
        return loop_back<LOOPBACK_HOST>;
    case Diagnostic_Id::internal_loopback:
        return loop_back<LOOPBACK_INTERNAL>;
    case Diagnostic_Id::ping:
    case Diagnostic_Id::echo:
        return EchoTest;
    }
    return nullptr;
}

// Puts the settings of a run into the record of them.
void keep_settings(const Instance_Maps& maps, const TVRHBA_FCHBADiagnosticSettingData& settings,
                   const String& job_id) {
    for (TVRHBA_DiagnosticSettingDataRecord* record :
         maps.m_TVRHBA_DiagnosticSettingDataRecord_map) {
        if (record->Caption.value == job_id) {
            TVR_LOG("Adding the embedded instance for Settingdatarecord : %s",
                    record->InstanceID.value.c_str());
            record->Settings = End(settings).as<CIM_DiagnosticSettingData>();
            return;
        }
    }
}

uint32 run(Instance_Maps& maps, const Request& request, Ref<TVRHBA_ConcreteJob>& job) {
    constexpr std::size_t target_size = 16;
    constexpr uint32 overridden = 1;
    if (!is_member(maps.m_TVRHBA_FCHBADiagnosticTest_map, request.self)) {
        TVR_LOG("Invalid instance: TVRHBA_FCHBADiagnosticTest");
        return METHOD_INVALID_PARAMETER;
    }
    if (!is_member(maps.m_TVRHBA_PortController_map, request.element)) {
        TVR_LOG("Invalid instance: TVRHBA_PortController");
        return METHOD_INVALID_PARAMETER;
    }
    const String& device_id =
        static_cast<const TVRHBA_PortController*>(request.element)->DeviceID.value;
    TVR_LOG("%s", device_id.c_str());
    const TVRHBA_PortController* element = find_controller(maps, device_id);
    HBA_WWN port{};
    if (!read_name(port, device_id,
                   {"TVRHBA_FCHBADiagnosticTest_Provider::Id2HBAName failed",
                    "TVRHBA_FCHBADiagnosticTest_Provider::str2HBAName failed"})) {
        return METHOD_INVALID_PARAMETER;
    }
    const String& name = request.self->Name.value;
    const TVRHBA_JobSettingData* job_settings = choose_job_settings(maps, request.job_settings);
    const TVRHBA_FCHBADiagnosticSettingData* settings =
        choose_settings(maps, request.settings, name);
    if (job_settings == nullptr || settings == nullptr) {
        TVR_LOG("Unable to get the Job/Diagnostic SettingData, Not able to continue");
        return METHOD_INVALID_PARAMETER;
    }
    const Diagnostic_Test* test = find_diagnostic_test(name.view());
    if (test == nullptr) {
        TVR_LOG("Invalid Test Name");
        return unknown_test;
    }
    if (test->has_target() && settings->TargetDevice.value.size() != target_size) {
        TVR_LOG("Invalid TargetDevice, Enter Target WWPN");
        return METHOD_INVALID_PARAMETER;
    }
    TVR_LOG("Started Diagnostic : %s", name.c_str());
    const uint32 status =
        function_of(test->id)({maps, port, *settings, *job_settings, element}, job);
    if (status == 0) {
        TVR_LOG("%s Launched/Completed Succesful", name.c_str());
    } else {
        TVR_LOG("%s Failed to Run", name.c_str());
    }
    if (job && settings->OverridedSettingData.value == overridden) {
        keep_settings(maps, *settings, job->InstanceID.value);
    }
    return status == 0 ? METHOD_COMPLETED : libraryFailure(status);
}

} // namespace

Unload_Status TVRHBA_FCHBADiagnosticTest_Provider::unload() {
    TVR_LOG("TVRHBA_FCHBADiagnosticTest_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCHBADiagnosticTest_Provider::enum_instances(const Class*,
                                                    const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_FCHBADiagnosticTest>(handler);
    TVR_LOG("TVRHBA_FCHBADiagnosticTest_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status TVRHBA_FCHBADiagnosticTest_Provider::RunDiagnosticService(
    const Class* self, const CIM_ManagedElement* ManagedElement,
    const CIM_DiagnosticSettingData* DiagnosticSettings, const CIM_JobSettingData* JobSettings,
    CIM_ConcreteJob*& Job, Property<uint32>& return_value) {
    TVR_LOG("TVRHBA_FCHBADiagnosticTest_Provider::RunDiagnosticService");
    return call_method(return_value, [&](ProviderAgent& agent) {
        Ref<TVRHBA_ConcreteJob> job;
        const uint32 result =
            run(agent.maps, {self, ManagedElement, DiagnosticSettings, JobSettings}, job);
        Job = static_cast<CIM_ConcreteJob*>(static_cast<Instance*>(job.release()));
        return result;
    });
}

} // namespace cimple
