// Alerts when the link of a port goes up or down.
#ifndef TVR_PROVIDERS_TVRHBA_ALERTINDICATION_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_ALERTINDICATION_PROVIDER_H

#include "runtime/provider.h"
#include "schema/classes.h"

#include <memory>

namespace cimple {

class TVRHBA_AlertIndication_Provider {
public:
    using Class = TVRHBA_AlertIndication;

    Load_Status load();
    Unload_Status unload();
    Get_Instance_Status get_instance(const Class*, Class*&) { return GET_INSTANCE_UNSUPPORTED; }
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    Create_Instance_Status create_instance(Class*) { return CREATE_INSTANCE_UNSUPPORTED; }
    Delete_Instance_Status delete_instance(const Class*) { return DELETE_INSTANCE_UNSUPPORTED; }
    Modify_Instance_Status modify_instance(const Class*, const Class*) {
        return MODIFY_INSTANCE_UNSUPPORTED;
    }

    // No alert is delivered, and so no subscription is accepted.
    Enable_Indications_Status
    enable_indications(std::unique_ptr<Enable_Indications_Handler> handler);
    Disable_Indications_Status disable_indications();
};

} // namespace cimple

#endif
