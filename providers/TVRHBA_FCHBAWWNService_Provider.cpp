#include "providers/TVRHBA_FCHBAWWNService_Provider.h"

#include "access/method_wrapper.h"
#include "providers/service_call.h"

#include <span>

namespace cimple {

namespace {

constexpr uint16 WWN_not_asked = 65535;

constexpr Name_Lines WWN_name_lines{"TVRHBA_FCHBAWWNService_Provider::Id2HBAName failed",
                                    "TVRHBA_FCHBAWWNService_Provider::str2HBAName failed"};

// What the values of `Type` mean to a method, as its lines in the log.
constexpr const char* change_types[] = {"Writing Volatile World Wide Name.",
                                        "Writing Non-Volatile World Wide Name."};
constexpr const char* restore_types[] = {"Restoring Factory Default World Wide Name...",
                                         "Restoring Non-volatile World Wide Name..."};
constexpr const char* read_types[] = {"Reading Volatile WWNs.", "Reading Non-Volatile WWNs.",
                                      "Reading Factory Default WWNs.", "Reading current WWNs.",
                                      "Reading configured WWNs."};

bool knows_type(const char* method, uint16 type, std::span<const char* const> types) {
    if (type >= types.size()) {
        TVR_LOG("%s: Type %d not recognized...", method, type);
        return false;
    }
    TVR_LOG("%s", types[type]);
    return true;
}

// A name that the client gives; METHOD_COMPLETED if it is one.
uint32 read_new_name(HBA_WWN& name, const Property<String>& text, const char* missing) {
    if (text.value.empty()) {
        TVR_LOG("%s", missing);
        return METHOD_NO_NAME;
    }
    return read_name(name, text.value, WWN_name_lines) ? METHOD_COMPLETED : METHOD_INVALID_PORT;
}

// Checks service and target and then does `work` with agent and port, which answers the result.
template <class Work>
Invoke_Method_Status call_WWN(const TVRHBA_FCHBAWWNService* self, const TVRHBA_FCPort* target,
                              Property<uint32>& return_value, Work&& work) {
    return call_method(return_value, [&](ProviderAgent& agent) -> uint32 {
        if (!is_first(agent.maps.m_TVRHBA_FCHBAWWNService_map, self)) {
            TVR_LOG("Invalid instance of HBA WWN Management Service");
            return METHOD_INVALID_INSTANCE;
        }
        if (find_target(agent.maps, target) == nullptr) {
            TVR_LOG("TVRHBA_FCHBAWWNService_Provider invald port ...return");
            return METHOD_INVALID_PORT;
        }
        HBA_WWN port;
        if (!read_name(port, target->DeviceID.value, WWN_name_lines)) {
            return METHOD_INVALID_PORT;
        }
        return work(agent, port);
    });
}

} // namespace

Enum_Instances_Status
TVRHBA_FCHBAWWNService_Provider::enum_instances(const Class*,
                                                const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_FCHBAWWNService>(handler);
    TVR_LOG("TVRHBA_FCHBAWWNService_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status TVRHBA_FCHBAWWNService_Provider::ChangeWWN(
    const Class* self, const TVRHBA_FCPort* Target, const Property<String>& NewWWPN,
    const Property<String>& NewWWNN, const Property<uint16>& Type,
    Property<uint16>& WWNOperationStatus, Property<uint32>& return_value) {
    TVR_LOG("Entering ChangeWWN");
    WWNOperationStatus.set(WWN_not_asked);
    return call_WWN(
        self, Target, return_value, [&](ProviderAgent& agent, const HBA_WWN& port) -> uint32 {
            HBA_WWN port_name;
            HBA_WWN node_name;
            uint32 result = read_new_name(port_name, NewWWPN, "New WWPN has a null pointer");
            if (result == METHOD_COMPLETED) {
                result = read_new_name(node_name, NewWWNN, "New WWNN has a null pointer");
            }
            if (result != METHOD_COMPLETED) {
                return result;
            }
            if (!knows_type("ChangeWWN", Type.value, change_types)) {
                return METHOD_INVALID_PORT;
            }
            Property<uint32> changed{};
            TVR_MethodWrapper::ChangeWWN(port, port_name, node_name, Type.value, WWNOperationStatus,
                                         changed);
            if (changed.value == METHOD_COMPLETED) {
                TVR_LOG("ChangeWWN operation completed. Please restart the CIMOM to use Tavrin "
                        "CIM provider");
                request_rebuild(agent);
            }
            return changed.value;
        });
}

Invoke_Method_Status TVRHBA_FCHBAWWNService_Provider::RestoreWWN(
    const Class* self, const TVRHBA_FCPort* Target, const Property<uint16>& Type,
    Property<uint16>& WWNOperationStatus, Property<uint32>& return_value) {
    TVR_LOG("Entering RestoreWWN");
    WWNOperationStatus.set(WWN_not_asked);
    return call_WWN(
        self, Target, return_value, [&](ProviderAgent& agent, const HBA_WWN& port) -> uint32 {
            if (!knows_type("RestoreWWN", Type.value, restore_types)) {
                return METHOD_INVALID_PORT;
            }
            Property<uint32> restored{};
            TVR_MethodWrapper::RestoreWWN(port, Type.value, WWNOperationStatus, restored);
            if (restored.value == METHOD_COMPLETED) {
                request_rebuild(agent);
            }
            return restored.value;
        });
}

Invoke_Method_Status TVRHBA_FCHBAWWNService_Provider::ReadWWN(
    const Class* self, const TVRHBA_FCPort* Target, const Property<uint16>& Type,
    Property<String>& WWPN, Property<String>& WWNN, Property<uint16>& WWNOperationStatus,
    Property<uint32>& return_value) {
    TVR_LOG("Entering ReadWWN");
    WWNOperationStatus.set(WWN_not_asked);
    return call_WWN(
        self, Target, return_value, [&](const ProviderAgent&, const HBA_WWN& port) -> uint32 {
            if (!knows_type("ReadWWN", Type.value, read_types)) {
                return METHOD_INVALID_PORT;
            }
            Property<uint32> read{};
            TVR_MethodWrapper::ReadWWN(port, Type.value, WWPN, WWNN, WWNOperationStatus, read);
            return read.value;
        });
}

Invoke_Method_Status
TVRHBA_FCHBAWWNService_Provider::GetWWNCapability(const Class* self, const TVRHBA_FCPort* Target,
                                                  Property<uint32>& WWNCapability,
                                                  Property<uint32>& return_value) {
    TVR_LOG("Entering GetWWNCapability");
    return call_WWN(self, Target, return_value, [&](const ProviderAgent&, const HBA_WWN& port) {
        Property<uint32> asked{};
        TVR_MethodWrapper::GetWWNCapability(port, WWNCapability, asked);
        return asked.value;
    });
}

} // namespace cimple
