#include "providers/TVRHBA_SoftwareInstallationService_Provider.h"

#include "access/method_wrapper.h"
#include "agent/port_lookup.h"
#include "providers/image_file.h"
#include "providers/service_call.h"

#include <algorithm>

namespace cimple {

namespace {

using Installation_Service = TVRHBA_SoftwareInstallationService;

constexpr char FC_installation_service[] = "TVRHBA_FCSoftwareInstallationService";
constexpr char CNA_installation_service[] = "TVRXCNA_SoftwareInstallationService";

constexpr uint32 CNA_reset_refused = libraryFailure(2);

// Activation of the new firmware needs a reboot.
constexpr uint32 firmware_needs_reboot = 247;

constexpr Name_Lines installation_name_lines{
    "TVRHBA_SoftwareInstallationService_Provider::Id2HBAName failed",
    "TVRHBA_SoftwareInstallationService_Provider::str2HBAName failed"};

// Values of `InstallOptions`.
constexpr uint16 option_reset = 2;
constexpr uint16 option_file_name = 32768;
constexpr uint16 options_passed_over[] = {4, 5, 6, 7, 11};

bool is_known_option(uint16 option) {
    return option == option_reset ||
           std::find(std::begin(options_passed_over), std::end(options_passed_over), option) !=
               std::end(options_passed_over);
}

// METHOD_COMPLETED for options that are all known, of which `other` is one too.
uint32 check_options(const Array<uint16>& options, uint16 other) {
    TVR_LOG("size of InstallOptions array = %d, first member %u", static_cast<int>(options.size()),
            options.empty() ? 0u : options[0]);
    for (const uint16 option : options) {
        if (!is_known_option(option) && option != other) {
            TVR_LOG("invalid value of Install options");
            return METHOD_INVALID_PARAMETER;
        }
    }
    return METHOD_COMPLETED;
}

bool is_own_service(const Instance_Maps& maps, const Installation_Service* self) {
    if (is_known(maps.m_TVRHBA_SoftwareInstallationService_map, self)) {
        return true;
    }
    TVR_LOG("Invalid instance of Software Installation Service");
    return false;
}

// What comes before either kind of image: the target, or the result for one that is none.
uint32 find_install_target(const ProviderAgent& agent, const Installation_Service* self,
                           const CIM_ManagedElement* target, const char* no_port,
                           const TVRHBA_FCPort*& port) {
    if (!is_own_service(agent.maps, self)) {
        return METHOD_INVALID_INSTANCE;
    }
    if (target == nullptr) {
        TVR_LOG("Target has a null pointer");
        return METHOD_NO_TARGET;
    }
    port = find_target(agent.maps, target);
    if (port == nullptr) {
        TVR_LOG("%s", no_port);
        return METHOD_INVALID_PORT;
    }
    return METHOD_COMPLETED;
}

// What comes between the image's file and the download: names and the kind of service.
uint32 prepare_download(const Installation_Service& self, const TVRHBA_FCPort& target,
                        HBA_WWN& name) {
    if (!read_name(name, target.DeviceID.value, installation_name_lines)) {
        return METHOD_NO_TARGET;
    }
    if (!self.Name.value.equali(FC_installation_service)) {
        TVR_LOG("Error - The SoftwareInstallationService instance selected is incorrect ");
        return METHOD_FAILED;
    }
    return METHOD_COMPLETED;
}

uint32 download_failed(uint32 status) {
    TVR_LOG("Error - in the firmware download functionality");
    return libraryFailure(status);
}

void log_download_complete(const TVRHBA_FCPort& target) {
    TVR_LOG("FC download functionality complete for target %s", target.DeviceID.value.c_str());
}

// Resets the adapter once for each option that wants it; without one, has the maps rebuilt.
uint32 finish_install(ProviderAgent& agent, const HBA_WWN& port, const Array<uint16>& options) {
    bool is_reset = false;
    for (const uint16 option : options) {
        if (option != option_reset) {
            continue;
        }
        TVR_LOG("HBA RESET OPTION SELECTED");
        if (const uint32 status = TVR_MethodWrapper::tvrcimResetHBA(port); status != 0) {
            TVR_LOG("TVRHBA_SoftwareInstallationService_Provider::tvrcimResetHBA failed");
            return libraryFailure(status);
        }
        TVR_LOG("Fiwmware download functionality complete with Reset on the HBA");
        is_reset = true;
    }
    if (!is_reset) {
        request_rebuild(agent);
    }
    return METHOD_COMPLETED;
}

uint32 install_from_URI(ProviderAgent& agent, const Installation_Service& self, const String& uri,
                        const CIM_ManagedElement* target, const Array<uint16>& options,
                        Property<uint32>& return_value) {
    const TVRHBA_FCPort* port = nullptr;
    uint32 result = find_install_target(
        agent, &self, target, "TVRHBA_SoftwareInstallationService_Provider invald port ...return",
        port);
    if (result != METHOD_COMPLETED) {
        return result;
    }
    if (uri.empty()) {
        TVR_LOG("Null sized URI..returning");
        return METHOD_NO_TARGET;
    }
    if ((result = check_options(options, option_reset)) != METHOD_COMPLETED) {
        return result;
    }
    bool is_fetched = false;
    const std::string file =
        TVR_MethodWrapper::downloadFileUsingCurl(std::string(uri.view()), return_value, is_fetched);
    TVR_LOG("filename is : %s", file.c_str());
    HBA_WWN name;
    if ((result = check_image(file)) != METHOD_COMPLETED ||
        (result = prepare_download(self, *port, name)) != METHOD_COMPLETED) {
        return result;
    }
    const uint32 status = TVR_MethodWrapper::tvrcimDownloadFW(name, file);
    if (status == firmware_needs_reboot) {
        TVR_LOG("FC Firmware download completed for target %s Please reboot system to activate new "
                "firmware.",
                port->DeviceID.value.c_str());
    } else if (status == 0) {
        log_download_complete(*port);
    } else {
        return download_failed(status);
    }
    TVR_LOG("tvrcimDownloadFW: Removing the FW file from CIMOM's repository ");
    if (is_fetched) {
        remove_image(file);
    }
    return finish_install(agent, name, options);
}

uint32 install_from_bytes(ProviderAgent& agent, const Installation_Service& self,
                          const Array<uint8>& image, const CIM_ManagedElement* target,
                          const Array<uint16>& options, const Array<String>& values) {
    const TVRHBA_FCPort* port = nullptr;
    uint32 result = find_install_target(
        agent, &self, target, "TVRHBA_SoftwareInstallationService_Provider::Wrong DeviceID passed",
        port);
    if (result != METHOD_COMPLETED) {
        return result;
    }
    if (values.empty()) {
        TVR_LOG("InstallOptionsValues is empty. Should have the correct firmware file name. "
                "Returning Invalid Parameter");
        return METHOD_INVALID_PARAMETER;
    }
    if ((result = check_options(options, option_file_name)) != METHOD_COMPLETED) {
        return result;
    }
    std::size_t index = options.size();
    while (index > 0 && options[index - 1] != option_file_name) {
        --index;
    }
    // A file name that isn't there, for an option behind the end of the values, is none either.
    if (index == 0 || index > values.size()) {
        TVR_LOG("InstallOptions does not have the value 32768");
        return METHOD_INVALID_PARAMETER;
    }
    const std::string file(values[index - 1].view());
    TVR_LOG("filename is : %s", file.c_str());
    switch (write_image(file, image)) {
    case Image_Written::not_opened:
        TVR_LOG("Could not open file to copy the firmware from ByteStream");
        return METHOD_FAILED;
    case Image_Written::not_whole:
        TVR_LOG("Could not write the firmware from ByteStream");
        return METHOD_FAILED;
    case Image_Written::whole:
        break;
    }
    HBA_WWN name;
    if ((result = check_image(file)) != METHOD_COMPLETED ||
        (result = prepare_download(self, *port, name)) != METHOD_COMPLETED) {
        return result;
    }
    const uint32 status = TVR_MethodWrapper::tvrcimDownloadFW(name, file);
    remove_image(file);
    if (status != 0) {
        return download_failed(status);
    }
    log_download_complete(*port);
    return finish_install(agent, name, options);
}

uint32 reset_adapter(ProviderAgent& agent, const Installation_Service& self,
                     const TVRHBA_FCPort* target) {
    if (!is_own_service(agent.maps, &self)) {
        return METHOD_INVALID_INSTANCE;
    }
    if (self.Name.value.equali(CNA_installation_service)) {
        TVR_LOG("Reset HBA on CNA is not supported");
        return CNA_reset_refused;
    }
    if (find_target(agent.maps, target) == nullptr) {
        TVR_LOG("TVRHBA_SoftwareInstallationService_Provider invald port ...return");
        return METHOD_INVALID_PORT;
    }
    const String& device_id = target->DeviceID.value;
    HBA_WWN port;
    if (!read_name(port, device_id, installation_name_lines)) {
        return METHOD_INVALID_PORT;
    }
    if (const uint32 status = TVR_MethodWrapper::tvrcimResetHBA(port); status != 0) {
        TVR_LOG("TVRHBA_SoftwareInstallationService_Provider::tvrcimResetHBA failed for target %s",
                device_id.c_str());
        return libraryFailure(status);
    }
    TVR_LOG("TVRHBA_SoftwareInstallationService_Provider::tvrcimResetHBA for target %s is "
            "Successful.. Updating the Provider Data",
            device_id.c_str());
    request_rebuild(agent);
    return METHOD_COMPLETED;
}

uint32 set_port_enabled(const ProviderAgent& agent, const Installation_Service& self,
                        const TVRHBA_FCPort* target, const Property<boolean>& enabled) {
    if (!is_own_service(agent.maps, &self)) {
        return METHOD_INVALID_INSTANCE;
    }
    if (target == nullptr) {
        TVR_LOG("Invalid Port is passed");
        return METHOD_INVALID_PORT;
    }
    const String& device_id = target->DeviceID.value;
    if (!IsValidLogicalPort(agent.maps, device_id)) {
        TVR_LOG("TVRHBA_SoftwareInstallationService_Provider invalid port passed");
        return METHOD_INVALID_PORT;
    }
    if (enabled.is_null()) {
        return METHOD_INVALID_PORT;
    }
    TVR_LOG("Input PortEnable : %d", enabled.value);
    const uint32 status =
        TVR_MethodWrapper::SetPortEnabled(std::string(device_id.view()), enabled.value);
    if (status != 0) {
        TVR_LOG("TVRHBA_SoftwareInstallationService_Provider::SetPortEnabled failed for target %s",
                device_id.c_str());
        return libraryFailure(status);
    }
    TVR_LOG("TVRHBA_SoftwareInstallationService_Provider::SetPortEnabled for target %s is "
            "Successful. ",
            device_id.c_str());
    return METHOD_COMPLETED;
}

} // namespace

Enum_Instances_Status
TVRHBA_SoftwareInstallationService_Provider::enum_instances(const Class*,
                                                            const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_SoftwareInstallationService>(handler);
    TVR_LOG("TVRHBA_SoftwareInstallationService_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status
TVRHBA_SoftwareInstallationService_Provider::StartService(const Class*,
                                                          Property<uint32>& return_value) {
    return_value.set(METHOD_COMPLETED);
    return INVOKE_METHOD_OK;
}

Invoke_Method_Status TVRHBA_SoftwareInstallationService_Provider::InstallFromURI(
    const Class* self, CIM_ConcreteJob*& /*Job*/, const Property<String>& URI,
    const CIM_ManagedElement* Target, const Property<Array<uint16>>& InstallOptions,
    const Property<Array<String>>& /*InstallOptionsValues*/, Property<uint32>& return_value) {
    TVR_LOG("entering InstallFromURI");
    return call_method(return_value, [&](ProviderAgent& agent) {
        return install_from_URI(agent, *self, URI.value, Target, InstallOptions.value,
                                return_value);
    });
}

Invoke_Method_Status TVRHBA_SoftwareInstallationService_Provider::InstallFromByteStream(
    const Class* self, CIM_ConcreteJob*& /*Job*/, const Property<Array<uint8>>& Image,
    const CIM_ManagedElement* Target, const Property<Array<uint16>>& InstallOptions,
    const Property<Array<String>>& InstallOptionsValues, Property<uint32>& return_value) {
    TVR_LOG("Entering InstallFromByteStream");
    return call_method(return_value, [&](ProviderAgent& agent) {
        return install_from_bytes(agent, *self, Image.value, Target, InstallOptions.value,
                                  InstallOptionsValues.value);
    });
}

Invoke_Method_Status TVRHBA_SoftwareInstallationService_Provider::ResetHBA(
    const Class* self, const TVRHBA_FCPort* Target, Property<uint32>& return_value) {
    TVR_LOG("Entering ResetHBA");
    return call_method(return_value,
                       [&](ProviderAgent& agent) { return reset_adapter(agent, *self, Target); });
}

Invoke_Method_Status TVRHBA_SoftwareInstallationService_Provider::SetPortEnabled(
    const Class* self, const TVRHBA_FCPort* Target, const Property<boolean>& PortEnabled,
    Property<uint32>& return_value) {
    return call_method(return_value, [&](const ProviderAgent& agent) {
        return set_port_enabled(agent, *self, Target, PortEnabled);
    });
}

} // namespace cimple
