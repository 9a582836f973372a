#include "providers/TVRHBA_HelpService_Provider.h"

namespace cimple {

Unload_Status TVRHBA_HelpService_Provider::unload() {
    TVR_LOG("TVRHBA_HelpService_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_HelpService_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_HelpService>(handler);
    TVR_LOG("TVRHBA_HelpService_Provider::enum_instances()");
    return status;
}

} // namespace cimple
