#include "providers/TVRHBA_FCHBADriverParamService_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_FCHBADriverParamService_Provider::enum_instances(const Class*,
                                                        const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_FCHBADriverParamService>(handler);
    TVR_LOG("TVRHBA_FCHBADriverParamService_Provider::enum_instances()");
    return status;
}

} // namespace cimple
