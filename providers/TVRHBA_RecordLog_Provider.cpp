#include "providers/TVRHBA_RecordLog_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_RecordLog_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_RecordLog>(handler);
    TVR_LOG("TVRHBA_RecordLog_Provider::enum_instances()");
    return status;
}

} // namespace cimple
