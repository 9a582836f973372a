#include "providers/TVRHBA_HelpService_Provider.h"

#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr uint16 help_text = 1;     // as the format
constexpr uint16 help_returned = 1; // as the delivery

const TVRHBA_HelpService* find_document(const Class_Map<TVRHBA_HelpService>& services,
                                        const String& document, const String& service_name) {
    for (const TVRHBA_HelpService* service : services) {
        const Array<String>& documents = service->DocumentsAvailable.value;
        if (!documents.empty() && documents[0] == document && service->Name.value == service_name) {
            return service;
        }
    }
    return nullptr;
}

} // namespace

Unload_Status TVRHBA_HelpService_Provider::unload() {
    TVR_LOG("TVRHBA_HelpService_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_HelpService_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_HelpService>(handler);
    TVR_LOG("TVRHBA_HelpService_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status TVRHBA_HelpService_Provider::GetHelp(const Class* self,
                                                          const Property<String>& RequestedDocument,
                                                          Property<uint16>& Format,
                                                          const Property<uint16>& RequestedDelivery,
                                                          Property<String>& DocumentInfo,
                                                          Property<uint32>& return_value) {
    TVR_LOG("TVRHBA_HelpService_Provider::GetHelp");
    return call_method(return_value, [&](ProviderAgent& agent) -> uint32 {
        const auto& services = agent.maps.m_TVRHBA_HelpService_map;
        if (services.find(self) < 0) {
            TVR_LOG("Invalid instance of Help Service");
            return METHOD_INVALID_PARAMETER;
        }
        if (RequestedDocument.is_null() || Format.is_null() || RequestedDelivery.is_null()) {
            TVR_LOG("Invalid Requested Document");
            return METHOD_INVALID_PARAMETER;
        }
        const TVRHBA_HelpService* service =
            find_document(services, RequestedDocument.value, self->Name.value);
        if (service == nullptr) {
            return METHOD_FAILED;
        }
        if (Format.value != help_text || RequestedDelivery.value != help_returned) {
            TVR_LOG("Unsupported Delivery options, Use '1' for proper support");
            return METHOD_INVALID_PARAMETER;
        }
        TVR_LOG("TVRHBA_HelpService_Provider::GetHelp");
        const Array<String>& texts = service->DocumentDescriptions.value;
        DocumentInfo.set(texts.empty() ? String() : texts[0]);
        return METHOD_COMPLETED;
    });
}

} // namespace cimple
