#include "sim/inventory.h"

#include "sim/part_reader.h"
#include "sim/scenario_names.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace tvrsim {

namespace {

constexpr size_t mostEntries = 65536;

template <size_t size> void setChars(char (&out)[size], std::string_view text) {
    std::fill_n(out, size, '\0');
    std::copy_n(text.begin(), std::min(text.size(), size), out);
}

/// The bytes of a record; fields that are given beside them are written over them.
template <class Record> void readRecordBytes(ObjectReader& reader, Record& record) {
    if (reader.find("bytes") != nullptr) {
        std::array<uint8_t, sizeof record> bytes;
        reader.bytes("bytes", bytes);
        std::memcpy(&record, bytes.data(), sizeof record);
    }
}

/// Reads an array of which each element can stand for several. read(reader, copy) gives one.
template <class Element, class Read>
void readCopies(ObjectReader& owner, std::string_view name, std::vector<Element>& out, size_t most,
                Read read) {
    const Json* const array = owner.find(name);
    if (array == nullptr) {
        return;
    }
    out.clear();
    forEachElement(*array, owner.pathOf(name),
                   [&](const Json& each, const std::string& place, size_t) {
                       size_t copies = 1;
                       ObjectReader(each, place).number("copies", copies, most);
                       if (out.size() + copies > most) {
                           throw FormatError(place, "more than " + std::to_string(most));
                       }
                       for (size_t copy = 0; copy < copies; ++copy) {
                           ObjectReader reader(each, place);
                           reader.find("copies");
                           out.push_back(read(reader, copy));
                           reader.finish();
                       }
                   });
}

// ---- vital product data ------------------------------------------------------------------------

Vpd usualVpd() {
    Vpd vpd;
    vpd.entries = {
        {"\x82\x82", "Tavrin TVR-F1601 16Gb 1-port Fibre Channel adapter"},
        {"PN", "TVR-F1601"},
        {"SN", "TV00000000"},
        {"MN", "5456"},
        {"EC", "A3"},
        {"V0", "TVR-F1601"},
        {"V1", "Tavrin TVR-F1601 16Gb 1-port Fibre Channel adapter"},
    };
    return vpd;
}

/// The word "product", up to four characters, or hexadecimal bytes.
std::string readKeyword(const Json& value, const std::string& path) {
    if (value.is_string() && value.as_string() == "product") {
        return "\x82\x82";
    }
    return readTextOrBytes(value, path, 4);
}

void readVpd(ObjectReader& reader, Vpd& vpd) {
    if (const Json* entries = reader.find("entries")) {
        vpd.entries.clear();
        forEachElement(*entries, reader.pathOf("entries"),
                       [&](const Json& each, const std::string& place, size_t) {
                           if (vpd.entries.size() >= mostEntries) {
                               throw FormatError(place, "too many entries");
                           }
                           ObjectReader entry(each, place);
                           VpdEntry& read = vpd.entries.emplace_back();
                           if (const Json* keyword = entry.find("keyword")) {
                               read.keyword = readKeyword(*keyword, entry.pathOf("keyword"));
                           }
                           if (const Json* value = entry.find("value")) {
                               read.value = readTextOrBytes(*value, entry.pathOf("value"), 1024);
                           }
                           entry.finish();
                       });
    }
    reader.oneOf("walk", vpd.walk, vpdWalkWords);
    if (const Json* bytes = reader.find("bytes")) {
        vpd.bytes.reset();
        if (!bytes->is_null()) {
            vpd.bytes = readBytes(*bytes, reader.pathOf("bytes"), 4096);
        }
    }
}

// ---- transceiver -------------------------------------------------------------------------------

RM_SFFDATA usualTransceiver() {
    RM_SFFDATA data = {};
    data.hasIdentity = 1;
    data.hasDiagnostics = 1;
    data.identifier = 0x03; // SFP
    data.extendedIdentifier = 0x04;
    data.connector = 0x07; // LC
    data.wavelength = 850;
    data.temperature = 41.5F;
    data.vcc = 3.31F;
    data.txBiasCurrent = 7.25F;
    data.txPower = 0.58F;
    data.rxPower = 0.47F;
    std::memcpy(data.vendorOui, "\x02\x54\x56", sizeof data.vendorOui);
    setChars(data.vendorName, "TVOPTICS");
    setChars(data.vendorPartNumber, "TVO-16G-SW");
    setChars(data.vendorRevision, "B2");
    setChars(data.vendorSerialNumber, "TVO00001");
    setChars(data.dateCode, "130517");
    return data;
}

void readTransceiver(ObjectReader& reader, RM_SFFDATA& data) {
    readRecordBytes(reader, data);
    for (const auto& [name, flag] :
         {std::pair("hasIdentity", &data.hasIdentity), {"hasDiagnostics", &data.hasDiagnostics}}) {
        if (const Json* value = reader.find(name)) {
            *flag = readFlag(*value, reader.pathOf(name)) ? 1 : 0;
        }
    }
    reader.number("identifier", data.identifier);
    reader.number("extendedIdentifier", data.extendedIdentifier);
    reader.number("connector", data.connector);
    reader.number("wavelength", data.wavelength);
    reader.real("temperature", data.temperature);
    reader.real("vcc", data.vcc);
    reader.real("txBiasCurrent", data.txBiasCurrent);
    reader.real("txPower", data.txPower);
    reader.real("rxPower", data.rxPower);
    reader.bytes("vendorOui", data.vendorOui);
    reader.chars("vendorName", data.vendorName);
    reader.chars("vendorPartNumber", data.vendorPartNumber);
    reader.chars("vendorRevision", data.vendorRevision);
    reader.chars("vendorSerialNumber", data.vendorSerialNumber);
    reader.chars("dateCode", data.dateCode);
}

// ---- flash images ------------------------------------------------------------------------------

RM_LOADENTRY imageOf(uint32_t start, uint32_t length, uint32_t id, std::string_view type,
                     std::string_view version, std::string_view description) {
    RM_LOADENTRY image = {};
    image.startAddress = start;
    image.programLength = length;
    image.programId[0] = id;
    image.programId[1] = 0x5456;
    setChars(image.programType, type);
    setChars(image.version, version);
    setChars(image.description, description);
    return image;
}

Flash usualFlash() {
    Flash flash;
    flash.images = {
        imageOf(0x00020000, 0x00040000, 0x0B, "Kernel", "1.40a3", "Flash kernel"),
        imageOf(0x00060000, 0x00180000, 0x0C, "Firmware", "2.82a4", "Operational firmware"),
        imageOf(0x00200000, 0x00080000, 0x0D, "Boot code", "5.12a6", "Universal boot"),
    };
    flash.images[1].isWakeupParameter = 1;
    return flash;
}

RM_LOADENTRY readImage(ObjectReader& reader) {
    RM_LOADENTRY image = {};
    readRecordBytes(reader, image);
    reader.number("next", image.next);
    reader.number("previous", image.previous);
    reader.number("startAddress", image.startAddress);
    reader.number("programLength", image.programLength);
    if (const Json* id = reader.find("programId")) {
        forEachElement(*id, reader.pathOf("programId"),
                       [&](const Json& each, const std::string& place, size_t i) {
                           if (i >= std::size(image.programId)) {
                               throw FormatError(place, "a program id has two numbers");
                           }
                           image.programId[i] =
                               static_cast<uint32_t>(readNumber(each, place, UINT32_MAX));
                       });
    }
    reader.chars("description", image.description);
    if (const Json* wakeup = reader.find("isWakeupParameter")) {
        image.isWakeupParameter = readFlag(*wakeup, reader.pathOf("isWakeupParameter")) ? 1 : 0;
    }
    reader.chars("programType", image.programType);
    reader.chars("version", image.version);
    return image;
}

void readFlash(ObjectReader& reader, Flash& flash) {
    readCopies(reader, "images", flash.images, mostImages,
               [](ObjectReader& image, size_t) { return readImage(image); });
    reader.optionalNumber("count", flash.count);
}

// ---- PCI registers -----------------------------------------------------------------------------

/// A field of the type 0 configuration header.
struct PciField {
    const char* name;
    uint8_t offset;
    uint8_t width;
};

constexpr std::array pciFields = {
    PciField{"vendorId", 0x00, 2},
    PciField{"deviceId", 0x02, 2},
    PciField{"command", 0x04, 2},
    PciField{"status", 0x06, 2},
    PciField{"revisionId", 0x08, 1},
    PciField{"progIf", 0x09, 1},
    PciField{"subClass", 0x0A, 1},
    PciField{"baseClass", 0x0B, 1},
    PciField{"cacheLineSize", 0x0C, 1},
    PciField{"latencyTimer", 0x0D, 1},
    PciField{"headerType", 0x0E, 1},
    PciField{"builtInSelfTest", 0x0F, 1},
    PciField{"baseAddress0", 0x10, 4},
    PciField{"baseAddress1", 0x14, 4},
    PciField{"baseAddress2", 0x18, 4},
    PciField{"baseAddress3", 0x1C, 4},
    PciField{"baseAddress4", 0x20, 4},
    PciField{"baseAddress5", 0x24, 4},
    PciField{"cis", 0x28, 4},
    PciField{"subVendorId", 0x2C, 2},
    PciField{"subsystemId", 0x2E, 2},
    PciField{"expansionRomBaseAddress", 0x30, 4},
    PciField{"capabilitiesPointer", 0x34, 1},
    PciField{"interruptLine", 0x3C, 1},
    PciField{"interruptPin", 0x3D, 1},
    PciField{"minimumGrant", 0x3E, 1},
    PciField{"maximumLatency", 0x3F, 1},
};

void writeField(RM_PCIREGISTERS& registers, const PciField& field, uint64_t number) {
    for (size_t i = 0; i < field.width; ++i, number >>= 8) {
        registers.config[field.offset + i] = static_cast<uint8_t>(number);
    }
}

void readPciRegisters(ObjectReader& reader, RM_PCIREGISTERS& registers) {
    readRecordBytes(reader, registers);
    for (const PciField& field : pciFields) {
        if (const Json* value = reader.find(field.name)) {
            writeField(registers, field,
                       readNumber(*value, reader.pathOf(field.name),
                                  UINT32_MAX >> (32 - 8 * field.width)));
        }
    }
}

RM_PCIREGISTERS usualPciRegisters() {
    const std::map<std::string_view, uint32_t> values = {
        {"vendorId", 0x5456},          {"deviceId", 0x0160},
        {"command", 0x0546},           {"status", 0x0010},
        {"revisionId", 0x30},          {"subClass", 0x04}, // Fibre Channel
        {"baseClass", 0x0C},           {"cacheLineSize", 0x10},
        {"headerType", 0x80},          {"baseAddress0", 0xDF2F0004},
        {"baseAddress2", 0xDF2E0004},  {"subVendorId", 0x5456},
        {"subsystemId", 0x1601},       {"expansionRomBaseAddress", 0xDF280000},
        {"capabilitiesPointer", 0x58}, {"interruptLine", 0x0B},
        {"interruptPin", 0x01},
    };
    RM_PCIREGISTERS registers = {};
    for (const PciField& field : pciFields) {
        if (const auto value = values.find(field.name); value != values.end()) {
            writeField(registers, field, value->second);
        }
    }
    return registers;
}

// ---- driver parameters -------------------------------------------------------------------------

DriverParam parameterOf(std::string_view name, uint32_t low, uint32_t high, uint32_t value,
                        std::string_view help) {
    DriverParam parameter;
    setChars(parameter.record.name, name);
    setChars(parameter.record.help, help);
    parameter.record.low = low;
    parameter.record.high = high;
    parameter.record.defaultValue = value;
    parameter.record.current = value;
    parameter.record.exportFlag = 1;
    parameter.record.dynamic = 1;
    parameter.permanent = value;
    return parameter;
}

DriverParams usualParameters() {
    DriverParams parameters;
    parameters.entries = {
        parameterOf("trace-mask", 0, 0xFFFF, 0, "Bit mask of traced events"),
        parameterOf("unit-depth", 1, 512, 32, "Commands in flight for one logical unit"),
        parameterOf("line-rate", 0, 16, 0, "Line rate in Gb/s, 0 to negotiate"),
        parameterOf("attach-mode", 0, 1, 1, "0 loop, 1 point to point"),
        parameterOf("lost-port-hold", 1, 255, 30, "Seconds that commands wait for a lost port"),
    };
    return parameters;
}

DriverParam readParameter(ObjectReader& reader, size_t copy) {
    DriverParam parameter;
    RM_DRIVERPARAM& record = parameter.record;
    record.high = UINT32_MAX;
    record.exportFlag = 1;
    readRecordBytes(reader, record);
    reader.chars("name", record.name);
    if (const Json* copies = reader.find("copies"); copies != nullptr) {
        std::string name(textIn(record.name));
        name += std::to_string(copy);
        if (name.size() > sizeof record.name) {
            throw FormatError(reader.pathOf("name"), "with its number the name is too long");
        }
        setChars(record.name, name);
    }
    reader.number("low", record.low);
    reader.number("high", record.high);
    reader.number("default", record.defaultValue);
    if (reader.find("bytes") == nullptr) {
        record.current = record.defaultValue;
    }
    reader.number("current", record.current);
    reader.number("exportFlag", record.exportFlag);
    reader.number("dynamic", record.dynamic);
    reader.chars("help", record.help);
    parameter.permanent = record.current;
    return parameter;
}

void readParameterList(ObjectReader& reader, DriverParams& parameters) {
    readCopies(reader, "entries", parameters.entries, mostEntries, readParameter);
    reader.number("tooSmallStatus", parameters.tooSmallStatus);
    reader.optionalNumber("need", parameters.need);
    reader.optionalNumber("count", parameters.count);
}

// ---- dumps -------------------------------------------------------------------------------------

Dumps usualDumps() {
    Dumps dumps;
    dumps.directory = "/var/opt/tavrin/dump";
    dumps.retentionCount = 5;
    return dumps;
}

void readDumps(ObjectReader& reader, Dumps& dumps) {
    reader.text("directory", dumps.directory, RM_DUMP_DIRECTORY_SIZE);
    reader.number("retentionCount", dumps.retentionCount);
    if (const Json* files = reader.find("files")) {
        dumps.files.clear();
        forEachElement(*files, reader.pathOf("files"),
                       [&](const Json& each, const std::string& place, size_t) {
                           if (dumps.files.size() >= mostEntries) {
                               throw FormatError(place, "too many files");
                           }
                           dumps.files.push_back(readTextOrBytes(each, place, 256));
                       });
        dumps.written = dumps.files.size();
    }
}

} // namespace

void readDriverParams(ObjectReader& owner, std::string_view name,
                      std::optional<DriverParams>& parameters) {
    readPart(owner, name, parameters, usualParameters, readParameterList);
}

void readInventory(ObjectReader& port, Inventory& inventory) {
    readPart(port, "vpd", inventory.vpd, usualVpd, readVpd);
    readPart(port, "transceiver", inventory.transceiver, usualTransceiver, readTransceiver);
    readPart(port, "flash", inventory.flash, usualFlash, readFlash);
    readPart(port, "pciRegisters", inventory.pciRegisters, usualPciRegisters, readPciRegisters);
    readDriverParams(port, "driverParameters", inventory.driverParameters);
    readPart(port, "dumps", inventory.dumps, usualDumps, readDumps);
}

} // namespace tvrsim
