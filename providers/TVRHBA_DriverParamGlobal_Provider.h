// Driver parameters that hold for the whole driver.
#ifndef TVR_PROVIDERS_TVRHBA_DRIVERPARAMGLOBAL_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DRIVERPARAMGLOBAL_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DriverParamGlobal_Provider : public Agent_Provider<TVRHBA_DriverParamGlobal> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
};

} // namespace cimple

#endif
