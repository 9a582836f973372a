#include "providers/TVRHBA_DumpData_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_DumpData_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_DumpData>(handler);
    TVR_LOG("TVRHBA_DumpData_Provider::enum_instances()");
    return status;
}

} // namespace cimple
