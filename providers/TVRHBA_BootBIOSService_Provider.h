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

    Invoke_Method_Status StartService(const Class* self, Property<uint32>& return_value);
    Invoke_Method_Status EnableBootBIOS(const Class* self, const TVRHBA_FCPort* Target,
                                        Property<uint32>& return_value);
    Invoke_Method_Status DisableBootBIOS(const Class* self, const TVRHBA_FCPort* Target,
                                         Property<uint32>& return_value);
    // `nBootBIOSStatus` is not 0 while the boot BIOS is enabled.
    Invoke_Method_Status GetBootBIOSStatus(const Class* self, const TVRHBA_FCPort* Target,
                                           Property<uint32>& nBootBIOSStatus,
                                           Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
