// World wide names of the ports.
#ifndef TVR_PROVIDERS_TVRHBA_FCHBAWWNSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCHBAWWNSERVICE_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCHBAWWNService_Provider : public Agent_Provider<TVRHBA_FCHBAWWNService> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // New names are texts of 16 digits. A `Type` that the client leaves out is 0, the volatile
    // names, which end with the adapter's power. `WWNOperationStatus` is 65535 until the adapter
    // was asked.
    Invoke_Method_Status ChangeWWN(const Class* self, const TVRHBA_FCPort* Target,
                                   const Property<String>& NewWWPN, const Property<String>& NewWWNN,
                                   const Property<uint16>& Type,
                                   Property<uint16>& WWNOperationStatus,
                                   Property<uint32>& return_value);
    Invoke_Method_Status RestoreWWN(const Class* self, const TVRHBA_FCPort* Target,
                                    const Property<uint16>& Type,
                                    Property<uint16>& WWNOperationStatus,
                                    Property<uint32>& return_value);
    Invoke_Method_Status ReadWWN(const Class* self, const TVRHBA_FCPort* Target,
                                 const Property<uint16>& Type, Property<String>& WWPN,
                                 Property<String>& WWNN, Property<uint16>& WWNOperationStatus,
                                 Property<uint32>& return_value);
    Invoke_Method_Status GetWWNCapability(const Class* self, const TVRHBA_FCPort* Target,
                                          Property<uint32>& WWNCapability,
                                          Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
