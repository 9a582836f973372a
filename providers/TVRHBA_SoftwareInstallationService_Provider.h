// Firmware of the adapters, their reset, and the enabling of ports.
//
// Each method has done its work when it returns: there are no jobs.
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

    Invoke_Method_Status StartService(const Class* self, Property<uint32>& return_value);
    // `URI` may be the path of a local file, which is used in place. Any other is fetched into the
    // object manager's working directory; that file goes after a good download and stays after a
    // failed one.
    Invoke_Method_Status InstallFromURI(const Class* self, CIM_ConcreteJob*& Job,
                                        const Property<String>& URI,
                                        const CIM_ManagedElement* Target,
                                        const Property<Array<uint16>>& InstallOptions,
                                        const Property<Array<String>>& InstallOptionsValues,
                                        Property<uint32>& return_value);
    // The image is written to the file that the client names, with the object manager's rights and
    // wherever that is, and removed after the download. Only what is or becomes a regular file is
    // written. An image that can't be written whole is removed at once and never used.
    Invoke_Method_Status InstallFromByteStream(const Class* self, CIM_ConcreteJob*& Job,
                                               const Property<Array<uint8>>& Image,
                                               const CIM_ManagedElement* Target,
                                               const Property<Array<uint16>>& InstallOptions,
                                               const Property<Array<String>>& InstallOptionsValues,
                                               Property<uint32>& return_value);
    Invoke_Method_Status ResetHBA(const Class* self, const TVRHBA_FCPort* Target,
                                  Property<uint32>& return_value);
    Invoke_Method_Status SetPortEnabled(const Class* self, const TVRHBA_FCPort* Target,
                                        const Property<boolean>& PortEnabled,
                                        Property<uint32>& return_value);

    // Declared by the schema, without a meaning for this class.
    static constexpr Unsupported_Method RequestStateChange{};
    static constexpr Unsupported_Method StopService{};
    static constexpr Unsupported_Method ChangeAffectedElementsAssignedSequence{};
    static constexpr Unsupported_Method CheckSoftwareIdentity{};
    static constexpr Unsupported_Method InstallFromSoftwareIdentity{};
};

} // namespace cimple

#endif
