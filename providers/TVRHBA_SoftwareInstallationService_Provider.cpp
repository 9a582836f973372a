#include "providers/TVRHBA_SoftwareInstallationService_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_SoftwareInstallationService_Provider::enum_instances(const Class*,
                                                            const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_SoftwareInstallationService>(handler);
    TVR_LOG("TVRHBA_SoftwareInstallationService_Provider::enum_instances()");
    return status;
}

} // namespace cimple
