// Firmware of the adapters.
#ifndef TVR_PROVIDERS_TVRHBA_SOFTWAREINSTALLATIONSERVICE_PROVIDER_H
#define TVR_PROVIDERS_TVRHBA_SOFTWAREINSTALLATIONSERVICE_PROVIDER_H

#include "agent/provider_calls.h"
#include "providers/unsupported_method.h"
#include "schema/classes.h"

namespace cimple {

class TVRHBA_SoftwareInstallationService_Provider
    : public Agent_Provider<TVRHBA_SoftwareInstallationService> {
public:
    Enum_Instances_Status enum_instances(const Class* model, const Enum_Instances_Handler& handler);

    // Not carried out.
    static constexpr Unsupported_Method StartService{};
    static constexpr Unsupported_Method InstallFromByteStream{};
    static constexpr Unsupported_Method InstallFromURI{};
    static constexpr Unsupported_Method ResetHBA{};
    static constexpr Unsupported_Method SetPortEnabled{};

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
    static constexpr Unsupported_Method CheckSoftwareIdentity{};
    static constexpr Unsupported_Method InstallFromSoftwareIdentity{};
};

} // namespace cimple

#endif
