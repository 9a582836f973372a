// Descriptions of the diagnostic tests.
#ifndef TVR_PROVIDERS_TVRHBA_HELPSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_HELPSERVICE_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_HelpService_Provider : public Agent_Provider<TVRHBA_HelpService> {
public:
    Unload_Status unload();
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Answers the description of the service's own test, as a text in the one known format.
    Invoke_Method_Status GetHelp(const Class* self, const Property<String>& RequestedDocument,
                                 Property<uint16>& Format,
                                 const Property<uint16>& RequestedDelivery,
                                 Property<String>& DocumentInfo, Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
