// Which records the driver's log has.
#ifndef TVR_PROVIDERS_TVRHBA_DRIVERRECORDLOGMANAGESRECORD_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DRIVERRECORDLOGMANAGESRECORD_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DriverRecordLogManagesRecord_Provider
    : public Agent_Provider<TVRHBA_DriverRecordLogManagesRecord> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
};

} // namespace cimple

#endif
