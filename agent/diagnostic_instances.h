// All that one diagnostic test is published with.
#ifndef TVR_AGENT_DIAGNOSTIC_INSTANCES_H
#define TVR_AGENT_DIAGNOSTIC_INSTANCES_H

#include "agent/creation.h"
#include "agent/diagnostic_tests.h"

#include <vector>

namespace cimple {

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

// Throws std::bad_alloc.
Test_Instances make_test_instances(const Instance_Maps& maps, const Diagnostic_Test& row,
                                   const Catalogue_Source& source);

} // namespace cimple

#endif
