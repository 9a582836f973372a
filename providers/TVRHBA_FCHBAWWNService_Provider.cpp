#include "providers/TVRHBA_FCHBAWWNService_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_FCHBAWWNService_Provider::enum_instances(const Class*,
                                                const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_FCHBAWWNService>(handler);
    TVR_LOG("TVRHBA_FCHBAWWNService_Provider::enum_instances()");
    return status;
}

} // namespace cimple
