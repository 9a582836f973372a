#include "providers/TVRHBA_FCPort_Provider.h"

#include "access/diag_test_func.h"
#include "agent/port_refresh.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr Name_Lines FC_port_lines{"TVRHBA_FCPort_Provider::Id2HBAName failed",
                                   "TVRHBA_FCPort_Provider::::str2HBAName failed"};

Modify_Instance_Status modify_beacon(const Class_Map<TVRHBA_FCPort>& ports,
                                     const TVRHBA_FCPort* model, const TVRHBA_FCPort* instance) {
    TVR_LOG("TVRHBA_FCPort_Provider::modify_instance");
    if (model == nullptr || instance == nullptr) {
        TVR_LOG("TVRHBA_FCPort_Provider::modify_instance invalid parameter");
        return MODIFY_INSTANCE_INVALID_PARAMETER;
    }
    if (!is_known(ports, instance)) {
        TVR_LOG("Invalid instance of TVRHBA_FCPort Data");
        return MODIFY_INSTANCE_INVALID_PARAMETER;
    }
    if (model->LocationIndicator.is_null()) {
        return MODIFY_INSTANCE_INVALID_PARAMETER;
    }
    const uint16 state = instance->LocationIndicator.value;
    TVR_LOG("Input BeaconState : %d", state);
    if (state != BEACON_ON && state != BEACON_OFF) {
        TVR_LOG("Invalid LocationIndicator, Valid values are '2' or '3'");
        return MODIFY_INSTANCE_INVALID_PARAMETER;
    }
    HBA_WWN name;
    if (!read_name(name, instance->DeviceID.value, FC_port_lines) ||
        TVR_DiagTestFunc::SetBeaconState(state, std::string(instance->DeviceID.value.view())) !=
            0) {
        return MODIFY_INSTANCE_FAILED;
    }
    TVRHBA_FCPort* port = ports.lookup(instance);
    if (port == nullptr) {
        return MODIFY_INSTANCE_FAILED;
    }
    port->LocationIndicator.set(state);
    TVR_LOG("Beacon state modified successfully");
    return MODIFY_INSTANCE_OK;
}

} // namespace

Unload_Status TVRHBA_FCPort_Provider::unload() {
    TVR_LOG("TVRHBA_FCPort_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCPort_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    const Enum_Instances_Status status =
        enumerate_active<TVRHBA_FCPort>(handler, UpdateFCPortStatus);
    TVR_LOG("TVRHBA_FCPort_Provider::enum_instances()");
    return status;
}

Modify_Instance_Status TVRHBA_FCPort_Provider::modify_instance(const Class* model,
                                                               const Class* instance) {
    return modify([=](ProviderAgent& agent) {
        return modify_beacon(agent.maps.m_TVRHBA_FCPort_map, model, instance);
    });
}

} // namespace cimple
