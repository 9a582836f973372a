// A small management program: opens the HBA API library and the RM library that it is given, in the
// order of the provider module, and prints every adapter and port. Exit status 77: a library is
// missing.
#include "access/rm/rm_api.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int libraryMissing = 77;

template <class Function> Function* find(void* library, const char* name) {
    auto* const function = reinterpret_cast<Function*>(dlsym(library, name));
    if (function == nullptr) {
        std::printf("no %s\n", name);
        std::exit(1);
    }
    return function;
}

#define FIND(library, name) (*find<decltype(name)>(library, #name))

void printName(const char* label, const HBA_WWN& wwn) {
    std::printf(" %s=", label);
    for (const HBA_UINT8 byte : wwn.wwn) {
        std::printf("%02X", byte);
    }
}

void printUnits(void* hba, HBA_HANDLE handle) {
    constexpr HBA_UINT32 room = 16;
    alignas(HBA_FCPTARGETMAPPING) unsigned char
        storage[offsetof(HBA_FCPTARGETMAPPING, entry) + room * sizeof(HBA_FCPSCSIENTRY)] = {};
    auto* const mapping = reinterpret_cast<HBA_FCPTARGETMAPPING*>(storage);
    mapping->NumberOfEntries = room;
    const HBA_STATUS status = FIND(hba, HBA_GetFcpTargetMapping)(handle, mapping);
    std::printf("\n  units: status=%u %u", status, mapping->NumberOfEntries);
    const auto* row =
        reinterpret_cast<const HBA_FCPSCSIENTRY*>(storage + offsetof(HBA_FCPTARGETMAPPING, entry));
    for (HBA_UINT32 i = 0; i < mapping->NumberOfEntries && i < room; ++i, ++row) {
        char data[256] = "";
        unsigned char sense[128] = {};
        HBA_STATUS result = FIND(hba, HBA_SendScsiInquiry)(
            handle, row->FcpId.PortWWN, row->FcpId.FcpLun, 0, 0, data, 255, sense, sizeof sense);
        std::printf("\n    %s lun %llu inquiry=%u type %d %.28s", row->ScsiId.OSDeviceName,
                    row->FcpId.FcpLun, result, data[0], data + 8);
        result = FIND(hba, HBA_SendReadCapacity)(handle, row->FcpId.PortWWN, row->FcpId.FcpLun,
                                                 data, 255, sense, sizeof sense);
        std::printf(" capacity=%u sense %02x/%02x", result, sense[2], sense[12]);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    void* const hba = dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL);
    void* const rm = dlopen(argv[2], RTLD_NOW | RTLD_GLOBAL);
    if (hba == nullptr || rm == nullptr) {
        std::printf("%s\n", dlerror());
        return libraryMissing;
    }
    std::printf("init %d\n", FIND(rm, LRM_InitLib)());
    const HBA_UINT32 count = FIND(hba, HBA_GetNumberOfAdapters)();
    std::printf("adapters %u\n", count);
    for (HBA_UINT32 i = 0; i < count; ++i) {
        char name[256] = "";
        HBA_STATUS status = FIND(hba, HBA_GetAdapterName)(i, name);
        const HBA_HANDLE handle = FIND(hba, HBA_OpenAdapter)(name);
        HBA_ADAPTERATTRIBUTES adapter = {};
        status |= FIND(hba, HBA_GetAdapterAttributes)(handle, &adapter);
        std::printf("%s: status=%u %s|%s|%s|%s|%s|%s|%s|%s|%s|%s|%u|%u", name, status,
                    adapter.Manufacturer, adapter.SerialNumber, adapter.Model,
                    adapter.ModelDescription, adapter.NodeSymbolicName, adapter.HardwareVersion,
                    adapter.DriverVersion, adapter.OptionROMVersion, adapter.FirmwareVersion,
                    adapter.DriverName, adapter.VendorSpecificID, adapter.NumberOfPorts);
        printName("node", adapter.NodeWWN);
        for (HBA_UINT32 p = 0; p < adapter.NumberOfPorts; ++p) {
            HBA_PORTATTRIBUTES port = {};
            status = FIND(hba, HBA_GetAdapterPortAttributes)(handle, p, &port);
            std::printf("\n  port %u: status=%u", p, status);
            printName("port", port.PortWWN);
            printName("node", port.NodeWWN);
            printName("fabric", port.FabricName);
            std::printf(" %u %u %u %u %u %u %u %u %s|%s|", port.PortFcId, port.PortType,
                        port.PortState, port.PortSupportedClassofService, port.PortSupportedSpeed,
                        port.PortSpeed, port.PortMaxFrameSize, port.NumberofDiscoveredPorts,
                        port.PortSymbolicName, port.OSDeviceName);
            for (size_t b = 0; b < sizeof port.PortActiveFc4Types.bits; ++b) {
                std::printf("%02x%02x", port.PortSupportedFc4Types.bits[b],
                            port.PortActiveFc4Types.bits[b]);
            }
            uint32_t isLocal = 0;
            status = FIND(rm, RM_IsLocalHBA)(port.PortWWN, &isLocal);
            std::printf(" local=%u,%u", status, isLocal);
        }
        printUnits(hba, handle);
        std::printf("\n");
        FIND(hba, HBA_CloseAdapter)(handle);
    }
    return 0;
}
