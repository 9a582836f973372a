// The logs of the diagnostic tests.
#ifndef TVR_PROVIDERS_TVRHBA_DIAGNOSTICSLOG_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DIAGNOSTICSLOG_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DiagnosticsLog_Provider : public Agent_Provider<TVRHBA_DiagnosticsLog> {
public:
    Unload_Status unload();
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Removes the records of the log's test but for those of its settings.
    Invoke_Method_Status ClearLog(const Class* self, Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
};

} // namespace cimple

#endif
