#include "sim/targets.h"

#include <algorithm>

namespace tvrsim {

TargetTable::TargetTable(std::vector<Target> targets) : m_targets(std::move(targets)) {
    for (const Target& target : m_targets) {
        const uint64_t port = numberOf(target.portWwn);
        m_ports.push_back(port);
        for (const Lun& lun : target.luns) {
            m_units.push_back({{port, lun.fcpLun}, &lun});
        }
    }
    std::sort(m_ports.begin(), m_ports.end());
    std::stable_sort(m_units.begin(), m_units.end(), [](const Unit& left, const Unit& right) {
        return left.address < right.address;
    });
}

bool TargetTable::hasPort(const HBA_WWN& wwpn) const {
    return std::binary_search(m_ports.begin(), m_ports.end(), numberOf(wwpn));
}

const Lun* TargetTable::find(const HBA_WWN& wwpn, uint64_t fcpLun) const {
    const Address wanted = {numberOf(wwpn), fcpLun};
    const auto unit = std::lower_bound(
        m_units.begin(), m_units.end(), wanted,
        [](const Unit& each, const Address& address) { return each.address < address; });
    return unit == m_units.end() || unit->address != wanted ? nullptr : unit->lun;
}

} // namespace tvrsim
