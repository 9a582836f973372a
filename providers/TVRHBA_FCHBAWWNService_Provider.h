// World wide names of the ports.
#ifndef TVR_PROVIDERS_TVRHBA_FCHBAWWNSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCHBAWWNSERVICE_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCHBAWWNService_Provider : public Agent_Provider<TVRHBA_FCHBAWWNService> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Not carried out.
    static constexpr Unsupported_Method ChangeWWN{};
    static constexpr Unsupported_Method RestoreWWN{};
    static constexpr Unsupported_Method ReadWWN{};
    static constexpr Unsupported_Method GetWWNCapability{};

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
