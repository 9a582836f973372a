// Dumps of the adapters.
#ifndef TVR_PROVIDERS_TVRHBA_DUMPSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_DUMPSERVICE_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_DumpService_Provider : public Agent_Provider<TVRHBA_DumpService> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    Invoke_Method_Status GenerateDump(const Class* self, const TVRHBA_FCPort* Target,
                                      Property<uint32>& return_value);
    // `DumpFiles` stays NULL if there are none.
    Invoke_Method_Status GetDumpFileNames(const Class* self, const TVRHBA_FCPort* Target,
                                          Property<Array<String>>& DumpFiles,
                                          Property<uint32>& return_value);
    Invoke_Method_Status DeleteDump(const Class* self, const TVRHBA_FCPort* Target,
                                    Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
};

} // namespace cimple

#endif
