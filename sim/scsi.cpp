#include "sim/scsi.h"

#include <algorithm>
#include <array>
#include <cstring>

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

std::string supportedPages(const Lun& lun) {
    std::string pages(1, static_cast<char>(pageSupported));
    if (!lun.serialNumber.empty()) {
        pages += static_cast<char>(pageSerialNumber);
    }
    if (!lun.identifier.empty()) {
        pages += static_cast<char>(pageIdentification);
    }
    return pages;
}

/// One descriptor of the logical unit: binary, NAA.
std::string identificationDescriptor(const Lun& lun) {
    std::string descriptor = {0x01, 0x03, 0x00, static_cast<char>(lun.identifier.size())};
    return descriptor + lun.identifier;
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

ScsiAnswer inquiry(const Lun& lun, bool evpd, uint32_t code) {
    if (!evpd) {
        return code == 0 ? standardInquiry(lun) : checkCondition(invalidField);
    }
    if (code > 0xFF || supportedPages(lun).find(static_cast<char>(code)) == std::string::npos) {
        return checkCondition(invalidField);
    }
    switch (code) {
    case pageSerialNumber:
        return page(lun, code, lun.serialNumber);
    case pageIdentification:
        return page(lun, code, identificationDescriptor(lun));
    default:
        return page(lun, code, supportedPages(lun));
    }
}

ScsiAnswer readCapacity(const Lun& lun) {
    constexpr std::array<uint32_t, 5> blockTypes = {0x00, 0x04, 0x05, 0x07, 0x0E};
    if (std::find(blockTypes.begin(), blockTypes.end(), lun.peripheralType) == blockTypes.end()) {
        return checkCondition(invalidCommand);
    }
    const uint64_t lastBlock = lun.blocks == 0 ? 0 : lun.blocks - 1;
    ScsiAnswer answer;
    putBigEndian(answer.data, std::min<uint64_t>(lastBlock, UINT32_MAX), 4);
    putBigEndian(answer.data, lun.blockSize, 4);
    return answer;
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
