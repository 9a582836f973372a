#include "sim/target_mapping.h"

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

} // namespace

HBA_STATUS fillMapping(std::span<const Port> ports, HBA_FCPTARGETMAPPING* mapping) {
    if (mapping == nullptr) {
        return HBA_STATUS_ERROR_ARG;
    }
    const HBA_UINT32 room = mapping->NumberOfEntries;
    char* const rows = reinterpret_cast<char*>(mapping) + offsetof(HBA_FCPTARGETMAPPING, entry);
    HBA_UINT32 count = 0;
    for (const Port& port : ports) {
        for (const Target& target : port.targets) {
            for (const Lun& lun : target.luns) {
                if (count < room) {
                    const HBA_FCPSCSIENTRY row = rowOf(target, lun);
                    std::memcpy(rows + count * sizeof row, &row, sizeof row);
                }
                ++count;
            }
        }
    }
    mapping->NumberOfEntries = count;
    return count > room ? HBA_STATUS_ERROR_MORE_DATA : HBA_STATUS_OK;
}

FoundUnit findUnit(std::span<const Port> ports, const HBA_WWN& target, HBA_UINT64 fcpLun) {
    FoundUnit found;
    for (const Port& port : ports) {
        for (const Target& each : port.targets) {
            if (std::memcmp(each.portWwn.wwn, target.wwn, sizeof target.wwn) != 0) {
                continue;
            }
            found.target = true;
            for (const Lun& lun : each.luns) {
                if (lun.fcpLun == fcpLun) {
                    found.lun = &lun;
                    return found;
                }
            }
        }
    }
    return found;
}

} // namespace tvrsim
