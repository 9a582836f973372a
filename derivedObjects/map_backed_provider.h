// The family of providers that do no more than expose one map of the agent.
#ifndef TVR_DERIVEDOBJECTS_MAP_BACKED_PROVIDER_H
#define TVR_DERIVEDOBJECTS_MAP_BACKED_PROVIDER_H

#include "agent/provider_calls.h"
#include "schema/classes.h"

#include <type_traits>

namespace cimple {

// Classes whose instances come from the targets on the SAN.
template <class C>
inline constexpr bool is_SAN_class = std::disjunction_v<
    std::is_same<C, TVRHBA_LocalHostedAccessPoint>, std::is_same<C, TVRHBA_LogicalDisk>,
    std::is_same<C, TVRHBA_LogicalDiskSystemDevice>,
    std::is_same<C, TVRHBA_SCSIArbitraryLogicalUnit>,
    std::is_same<C, TVRHBA_SCSIArbitraryLogicalUnitSystemDevice>,
    std::is_same<C, TVRHBA_SCSIInitiatorTargetArbitraryLogicalUnitPath>,
    std::is_same<C, TVRHBA_SCSIInitiatorTargetLogicalDiskPath>,
    std::is_same<C, TVRHBA_SCSIInitiatorTargetStorageExtentPath>,
    std::is_same<C, TVRHBA_SCSIInitiatorTargetStorageVolumePath>,
    std::is_same<C, TVRHBA_SCSIInitiatorTargetTapeDrivePath>,
    std::is_same<C, TVRHBA_SCSIProtocolEndpoint>, std::is_same<C, TVRHBA_StorageExtent>,
    std::is_same<C, TVRHBA_StorageExtentSystemDevice>, std::is_same<C, TVRHBA_StorageVolume>,
    std::is_same<C, TVRHBA_StorageVolumeSystemDevice>, std::is_same<C, TVRHBA_TapeDrive>,
    std::is_same<C, TVRHBA_TapeDriveSystemDevice>>;

// Logs "TVRHBA_<Class>_Provider::<member>()" as from the class's own source file.
void log_member_call(const Meta_Class& meta_class, uint32 line, const char* member) noexcept;

// The provider of class C, an association or not. Instances carry the namespace that the agent gave
// them. No state: calls of one class are serialised by its adapter, those of two classes meet in
// the agent.
template <class C> class Map_Backed_Provider : public Agent_Provider<C> {
public:
    Unload_Status unload() {
        log_member_call(C::static_meta_class, __LINE__, "unload");
        return unload_agent();
    }

    Enum_Instances_Status enum_instances(const C*, const Enum_Instances_Handler& handler) {
        Enum_Instances_Status status = ENUM_INSTANCES_OK;
        if constexpr (is_SAN_class<C>) {
            status = enumerate_SAN<C>(handler);
        } else {
            status = enumerate<C>(handler);
        }
        log_member_call(C::static_meta_class, __LINE__, "enum_instances");
        return status;
    }
};

} // namespace cimple

#endif
