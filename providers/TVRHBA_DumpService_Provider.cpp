#include "providers/TVRHBA_DumpService_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_DumpService_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_DumpService>(handler);
    TVR_LOG("TVRHBA_DumpService_Provider::enum_instances()");
    return status;
}

} // namespace cimple
