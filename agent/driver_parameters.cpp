#include "agent/driver_parameters.h"

#include "access/bounded_text.h"
#include "access/driver_params.h"
#include "access/entry_points.h"
#include "access/method_wrapper.h"
#include "agent/clear_maps.h"
#include "agent/creation.h"
#include "agent/fc_adapters.h"
#include "agent/provider_agent.h"
#include "agent/software_instances.h"
#include "agent/time_limit.h"
#include "common/tvr_common.h"

#include <unordered_map>

namespace cimple {

namespace {

constexpr uint32 out_of_memory = 8;

void log_no_memory() {
    TVR_LOG("ERROR: tvrcimGetDriverParamsGlobal: Unable to allocate buffer");
}

std::string lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

std::string instance_id(const std::string& deviceId, const RM_DRIVERPARAM& param) {
    return deviceId + ":" + toString(param.name);
}

// What parameters of both kinds have.
template <class C> Ref<C> try_make_parameter(const RM_DRIVERPARAM& param, uint32 index) {
    auto parameter = try_make<C>();
    if (parameter) {
        parameter->paramno.set(index);
        parameter->paramname.set(toString(param.name));
        parameter->lowRange.set(param.low);
        parameter->highRange.set(param.high);
        parameter->current.set(param.current);
        parameter->exportFlag.set(param.exportFlag);
        parameter->dynamic.set(param.dynamic);
        parameter->help.set(toString(param.help));
    }
    return parameter;
}

// Joins a parameter with the service that sets it. False if that association is there already.
template <class C, class Parameter>
bool join_service(Instance_Maps& maps,
                  const std::optional<End<TVRHBA_FCHBADriverParamService>>& service,
                  const End<Parameter>& parameter) {
    if (!service) {
        return true;
    }
    auto setting = make<C>();
    setting->ManagedElement = *service;
    setting->SettingData = parameter;
    return add(maps, std::move(setting)) != nullptr;
}

uint32 create_global_parameters(Instance_Maps& maps, const std::vector<RM_DRIVERPARAM>& params) {
    const auto service = first_end(maps.m_TVRHBA_FCHBADriverParamService_map);
    uint32 index = 0;
    for (const RM_DRIVERPARAM& param : params) {
        TVR_LOG("saving the values of driver parameter %d", index);
        auto made = try_make_parameter<TVRHBA_DriverParamGlobal>(param, index++);
        if (!made) {
            continue;
        }
        made->InstanceID.set(toString(param.name));
        made->glbl.set(param.defaultValue);
        const TVRHBA_DriverParamGlobal* parameter = add(maps, std::move(made));
        if (parameter == nullptr || !join_service<TVRHBA_GlobalDriverServiceElementSettingData>(
                                        maps, service, End(*parameter))) {
            return 1;
        }
    }
    return 0;
}

std::optional<End<TVRHBA_FCPort>> port_end(const Instance_Maps& maps, const std::string& deviceId) {
    for (const TVRHBA_FCPort* port : maps.m_TVRHBA_FCPort_map) {
        if (port->DeviceID.value == deviceId.c_str()) {
            return End<TVRHBA_FCPort>(*port);
        }
    }
    return std::nullopt;
}

uint32 create_port_parameters(Instance_Maps& maps, const std::string& deviceId,
                              const std::vector<RM_DRIVERPARAM>& params) {
    const auto service = first_end(maps.m_TVRHBA_FCHBADriverParamService_map);
    const auto port = port_end(maps, deviceId);
    const String lower_id = lower(deviceId);
    uint32 index = 0;
    for (const RM_DRIVERPARAM& param : params) {
        TVR_LOG("saving the values of driver parameter %d", index);
        auto made = try_make_parameter<TVRHBA_DriverParams>(param, index++);
        if (!made) {
            continue;
        }
        made->InstanceID.set(instance_id(deviceId, param));
        made->deviceID.set(lower_id);
        made->def.set(param.defaultValue);
        const TVRHBA_DriverParams* added = add(maps, std::move(made));
        if (added == nullptr) {
            return 1;
        }
        const End parameter(*added);
        if (!join_service<TVRHBA_DriverServiceElementSettingData>(maps, service, parameter)) {
            return 1;
        }
        if (!port) {
            TVR_LOG("Data Structure is corrupted...");
            return 1;
        }
        auto effect = make<TVRHBA_DriverParameterAffectsFCPort>();
        effect->Antecedent = *port;
        effect->Dependent = parameter;
        if (add(maps, std::move(effect)) == nullptr) {
            return 1;
        }
    }
    return 0;
}

// Logs a read of global parameters that has failed. False if it has.
bool check_global(const DriverParamAnswer& answer) {
    switch (answer.outcome) {
    case DriverParamOutcome::read:
        TVR_LOG("number of driver parameters %d", static_cast<int>(answer.params.size()));
        return true;
    case DriverParamOutcome::noMemory:
    case DriverParamOutcome::noMemoryForNeed:
        log_no_memory();
        return false;
    case DriverParamOutcome::refusedAgain:
        TVR_LOG("ERROR: tvrcimGetDriverParamsGlobal: RM_GetDriverParamsGlobal call failed (a) "
                "(%d)",
                answer.status);
        return false;
    case DriverParamOutcome::refused:
        TVR_LOG("ERROR: tvrcimGetDriverParamsGlobal: RM_GetDriverParamsGlobal call failed (b) "
                "(%d)",
                answer.status);
        return false;
    }
    return false;
}

bool check_port(const DriverParamAnswer& answer) {
    switch (answer.outcome) {
    case DriverParamOutcome::read:
        return true;
    case DriverParamOutcome::noMemory:
        log_no_memory();
        return false;
    default:
        TVR_LOG("RM_GetDriverParams:failed");
        return false;
    }
}

uint32 result_of(const DriverParamAnswer& answer) {
    const bool no_memory = answer.outcome == DriverParamOutcome::noMemory ||
                           answer.outcome == DriverParamOutcome::noMemoryForNeed;
    return no_memory ? out_of_memory : answer.status;
}

// Finds the first instance of each InstanceID, without regard to case.
template <class C> class By_InstanceID {
public:
    explicit By_InstanceID(const Class_Map<C>& map) {
        _instances.reserve(map.size());
        for (C* instance : map) {
            _instances.emplace(lower(instance->InstanceID.value.c_str()), instance);
        }
    }

    void set_current(const std::string& id, uint32 current) const {
        const auto found = _instances.find(lower(id));
        if (found != _instances.end()) {
            found->second->current.set(current);
        }
    }

private:
    std::unordered_map<std::string, C*> _instances;
};

void join_driver(Instance_Maps& maps, const TVRHBA_SoftwareIdentity& driver) {
    if (const auto service = first_end(maps.m_TVRHBA_FCHBADriverParamService_map)) {
        auto effect = make<TVRHBA_FCDriverServiceAffectsDriver>();
        effect->AffectingElement = *service;
        effect->AffectedElement = driver.clone();
        add(maps, std::move(effect));
    }
}

void fetch(Instance_Maps& maps, const std::string& deviceId, uint32 global) {
    const uint32 status = tvrcimGetDriverParam(maps, deviceId, global);
    if (status != 0) {
        TVR_LOG(global != 0
                    ? "Call to tvrcimGetDriverParam to retrieve Global Driver Parameters failed"
                    : "Call to tvrcimGetDriverParam to retrieve Local Driver Parameters failed");
        TVR_LOG("rm_status = %d", status);
    }
}

} // namespace

uint32 tvrcimGetDriverParam(Instance_Maps& maps, const std::string& deviceId, uint32 global) try {
    TVR_LOG("TVR_MethodWrapper::tvrcimGetDriverParam()");
    HBA_WWN name;
    if (TVR_MethodWrapper::string2HBAName(name, deviceId) == 0) {
        return 1;
    }
    if (!TVR_MethodWrapper::isLocal(name)) {
        return 1;
    }
    if (global != 0) {
        const DriverParamAnswer answer = readDriverParams(name, DriverParamScope::global);
        return check_global(answer) ? create_global_parameters(maps, answer.params)
                                    : result_of(answer);
    }
    const DriverParamAnswer answer = readDriverParams(name, DriverParamScope::port);
    return check_port(answer) ? create_port_parameters(maps, deviceId, answer.params)
                              : result_of(answer);
} catch (const std::bad_alloc&) {
    return out_of_memory;
}

void fetchDriverParams(Instance_Maps& maps, const Data& data) {
    static constinit Time_Limit limit;
    try {
        if (!limit.lets_run()) {
            return;
        }
        clearDriverMaps();
        const TVRHBA_SoftwareIdentity* driver =
            find_driver_identity(maps.m_TVRHBA_SoftwareIdentity_map);
        if (driver == nullptr) {
            TVR_LOG("Could not locate the FC DriverServiceAffectsDriver Identity");
            return;
        }
        join_driver(maps, *driver);
        bool is_first = true;
        for_each_FC_adapter(&data, [&](const FCAdapter& adapter) {
            for (const std::unique_ptr<Port>& port : adapter.getPorts()) {
                if (std::exchange(is_first, false)) {
                    fetch(maps, port->getPortName(), 1);
                }
                fetch(maps, port->getPortName(), 0);
            }
            return true;
        });
    } catch (...) {
        TVR_LOG("Error getting driver params");
    }
    if (rm::callsAreStopped()) {
        limit.take_back();
    }
}

void UpdateDriverParams(ProviderAgent& agent) {
    static constinit Time_Limit limit;
    try {
        if (!limit.lets_run()) {
            return;
        }
        const By_InstanceID parameters(agent.maps.m_TVRHBA_DriverParams_map);
        for_each_FC_adapter(agent.m_pData.get(), [&](const FCAdapter& adapter) {
            for (const std::unique_ptr<Port>& port : adapter.getPorts()) {
                HBA_WWN name;
                if (TVR_MethodWrapper::string2HBAName(name, port->getPortName()) == 0) {
                    break;
                }
                const DriverParamAnswer answer = readDriverParams(name, DriverParamScope::port);
                if (!check_port(answer)) {
                    return false;
                }
                for (const RM_DRIVERPARAM& param : answer.params) {
                    parameters.set_current(instance_id(port->getPortName(), param), param.current);
                }
            }
            return true;
        });
    } catch (...) {
        TVR_LOG("Found issue with local Driver Refresh");
    }
}

void UpdateDriverParamGlobal(ProviderAgent& agent) {
    static constinit Time_Limit limit;
    try {
        if (!limit.lets_run()) {
            return;
        }
        // Any port tells them; the first one is asked.
        for_each_FC_adapter(agent.m_pData.get(), [&](const FCAdapter& adapter) {
            if (adapter.getPorts().empty()) {
                return true;
            }
            HBA_WWN name;
            if (TVR_MethodWrapper::string2HBAName(name, adapter.getPort(0)->getPortName()) != 0) {
                const DriverParamAnswer answer = readDriverParams(name, DriverParamScope::global);
                if (check_global(answer)) {
                    const By_InstanceID parameters(agent.maps.m_TVRHBA_DriverParamGlobal_map);
                    for (const RM_DRIVERPARAM& param : answer.params) {
                        parameters.set_current(toString(param.name), param.current);
                    }
                }
            }
            return false;
        });
    } catch (...) {
        TVR_LOG("Found issue with Global Driver Refresh");
    }
}

} // namespace cimple
