// How the dumps of a port are kept.
#ifndef TVR_PROVIDERS_TVRHBA_DUMPDATA_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DUMPDATA_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DumpData_Provider : public Agent_Provider<TVRHBA_DumpData> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    // `RetentionCount` can be changed; whoever names another `DumpDirectory` changes neither. The
    // instances are then made anew from what the adapters tell.
    Modify_Instance_Status modify_instance(const Class* model, const Class* instance);
};

} // namespace cimple

#endif
