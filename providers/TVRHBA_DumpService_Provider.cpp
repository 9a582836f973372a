#include "providers/TVRHBA_DumpService_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_DumpService_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    enumerate<TVRHBA_DumpService>(handler);
    TVR_LOG("TVRHBA_DumpService_Provider::enum_instances()");
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
