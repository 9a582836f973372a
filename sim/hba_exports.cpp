// The exported HBA API.
#define HBA_API __attribute__((visibility("default")))

#include "sim/guarded.h"
#include "sim/scsi.h"
#include "sim/target_mapping.h"
#include "sim/vendor_table.h"

#include <algorithm>

using namespace tvrsim;

namespace {

constexpr HBA_UINT32 libraryVersion = 2;
constexpr size_t adapterNameSize = 256;

const VendorTableV2& vendorTable() {
    static const VendorTableV2 table = [] {
        VendorTableV2 entries = {};
        entries.getVersion = HBA_GetVersion;
        entries.loadLibrary = HBA_LoadLibrary;
        entries.freeLibrary = HBA_FreeLibrary;
        entries.getNumberOfAdapters = HBA_GetNumberOfAdapters;
        entries.getAdapterName = HBA_GetAdapterName;
        entries.openAdapter = HBA_OpenAdapter;
        entries.closeAdapter = HBA_CloseAdapter;
        entries.getAdapterAttributes = HBA_GetAdapterAttributes;
        entries.getAdapterPortAttributes = HBA_GetAdapterPortAttributes;
        entries.refreshInformation = HBA_RefreshInformation;
        entries.getFcpTargetMapping = HBA_GetFcpTargetMapping;
        entries.sendScsiInquiry = HBA_SendScsiInquiry;
        entries.sendReadCapacity = HBA_SendReadCapacity;
        entries.removeCallback = HBA_RemoveCallback;
        entries.registerForAdapterPortEvents = HBA_RegisterForAdapterPortEvents;
        return entries;
    }();
    return table;
}

/// Rules of SCSI commands can be limited to the remote port.
Subject targetSubject(HBA_HANDLE handle, const HBA_WWN& target) {
    Subject subject = Host::instance().subjectOf(handle);
    subject.port = wwnText(target);
    return subject;
}

/// A registration is about its port.
Subject listenerSubject(HBA_CALLBACKHANDLE handle) {
    Host& host = Host::instance();
    const auto port = host.events().portOf(handle);
    return port ? host.subjectOf(*port) : Subject{};
}

/// Null if it is no port of the adapter.
const Port* portOf(const Adapter& adapter, const HBA_WWN& wwpn) {
    const auto found =
        std::find_if(adapter.ports.begin(), adapter.ports.end(), [&](const Port& port) {
            return numberOf(port.hba.PortWWN) == numberOf(wwpn);
        });
    return found == adapter.ports.end() ? nullptr : &*found;
}

/// The events of a port whose link flaps.
LinkEvent flapping(const Port& port) {
    LinkEvent event{port.hba.PortWWN, HBA_EVENT_PORT_OFFLINE, port.hba.PortFcId};
    event.times = port.flaps->times;
    event.alternates = true;
    event.pause = std::chrono::milliseconds(port.flaps->everyMs);
    return event;
}

/// Has a logical unit answer a command, which fails first as often as the scenario tells.
template <class Command>
HBA_STATUS sendCommand(Host& host, HBA_HANDLE handle, const HBA_WWN& target, HBA_UINT64 fcpLun,
                       std::optional<UnitCommand> name, Command command, void* response,
                       size_t responseSize, void* sense, size_t senseSize) {
    return host.withAdapter(handle, [&](Adapter& adapter) -> HBA_STATUS {
        const FoundUnit found = findUnit(adapter.ports, target, fcpLun);
        if (!found.target) {
            return HBA_STATUS_ERROR_ILLEGAL_WWN;
        }
        std::optional<ScsiAnswer> answer;
        if (found.lun != nullptr && name) {
            answer = failureOf(*found.lun, *name, found.port->failedCommands);
        }
        if (!answer) {
            answer = found.lun == nullptr ? noSuchUnit() : command(*found.lun);
        }
        return deliver(*answer, response, responseSize, sense, senseSize);
    });
}

} // namespace

