// The jobs that diagnostic tests leave: each is made when its test is over, in its last state.
#ifndef TVR_AGENT_DIAGNOSTIC_JOBS_H
#define TVR_AGENT_DIAGNOSTIC_JOBS_H

#include "agent/instance_maps.h"

namespace cimple {

// Value map of `JobState`, as far as tests end in it.
enum Job_State : uint16 {
    JOB_COMPLETED = 7,
    JOB_FAILED = 32768,
};

// In the job's key, for a test that has no id in the library.
constexpr uint32 no_test_id = 65535;

// Makes the job of a test and what ties it to the test and to the controller, which may be null.
// The job stays the map's; null, with a line in the log, if there is no memory for it.
const TVRHBA_ConcreteJob*
CreateConcreteJobInstantiateNonBlocking(Instance_Maps& maps, const String& test_name,
                                        bool delete_on_completion, Job_State state, uint32 test_id,
                                        const TVRHBA_PortController* element);

// Takes a job out of the maps with what ties it, and ends it.
uint32 DeleteConcreteJob(Instance_Maps& maps, const TVRHBA_ConcreteJob* job);

} // namespace cimple

#endif
