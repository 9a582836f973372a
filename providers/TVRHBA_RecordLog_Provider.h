// The provider's and the driver's log.
#ifndef TVR_PROVIDERS_TVRHBA_RECORDLOG_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_RECORDLOG_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_RecordLog_Provider : public Agent_Provider<TVRHBA_RecordLog> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Not carried out.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method ClearLog{};
    static constexpr Unsupported_Method SetLogParams{};
};

} // namespace cimple

#endif
