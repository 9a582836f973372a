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

/// INQUIRY: the standard data, or with evpd the pages 0x00, 0x80, 0x83 and those given as bytes. A
/// unit has 0x80 when it has a serial number and 0x83 when it has an identifier.
ScsiAnswer inquiry(const Lun& lun, bool evpd, uint32_t page);

/// READ CAPACITY(10), of the types that have blocks and of units that are given some.
ScsiAnswer readCapacity(const Lun& lun);

/// The command that an Inquiry is, or nothing for one that no unit answers.
std::optional<UnitCommand> inquiryCommand(bool evpd, uint32_t page);

/// The failure that one execution of a command meets, or nothing. Counts the execution.
std::optional<ScsiAnswer> failureOf(const Lun& lun, UnitCommand command, CommandCounts& counts);

/// What any command to a logical unit that the target lacks answers.
ScsiAnswer noSuchUnit();

/// Copies as much of an answer as the caller's buffers take.
HBA_STATUS deliver(const ScsiAnswer& answer, void* response, size_t responseSize, void* sense,
                   size_t senseSize);

} // namespace tvrsim
