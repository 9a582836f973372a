// The provider's and the driver's log.
#ifndef TVR_PROVIDERS_TVRHBA_RECORDLOG_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_RECORDLOG_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_RecordLog_Provider : public Agent_Provider<TVRHBA_RecordLog> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Both logs share the switch of the system's log. Enabling the driver's reads its lines.
    Invoke_Method_Status RequestStateChange(const Class* self,
                                            const Property<uint16>& RequestedState,
                                            CIM_ConcreteJob*& Job,
                                            const Property<Datetime>& TimeoutPeriod,
                                            Property<uint32>& return_value);
    Invoke_Method_Status ClearLog(const Class* self, Property<uint32>& return_value);
    // Of the provider's log alone. The settings come into their file at once.
    Invoke_Method_Status SetLogParams(const Class* self, const Property<uint16>& LogLevel,
                                      const Property<uint16>& LogMode,
                                      const Property<String>& TracePath,
                                      Property<uint32>& return_value);
};

} // namespace cimple

#endif