extern "C" {

// The HBA API library calls one of these two when it loads this library as a vendor's.
HBA_API HBA_STATUS HBA_RegisterLibrary(VendorTable* entries);
HBA_API HBA_STATUS HBA_RegisterLibraryV2(VendorTableV2* entries);

HBA_STATUS HBA_RegisterLibrary(VendorTable* entries) {
    return guarded(EntryPoint::HBA_RegisterLibrary, {}, [=](Host&) -> HBA_STATUS {
        if (entries == nullptr) {
            return HBA_STATUS_ERROR_ARG;
        }
        *entries = vendorTable();
        return HBA_STATUS_OK;
    });
}

HBA_STATUS HBA_RegisterLibraryV2(VendorTableV2* entries) {
    return guarded(EntryPoint::HBA_RegisterLibraryV2, {}, [=](Host&) -> HBA_STATUS {
        if (entries == nullptr) {
            return HBA_STATUS_ERROR_ARG;
        }
        *entries = vendorTable();
        return HBA_STATUS_OK;
    });
}

HBA_UINT32 HBA_GetVersion(void) {
    return guarded(EntryPoint::HBA_GetVersion, {}, [](Host&) { return libraryVersion; });
}

HBA_STATUS HBA_LoadLibrary(void) {
    return guarded(EntryPoint::HBA_LoadLibrary, {}, [](Host& host) -> HBA_STATUS {
        if (!host.usable()) {
            return HBA_STATUS_ERROR;
        }
        host.load();
        return HBA_STATUS_OK;
    });
}

HBA_STATUS HBA_FreeLibrary(void) {
    return guarded(EntryPoint::HBA_FreeLibrary, {}, [](Host& host) {
        host.free();
        return HBA_STATUS_OK;
    });
}

HBA_UINT32 HBA_GetNumberOfAdapters(void) {
    return guarded(EntryPoint::HBA_GetNumberOfAdapters, {},
                   [](Host& host) { return static_cast<HBA_UINT32>(host.adapterCount()); });
}

HBA_STATUS HBA_GetAdapterName(HBA_UINT32 adapterindex, char* adaptername) {
    const auto name = Host::instance().adapterName(adapterindex);
    return guarded(EntryPoint::HBA_GetAdapterName, {name.value_or(""), ""},
                   [&](Host&) -> HBA_STATUS {
                       if (adaptername == nullptr) {
                           return HBA_STATUS_ERROR_ARG;
                       }
                       if (!name) {
                           return HBA_STATUS_ERROR_ILLEGAL_INDEX;
                       }
                       const size_t length = name->copy(adaptername, adapterNameSize - 1);
                       adaptername[length] = '\0';
                       return HBA_STATUS_OK;
                   });
}

HBA_HANDLE HBA_OpenAdapter(char* adaptername) {
    HBA_HANDLE handle = HBA_HANDLE_INVALID;
    const std::string name = adaptername == nullptr ? "" : adaptername;
    guarded(EntryPoint::HBA_OpenAdapter, {name, ""}, [&](Host& host) {
        handle = host.open(name);
        return HBA_STATUS_OK;
    });
    return handle;
}

void HBA_CloseAdapter(HBA_HANDLE handle) {
    guarded(EntryPoint::HBA_CloseAdapter, Host::instance().subjectOf(handle), [=](Host& host) {
        host.close(handle);
        return HBA_STATUS_OK;
    });
}

HBA_STATUS HBA_GetAdapterAttributes(HBA_HANDLE handle, HBA_ADAPTERATTRIBUTES* hbaattributes) {
    return guarded(EntryPoint::HBA_GetAdapterAttributes, Host::instance().subjectOf(handle),
                   [=](Host& host) {
                       return host.withCurrentAdapter(handle, [=](Adapter& adapter) -> HBA_STATUS {
                           if (hbaattributes == nullptr) {
                               return HBA_STATUS_ERROR_ARG;
                           }
                           *hbaattributes = adapter.hba;
                           return HBA_STATUS_OK;
                       });
                   });
}

HBA_STATUS HBA_GetAdapterPortAttributes(HBA_HANDLE handle, HBA_UINT32 portindex,
                                        HBA_PORTATTRIBUTES* portattributes) {
    return guarded(EntryPoint::HBA_GetAdapterPortAttributes,
                   Host::instance().subjectOf(handle, portindex), [=](Host& host) {
                       return host.withCurrentAdapter(handle, [=](Adapter& adapter) -> HBA_STATUS {
                           if (portattributes == nullptr) {
                               return HBA_STATUS_ERROR_ARG;
                           }
                           if (portindex >= adapter.ports.size()) {
                               return HBA_STATUS_ERROR_ILLEGAL_INDEX;
                           }
                           *portattributes = adapter.ports[portindex].hba;
                           return HBA_STATUS_OK;
                       });
                   });
}

void HBA_RefreshInformation(HBA_HANDLE handle) {
    guarded(EntryPoint::HBA_RefreshInformation, Host::instance().subjectOf(handle),
            [=](Host& host) {
                host.refresh(handle);
                return HBA_STATUS_OK;
            });
}

HBA_STATUS HBA_GetFcpTargetMapping(HBA_HANDLE handle, HBA_FCPTARGETMAPPING* pmapping) {
    return guarded(EntryPoint::HBA_GetFcpTargetMapping, Host::instance().subjectOf(handle),
                   [=](Host& host) {
                       return host.withCurrentAdapter(handle, [=](Adapter& adapter) {
                           return fillMapping(adapter.ports, adapter.mapping, pmapping);
                       });
                   });
}

HBA_STATUS HBA_SendScsiInquiry(HBA_HANDLE handle, HBA_WWN PortWWN, HBA_UINT64 fcLUN, HBA_UINT8 EVPD,
                               HBA_UINT32 PageCode, void* pRspBuffer, HBA_UINT32 RspBufferSize,
                               void* pSenseBuffer, HBA_UINT32 SenseBufferSize) {
    return guarded(EntryPoint::HBA_SendScsiInquiry, targetSubject(handle, PortWWN),
                   [=](Host& host) {
                       return sendCommand(
                           host, handle, PortWWN, fcLUN, inquiryCommand(EVPD != 0, PageCode),
                           [=](const Lun& lun) { return inquiry(lun, EVPD != 0, PageCode); },
                           pRspBuffer, RspBufferSize, pSenseBuffer, SenseBufferSize);
                   });
}

HBA_STATUS HBA_SendReadCapacity(HBA_HANDLE handle, HBA_WWN portWWN, HBA_UINT64 fcLUN,
                                void* pRspBuffer, HBA_UINT32 RspBufferSize, void* pSenseBuffer,
                                HBA_UINT32 SenseBufferSize) {
    return guarded(
        EntryPoint::HBA_SendReadCapacity, targetSubject(handle, portWWN), [=](Host& host) {
            return sendCommand(host, handle, portWWN, fcLUN, readCapacityCommand, readCapacity,
                               pRspBuffer, RspBufferSize, pSenseBuffer, SenseBufferSize);
        });
}

HBA_STATUS HBA_RegisterForAdapterPortEvents(HBA_PORT_EVENT_CALLBACK callback, void* userData,
                                            HBA_HANDLE handle, HBA_WWN PortWWN,
                                            HBA_CALLBACKHANDLE* callbackHandle) {
    return guarded(EntryPoint::HBA_RegisterForAdapterPortEvents,
                   Host::instance().subjectOf(PortWWN), [=](Host& host) {
                       return host.withAdapter(handle, [&](Adapter& adapter) -> HBA_STATUS {
                           if (callback == nullptr || callbackHandle == nullptr) {
                               return HBA_STATUS_ERROR_ARG;
                           }
                           const Port* const port = portOf(adapter, PortWWN);
                           if (port == nullptr) {
                               return HBA_STATUS_ERROR_ILLEGAL_WWN;
                           }
                           *callbackHandle = host.events().add(callback, userData, PortWWN);
                           if (port->flaps) {
                               host.events().raise(flapping(*port));
                           }
                           return HBA_STATUS_OK;
                       });
                   });
}

HBA_STATUS HBA_RemoveCallback(HBA_CALLBACKHANDLE callbackHandle) {
    return guarded(
        EntryPoint::HBA_RemoveCallback, listenerSubject(callbackHandle), [=](Host& host) {
            return host.events().remove(callbackHandle) ? HBA_STATUS_OK
                                                        : HBA_STATUS_ERROR_INVALID_HANDLE;
        });
}

} // extern "C"
