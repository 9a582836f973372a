// Records of the driver's log.
#ifndef TVR_PROVIDERS_TVRHBA_FCDRIVERLOGENTRY_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCDRIVERLOGENTRY_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCDriverLogEntry_Provider : public Agent_Provider<TVRHBA_FCDriverLogEntry> {
public:
    Unload_Status unload();
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
};

} // namespace cimple

#endif
