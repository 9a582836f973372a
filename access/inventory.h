// What a port's hardware tells of its making, as plain records.
#ifndef TVR_ACCESS_INVENTORY_H
#define TVR_ACCESS_INVENTORY_H

#include "access/rm/rm_api.h"

#include <string>
#include <vector>

namespace cimple {

// One entry of the vital product data.
struct VPDEntry {
    std::string keyword; // of at most 2 bytes
    std::string value;

    // What a keyword that is generally known stands for, as "PART_NUMBER"; else null.
    const char* name() const noexcept;
    bool isProductName() const noexcept { return keyword == "\x82\x82"; }
};

// Appends the port's vital product data, in order, without entries that lack a keyword. The library
// leads from entry to entry; where it would leave the buffer, or lead back in it, the data end.
// Answers its status.
RM_STATUS readVPD(const HBA_WWN& port, std::vector<VPDEntry>& entries);

// Fills the record, zero before, of the port's transceiver. Answers the library's status.
RM_STATUS readTransceiver(const HBA_WWN& port, RM_SFFDATA& transceiver);

// Appends the images in the flash, at most RM_LOADLIST_IMAGES. Answers the library's status, or
// RM_STATUS_ERROR with nothing appended when the library has written more than RM_LOADLIST_ENTRIES.
RM_STATUS readFlashImages(const HBA_WWN& port, std::vector<RM_LOADENTRY>& images);

} // namespace cimple

#endif
