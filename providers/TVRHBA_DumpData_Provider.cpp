#include "providers/TVRHBA_DumpData_Provider.h"

#include "access/method_wrapper.h"
#include "agent/dump_instances.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr Name_Lines dump_data_name_lines{
    "TVRHBA_DumpData_Provider::modify_instance::Id2HBAName failed",
    "TVRHBA_DumpData_Provider::modify_instance::str2HBAName failed"};

// The client hears of success whatever comes of this: what it asked for is done.
void rebuild_dump_instances(Instance_Maps& maps) {
    if (const uint32 status = FC_ClearDumpClasses(maps); status != 0) {
        TVR_LOG("FC_ClearDumpClasses failed");
        TVR_LOG("tvrstatus = %d", status);
    }
    if (const uint32 status = FC_CreateDumpClasses(maps); status != 0) {
        TVR_LOG("FC_CreateDumpClasses failed");
        TVR_LOG("tvrstatus = %d", status);
    }
}

// The controller is the one that the instance in the map is of, whatever else the client says.
Modify_Instance_Status modify_dump_data(Instance_Maps& maps, const TVRHBA_DumpData* model,
                                        const TVRHBA_DumpData* instance) {
    if (model == nullptr || instance == nullptr) {
        TVR_LOG("TVRHBA_DumpData_Provider::modify_instance invalid parameter");
        return MODIFY_INSTANCE_INVALID_PARAMETER;
    }
    const TVRHBA_DumpData* stored = maps.m_TVRHBA_DumpData_map.lookup(instance);
    if (stored == nullptr) {
        TVR_LOG("Invalid instance of TVRHBA_DumpData_Provider Data");
        return MODIFY_INSTANCE_FAILED;
    }
    HBA_WWN port;
    if (!read_name(port, stored->ElementName.value, dump_data_name_lines)) {
        return MODIFY_INSTANCE_FAILED;
    }
    TVR_LOG("found the key match for instance.");
    if (!model->DumpDirectory.is_null() && !instance->DumpDirectory.value.empty()) {
        if (!(instance->DumpDirectory.value == stored->DumpDirectory.value)) {
            TVR_LOG("tvrcimSetDumpDirectory is not supported");
            return MODIFY_INSTANCE_UNSUPPORTED;
        }
        TVR_LOG(" For Non VMWARE");
    }
    const uint32 count = instance->RetentionCount.value;
    if (!model->RetentionCount.is_null() && count != stored->RetentionCount.value) {
        if (TVR_MethodWrapper::tvrcimSetRetentionCount(port, count) != 0) {
            TVR_LOG("TVR_MethodWrapper::tvrcimSetRetentionCount failed");
            return MODIFY_INSTANCE_FAILED;
        }
        TVR_LOG("TVR_MethodWrapper::tvrcimSetRetentionCount succeded");
    }
    rebuild_dump_instances(maps);
    return MODIFY_INSTANCE_OK;
}

} // namespace

Enum_Instances_Status
TVRHBA_DumpData_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_DumpData>(handler);
    TVR_LOG("TVRHBA_DumpData_Provider::enum_instances()");
    return status;
}

Modify_Instance_Status TVRHBA_DumpData_Provider::modify_instance(const Class* model,
                                                                 const Class* instance) {
    TVR_LOG("TVRHBA_DumpData_Provider::modify_instance()");
    return modify(
        [=](ProviderAgent& agent) { return modify_dump_data(agent.maps, model, instance); });
}

} // namespace cimple
