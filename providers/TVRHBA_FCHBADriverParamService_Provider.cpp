#include "providers/TVRHBA_FCHBADriverParamService_Provider.h"

#include "access/method_wrapper.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr Name_Lines driver_param_name_lines{
    "TVRHBA_FCHBADriverParamService_Provider::Id2HBAName failed",
    "TVRHBA_FCHBADriverParamService_Provider::str2HBAName failed"};

const char* text_or_null(const Property<String>& text) noexcept {
    return text.is_null() ? nullptr : text.value.c_str();
}

} // namespace

Enum_Instances_Status
TVRHBA_FCHBADriverParamService_Provider::enum_instances(const Class*,
                                                        const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_FCHBADriverParamService>(handler);
    TVR_LOG("TVRHBA_FCHBADriverParamService_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status
TVRHBA_FCHBADriverParamService_Provider::StartService(const Class*,
                                                      Property<uint32>& return_value) {
    return_value.set(METHOD_COMPLETED);
    return INVOKE_METHOD_OK;
}

Invoke_Method_Status TVRHBA_FCHBADriverParamService_Provider::SetDriverParameter(
    const Class* self, const TVRHBA_FCPort* Target, const Property<boolean>& bPermanent,
    const Property<boolean>& bGlobal, const Property<String>& strParam,
    const Property<String>& strValue, Property<uint32>& return_value) {
    TVR_LOG("TVRHBA_FCHBADriverParamService_Provider::SetDriverParameter()");
    return call_method(return_value, [&](const ProviderAgent& agent) -> uint32 {
        if (!is_first(agent.maps.m_TVRHBA_FCHBADriverParamService_map, self)) {
            TVR_LOG("Invalid instance of HBA Driver Parameter Service");
            return METHOD_INVALID_INSTANCE;
        }
        if (Target == nullptr) {
            TVR_LOG("TVRHBA_FCHBADriverParamService_Provider SetDriverParameter invald fc port "
                    "...return");
            return METHOD_INVALID_PORT;
        }
        if (find_target(agent.maps, Target) == nullptr) {
            TVR_LOG("TVRHBA_FCHBADriverParamService_Provider invald fc port ...return");
            return METHOD_INVALID_PORT;
        }
        const String& device_id = Target->DeviceID.value;
        TVR_LOG("%s", device_id.c_str());
        HBA_WWN port;
        if (!read_name(port, device_id, driver_param_name_lines)) {
            return METHOD_INVALID_PORT;
        }
        TVR_LOG("Entering TVRHBA_FCHBADriverParamService_Provider::SetDriverParam(): "
                "tvrcimSetDriverParam");
        const uint32 status = TVR_MethodWrapper::tvrcimSetDriverParam(
            std::string(device_id.view()), port, bGlobal.value, bPermanent.value,
            text_or_null(strParam), text_or_null(strValue));
        if (status != 0) {
            TVR_LOG("TVRHBA_FCHBADriverParamService_Provider::tvrcimSetDriverParam failed");
            return libraryFailure(status);
        }
        TVR_LOG("TVRHBA_FCHBADriverParamService_Provider::tvrcimSetDriverParam Succeeded");
        return METHOD_COMPLETED;
    });
}

} // namespace cimple
