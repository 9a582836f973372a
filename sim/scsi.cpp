#include "sim/scsi.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>

namespace tvrsim {

namespace {

constexpr uint32_t pageSupported = 0x00;
constexpr uint32_t pageSerialNumber = 0x80;
constexpr uint32_t pageIdentification = 0x83;

/// Additional sense codes, all with the sense key "illegal request".
constexpr uint8_t invalidCommand = 0x20;
constexpr uint8_t invalidField = 0x24;
constexpr uint8_t unitNotSupported = 0x25;

ScsiAnswer checkCondition(uint8_t additionalSense) {
    std::string sense(18, '\0');
    sense[0] = 0x70; // current error, fixed format
    sense[2] = 0x05; // illegal request
    sense[7] = 10;   // bytes behind this one
    sense[12] = static_cast<char>(additionalSense);
    return {HBA_STATUS_SCSI_CHECK_CONDITION, {}, std::move(sense)};
}

void putPadded(std::string& data, size_t at, size_t width, std::string_view text) {
    std::fill_n(data.begin() + static_cast<std::ptrdiff_t>(at), width, ' ');
    text.copy(data.data() + at, width);
}

void putBigEndian(std::string& data, uint64_t value, size_t width) {
    for (size_t i = width; i-- > 0;) {
        data += static_cast<char>(value >> (8 * i));
    }
}

ScsiAnswer page(const Lun& lun, uint32_t code, const std::string& content) {
    std::string data;
    data += static_cast<char>(lun.peripheralType);
    data += static_cast<char>(code);
    putBigEndian(data, content.size(), 2);
    return {HBA_STATUS_OK, data + content, {}};
}

/// The codes in ascending order. A page that is given as bytes is there, one given as null is not.
std::string supportedPages(const Lun& lun) {
    std::set<uint8_t> pages = {pageSupported};
    if (!lun.serialNumber.empty()) {
        pages.insert(pageSerialNumber);
    }
    if (!lun.designators.empty()) {
        pages.insert(pageIdentification);
    }
    for (const auto& [command, answer] : lun.raw) {
        const auto code = static_cast<uint8_t>(command);
        if (command <= UINT8_MAX && answer) {
            pages.insert(code);
        } else if (command <= UINT8_MAX) {
            pages.erase(code);
        }
    }
    return {pages.begin(), pages.end()};
}

std::string identificationDescriptors(const Lun& lun) {
    std::string descriptors;
    for (const Designator& each : lun.designators) {
        descriptors += static_cast<char>(each.protocol << 4 | each.codeSet);
        descriptors += static_cast<char>(each.association << 4 | each.type);
        descriptors += '\0';
        descriptors +=
            static_cast<char>(each.length.value_or(static_cast<uint8_t>(each.bytes.size())));
        descriptors += each.bytes;
    }
    return descriptors;
}

/// The answer of a command that the scenario gives as bytes, or as null.
std::optional<ScsiAnswer> givenAnswer(const Lun& lun, UnitCommand command, uint8_t refusal) {
    const auto given = lun.raw.find(command);
    if (given == lun.raw.end()) {
        return std::nullopt;
    }
    return given->second ? ScsiAnswer{HBA_STATUS_OK, *given->second, {}} : checkCondition(refusal);
}

ScsiAnswer standardInquiry(const Lun& lun) {
    std::string data(36, '\0');
    data[0] = static_cast<char>(lun.peripheralType);
    data[2] = 0x05; // version SPC-3
    data[3] = 0x02; // response data format
    data[4] = static_cast<char>(data.size() - 5);
    putPadded(data, 8, 8, lun.vendor);
    putPadded(data, 16, 16, lun.product);
    putPadded(data, 32, 4, lun.revision);
    return {HBA_STATUS_OK, std::move(data), {}};
}

} // namespace

std::optional<UnitCommand> inquiryCommand(bool evpd, uint32_t page) {
    if (!evpd) {
        return page == 0 ? std::optional(standardInquiryCommand) : std::nullopt;
    }
    return page <= UINT8_MAX ? std::optional(static_cast<UnitCommand>(page)) : std::nullopt;
}

ScsiAnswer inquiry(const Lun& lun, bool evpd, uint32_t code) {
    const std::optional<UnitCommand> command = inquiryCommand(evpd, code);
    if (!command) {
        return checkCondition(invalidField);
    }
    if (auto given = givenAnswer(lun, *command, invalidField)) {
        return *std::move(given);
    }
    if (*command == standardInquiryCommand) {
        return standardInquiry(lun);
    }
    const std::string pages = supportedPages(lun);
    if (pages.find(static_cast<char>(code)) == std::string::npos) {
        return checkCondition(invalidField);
    }
    switch (code) {
    case pageSerialNumber:
        return page(lun, code, lun.serialNumber);
    case pageIdentification:
        return page(lun, code, identificationDescriptors(lun));
    default:
        return page(lun, code, pages);
    }
}

ScsiAnswer readCapacity(const Lun& lun) {
    if (auto given = givenAnswer(lun, readCapacityCommand, invalidCommand)) {
        return *std::move(given);
    }
    constexpr std::array<uint32_t, 5> blockTypes = {0x00, 0x04, 0x05, 0x07, 0x0E};
    if (lun.blocks == 0 &&
        std::find(blockTypes.begin(), blockTypes.end(), lun.peripheralType) == blockTypes.end()) {
        return checkCondition(invalidCommand);
    }
    const uint64_t lastBlock = lun.blocks == 0 ? 0 : lun.blocks - 1;
    ScsiAnswer answer;
    putBigEndian(answer.data, std::min<uint64_t>(lastBlock, UINT32_MAX), 4);
    putBigEndian(answer.data, lun.blockSize, 4);
    return answer;
}

std::optional<ScsiAnswer> failureOf(const Lun& lun, UnitCommand command, CommandCounts& counts) {
    const auto fault = lun.faults.find(command);
    if (fault == lun.faults.end()) {
        return std::nullopt;
    }
    uint64_t& count = counts[{&lun, command}];
    if (count >= fault->second.times) {
        return std::nullopt;
    }
    ++count;
    return ScsiAnswer{fault->second.status, {}, fault->second.sense};
}

ScsiAnswer noSuchUnit() {
    return checkCondition(unitNotSupported);
}

HBA_STATUS deliver(const ScsiAnswer& answer, void* response, size_t responseSize, void* sense,
                   size_t senseSize) {
    if (response == nullptr || (sense == nullptr && senseSize != 0)) {
        return HBA_STATUS_ERROR_ARG;
    }
    std::memcpy(response, answer.data.data(), std::min(responseSize, answer.data.size()));
    if (sense != nullptr) {
        std::memcpy(sense, answer.sense.data(), std::min(senseSize, answer.sense.size()));
    }
    return answer.status;
}

} // namespace tvrsim
