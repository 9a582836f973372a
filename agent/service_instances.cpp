// The services of the host: software installation, world wide names, boot BIOS and driver
// parameters.
#include "agent/service_instances.h"

#include "agent/profiles.h"
#include "agent/service_links.h"
#include "agent/uri_schemes.h"

namespace cimple {

namespace {

constexpr Profile software_update_profile{"Software Update", ORGANIZATION_DMTF, "1.0.0"};

constexpr uint16 state_enabled = 2;

struct Service_Texts {
    const char* class_name;
    const char* name;
    const char* description;
    const char* status;
    const char* status_description;
};

// What all services have. Null if there is no memory for one.
template <class Service>
Ref<Service> make_service(const CIM_ComputerSystem& system, const Service_Texts& texts) {
    Ref<Service> service = try_make<Service>();
    if (!service) {
        return service;
    }
    service->SystemCreationClassName.set(system.CreationClassName.value);
    service->SystemName.set(system.Name.value);
    service->CreationClassName.set(texts.class_name);
    service->Name.set(texts.name);
    service->Description.set(texts.description);
    service->ElementName.set(texts.description);
    service->StartMode.set("Automatic");
    service->Started.set(true);
    service->EnabledState.set(state_enabled);
    service->TimeOfLastStateChange.set(Datetime(0));
    service->OperationalStatus.set(Array<uint16>{2});
    service->HealthState.set(uint16{5});
    service->Status.set(texts.status);
    service->StatusDescriptions.set(Array<String>{texts.status_description});
    return service;
}

template <class Service> void enable_by_default(Service& service) {
    service.RequestedState.set(state_enabled);
    service.EnabledDefault.set(state_enabled);
}

// The computer system hosts the service.
template <class C, class Service>
void add_hosted(Instance_Maps& maps, const Service& service, Lines lines = Lines::plain) {
    if (auto hosted = try_association<C>(any_namespace, lines)) {
        hosted->Antecedent = maps.computer_system().clone();
        hosted->Dependent = service.clone();
        add_association(maps, std::move(hosted), lines);
    }
}

template <class C, class Service>
void add_system_effect(Instance_Maps& maps, const Service& service, Lines lines = Lines::plain) {
    if (auto effect = try_association<C>(any_namespace, lines)) {
        effect->AffectedElement = maps.computer_system().clone();
        effect->AffectingElement = service.clone();
        add_association(maps, std::move(effect), lines);
    }
}

Ref<TVRHBA_SoftwareInstallationServiceCapabilities> make_capabilities() {
    constexpr char name[] = "Tavrin Software Installation Service Capabilities";
    auto capabilities = make<TVRHBA_SoftwareInstallationServiceCapabilities>();
    capabilities->InstanceID.set("TVR:HBASoftwareInstallationServiceCapabilities");
    capabilities->Description.set(name);
    capabilities->ElementName.set(name);
    capabilities->SupportedURISchemes.set(supported_URI_schemes());
    capabilities->SupportedTargetTypes.set(Array<String>{"FC HBA"});
    capabilities->SupportedAsynchronousActions.set(Array<uint16>{2});
    capabilities->SupportedSynchronousActions.set(Array<uint16>{4, 5});
    capabilities->SupportedExtendedResourceTypes.set(Array<uint16>{2});
    capabilities->CanAddToCollection.set(false);
    capabilities->SupportedInstallOptions.set(Array<uint16>{2, 3, 4, 5, 6, 7, 11});
    capabilities->OtherSupportedExtendedResourceTypeDescriptions.set(
        Array<String>{"Tavrin FC firmware files"});
    capabilities->SupportedExtendedResourceTypesMajorVersions.set(Array<uint16>{0});
    capabilities->SupportedExtendedResourceTypesMinorVersions.set(Array<uint16>{0});
    capabilities->SupportedExtendedResourceTypesRevisionNumbers.set(Array<uint16>{0});
    capabilities->SupportedExtendedResourceTypesBuildNumbers.set(Array<uint16>{0});
    return capabilities;
}

void create_installation_service(Instance_Maps& maps, const Host_Facts& host) {
    TVR_LOG("Starting the SoftwareInstallationService");
    const TVRHBA_RegisteredProfile* profile =
        create_conformed_profile(maps, host, software_update_profile);
    auto made = make_service<TVRHBA_SoftwareInstallationService>(
        maps.computer_system(),
        {"TVRHBA_SoftwareInstallationService", "TVRHBA_FCSoftwareInstallationService",
         "Tavrin FC HBA Software Installation Service", "ok", "ok"});
    const TVRHBA_SoftwareInstallationService* service = nullptr;
    if (made) {
        enable_by_default(*made);
        made->InstallDate.set(Datetime(0));
        service = &add_or_end(maps, std::move(made));
    }
    const auto& capabilities = add_or_end(maps, make_capabilities());
    if (service == nullptr) {
        return;
    }
    add_hosted<TVRHBA_HostedInstallationService>(maps, *service);
    add_system_effect<TVRHBA_InstallServiceAffectsSystem>(maps, *service);
    if (profile != nullptr) {
        if (auto conformance =
                try_association<TVRHBA_InstallServiceConformsToProfile>(any_namespace)) {
            conformance->ConformantStandard = profile->clone();
            conformance->ManagedElement = service->clone();
            add_association(maps, std::move(conformance));
        }
    }
    if (auto element = try_association<TVRHBA_ElementCapabilities>(implementation_namespace)) {
        element->ManagedElement = service->clone();
        element->Capabilities = capabilities.clone();
        add_association(maps, std::move(element));
    }
}

void create_WWN_service(Instance_Maps& maps) {
    TVR_LOG("Starting the WWN Management Service");
    auto made = make_service<TVRHBA_FCHBAWWNService>(
        maps.computer_system(), {"TVRHBA_FCHBAWWNService", "TVRHBA_FCHBAWWNService",
                                 "Tavrin FC HBA WWN Management Service", "Ok", "ok"});
    const TVRHBA_FCHBAWWNService* service = nullptr;
    if (made) {
        enable_by_default(*made);
        service = add(maps, std::move(made));
    }
    if (service == nullptr) {
        TVR_LOG("Failed to create WWN Services class");
        throw Rebuild_Ended();
    }
    add_hosted<TVRHBA_HostedFCHBAWWNService>(maps, *service);
    add_system_effect<TVRHBA_FCHBAWWNServiceAffectsSystem>(maps, *service);
}

void create_boot_BIOS_service(Instance_Maps& maps) {
    TVR_LOG("Starting the BootBIOSService");
    auto made = make_service<TVRHBA_BootBIOSService>(
        maps.computer_system(), {"TVRHBA_BootBIOSService", "TVRHBA_BootBIOSService",
                                 "Tavrin FC HBA Boot BIOS Service", "Ok", "ok"});
    if (!made) {
        return;
    }
    enable_by_default(*made);
    const TVRHBA_BootBIOSService& service = add_or_end(maps, std::move(made));
    add_hosted<TVRHBA_HostedBootBIOSService>(maps, service);
    add_system_effect<TVRHBA_BootBIOSServiceAffectsSystem>(maps, service);
}

void create_driver_param_service(Instance_Maps& maps) {
    TVR_LOG("Starting the FCHBASetDriverParamService");
    auto made = make_service<TVRHBA_FCHBADriverParamService>(
        maps.computer_system(), {"TVRHBA_FCHBADriverParamService", "TVRHBA_FCHBADriverParamService",
                                 "Tavrin FC HBA Set Driver Parameters Service", "OK", "OK"});
    if (made) {
        const TVRHBA_FCHBADriverParamService& service = add_or_end(maps, std::move(made));
        add_system_effect<TVRHBA_FCHBADriverParamServiceAffectsSystem>(maps, service,
                                                                       Lines::with_class);
        add_hosted<TVRHBA_HostedFCHBADriverParamService>(maps, service, Lines::with_class);
    }
    TVR_LOG("Ending the FCHBASetDriverSetParamService");
}

} // namespace

void create_services(Instance_Maps& maps, const Host_Facts& host) {
    create_installation_service(maps, host);
    create_WWN_service(maps);
    create_boot_BIOS_service(maps);
    create_driver_param_service(maps);
}

} // namespace cimple
