// The images in the flash of an adapter.
#include "access/bounded_text.h"
#include "access/inventory.h"
#include "access/method_wrapper.h"
#include "agent/creation.h"
#include "agent/port_inventory.h"
#include "agent/software_instances.h"

namespace cimple {

namespace {

constexpr uint16 upgrade_condition = 3;
constexpr uint16 software_status = 6;

Ref<TVRHBA_FlashImageSoftwareIdentity> make_identity(const RM_LOADENTRY& image,
                                                     const FCAdapterAttributes& attributes,
                                                     const std::string& deviceId) {
    const std::string type = toString(image.programType);
    const std::string version = toString(image.version);
    auto identity = make<TVRHBA_FlashImageSoftwareIdentity>();
    identity->ProgramType.set(type);
    identity->Name.set(type);
    identity->ProgramID.set(Array<uint32>{image.programId[0], image.programId[1]});
    identity->VersionString.set(version);
    set_version(*identity, version, "FlashContentsInstance ");
    const String name =
        "FC HBA Flash Image " + type + " v " + version + " " + attributes.Model + " " + deviceId;
    identity->ElementName.set(name);
    identity->InstanceID.set(name);
    identity->Description.set(toString(image.description));
    identity->Manufacturer.set(attributes.Manufacturer);
    identity->Classifications.set(Array<uint16>{SOFTWARE_FIRMWARE});
    identity->ClassificationDescriptions.set(Array<String>{"Firmware Kernel"});
    identity->IsEntity.set(true);
    identity->StartAddress.set(image.startAddress);
    identity->ProgramLength.set(image.programLength);
    identity->Next.set(image.next);
    identity->Previous.set(image.previous);
    identity->IsWakeupParameter.set(image.isWakeupParameter != 0);
    return identity;
}

} // namespace

uint32 CreateFlashContents(Instance_Maps& maps, const std::string& deviceId,
                           const FCAdapterAttributes& attributes,
                           const TVRHBA_PortController& controller) try {
    HBA_WWN name;
    if (!TVR_MethodWrapper::deviceIdToHBAName(name, deviceId)) {
        return 1;
    }
    std::vector<RM_LOADENTRY> images;
    const RM_STATUS status = readFlashImages(name, images);
    if (status != RM_STATUS_OK) {
        TVR_LOG("Failed to retrieve the flash contents. Exited with ErrorCode %d", status);
        return 1;
    }
    TVR_LOG("Generating TVRHBA_FlashImageSoftwareIdentity.");
    const End controller_end(controller);
    for (const RM_LOADENTRY& image : images) {
        const TVRHBA_FlashImageSoftwareIdentity* identity =
            insert(maps.m_TVRHBA_FlashImageSoftwareIdentity_map,
                   make_identity(image, attributes, deviceId),
                   "Insert Failed : m_TVRHBA_FlashImageSoftwareIdentity_map ");
        if (identity == nullptr) {
            return 1;
        }
        auto element = try_make<TVRHBA_ElementFlashImageSoftwareIdentity>();
        if (!element) {
            TVR_LOG("Failed to create ElementFlashImageSoftwareIdentityInst");
            continue;
        }
        element->Antecedent = identity->clone();
        element->Dependent = controller_end;
        element->UpgradeCondition.set(upgrade_condition);
        element->ElementSoftwareStatus.set(Array<uint16>{software_status});
        if (insert(maps.m_TVRHBA_ElementFlashImageSoftwareIdentityInst_map, std::move(element),
                   "Insert Failed : m_TVRHBA_ElementFlashImageSoftwareIdentityInst_map ") ==
            nullptr) {
            return 1;
        }
    }
    TVR_LOG("Success...");
    return 0;
} catch (const std::bad_alloc&) {
    return 1;
}

} // namespace cimple
