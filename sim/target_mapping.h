// FCP target mappings: a row for each logical unit behind a port.
#pragma once

#include "sim/scenario.h"

#include <span>

namespace tvrsim {

/// Fills a mapping with the rows of some ports. The count word gets the number of rows; when there
/// are more than it held, as many as fit are written and the status is 7. The faults change what is
/// answered, never how much is written.
HBA_STATUS fillMapping(std::span<const Port> ports, MappingFaults& faults,
                       HBA_FCPTARGETMAPPING* mapping);

/// The same with the rows of one table.
HBA_STATUS fillMapping(const TargetTable& table, MappingFaults& faults,
                       HBA_FCPTARGETMAPPING* mapping);

/// A logical unit behind a remote port, and the first of the local ports that see it. target is
/// false without such a remote port.
struct FoundUnit {
    bool target = false;
    Port* port = nullptr;
    const Lun* lun = nullptr;
};
FoundUnit findUnit(std::span<Port> ports, const HBA_WWN& target, HBA_UINT64 fcpLun);

} // namespace tvrsim
