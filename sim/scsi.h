// The SCSI answers of simulated logical units.
#pragma once

#include "sim/scenario.h"

namespace tvrsim {

/// The outcome of one command: response data, or the sense data of a check condition.
struct ScsiAnswer {
    HBA_STATUS status = HBA_STATUS_OK;
    std::string data;
    std::string sense;
};

/// INQUIRY: the standard data, or with evpd the pages 0x00, 0x80 and 0x83. A unit has 0x80 when it
/// has a serial number and 0x83 when it has an identifier.
ScsiAnswer inquiry(const Lun& lun, bool evpd, uint32_t page);

/// READ CAPACITY(10), of the types that have blocks.
ScsiAnswer readCapacity(const Lun& lun);

/// What any command to a logical unit that the target lacks answers.
ScsiAnswer noSuchUnit();

/// Copies as much of an answer as the caller's buffers take.
HBA_STATUS deliver(const ScsiAnswer& answer, void* response, size_t responseSize, void* sense,
                   size_t senseSize);

} // namespace tvrsim
