// Functions that the simulated adapters do not have: each answers the status by which the library
// refuses its kind of function and changes nothing.
#include "sim/entry_points.h"

#include "sim/rm_behaviour.h"

namespace tvrsim::behaviour {

#define TVRSIM_REFUSE(name, status, ...)                                                           \
    RM_STATUS name(__VA_ARGS__) {                                                                  \
        return status;                                                                             \
    }

TVRSIM_REFUSE(DiagEchoTestV2, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, HBA_WWN, uint32_t, uint32_t,
              uint32_t*, uint32_t, const void*)
TVRSIM_REFUSE(DiagLoopBackTestV3, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t, uint32_t,
              uint32_t, uint32_t*, uint32_t, const void*)
TVRSIM_REFUSE(DiagPciLoopBackTestV2, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t, uint32_t,
              uint32_t*, uint32_t, const void*)
TVRSIM_REFUSE(DiagRunPOST, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t*)
TVRSIM_REFUSE(DiagGetResults, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t, RM_DIAGRESULT*)
TVRSIM_REFUSE(DiagCancelDiagnostic, RM_STATUS_DIAG_NOT_AVAILABLE, HBA_WWN, uint32_t)

#undef TVRSIM_REFUSE

} // namespace tvrsim::behaviour
