#include "sim/target_mapping.h"

#include <algorithm>
#include <cstring>

namespace tvrsim {

namespace {

HBA_FCPSCSIENTRY rowOf(const Target& target, const Lun& lun) {
    HBA_FCPSCSIENTRY row = {};
    lun.osDeviceName.copy(row.ScsiId.OSDeviceName, sizeof row.ScsiId.OSDeviceName);
    row.ScsiId.ScsiBusNumber = target.scsiBus;
    row.ScsiId.ScsiTargetNumber = target.scsiTarget;
    row.ScsiId.ScsiOSLun = lun.osLun;
    row.FcpId.FcId = target.fcId;
    row.FcpId.NodeWWN = target.nodeWwn;
    row.FcpId.PortWWN = target.portWwn;
    row.FcpId.FcpLun = lun.fcpLun;
    return row;
}

/// Writes the rows that fit and answers the number of all.
size_t writeRows(std::span<const TargetTable* const> tables, HBA_UINT32 room, char* rows) {
    size_t written = 0;
    size_t all = 0;
    for (const TargetTable* table : tables) {
        all += table->unitCount();
        for (const Target& target : table->targets()) {
            for (const Lun& lun : target.luns) {
                if (written == room) {
                    break;
                }
                const HBA_FCPSCSIENTRY row = rowOf(target, lun);
                std::memcpy(rows + written * sizeof row, &row, sizeof row);
                ++written;
            }
        }
    }
    return all;
}

HBA_STATUS fillFrom(std::span<const TargetTable* const> tables, MappingFaults& faults,
                    HBA_FCPTARGETMAPPING* mapping) {
    if (mapping == nullptr) {
        return HBA_STATUS_ERROR_ARG;
    }
    if (faults.staleTimes > 0) {
        --faults.staleTimes;
        return HBA_STATUS_ERROR_STALE_DATA;
    }
    const HBA_UINT32 room = mapping->NumberOfEntries;
    const size_t rows = writeRows(
        tables, room, reinterpret_cast<char*>(mapping) + offsetof(HBA_FCPTARGETMAPPING, entry));
    if (faults.moreDataTimes > 0 || rows > room) {
        // A mapping that asks for more than it needs has grown by one row.
        const size_t need = rows > room ? rows : size_t{room} + 1;
        faults.moreDataTimes -= faults.moreDataTimes > 0 ? 1 : 0;
        mapping->NumberOfEntries =
            faults.need.value_or(static_cast<HBA_UINT32>(std::min<size_t>(need, UINT32_MAX)));
        return HBA_STATUS_ERROR_MORE_DATA;
    }
    mapping->NumberOfEntries = faults.rows.value_or(static_cast<HBA_UINT32>(rows));
    return HBA_STATUS_OK;
}

} // namespace

HBA_STATUS fillMapping(std::span<const Port> ports, MappingFaults& faults,
                       HBA_FCPTARGETMAPPING* mapping) {
    std::vector<const TargetTable*> tables;
    for (const Port& port : ports) {
        tables.push_back(port.targets.get());
    }
    return fillFrom(tables, faults, mapping);
}

HBA_STATUS fillMapping(const TargetTable& table, MappingFaults& faults,
                       HBA_FCPTARGETMAPPING* mapping) {
    const TargetTable* const tables[] = {&table};
    return fillFrom(tables, faults, mapping);
}

FoundUnit findUnit(std::span<Port> ports, const HBA_WWN& target, HBA_UINT64 fcpLun) {
    FoundUnit found;
    for (Port& port : ports) {
        if (!port.targets->hasPort(target)) {
            continue;
        }
        found.target = true;
        if (const Lun* lun = port.targets->find(target, fcpLun)) {
            return {true, &port, lun};
        }
    }
    return found;
}

} // namespace tvrsim
