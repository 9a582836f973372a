// What of the delivery of alerts lives as long as the agent does.
#ifndef TVR_AGENT_INDICATION_STATE_H
#define TVR_AGENT_INDICATION_STATE_H

#include "access/rm/hba_api.h"
#include "runtime/thread.h"

#include <atomic>
#include <vector>

namespace cimple {

struct Indication_State {
    // Tells the worker that it is to end, and that nothing is delivered any more. Written under
    // m_IndicationSignalMutex, and read under it where the worker waits.
    std::atomic<bool> m_bIndicationCleanUp{false};
    Mutex m_IndicationSignalMutex; // a leaf
    Cond m_IndicationSignalCond;   // an event is queued, or the worker is to end
    Thread m_IndicationThread;     // the worker
    std::vector<HBA_CALLBACKHANDLE> m_callbackHandles; // one a registered port
    // Given to the next alert: goes on when alerts are switched off and on again.
    uint32 m_IndicationCount = 0;
};

} // namespace cimple

#endif
