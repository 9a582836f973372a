// Vital product data of a port.
#include "access/inventory.h"
#include "access/method_wrapper.h"
#include "agent/creation.h"
#include "agent/port_inventory.h"

namespace cimple {

namespace {

using Text = Property<String> TVRHBA_VitalProductData::*;

struct Field {
    const char* keyword;
    Text property;
};
constexpr Field known_fields[] = {
    {"SN", &TVRHBA_VitalProductData::VPDSerialNumber},
    {"PN", &TVRHBA_VitalProductData::PartNumber},
};
constexpr Field vendor_fields[] = {
    {"V0", &TVRHBA_VitalProductData::FieldV0}, {"V1", &TVRHBA_VitalProductData::FieldV1},
    {"V2", &TVRHBA_VitalProductData::FieldV2}, {"V3", &TVRHBA_VitalProductData::FieldV3},
    {"V4", &TVRHBA_VitalProductData::FieldV4}, {"V5", &TVRHBA_VitalProductData::FieldV5},
    {"VB", &TVRHBA_VitalProductData::FieldVB},
};

// Sets the property that the entry's keyword has. False if it has none.
template <std::size_t count>
bool set_field(TVRHBA_VitalProductData& data, const VPDEntry& entry, const Field (&fields)[count]) {
    for (const Field& field : fields) {
        if (entry.keyword == field.keyword) {
            (data.*field.property).set(entry.value);
            return true;
        }
    }
    return false;
}

void add_entry(TVRHBA_VitalProductData& data, const VPDEntry& entry) {
    if (entry.name() != nullptr) {
        TVR_LOG("VPD:%s", entry.keyword.c_str());
        TVR_LOG("%s", entry.value.c_str());
        set_field(data, entry, known_fields);
        return;
    }
    if (entry.isProductName()) {
        data.ProductName.set(entry.value);
        return;
    }
    TVR_LOG("%s--%s", entry.keyword.c_str(), entry.value.c_str());
    if (!set_field(data, entry, vendor_fields)) {
        data.VPDTagValues.value.append(entry.value);
        data.VPDTags.value.append(entry.keyword);
        data.VPDTagValues.null = 0;
        data.VPDTags.null = 0;
    }
}

std::string description(const VPDEntry& entry) {
    if (entry.isProductName()) {
        return "PRODUCT_NAME";
    }
    return entry.name() != nullptr ? entry.name() : entry.keyword;
}

// Descriptions and values belong together; memory may have ended between the two.
void keep_in_step(Array<String>& descriptions, Array<String>& values) {
    if (descriptions.size() > values.size()) {
        descriptions.remove(values.size());
    }
}

} // namespace

uint32 FillPortVPD(TVRHBA_FCPort& port, const std::string& deviceId) try {
    HBA_WWN name;
    if (!TVR_MethodWrapper::deviceIdToHBAName(name, deviceId)) {
        return 1;
    }
    std::vector<VPDEntry> entries;
    const RM_STATUS status = readVPD(name, entries);
    if (status != RM_STATUS_OK) {
        TVR_LOG("ERROR: RM_GetVPD call failed, Returned with error code : %d", status);
        return status;
    }
    for (const VPDEntry& entry : entries) {
        const std::string text = description(entry);
        TVR_LOG("VPD:%s", text.c_str());
        TVR_LOG("%s", entry.value.c_str());
        port.IdentifyingDescriptions.value.append("VPD:" + text);
        port.OtherIdentifyingInfo.value.append(entry.value);
        port.IdentifyingDescriptions.null = 0;
        port.OtherIdentifyingInfo.null = 0;
    }
    return 0;
} catch (const std::bad_alloc&) {
    keep_in_step(port.IdentifyingDescriptions.value, port.OtherIdentifyingInfo.value);
    return 1;
}

uint32 CreateVPD(Instance_Maps& maps, const std::string& deviceId) try {
    HBA_WWN name;
    if (!TVR_MethodWrapper::deviceIdToHBAName(name, deviceId)) {
        return 1;
    }
    TVR_LOG("Inside CreateVPD");
    std::vector<VPDEntry> entries;
    const RM_STATUS status = readVPD(name, entries);
    if (status != RM_STATUS_OK) {
        TVR_LOG("ERROR: RM_GetVPD call failed : %d", status);
        return status;
    }
    auto data = try_make<TVRHBA_VitalProductData>();
    if (!data) {
        return status;
    }
    data->InstanceID.set(deviceId);
    for (const VPDEntry& entry : entries) {
        add_entry(*data, entry);
    }
    return add(maps, std::move(data)) != nullptr ? 0 : 1;
} catch (const std::bad_alloc&) {
    return 1;
}

} // namespace cimple
