// What an adapter tells about its parts, and what callers can change of it, as data. A part that
// the adapter lacks is empty; its calls answer status 2.
#pragma once

#include "sim/json_reader.h"

#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace tvrsim {

/// One entry of the vital product data. Usual keywords have two characters; those that fill the
/// caller's buffer, like values that do, are handed out without terminator.
struct VpdEntry {
    std::string keyword;
    std::string value;
};

enum class VpdWalk : uint32_t {
    ends = 0,         ///< behind the last entry, with nothing copied
    endless = 1,      ///< the first entry follows the last
    outside = 2,      ///< the last entry leads into memory of the library
    endsWithLast = 3, ///< the last entry comes with the end
};

struct Vpd {
    std::vector<VpdEntry> entries;
    VpdWalk walk = VpdWalk::ends;
    std::optional<std::string> bytes; ///< handed out in place of the entries
};

/// Most images of a flash. All are written, whatever room the caller has: more than
/// RM_LOADLIST_ENTRIES overrun the usual one.
inline constexpr size_t mostImages = RM_LOADLIST_ENTRIES + 200;

/// The load list of the flash.
struct Flash {
    std::vector<RM_LOADENTRY> images;
    std::optional<uint32_t> count; ///< the count word, when it is not the images and one
};

struct DriverParam {
    RM_DRIVERPARAM record = {};
    uint32_t permanent = 0; ///< what current returns to with a restart
};

struct DriverParams {
    std::vector<DriverParam> entries;
    RM_STATUS tooSmallStatus = RM_STATUS_MORE_DATA;
    std::optional<uint32_t> need;  ///< count left with that status
    std::optional<uint32_t> count; ///< count left with status 0
};

struct Dumps {
    std::string directory;
    uint32_t retentionCount = 0;
    std::vector<std::string> files; ///< from the oldest on
    uint64_t written = 0;           ///< dumps so far, for the names of further ones
};

/// The parts that each port has of its own.
struct Inventory {
    std::optional<Vpd> vpd;
    std::optional<RM_SFFDATA> transceiver;
    std::optional<Flash> flash;
    std::optional<RM_PCIREGISTERS> pciRegisters;
    std::optional<DriverParams> driverParameters;
    std::optional<Dumps> dumps;
};

/// Reads the fields of a port that belong to its inventory. Parts that the object names as null go;
/// of others the named fields change. A part that was not there starts with usual values. Throws
/// FormatError.
void readInventory(ObjectReader& port, Inventory& inventory);

/// The same for one list of driver parameters.
void readDriverParams(ObjectReader& owner, std::string_view name,
                      std::optional<DriverParams>& parameters);

/// The text in a character array, up to its terminator or its end.
template <size_t size> std::string_view textIn(const char (&chars)[size]) {
    return {chars, strnlen(chars, size)};
}

} // namespace tvrsim
