#include "model/target.h"

#include "access/bounded_text.h"
#include "model/adapter.h"
#include "model/hba_access.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace cimple {

namespace {

constexpr int command_attempts = 3;
constexpr char unknown[] = "Unknown";

// Vital product data pages of the Inquiry command.
constexpr HBA_UINT32 serialNumberPage = 0x80;
constexpr HBA_UINT32 identificationPage = 0x83;

// One SCSI command to a logical unit, and what it answered. What a unit doesn't send reads as zero.
class ScsiExchange {
public:
    static constexpr std::size_t responseSize = 255;
    static constexpr std::size_t senseSize = 128;

    // Sends the command, again while it ends with a check condition. Answers the last status, and
    // logs any but success.
    template <class Command> HBA_STATUS send(Command command) {
        std::memset(m_response, 0, sizeof m_response);
        std::memset(m_sense, 0, sizeof m_sense);
        HBA_STATUS status = HBA_STATUS_OK;
        for (int attempt = 0; attempt < command_attempts; ++attempt) {
            status = command(m_response, m_sense);
            if (status != HBA_STATUS_SCSI_CHECK_CONDITION) {
                break;
            }
        }
        if (status != HBA_STATUS_OK) {
            TVR_LOG("HBA_SendScsiInquiry_t(0x80) returns %d.", status);
        }
        return status;
    }

    uint8 byte(std::size_t offset) const { return m_response[offset]; }
    const uint8* bytes(std::size_t offset) const { return m_response + offset; }
    uint32 number(std::size_t offset) const {
        return static_cast<uint32>(m_response[offset]) << 24 | m_response[offset + 1] << 16 |
               m_response[offset + 2] << 8 | m_response[offset + 3];
    }
    // The text from `offset`, at most `size` characters and none behind the response.
    std::string text(std::size_t offset, std::size_t size) const {
        const char* begin = reinterpret_cast<const char*>(m_response) + offset;
        return {begin, strnlen(begin, std::min(size, responseSize - offset))};
    }

    void logSense() const {
        constexpr std::size_t shown = 24;
        std::string line = "Sense Data: ";
        for (std::size_t i = 0; i < shown; ++i) {
            char pair[sizeof "00 "];
            std::snprintf(pair, sizeof pair, "%02x ", m_sense[i]);
            line += pair;
        }
        TVR_LOG("%s", line.c_str());
    }

private:
    uint8 m_response[responseSize];
    uint8 m_sense[senseSize];
};

// A logical unit as commands reach it.
class LogicalUnit {
public:
    LogicalUnit(HBA_HANDLE handle, const HBA_FCPID& address)
        : m_handle(handle), m_port(address.PortWWN), m_lun(address.FcpLun) {}

    HBA_STATUS inquire(ScsiExchange& exchange, HBA_UINT8 vitalProductData, HBA_UINT32 page) const {
        return exchange.send([&](void* response, void* sense) {
            return rm::HBA_SendScsiInquiry(m_handle, m_port, m_lun, vitalProductData, page,
                                           response, ScsiExchange::responseSize, sense,
                                           ScsiExchange::senseSize);
        });
    }
    HBA_STATUS readCapacity(ScsiExchange& exchange) const {
        return exchange.send([&](void* response, void* sense) {
            return rm::HBA_SendReadCapacity(m_handle, m_port, m_lun, response,
                                            ScsiExchange::responseSize, sense,
                                            ScsiExchange::senseSize);
        });
    }

private:
    HBA_HANDLE m_handle;
    HBA_WWN m_port;
    HBA_UINT64 m_lun;
};

// The unit's serial number, as long as the page says.
std::string serialNumberOf(const ScsiExchange& page) {
    constexpr std::size_t header = 4;
    return page.text(header, std::size_t{page.byte(2)} << 8 | page.byte(3));
}

// The first identifier of the page. Of one that is longer than the response the rest reads as zero.
DeviceIdentifier identifierOf(const ScsiExchange& page) {
    constexpr std::size_t start = 8;
    DeviceIdentifier identifier;
    identifier.peripheralType = page.byte(0) & 0x1F;
    identifier.pageCode = page.byte(1);
    identifier.pageLength = page.byte(3);
    identifier.identifierType = page.byte(5) & 0x0F;
    identifier.identifierLength = page.byte(7);
    const std::size_t length =
        std::min<std::size_t>(identifier.identifierLength, ScsiExchange::responseSize - start);
    std::copy_n(page.bytes(start), length, identifier.identifier);
    return identifier;
}

} // namespace

Target::Target(const Adapter& adapter, const HBA_FCPSCSIENTRY& row)
    : FcId(row.FcpId.FcId), NodeWWN(wwnToText(row.FcpId.NodeWWN.wwn)),
      PortWWN(wwnToText(row.FcpId.PortWWN.wwn)), FcpLun(row.FcpId.FcpLun),
      OSDeviceName(toString(row.ScsiId.OSDeviceName)), ScsiBusNumber(row.ScsiId.ScsiBusNumber),
      ScsiTargetNumber(row.ScsiId.ScsiTargetNumber), ScsiOSLun(row.ScsiId.ScsiOSLun),
      vendor(unknown), product(unknown), revision(unknown), serialNumber(unknown) {
    TVR_LOG("Creating Target...");
    TVR_LOG("%s", NodeWWN.c_str());
    TVR_LOG("%s", PortWWN.c_str());
    ask(adapter, row.FcpId);
    TVR_LOG("End Creating Target...");
}

void Target::ask(const Adapter& adapter, const HBA_FCPID& id) {
    const OpenAdapter open(adapter.getAdapterName());
    const LogicalUnit unit(open.handle(), id);
    ScsiExchange exchange;

    TVR_LOG("SCSI Inquiry with 0, 0");
    if (unit.inquire(exchange, 0, 0) == HBA_STATUS_OK) {
        peripheralType = exchange.byte(0) & 0x1F;
        vendor = exchange.text(8, 8);
        product = exchange.text(16, 16);
        revision = exchange.text(32, 4);
    }
    TVR_LOG("SCSI Inquiry with 1, 0x80");
    if (unit.inquire(exchange, 1, serialNumberPage) == HBA_STATUS_OK) {
        serialNumber = serialNumberOf(exchange);
    }
    TVR_LOG("SCSI Inquiry with 1, 0x83");
    const HBA_STATUS status = unit.inquire(exchange, 1, identificationPage);
    if (status == HBA_STATUS_OK) {
        deviceIdentifier = identifierOf(exchange);
    } else if (status == HBA_STATUS_SCSI_CHECK_CONDITION) {
        exchange.logSense();
    }
    TVR_LOG("Send Read Capacity");
    if (unit.readCapacity(exchange) == HBA_STATUS_OK) {
        maxLBA = exchange.number(0);
        blockSize = exchange.number(4);
    }
}

} // namespace cimple
