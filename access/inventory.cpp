#include "access/inventory.h"

#include "access/bounded_text.h"
#include "access/entry_points.h"
#include "common/logger.h"

#include <algorithm>
#include <array>
#include <cstring>
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

// A load list with a guard behind it, which takes what a library writes too much and shows that it
// did.
struct LoadListBlock {
    using Guard = std::array<unsigned char, 256 * sizeof(RM_LOADENTRY)>;

    RM_LOADLIST list;
    Guard guard;

    // Images that the library doesn't write read as zero; nobody reads what is behind them.
    void prepare() noexcept {
        list.count = 0;
        std::memset(list.entry, 0, RM_LOADLIST_IMAGES * sizeof(RM_LOADENTRY));
        guard = untouched;
    }
    bool isOverrun() const noexcept { return guard != untouched; }

private:
    static constexpr Guard untouched = [] {
        Guard bytes{};
        bytes.fill(0xA5);
        return bytes;
    }();
};

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
        // The last entry comes with the null cursor or in a call before it.
        if (keyword[0] != '\0') {
            entries.push_back(
                {{keyword, strnlen(keyword, keywordLength)}, {value, strnlen(value, valueLength)}});
        }
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
    const auto block = std::make_unique_for_overwrite<LoadListBlock>();
    block->prepare();
    RM_LOADLIST& list = block->list;
    const RM_STATUS status = rm::LRM_DiagGetLoadListParams(port, &list);
    if (block->isOverrun()) {
        TVR_LOG("The list of flash images is longer than %d entries, it is not used",
                static_cast<int>(RM_LOADLIST_ENTRIES));
        return RM_STATUS_ERROR;
    }
    if (status == RM_STATUS_OK && list.count > 0) {
        images.insert(images.end(), list.entry,
                      list.entry + std::min(list.count - 1, RM_LOADLIST_IMAGES));
    }
    return status;
}

} // namespace cimple
