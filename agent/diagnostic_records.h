// What diagnostic tests leave behind: a record of the service, one of its completion, and one of
// settings that a client has chosen, each tied to the test's log and to the port controller.
//
// Records outlive a rebuild, and their ends are named by the same keys then.
#ifndef TVR_AGENT_DIAGNOSTIC_RECORDS_H
#define TVR_AGENT_DIAGNOSTIC_RECORDS_H

#include "agent/instance_maps.h"

namespace cimple {

// What the adapter counted in a test.
struct Diagnostic_Counts {
    uint32 completed_cycles;
    uint32 time_to_execute;
    uint32 loops_failed;
};

// How a test ended.
struct Diagnostic_Outcome {
    String test_name;
    String result_text;
    String job_id;                        // InstanceID of its job
    const Diagnostic_Counts* counts;      // null without; of no meaning to tests that have none
    uint16 completion_state;              // 2 or 5
    const TVRHBA_PortController* element; // may be null
    uint32 overridden;                    // OverridedSettingData of its settings
};

// Make the records of one outcome, the service record before the other. A step that fails ends the
// work, with a line in the log, and what was made before it stays.
void CreateDiagnosticServiceRecord(Instance_Maps& maps, const Diagnostic_Outcome& outcome);
void CreateDiagnosticCompletionRecord(Instance_Maps& maps, const Diagnostic_Outcome& outcome);

// Removes the service and completion records of a test, and what ties its records to log and
// controller; records of settings stay. False, with a line in the log, when memory is exhausted:
// then some of the maps are done, each as a whole.
bool clear_diagnostic_records(Instance_Maps& maps, const String& test_name);

} // namespace cimple

#endif
