// Counters of the ports.
#ifndef TVR_PROVIDERS_TVRHBA_FCPORTSTATISTICS_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCPORTSTATISTICS_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCPortStatistics_Provider : public Agent_Provider<TVRHBA_FCPortStatistics> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method ResetSelectedStats{};
};

} // namespace cimple

#endif
