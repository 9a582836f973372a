#include "providers/TVRHBA_BootBIOSService_Provider.h"

#include "access/method_wrapper.h"
#include "agent/port_lookup.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr Name_Lines boot_BIOS_name_lines{"TVRHBA_BootBIOSService_Provider::Id2HBAName failed",
                                          "TVRHBA_BootBIOSService_Provider::str2HBAName failed"};

struct Boot_BIOS_Lines {
    const char* no_target;
    const char* before; // null: none
    const char* failed;
    const char* done;
};
constexpr Boot_BIOS_Lines enable_lines{
    "TVRHBA_BootBIOSService_Provider EnableBootBIOS invald fc port ...return",
    "Entering TVRHBA_BootBIOSService_Provider::EnableBootBIOS(): tvrcimSetBootBiosState",
    "TVRHBA_BootBIOSService_Provider::tvrcimSetBootBiosState failed",
    "TVRHBA_BootBIOSService_Provider::tvrcimSetBootBiosState o.k."};
constexpr Boot_BIOS_Lines disable_lines{
    "TVRHBA_BootBIOSService_Provider DisableBooTBIOSinvald fc port ...return",
    "Entering TVRHBA_BootBIOSService_Provider::DisableBootBIOS(): tvrcimSetBootBiosState",
    "TVRHBA_BootBIOSService_Provider::tvrcimSetBootBiosState failed",
    "TVRHBA_BootBIOSService_Provider::tvrcimSetBootBiosState O.K."};
constexpr Boot_BIOS_Lines status_lines{
    "TVRHBA_BootBIOSService_Provider GetBootBIOS invald fc port ...return", nullptr,
    "TVRHBA_BootBIOSService_Provider::tvrcimGetBootBiosState failed",
    "TVRHBA_BootBIOSService_Provider::GetBootBIOSStatus O.K."};

// Checks service and target and then does `work` with the port's name, which answers a status.
template <class Work>
Invoke_Method_Status call_boot_BIOS(const TVRHBA_BootBIOSService* self, const TVRHBA_FCPort* target,
                                    const Boot_BIOS_Lines& lines, Property<uint32>& return_value,
                                    Work&& work) {
    return call_method(return_value, [&](const ProviderAgent& agent) -> uint32 {
        if (!is_first(agent.maps.m_TVRHBA_BootBIOSService_map, self)) {
            TVR_LOG("Invalid instance of Boot BIOS Service");
            return METHOD_INVALID_INSTANCE;
        }
        if (target == nullptr) {
            TVR_LOG("%s", lines.no_target);
            return METHOD_INVALID_PORT;
        }
        if (!IsValidFCPort(agent.maps, target->DeviceID.value)) {
            TVR_LOG("TVRHBA_BootBIOSService_Provider invald fc port ...return");
            return METHOD_INVALID_PORT;
        }
        HBA_WWN port;
        if (!read_name(port, target->DeviceID.value, boot_BIOS_name_lines)) {
            return METHOD_INVALID_PORT;
        }
        if (lines.before != nullptr) {
            TVR_LOG("%s", lines.before);
        }
        if (const uint32 status = work(port); status != 0) {
            TVR_LOG("%s", lines.failed);
            return libraryFailure(status);
        }
        TVR_LOG("%s", lines.done);
        return METHOD_COMPLETED;
    });
}

} // namespace

Load_Status TVRHBA_BootBIOSService_Provider::load() {
    TVR_LOG("TVRHBA_BootBIOSService_Provider::load()");
    return load_agent();
}

Enum_Instances_Status
TVRHBA_BootBIOSService_Provider::enum_instances(const Class*,
                                                const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_BootBIOSService>(handler);
    TVR_LOG("TVRHBA_BootBIOSService_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status TVRHBA_BootBIOSService_Provider::StartService(const Class*,
                                                                   Property<uint32>& return_value) {
    return_value.set(METHOD_COMPLETED);
    return INVOKE_METHOD_OK;
}

Invoke_Method_Status
TVRHBA_BootBIOSService_Provider::EnableBootBIOS(const Class* self, const TVRHBA_FCPort* Target,
                                                Property<uint32>& return_value) {
    TVR_LOG("TVRHBA_BootBIOSService_Provider::EnableBootBIOS()");
    return call_boot_BIOS(self, Target, enable_lines, return_value, [](const HBA_WWN& port) {
        return TVR_MethodWrapper::tvrcimSetBootBiosState(port, "E");
    });
}

Invoke_Method_Status
TVRHBA_BootBIOSService_Provider::DisableBootBIOS(const Class* self, const TVRHBA_FCPort* Target,
                                                 Property<uint32>& return_value) {
    TVR_LOG("TVRHBA_BootBIOSService_Provider::DisableBootBIOS()");
    return call_boot_BIOS(self, Target, disable_lines, return_value, [](const HBA_WWN& port) {
        return TVR_MethodWrapper::tvrcimSetBootBiosState(port, "D");
    });
}

Invoke_Method_Status
TVRHBA_BootBIOSService_Provider::GetBootBIOSStatus(const Class* self, const TVRHBA_FCPort* Target,
                                                   Property<uint32>& nBootBIOSStatus,
                                                   Property<uint32>& return_value) {
    TVR_LOG("TVRHBA_BootBIOSService_Provider::GetBootBIOSStatus");
    return call_boot_BIOS(self, Target, status_lines, return_value, [&](const HBA_WWN& port) {
        uint32 state = 0;
        const uint32 status = TVR_MethodWrapper::tvrcimGetBootBiosState(port, &state);
        if (status == 0) {
            nBootBIOSStatus.set(state);
        }
        return status;
    });
}

} // namespace cimple
