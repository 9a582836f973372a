#include "sim/part_reader.h"
#include "sim/virtual_ports.h"

namespace tvrsim {

namespace {

/// A name for the nth virtual port made of that of its port, as adapters make them.
HBA_WWN virtualName(const HBA_WWN& wwpn, unsigned kind, size_t index) {
    HBA_WWN name = wwpn;
    name.wwn[0] = static_cast<HBA_UINT8>(0x20 | kind | ((index + 1) >> 8));
    name.wwn[1] = static_cast<HBA_UINT8>(index + 1);
    return name;
}

VirtualMachine readMachine(const Json& value, const std::string& path) {
    VirtualMachine machine;
    ObjectReader reader(value, path);
    reader.text("server", machine.server, sizeof RM_VMENTRY::server);
    reader.text("machine", machine.name, sizeof RM_VMENTRY::machine);
    reader.number("memory", machine.memorySize);
    reader.text("guestOs", machine.guestOs, sizeof RM_VMINFO::guestOsName);
    reader.finish();
    return machine;
}

VirtualPort readVirtualPort(const Json& value, const std::string& path, const HBA_WWN& wwpn,
                            size_t index) {
    VirtualPort port;
    port.portWwn = virtualName(wwpn, 0, index);
    port.nodeWwn = virtualName(wwpn, 8, index);
    port.fcId = static_cast<uint32_t>(0x0F0000 + index);
    port.name = "Virtual port " + std::to_string(index);
    ObjectReader reader(value, path);
    reader.wwn("portWWN", port.portWwn);
    reader.wwn("nodeWWN", port.nodeWwn);
    reader.number("fcId", port.fcId, 0xFFFFFF);
    reader.text("name", port.name, sizeof RM_VPORTATTRIBUTES::name);
    if (const Json* targets = reader.find("targets")) {
        port.targets = readTargets(*targets, reader.pathOf("targets"));
    }
    if (const Json* mapping = reader.find("mapping")) {
        readMappingFaults(*mapping, reader.pathOf("mapping"), port.mapping);
    }
    if (const Json* machines = reader.find("machines")) {
        forEachElement(*machines, reader.pathOf("machines"),
                       [&](const Json& each, const std::string& place, size_t i) {
                           if (i >= mostMachines) {
                               throw FormatError(place,
                                                 "more than " + std::to_string(mostMachines));
                           }
                           port.machines.push_back(readMachine(each, place));
                       });
    }
    reader.optionalNumber("machineNeed", port.machineCounts.need);
    reader.optionalNumber("machineCount", port.machineCounts.count);
    reader.finish();
    return port;
}

VirtualPorts noVirtualPorts() {
    return {};
}

} // namespace

void readVirtualPorts(ObjectReader& port, const HBA_WWN& wwpn, std::optional<VirtualPorts>& ports) {
    readPart(
        port, "virtualPorts", ports, noVirtualPorts, [&](ObjectReader& reader, VirtualPorts& read) {
            if (const Json* entries = reader.find("entries")) {
                read.entries.clear();
                forEachElement(*entries, reader.pathOf("entries"),
                               [&](const Json& each, const std::string& place, size_t i) {
                                   if (i >= mostVirtualPorts) {
                                       throw FormatError(
                                           place, "more than " + std::to_string(mostVirtualPorts));
                                   }
                                   read.entries.push_back(readVirtualPort(each, place, wwpn, i));
                               });
            }
            reader.optionalNumber("need", read.counts.need);
            reader.optionalNumber("count", read.counts.count);
        });
    if (unitCount(ports) > mostUnits) {
        throw FormatError(port.pathOf("virtualPorts"),
                          "more than " + std::to_string(mostUnits) + " logical units");
    }
}

size_t unitCount(const std::optional<VirtualPorts>& ports) {
    size_t units = 0;
    if (ports) {
        for (const VirtualPort& each : ports->entries) {
            units += each.targets->unitCount();
        }
    }
    return units;
}

} // namespace tvrsim
