// What the RM library tells of virtual ports and virtual machines.
#include "sim/virtual_ports.h"

#include "sim/host.h"
#include "sim/rm_behaviour.h"
#include "sim/target_mapping.h"

#include <algorithm>
#include <cstring>

namespace tvrsim::behaviour {

namespace {

bool isNamed(const VirtualPort& port, const HBA_WWN& wwpn) {
    return std::memcmp(port.portWwn.wwn, wwpn.wwn, sizeof wwpn.wwn) == 0;
}

template <size_t size> void fillText(char (&out)[size], const std::string& text) {
    std::fill_n(out, size, '\0');
    text.copy(out, size);
}

RM_VPORTENTRY entryOf(const VirtualPort& port) {
    RM_VPORTENTRY entry = {};
    entry.wwpn = port.portWwn;
    entry.wwnn = port.nodeWwn;
    entry.fcId = port.fcId;
    return entry;
}

RM_VMENTRY entryOf(const VirtualMachine& machine) {
    RM_VMENTRY entry;
    fillText(entry.server, machine.server);
    fillText(entry.machine, machine.name);
    return entry;
}

/// Answers a list whose count word, the capacity, stands right before its entries. The caller's
/// memory may stand anywhere.
template <class Element>
RM_STATUS answerList(const std::vector<Element>& elements, const ListCounts& counts,
                     char* entries) {
    char* const word = entries - sizeof(uint32_t);
    const auto present = static_cast<uint32_t>(elements.size());
    uint32_t room = 0;
    std::memcpy(&room, word, sizeof room);
    const bool fits = room >= present;
    if (fits) {
        for (const Element& element : elements) {
            const auto entry = entryOf(element);
            std::memcpy(entries, &entry, sizeof entry);
            entries += sizeof entry;
        }
    }
    const uint32_t told = (fits ? counts.count : counts.need).value_or(present);
    std::memcpy(word, &told, sizeof told);
    return fits ? RM_STATUS_OK : RM_STATUS_MORE_DATA;
}

/// Calls work with a virtual port of a port.
template <class Work>
RM_STATUS withVirtualPort(const HBA_WWN& port, const HBA_WWN& wwpn, Work work) {
    return Host::instance().withPort(port, [&](Adapter&, Port& found) -> RM_STATUS {
        if (!found.virtualPorts) {
            return RM_STATUS_VPORT_NOT_SUPPORTED;
        }
        auto& entries = found.virtualPorts->entries;
        const auto entry =
            std::find_if(entries.begin(), entries.end(),
                         [&](const VirtualPort& each) { return isNamed(each, wwpn); });
        return entry == entries.end() ? RM_STATUS_ILLEGAL_WWN : work(*entry);
    });
}

/// The first virtual port of the host that meets a condition, or null.
template <class Condition>
const VirtualPort* findVirtualPort(const std::vector<Adapter>& adapters, Condition condition) {
    for (const Adapter& adapter : adapters) {
        for (const Port& port : adapter.ports) {
            if (!port.virtualPorts) {
                continue;
            }
            const auto& entries = port.virtualPorts->entries;
            const auto found = std::find_if(entries.begin(), entries.end(), condition);
            if (found != entries.end()) {
                return &*found;
            }
        }
    }
    return nullptr;
}

} // namespace

RM_STATUS VPList(HBA_WWN port, RM_VPORTLIST* list) {
    return Host::instance().withPort(port, [=](Adapter&, Port& found) -> RM_STATUS {
        if (!found.virtualPorts) {
            return RM_STATUS_VPORT_NOT_SUPPORTED;
        }
        if (list == nullptr) {
            return RM_STATUS_ERROR;
        }
        return answerList(found.virtualPorts->entries, found.virtualPorts->counts,
                          reinterpret_cast<char*>(list) + offsetof(RM_VPORTLIST, entry));
    });
}

RM_STATUS VPGetAttributes(HBA_WWN port, HBA_WWN virtualPort, RM_VPORTATTRIBUTES* attributes) {
    return withVirtualPort(port, virtualPort, [=](const VirtualPort& found) {
        if (attributes == nullptr || attributes->version != RM_VPORT_ATTRIBUTES_VERSION) {
            return RM_STATUS_ERROR;
        }
        *attributes = {};
        attributes->version = RM_VPORT_ATTRIBUTES_VERSION;
        fillText(attributes->name, found.name);
        return RM_STATUS_OK;
    });
}

RM_STATUS VPListTargets(HBA_WWN port, HBA_WWN virtualPort, HBA_FCPTARGETMAPPING* targets) {
    return withVirtualPort(port, virtualPort, [=](VirtualPort& found) {
        return targets == nullptr ? RM_STATUS_ERROR
                                  : fillMapping(*found.targets, found.mapping, targets);
    });
}

RM_STATUS GetVMFromVPort(const RM_VPORTENTRY* virtualPort, RM_VMENTRY* firstEntry) {
    return Host::instance().withAdapters([=](const std::vector<Adapter>& adapters) -> RM_STATUS {
        if (virtualPort == nullptr || firstEntry == nullptr) {
            return RM_STATUS_ERROR;
        }
        const VirtualPort* const found = findVirtualPort(
            adapters, [=](const VirtualPort& each) { return isNamed(each, virtualPort->wwpn); });
        return found == nullptr ? RM_STATUS_ILLEGAL_WWN
                                : answerList(found->machines, found->machineCounts,
                                             reinterpret_cast<char*>(firstEntry));
    });
}

RM_STATUS GetVMInfo(const RM_VMENTRY* machine, RM_VMINFO* info) {
    return Host::instance().withAdapters([=](const std::vector<Adapter>& adapters) -> RM_STATUS {
        if (machine == nullptr || info == nullptr) {
            return RM_STATUS_ERROR;
        }
        const VirtualMachine* found = nullptr;
        findVirtualPort(adapters, [&](const VirtualPort& port) {
            const auto each = std::find_if(port.machines.begin(), port.machines.end(),
                                           [&](const VirtualMachine& candidate) {
                                               return candidate.server == textIn(machine->server) &&
                                                      candidate.name == textIn(machine->machine);
                                           });
            found = each == port.machines.end() ? nullptr : &*each;
            return found != nullptr;
        });
        if (found == nullptr) {
            return RM_STATUS_ERROR;
        }
        *info = {};
        fillText(info->serverName, found->server);
        fillText(info->machineName, found->name);
        fillText(info->guestOsName, found->guestOs);
        info->memorySize = found->memorySize;
        return RM_STATUS_OK;
    });
}

} // namespace tvrsim::behaviour
