#include "agent/diagnostic_catalogue.h"

#include "access/attribute_buffer.h"
#include "access/entry_points.h"
#include "access/method_wrapper.h"
#include "agent/diagnostic_instances.h"
#include "agent/profiles.h"

#include <optional>
#include <string>
#include <vector>

namespace cimple {

namespace {

constexpr uint32 diagnostic_attributes_size = 4096;

constexpr char diagnostics_profile[] = "FCHBA Diagnostics";

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
