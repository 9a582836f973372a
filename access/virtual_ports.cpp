// The virtual ports of a port and what hangs on them.

#include "access/method_wrapper.h"

#include "access/attribute_buffer.h"
#include "access/bounded_text.h"
#include "access/counted_list.h"
#include "access/entry_points.h"
#include "common/logger.h"
#include "common/tvr_common.h"

#include <cstdio>

namespace cimple {

namespace {

constexpr uint32 virtualPortFailure = 1;

using VPortTargets = CountedList<HBA_FCPSCSIENTRY, offsetof(HBA_FCPTARGETMAPPING, entry)>;
using VMList = CountedList<RM_VMENTRY, offsetof(RM_VMLIST, entry)>;

constexpr uint32 maxTargetRows = 262144;

// Fills a list, with as much room as the library asks for. False, with the line in the log, if
// there is no memory for it.
template <class List, class Call>
bool fillList(List& list, uint32 most, const char* noMemory, const char* noMemoryForNeed, Call call,
              RM_STATUS& status) {
    if (!list.makeRoom(1, most)) {
        TVR_LOG("%s", noMemory);
        return false;
    }
    status = call();
    if (status == RM_STATUS_MORE_DATA) {
        if (!list.makeRoom(list.count(), most)) {
            TVR_LOG("%s", noMemoryForNeed);
            return false;
        }
        status = call();
    }
    return true;
}

uint32 virtualPortsRefused(RM_STATUS status, const char* notSupported, const char* failed) {
    if (status == RM_STATUS_VPORT_NOT_SUPPORTED) {
        TVR_LOG("%s", notSupported);
    } else {
        TVR_MethodWrapper::logRMStatus(status);
        TVR_LOG("%s", failed);
    }
    return virtualPortFailure;
}

uint32 virtualPortsRefused(RM_STATUS status) {
    return virtualPortsRefused(status,
                               "TVRCMD does not support listing virtual ports on this host.",
                               "Unable to list virtual ports!!");
}

// Whether virtual ports are mapped to machines: 1 or 2 in an attribute of the adapter, else 0.
uint32 getVPortMappingSupport(const HBA_WWN& port) {
    constexpr uint32 attributesSize = 784;
    constexpr uint16 mappingAttribute = 265;
    AttributeBuffer buffer(attributesSize);
    if (rm::LRM_GetHBAAttributes(port, buffer.data(), &buffer.size) != RM_STATUS_OK) {
        return 0;
    }
    const uint32 value = getHBAAttributeInt(buffer, mappingAttribute, "_VPortMapping") & 0xFF;
    return value <= 2 ? value : 0;
}

} // namespace

uint32 TVR_MethodWrapper::ListVPorts(const HBA_WWN& port, std::vector<RM_VPORTENTRY>* list) {
    constexpr char noMemory[] = "TVRCMD_ListVPorts: Unable to allocate buffer";
    TVR_LOG("TVR_MethodWrapper::ListVPorts");
    if (!isLocal(port)) {
        return virtualPortFailure;
    }
    if (list == nullptr) {
        TVR_LOG("Invalid input pointer");
        return noOutput;
    }
    VPortList found;
    RM_STATUS status = RM_STATUS_OK;
    if (!fillList(
            found, maxVirtualPorts, noMemory, noMemory,
            [&] { return rm::LRM_VPList(port, found.as<RM_VPORTLIST>()); }, status)) {
        return virtualPortFailure;
    }
    if (status != RM_STATUS_OK) {
        return virtualPortsRefused(status);
    }
    *list = found.read();
    TVR_LOG("Exit the ListVPorts method");
    return 0;
}

uint32 TVR_MethodWrapper::ListVPortAttributes(const HBA_WWN& port, const HBA_WWN& virtualPort,
                                              RM_VPORTATTRIBUTES* attributes) {
    TVR_LOG("TVR_MethodWrapper::ListVPortAttributes");
    if (!isLocal(port)) {
        return virtualPortFailure;
    }
    if (attributes == nullptr) {
        TVR_LOG("Invalid input vp attributes pointer");
        return noOutput;
    }
    RM_VPORTATTRIBUTES found{};
    found.version = RM_VPORT_ATTRIBUTES_VERSION;
    const RM_STATUS status = rm::LRM_VPGetAttributes(port, virtualPort, &found);
    if (status != RM_STATUS_OK) {
        return virtualPortsRefused(status);
    }
    TVR_LOG("VPort details");
    TVR_LOG("VPort Name %s ", toString(found.name).c_str());
    *attributes = found;
    TVR_LOG("Exit the ListVPortattributes method");
    return 0;
}

uint32 TVR_MethodWrapper::ListVPortTargets(const HBA_WWN& port, const HBA_WWN& virtualPort) {
    constexpr char noMemory[] = "TVRCMD_VportTargets: Unable to allocate buffer";
    TVR_LOG("TVR_MethodWrapper::ListVPortTargets");
    if (!isLocal(port)) {
        return virtualPortFailure;
    }
    VPortTargets targets;
    RM_STATUS status = RM_STATUS_OK;
    if (!fillList(
            targets, maxTargetRows, noMemory, noMemory,
            [&] {
                return rm::LRM_VPListTargets(port, virtualPort, targets.as<HBA_FCPTARGETMAPPING>());
            },
            status)) {
        return virtualPortFailure;
    }
    if (status != RM_STATUS_OK) {
        return virtualPortsRefused(
            status, "TVRCMD does not support listing virtual port targets on this host.",
            "Unable to list virtual port's targets!");
    }
    TVR_LOG("Exit the ListVPortTargets method");
    return 0;
}

uint32 TVR_MethodWrapper::ListVMfromVPort(const HBA_WWN& port, const RM_VPORTENTRY& virtualPort,
                                          std::vector<RM_VMINFO>* machines) {
    TVR_LOG("TVR_MethodWrapper::ListVMfromVPort %s", wwnToText(port.wwn).c_str());
    if (!isLocal(port)) {
        return virtualPortFailure;
    }
    if (machines == nullptr) {
        TVR_LOG("Invalid input pointer");
        return noOutput;
    }
    if (getVPortMappingSupport(port) == 0) {
        std::fputs("This physical WWPN does not support virtual port mappings.\n", stdout);
        return 0;
    }
    VMList list;
    RM_STATUS status = RM_STATUS_OK;
    if (!fillList(
            list, maxVirtualMachines, "TVRCMD_ListVMS: Unable to allocate buffer.",
            "TVRCMD_ListVMS: Unable to allocate buffer\n",
            [&] {
                return rm::LRM_GetVMFromVPort(&virtualPort,
                                              static_cast<RM_VMENTRY*>(list.entries()));
            },
            status)) {
        return virtualPortFailure;
    }
    TVR_LOG("TVRCMD_ListVMS: Status: %d", status);
    if (status != RM_STATUS_OK) {
        logRMStatus(status);
        return virtualPortFailure;
    }
    std::vector<RM_VMINFO> found;
    try {
        for (const RM_VMENTRY& entry : list.read()) {
            TVR_LOG("VM Details: %s, %s", toString(entry.server).c_str(),
                    toString(entry.machine).c_str());
            RM_VMINFO& info = found.emplace_back();
            status = rm::LRM_GetVMInfo(&entry, &info);
            if (status != RM_STATUS_OK) {
                logRMStatus(status);
                return virtualPortFailure;
            }
            TVR_LOG("Server Name:  %s", toString(info.serverName).c_str());
            TVR_LOG("Virtual Machine Name:  %s", toString(info.machineName).c_str());
            TVR_LOG("Guest OS Name:  %s", toString(info.guestOsName).c_str());
            TVR_LOG("Memory Size:  %d", info.memorySize);
        }
    } catch (const std::bad_alloc&) {
        TVR_LOG("TVRCMD_ListVMS: Unable to allocate buffer\n");
        return virtualPortFailure;
    }
    *machines = std::move(found);
    TVR_LOG("Exit the ListVMs method");
    return 0;
}

} // namespace cimple
