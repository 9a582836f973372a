// Driver parameters, to be set.
#ifndef TVR_PROVIDERS_TVRHBA_FCHBADRIVERPARAMSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCHBADRIVERPARAMSERVICE_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCHBADriverParamService_Provider
    : public Agent_Provider<TVRHBA_FCHBADriverParamService> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    Invoke_Method_Status StartService(const Class* self, Property<uint32>& return_value);
    // A parameter of the driver as a whole needs a target too. The new value shows with the next
    // enumeration of the parameters.
    Invoke_Method_Status SetDriverParameter(const Class* self, const TVRHBA_FCPort* Target,
                                            const Property<boolean>& bPermanent,
                                            const Property<boolean>& bGlobal,
                                            const Property<String>& strParam,
                                            const Property<String>& strValue,
                                            Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
