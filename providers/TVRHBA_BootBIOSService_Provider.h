// The boot BIOS of the ports.
#ifndef TVR_PROVIDERS_TVRHBA_BOOTBIOSSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_BOOTBIOSSERVICE_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_BootBIOSService_Provider : public Agent_Provider<TVRHBA_BootBIOSService> {
public:
    Load_Status load();
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Not carried out.
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method EnableBootBIOS{};
    static constexpr Unsupported_Method DisableBootBIOS{};
    static constexpr Unsupported_Method GetBootBIOSStatus{};

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
