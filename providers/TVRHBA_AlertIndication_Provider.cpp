#include "providers/TVRHBA_AlertIndication_Provider.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_AlertIndication_Provider::enum_instances(const Class*, const Enum_Instances_Handler&) {
    // An indication class has no instances.
    return ENUM_INSTANCES_OK;
}

Enable_Indications_Status
TVRHBA_AlertIndication_Provider::enable_indications(std::unique_ptr<Enable_Indications_Handler>) {
    TVR_LOG("TVRHBA_AlertIndication_Provider::enable_indications()");
    return ENABLE_INDICATIONS_FAILED;
}

Disable_Indications_Status TVRHBA_AlertIndication_Provider::disable_indications() {
    TVR_LOG("TVRHBA_AlertIndication_Provider::disable_indications()");
    return DISABLE_INDICATIONS_FAILED;
}

} // namespace cimple
