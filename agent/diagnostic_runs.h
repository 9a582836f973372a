// The diagnostic tests themselves. Each runs to its end inside the call, on the calling thread and
// under a Full_Guard (agent/locks.h), which may take minutes; the clock is the runtime's.
#ifndef TVR_AGENT_DIAGNOSTIC_RUNS_H
#define TVR_AGENT_DIAGNOSTIC_RUNS_H

#include "access/rm/hba_api.h"
#include "agent/instance_maps.h"

namespace cimple {

// What a test works with. The name of the test is that of the settings.
struct Diagnostic_Request {
    Instance_Maps& maps; // that job and records go into
    HBA_WWN port;
    const TVRHBA_FCHBADiagnosticSettingData& settings;
    const TVRHBA_JobSettingData& job_settings;
    const TVRHBA_PortController* element; // may be null
};

// Kinds of loopback.
enum Loopback_Type : uint32 {
    LOOPBACK_INTERNAL = 5,
    LOOPBACK_HOST = 6,
    LOOPBACK_EXTERNAL = 11,
};

// Each answers 0 or a status, mostly the library's. A test that was run leaves a job and records,
// which tell the verdict: a test that found a fault answers 0 as well. `job` becomes a copy of the
// job, or null if none is kept.
//
// The answer can be 0 without a job: for a port that is disabled, and for a test that was given up.
uint32 EchoTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job);
uint32 LoopBackTest(const Diagnostic_Request& request, uint32 type, Ref<TVRHBA_ConcreteJob>& job);
uint32 SelfTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job);
uint32 FCHBAResetTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job);
uint32 StatusTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job);
uint32 BeaconTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job);

} // namespace cimple

#endif
