// FC ports.
#ifndef TVR_PROVIDERS_TVRHBA_FCPORT_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCPORT_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCPort_Provider : public Agent_Provider<TVRHBA_FCPort> {
public:
    Unload_Status unload();
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);
    // Switches the locate beacon, which stays so at the adapter: `LocationIndicator` is the one
    // property that can be changed.
    Modify_Instance_Status modify_instance(const Class* model, const Class* instance);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method SetPowerState{};
    static constexpr Unsupported_Method Reset{};
    static constexpr Unsupported_Method EnableDevice{};
    static constexpr Unsupported_Method OnlineDevice{};
    static constexpr Unsupported_Method QuiesceDevice{};
    static constexpr Unsupported_Method SaveProperties{};
    static constexpr Unsupported_Method RestoreProperties{};
};

} // namespace cimple

#endif
