// Diagnostic tests.
#ifndef TVR_PROVIDERS_TVRHBA_FCHBADIAGNOSTICTEST_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_FCHBADIAGNOSTICTEST_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_FCHBADiagnosticTest_Provider : public Agent_Provider<TVRHBA_FCHBADiagnosticTest> {
public:
    Unload_Status unload();
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Runs the test on a port, to its end: that can take minutes, in which nobody else can work on
    // adapters. `Job` becomes the finished job, or null if there is none or it is deleted at once.
    Invoke_Method_Status RunDiagnosticService(const Class* self,
                                              const CIM_ManagedElement* ManagedElement,
                                              const CIM_DiagnosticSettingData* DiagnosticSettings,
                                              const CIM_JobSettingData* JobSettings,
                                              CIM_ConcreteJob*& Job,
                                              Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
    static constexpr Unsupported_Method RunDiagnostic{};
    static constexpr Unsupported_Method RunTest{};
    static constexpr Unsupported_Method ClearResults{};
    static constexpr Unsupported_Method DiscontinueTest{};
};

} // namespace cimple

#endif
