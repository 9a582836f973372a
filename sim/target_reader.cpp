// Targets and logical units from JSON, with their copies.
#include "sim/targets.h"

#include "sim/scenario_names.h"

#include <algorithm>
#include <charconv>

namespace tvrsim {

namespace {

constexpr std::string_view numberMark = "{n}";

/// The entry of a logical unit as it stands in the scenario, for units that are made after it.
struct UnitPattern {
    Lun lun;
    uint64_t copies = 1;
    bool hasCopies = false;
    bool hasFcpLun = false;
    bool hasOsLun = false;
};

std::string numbered(std::string text, uint64_t number) {
    for (size_t at = 0; (at = text.find(numberMark, at)) != std::string::npos;) {
        const std::string digits = std::to_string(number);
        text.replace(at, numberMark.size(), digits);
        at += digits.size();
    }
    return text;
}

/// Adds a number to the last bytes, at most four, as one number.
void count(std::span<uint8_t> bytes, uint64_t number) {
    const std::span<uint8_t> last = bytes.last(std::min<size_t>(4, bytes.size()));
    for (size_t i = last.size(); i-- > 0;) {
        number += last[i];
        last[i] = static_cast<uint8_t>(number);
        number >>= 8;
    }
}

void count(std::string& bytes, uint64_t number) {
    count(std::span(reinterpret_cast<uint8_t*>(bytes.data()), bytes.size()), number);
}

/// "inquiry", "readCapacity", or the code of a page as "0x83".
UnitCommand commandOf(const std::string& key, const std::string& path) {
    if (key == "inquiry") {
        return standardInquiryCommand;
    }
    if (key == "readCapacity") {
        return readCapacityCommand;
    }
    uint8_t code = 0;
    const char* const end = key.data() + key.size();
    if (key.size() == 4 && key.starts_with("0x")) {
        const auto parsed = std::from_chars(key.data() + 2, end, code, 16);
        if (parsed.ec == std::errc() && parsed.ptr == end) {
            return code;
        }
    }
    throw FormatError(path, "no such command; there are inquiry, 0x00 to 0xFF and readCapacity");
}

Designator readDesignator(const Json& value, const std::string& path) {
    Designator designator;
    ObjectReader reader(value, path);
    uint32_t type = designator.type;
    uint32_t codeSet = designator.codeSet;
    uint32_t association = designator.association;
    reader.named("type", type, designatorTypeWords);
    const Json* const text = reader.find("text");
    if (text != nullptr) {
        codeSet = 2; // ASCII
        designator.bytes = readText(*text, reader.pathOf("text"), UINT8_MAX);
    }
    reader.named("codeSet", codeSet, codeSetWords);
    reader.named("association", association, associationWords);
    reader.number("protocol", designator.protocol, 0x0F);
    if (const Json* bytes = reader.find("bytes")) {
        if (text != nullptr) {
            throw FormatError(reader.pathOf("bytes"), "there is \"text\" already");
        }
        designator.bytes = readBytes(*bytes, reader.pathOf("bytes"), UINT8_MAX);
    }
    reader.optionalNumber("length", designator.length);
    for (const auto& [name, number, highest] : {std::tuple("type", type, 0x0Fu),
                                                {"codeSet", codeSet, 0x0Fu},
                                                {"association", association, 3u}}) {
        if (number > highest) {
            throw FormatError(reader.pathOf(name), std::to_string(number) +
                                                       " is above the highest value " +
                                                       std::to_string(highest));
        }
    }
    reader.finish();
    designator.type = static_cast<uint8_t>(type);
    designator.codeSet = static_cast<uint8_t>(codeSet);
    designator.association = static_cast<uint8_t>(association);
    return designator;
}

void readDesignators(ObjectReader& reader, std::vector<Designator>& out) {
    const Json* const single = reader.find("identifier");
    if (single != nullptr) {
        Designator designator;
        designator.bytes = readBytes(*single, reader.pathOf("identifier"), UINT8_MAX);
        out.clear();
        if (!designator.bytes.empty()) {
            out.push_back(std::move(designator));
        }
    }
    if (const Json* several = reader.find("identifiers")) {
        if (single != nullptr) {
            throw FormatError(reader.pathOf("identifiers"), "there is \"identifier\" already");
        }
        out.clear();
        forEachElement(*several, reader.pathOf("identifiers"),
                       [&](const Json& each, const std::string& place, size_t) {
                           out.push_back(readDesignator(each, place));
                       });
    }
}

CommandFault readFault(const Json& value, const std::string& path) {
    CommandFault fault;
    fault.sense = std::string("\x70\0\x06\0\0\0\0\x0A\0\0\0\0\x29\0\0\0\0\0", 18); // power on
    ObjectReader reader(value, path);
    reader.number("times", fault.times);
    reader.number("status", fault.status);
    if (const Json* sense = reader.find("sense")) {
        fault.sense = readBytes(*sense, reader.pathOf("sense"), 4096);
    } else if (fault.status != HBA_STATUS_SCSI_CHECK_CONDITION) {
        fault.sense.clear();
    }
    reader.finish();
    return fault;
}

void readCommands(ObjectReader& reader, Lun& lun) {
    if (const Json* raw = reader.find("raw")) {
        const ObjectReader place(*raw, reader.pathOf("raw"));
        for (const auto& field : raw->members()) {
            const std::string path = place.pathOf(field.name);
            auto& answer = lun.raw[commandOf(field.name, path)];
            if (!field.value.is_null()) {
                answer = readBytes(field.value, path, 4096);
            }
        }
    }
    if (const Json* failures = reader.find("failures")) {
        const ObjectReader place(*failures, reader.pathOf("failures"));
        for (const auto& field : failures->members()) {
            const std::string path = place.pathOf(field.name);
            lun.faults[commandOf(field.name, path)] = readFault(field.value, path);
        }
    }
}

UnitPattern readUnit(const Json& value, const std::string& path) {
    UnitPattern pattern;
    Lun& lun = pattern.lun;
    lun.vendor = "TVRSIM";
    lun.product = "VIRTUAL DEVICE";
    lun.revision = "0001";
    ObjectReader reader(value, path);
    reader.number("copies", pattern.copies, mostUnits);
    pattern.hasCopies = reader.find("copies") != nullptr;
    if (pattern.hasCopies) {
        lun.osDeviceName = "/dev/tvrsim{n}";
        lun.serialNumber = "TVRSIM{n}";
        lun.designators.resize(1);
        lun.designators[0].bytes =
            std::string("\x60\x02\x54\x56\x78\0\0\0\0\0\0\0\0\0\0\0", 16); // NAA 6
    }
    reader.number("fcpLun", lun.fcpLun);
    pattern.hasFcpLun = reader.find("fcpLun") != nullptr;
    reader.number("osLun", lun.osLun);
    pattern.hasOsLun = reader.find("osLun") != nullptr;
    reader.text("osDeviceName", lun.osDeviceName, 256);
    reader.named("type", lun.peripheralType, peripheralWords);
    if (lun.peripheralType > 0x1F) {
        throw FormatError(reader.pathOf("type"), "a peripheral type is at most 31");
    }
    reader.text("vendor", lun.vendor, 8);
    reader.text("product", lun.product, 16);
    reader.text("revision", lun.revision, 4);
    reader.text("serialNumber", lun.serialNumber, 1024);
    readDesignators(reader, lun.designators);
    reader.number("blockSize", lun.blockSize);
    reader.number("blocks", lun.blocks);
    readCommands(reader, lun);
    reader.finish();
    return pattern;
}

/// One unit of an entry. The index counts its copies in one target; the number, where names are to
/// be generated, counts them over all copies of the target.
Lun unitOf(const UnitPattern& pattern, size_t position, uint64_t index,
           std::optional<uint64_t> number) {
    Lun lun = pattern.lun;
    lun.fcpLun = pattern.hasFcpLun ? lun.fcpLun + index : position;
    lun.osLun = static_cast<uint32_t>(pattern.hasOsLun ? lun.osLun + index : position);
    if (number) {
        lun.osDeviceName = numbered(std::move(lun.osDeviceName), *number);
        lun.serialNumber = numbered(std::move(lun.serialNumber), *number);
        for (Designator& designator : lun.designators) {
            if (designator.bytes.find(numberMark) != std::string::npos) {
                designator.bytes = numbered(std::move(designator.bytes), *number);
            } else {
                count(designator.bytes, *number);
            }
        }
    }
    return lun;
}

/// The entry of a remote port, for those that are made after it.
struct TargetPattern {
    Target target;
    uint64_t copies = 1;
    bool hasCopies = false;
    std::vector<UnitPattern> units;
    size_t unitCount = 0; ///< of each copy
};

TargetPattern readTarget(const Json& value, const std::string& path, size_t index) {
    TargetPattern pattern;
    Target& target = pattern.target;
    target.nodeWwn = HBA_WWN{{0x50, 0x02, 0x54, 0x56, 0x80, 0, 0, 0}};
    target.portWwn = HBA_WWN{{0x50, 0x02, 0x54, 0x56, 0x90, 0, 0, 0}};
    count(target.nodeWwn.wwn, index);
    count(target.portWwn.wwn, index);
    target.fcId = static_cast<uint32_t>(0x0E0000 + index);
    target.scsiTarget = static_cast<uint32_t>(index);
    ObjectReader reader(value, path);
    reader.number("copies", pattern.copies, mostUnits);
    pattern.hasCopies = reader.find("copies") != nullptr;
    reader.wwn("nodeWWN", target.nodeWwn);
    reader.wwn("portWWN", target.portWwn);
    reader.number("fcId", target.fcId, 0xFFFFFF);
    reader.number("scsiBus", target.scsiBus);
    reader.number("scsiTarget", target.scsiTarget);
    if (const Json* luns = reader.find("luns")) {
        forEachElement(*luns, reader.pathOf("luns"),
                       [&](const Json& each, const std::string& place, size_t) {
                           pattern.units.push_back(readUnit(each, place));
                           pattern.unitCount += pattern.units.back().copies;
                       });
    }
    reader.finish();
    return pattern;
}

Target targetOf(const TargetPattern& pattern, uint64_t copy) {
    Target target = pattern.target;
    count(target.nodeWwn.wwn, copy);
    count(target.portWwn.wwn, copy);
    target.fcId = static_cast<uint32_t>((target.fcId + copy) & 0xFFFFFF);
    target.scsiTarget += static_cast<uint32_t>(copy);
    target.luns.reserve(pattern.unitCount);
    for (const UnitPattern& unit : pattern.units) {
        for (uint64_t index = 0; index < unit.copies; ++index) {
            std::optional<uint64_t> number;
            if (pattern.hasCopies || unit.hasCopies) {
                number = copy * unit.copies + index;
            }
            target.luns.push_back(unitOf(unit, target.luns.size(), index, number));
        }
    }
    return target;
}

} // namespace

std::shared_ptr<const TargetTable> readTargets(const Json& array, const std::string& path) {
    std::vector<Target> targets;
    size_t units = 0;
    forEachElement(array, path, [&](const Json& each, const std::string& place, size_t) {
        const TargetPattern pattern = readTarget(each, place, targets.size());
        units += pattern.unitCount * pattern.copies;
        if (targets.size() + pattern.copies > mostUnits || units > mostUnits) {
            throw FormatError(place, "more than " + std::to_string(mostUnits) +
                                         " targets or logical units behind one port");
        }
        for (uint64_t copy = 0; copy < pattern.copies; ++copy) {
            targets.push_back(targetOf(pattern, copy));
        }
    });
    return std::make_shared<const TargetTable>(std::move(targets));
}

void readMappingFaults(const Json& value, const std::string& path, MappingFaults& faults) {
    if (value.is_null()) {
        faults = {};
        return;
    }
    ObjectReader reader(value, path);
    reader.number("staleTimes", faults.staleTimes);
    reader.number("moreDataTimes", faults.moreDataTimes);
    reader.optionalNumber("need", faults.need);
    reader.optionalNumber("rows", faults.rows);
    reader.finish();
}

} // namespace tvrsim
