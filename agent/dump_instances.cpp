#include "agent/dump_instances.h"

#include "agent/feature.h"

namespace cimple {

namespace {

constexpr uint32 dump_creation_failed = 40008;

constexpr TVR_MethodWrapper::NameLines dump_name_lines{"TVR_Dump::Id2HBAName failed",
                                                       "TVR_Dump::str2HBAName failed"};

template <class C> Ref<C> make_dump_instance(const char* what) {
    return make_or_fail<C>(what, dump_creation_failed);
}

const TVRHBA_DumpService& create_dump_service(Instance_Maps& maps) {
    const CIM_ComputerSystem& system = maps.computer_system();
    auto service = make_dump_instance<TVRHBA_DumpService>("TVRHBA_DumpService");
    service->SystemCreationClassName.set(system.CreationClassName.value);
    service->SystemName.set(system.Name.value);
    service->Name.set("TVRHBA_DumpService");
    service->CreationClassName.set("TVRHBA_DumpService");
    return add_or_fail(maps, std::move(service));
}

// What the adapter tells of its dumps; empty and 0 where it doesn't.
struct Dump_Settings {
    std::string directory;
    uint32 retention_count = 0;
};

Dump_Settings read_dump_settings(const HBA_WWN& port) {
    Dump_Settings settings;
    char directory[RM_DUMP_DIRECTORY_SIZE] = {};
    if (TVR_MethodWrapper::tvrcimGetDumpDirectory(port, directory) == 0) {
        TVR_LOG("TVR_Dump::tvrcimGetDumpDirectory Succesful");
        settings.directory = directory;
    } else {
        TVR_LOG("TVR_Dump::tvrcimGetDumpDirectory failed");
    }
    TVR_LOG("Calling TVR_Dump::tvrcimGetRetentionCount");
    uint32 count = 0;
    const uint32 status = TVR_MethodWrapper::tvrcimGetRetentionCount(port, &count);
    TVR_LOG("returned tvrcimGetRetentionCount call from wrapper");
    if (status == 0) {
        TVR_LOG("TVR_Dump::tvrcimGetRetentionCount Succesful");
        settings.retention_count = count;
    } else {
        TVR_LOG("TVR_Dump::tvrcimGetRetentionCount failed");
    }
    return settings;
}

void create_dump_data(Instance_Maps& maps, const End<TVRHBA_DumpService>& service,
                      const TVRHBA_PortController& controller) {
    auto effect =
        make_dump_instance<TVRHBA_DumpServiceAffectsElement>("TVRHBA_DumpServiceAffectsElement");
    effect->AffectedElement = controller.clone();
    effect->AffectingElement = service;
    add_or_fail(maps, std::move(effect));

    const String& device_id = controller.DeviceID.value;
    const Dump_Settings settings =
        read_dump_settings(name_or_fail(device_id.c_str(), dump_name_lines));
    auto made = make_dump_instance<TVRHBA_DumpData>("TVRHBA_DumpData for fc port");
    made->InstanceID.set("TVRHBA_DumpData::" + std::string(device_id.view()));
    made->ElementName.set(device_id);
    made->RetentionCount.set(settings.retention_count);
    made->DumpDirectory.set(settings.directory);
    const TVRHBA_DumpData& data = add_or_fail(maps, std::move(made));

    auto element = make_dump_instance<TVRHBA_ElementDumpData>("TVRHBA_ElementDumpData for fc port");
    element->ManagedElement = service;
    element->SettingData = data.clone();
    element->IsCurrent.set(1);
    add_or_fail(maps, std::move(element));
}

} // namespace

uint32 FC_CreateDumpClasses(Instance_Maps& maps) {
    TVR_LOG("Entered FC_CreateDumpClasses");
    return create_feature(dump_creation_failed, [&] {
        const End service(create_dump_service(maps));
        auto hosted = make_dump_instance<TVRHBA_HostedDumpService>("TVRHBA_HostedDumpService");
        hosted->Antecedent = maps.computer_system().clone();
        hosted->Dependent = service;
        add_or_fail(maps, std::move(hosted));
        for (const TVRHBA_PortController* controller : maps.m_TVRHBA_PortController_map) {
            create_dump_data(maps, service, *controller);
        }
        return 0;
    });
}

uint32 FC_ClearDumpClasses(Instance_Maps& maps) {
    TVR_LOG("Entered FC_ClearDumpClasses");
    maps.m_TVRHBA_DumpService_map.clear();
    maps.m_TVRHBA_HostedDumpService_map.clear();
    maps.m_TVRHBA_DumpServiceAffectsElement_map.clear();
    maps.m_TVRHBA_DumpData_map.clear();
    maps.m_TVRHBA_ElementDumpData_map.clear();
    return 0;
}

} // namespace cimple
