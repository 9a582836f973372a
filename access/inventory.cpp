#include "access/inventory.h"

#include "access/bounded_text.h"
#include "access/entry_points.h"

#include <algorithm>
#include <functional>
#include <memory>

namespace cimple {

namespace {

struct Keyword {
    const char* keyword;
    const char* name;
};
constexpr Keyword keywords[] = {
    {"CP", "EXT_CAPABILITY"}, {"EC", "EC_LEVEL"},        {"FG", "FABRIC_GEOGRAPHY"},
    {"LC", "LOCATION"},       {"MN", "MANUFACTURER_ID"}, {"PG", "PCI_GEOGRAPHY"},
    {"PN", "PART_NUMBER"},    {"SN", "SERIAL_NUMBER"},
};
constexpr std::size_t keywordLength = 2;
constexpr std::size_t valueLength = 255;
// Zeros behind the vital product data, for a library that reads the last entry in them to an end
// that lies outside.
constexpr std::size_t vpdSlack = 512;

} // namespace

const char* VPDEntry::name() const noexcept {
    for (const Keyword& known : keywords) {
        if (keyword == known.keyword) {
            return known.name;
        }
    }
    return nullptr;
}

RM_STATUS readVPD(const HBA_WWN& port, std::vector<VPDEntry>& entries) {
    alignas(8) char buffer[RM_VPD_SIZE + vpdSlack] = {};
    uint32_t size = RM_VPD_SIZE;
    const RM_STATUS status = rm::LRM_GetVPD(port, buffer, &size);
    if (status != RM_STATUS_OK) {
        return status;
    }
    const std::less<const char*> before;
    for (char* cursor = buffer; cursor != nullptr;) {
        char keyword[4] = {};
        char value[valueLength + 1] = {};
        char* const next = static_cast<char*>(
            rm::RM_GetNextVpdEntry(cursor, keyword, sizeof keyword, value, sizeof value));
        if (next == nullptr) {
            break;
        }
        entries.push_back(
            {{keyword, strnlen(keyword, keywordLength)}, {value, strnlen(value, valueLength)}});
        const bool leadsOn = before(cursor, next) && before(next, buffer + RM_VPD_SIZE);
        cursor = leadsOn ? next : nullptr;
    }
    return status;
}

RM_STATUS readTransceiver(const HBA_WWN& port, RM_SFFDATA& transceiver) {
    transceiver = {};
    uint32_t size = sizeof transceiver;
    return rm::LRM_GetSffData(port, &transceiver, &size);
}

RM_STATUS readFlashImages(const HBA_WWN& port, std::vector<RM_LOADENTRY>& images) {
    const auto list = std::make_unique<RM_LOADLIST>();
    const RM_STATUS status = rm::LRM_DiagGetLoadListParams(port, list.get());
    if (status == RM_STATUS_OK && list->count > 0) {
        images.insert(images.end(), list->entry,
                      list->entry + std::min(list->count - 1, RM_LOADLIST_IMAGES));
    }
    return status;
}

} // namespace cimple
