#include "providers/TVRHBA_RecordLogManagesRecord_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_RecordLogManagesRecord_Provider::enum_instances(const Class*,
                                                       const Enum_Instances_Handler&) {
    // Records are not listed.
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
