// Alerts when the link of a port goes up or down.
#ifndef TVR_PROVIDERS_TVRHBA_ALERTINDICATION_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_ALERTINDICATION_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

#include <memory>

namespace cimple {

class TVRHBA_AlertIndication_Provider : public Agent_Provider<TVRHBA_AlertIndication> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // No alert is delivered, and so no subscription is accepted.
    Enable_Indications_Status
    enable_indications(std::unique_ptr<Enable_Indications_Handler> handler);
    Disable_Indications_Status disable_indications();
};

} // namespace cimple

#endif
