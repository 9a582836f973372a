#include "sim/host.h"

#include "sim/attribute_buffer.h"
#include "sim/rm_behaviour.h"
#include "sim/target_mapping.h"

#include <algorithm>
#include <array>

namespace tvrsim::behaviour {

namespace {

struct StatusText {
    RM_STATUS status;
    const char* text;
};

constexpr std::array statusTexts = {
    StatusText{RM_STATUS_OK, "Successful"},
    StatusText{RM_STATUS_ERROR, "An unspecified error occurred"},
    StatusText{RM_STATUS_NOT_SUPPORTED, "Function not supported"},
    StatusText{RM_STATUS_ILLEGAL_WWN, "World wide name not recognized"},
    StatusText{RM_STATUS_MORE_DATA, "Larger buffer required"},
    StatusText{RM_STATUS_DUMP_DIRECTORY, "Dump directory cannot be opened"},
    StatusText{RM_STATUS_TEST_NOT_FINISHED, "Test not finished"},
    StatusText{RM_STATUS_TOO_MANY_TESTS, "Too many tests"},
    StatusText{RM_STATUS_DIAG_NOT_AVAILABLE, "Diagnostics not available"},
    StatusText{RM_STATUS_ADAPTER_BUSY, "Adapter busy"},
    StatusText{RM_STATUS_WWN_BANK_NOT_SUPPORTED, "Bank of world wide names not supported"},
    StatusText{RM_STATUS_WWN_NOT_AVAILABLE, "World wide name management not available"},
    StatusText{RM_STATUS_WWN_BUSY, "World wide name operation in progress"},
    StatusText{RM_STATUS_VPORT_NOT_SUPPORTED, "Virtual ports not supported"},
    StatusText{RM_STATUS_MAILBOX_FAILED, "Mailbox failed"},
    StatusText{RM_STATUS_MAILBOX_TIMEOUT, "Mailbox timed out"},
    StatusText{RM_STATUS_MAILBOX_BUSY, "Mailbox busy"},
    StatusText{RM_STATUS_CONFIG_FILE, "Configuration file cannot be opened"},
    StatusText{RM_STATUS_CONFIG_FILE_WRITE, "Configuration file cannot be written"},
    StatusText{RM_STATUS_RESET_NOT_POSSIBLE, "Reset not possible"},
    StatusText{RM_STATUS_BUFFER_TOO_SMALL, "Buffer too small"},
    StatusText{RM_STATUS_BOOT_CODE_ENABLED, "Boot code enabled on a port function"},
    StatusText{firmwareFileUnreadable, "Firmware file cannot be read or is empty"},
    StatusText{firmwareFileMalformed, "File is no firmware image"},
    StatusText{firmwareOfOtherModel, "Firmware image is for another adapter model"},
    StatusText{firmwareNeedsReboot, "Firmware written, reboot required to activate it"},
};

} // namespace

const char* statusText(RM_STATUS status) {
    const auto found =
        std::find_if(statusTexts.begin(), statusTexts.end(),
                     [status](const StatusText& each) { return each.status == status; });
    return found == statusTexts.end() ? "" : found->text;
}

bool isValidName(const HBA_WWN& wwn) {
    constexpr std::array<unsigned, 5> formats = {1, 2, 3, 5, 6}; // name address authorities
    const bool isZero = std::all_of(std::begin(wwn.wwn) + 2, std::end(wwn.wwn),
                                    [](HBA_UINT8 byte) { return byte == 0; });
    const unsigned format = wwn.wwn[0] >> 4;
    return !isZero && std::find(formats.begin(), formats.end(), format) != formats.end();
}

RM_STATUS GetHBAAttributes(HBA_WWN port, void* buffer, uint32_t* size) {
    return Host::instance().withPort(port, [=](Adapter& adapter, Port&) {
        return answerSized(packAttributes(adapter.attributes, adapter.attributeLengths), buffer,
                           size);
    });
}

RM_STATUS GetPortAttributes(HBA_WWN port, void* buffer, uint32_t* size) {
    return Host::instance().withPort(port, [=](Adapter& adapter, Port& found) {
        return answerSized(packAttributes(found.attributes, adapter.attributeLengths), buffer,
                           size);
    });
}

RM_STATUS GetPortStatistics(HBA_WWN port, void* buffer, uint32_t* size) {
    Host& host = Host::instance();
    return host.withPort(port, [&](Adapter& adapter, Port& found) {
        return answerSized(packAttributes(host.readStatistics(found), adapter.attributeLengths),
                           buffer, size);
    });
}

RM_STATUS GetDriverType(HBA_WWN port, uint32_t* type) {
    return Host::instance().withPort(port, [=](Adapter& adapter, Port&) {
        if (type == nullptr) {
            return RM_STATUS_ERROR;
        }
        *type = adapter.driverType;
        return RM_STATUS_OK;
    });
}

RM_STATUS GetFcpTargetMapping(HBA_WWN port, HBA_FCPTARGETMAPPING* mapping) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        return fillMapping(std::span<const Port>(&found, 1), found.mapping, mapping);
    });
}

RM_STATUS DiagBeacon(HBA_WWN port, uint32_t state) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        switch (found.beacon) {
        case Beacon::notSupported:
        case Beacon::notAvailable:
        case Beacon::unanswered:
        case Beacon::unknown:
            return RM_STATUS_NOT_SUPPORTED;
        case Beacon::noDiagnostics:
            return RM_STATUS_DIAG_NOT_AVAILABLE;
        case Beacon::off:
        case Beacon::on:
            break;
        }
        if (state != RM_BEACON_OFF && state != RM_BEACON_ON) {
            return RM_STATUS_ERROR;
        }
        found.beacon = static_cast<Beacon>(state);
        return RM_STATUS_OK;
    });
}

RM_STATUS DiagBeaconState(HBA_WWN port, uint32_t* state) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) {
        if (found.beacon == Beacon::notSupported) {
            return RM_STATUS_NOT_SUPPORTED;
        }
        if (found.beacon == Beacon::noDiagnostics) {
            return RM_STATUS_DIAG_NOT_AVAILABLE;
        }
        if (state == nullptr) {
            return RM_STATUS_ERROR;
        }
        if (found.beacon != Beacon::unanswered) {
            *state = static_cast<uint32_t>(found.beacon);
        }
        return RM_STATUS_OK;
    });
}

} // namespace tvrsim::behaviour
