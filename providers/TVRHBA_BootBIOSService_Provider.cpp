#include "providers/TVRHBA_BootBIOSService_Provider.h"

namespace cimple {

Load_Status TVRHBA_BootBIOSService_Provider::load() {
    TVR_LOG("TVRHBA_BootBIOSService_Provider::load()");
    return load_agent();
}

Enum_Instances_Status
TVRHBA_BootBIOSService_Provider::enum_instances(const Class*,
                                                const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_BootBIOSService>(handler);
    TVR_LOG("TVRHBA_BootBIOSService_Provider::enum_instances()");
    return status;
}

} // namespace cimple
