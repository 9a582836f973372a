#include "tests/access/fake_fc.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <sstream>

namespace {

fake::Libraries libraries;
std::mutex mutex;

// Counts a call; the status that the test has set for it, if any.
uint32_t enter(const char* entryPoint) {
    if (libraries.entered) {
        libraries.entered(entryPoint);
    }
    std::lock_guard lock(mutex);
    // A call that came before needs no memory: as a library in C, it can't throw then.
    const auto counted = libraries.calls.find(entryPoint);
    ++(counted == libraries.calls.end() ? libraries.calls[entryPoint] : counted->second);
    const auto planned = libraries.statuses.find(entryPoint);
    if (planned == libraries.statuses.end() || planned->second.empty()) {
        return 0;
    }
    const uint32_t status = planned->second.front();
    planned->second.pop_front();
    return status;
}

// The port of a name with its adapter, or nulls.
std::pair<fake::Adapter*, fake::Port*> portOf(const HBA_WWN& name) {
    for (fake::Adapter& adapter : libraries.adapters) {
        for (fake::Port& port : adapter.ports) {
            if (std::memcmp(&port.record.PortWWN, &name, sizeof name) == 0) {
                return {&adapter, &port};
            }
        }
    }
    return {};
}

// An attribute buffer is a row of these, each followed by its bytes, up to one with identifier 0.
struct Head {
    uint16_t id;
    uint16_t toldLength;
    uint16_t length;
    uint16_t status;

    // From one row to the next.
    uint32_t step() const { return static_cast<uint32_t>(sizeof(Head) + (length + 7u) / 8 * 8); }
};

uint32_t fill(const fake::Attributes& attributes, void* buffer, uint32_t* size) {
    auto* bytes = static_cast<char*>(buffer);
    uint32_t used = 0;
    for (const auto& [id, attribute] : attributes) {
        Head head{};
        head.id = id;
        head.length = static_cast<uint16_t>(attribute.bytes.size());
        head.toldLength = attribute.toldLength.value_or(head.length);
        head.status = static_cast<uint16_t>(attribute.status);
        if (used + head.step() + sizeof head > *size) {
            return RM_STATUS_MORE_DATA;
        }
        std::memcpy(bytes + used, &head, sizeof head);
        std::memcpy(bytes + used + sizeof head, attribute.bytes.data(), head.length);
        used += head.step();
    }
    std::memset(bytes + used, 0, sizeof(Head));
    return RM_STATUS_OK;
}

// A failing call leaves rubbish.
template <class Record> HBA_STATUS copy(uint32_t status, const Record& from, Record* to) {
    if (status != 0) {
        std::memset(to, 0x5A, sizeof *to);
    } else {
        *to = from;
    }
    return status;
}

// A request on its way to an adapter.
template <class... Arguments> uint32_t request(const char* entryPoint, Arguments... arguments) {
    std::ostringstream text;
    text << entryPoint;
    ((text << ' ' << arguments), ...);
    libraries.requests.push_back(text.str());
    return enter(entryPoint);
}

uint32_t fill(uint32_t status, const std::vector<RM_DRIVERPARAM>& params, RM_DRIVERPARAM* out,
              uint32_t* count) {
    if (status != 0) {
        return status;
    }
    if (*count < params.size()) {
        *count = libraries.toldNeed.value_or(static_cast<uint32_t>(params.size()));
        return libraries.tooSmall;
    }
    std::copy(params.begin(), params.end(), out);
    *count = libraries.toldParams.value_or(static_cast<uint32_t>(params.size()));
    return RM_STATUS_OK;
}

// The status that the test has set comes before the unit's own.
uint32_t send(uint32_t status, const fake::ScsiCommand& command, void* response, void* sense) {
    if (status != 0 || !libraries.scsi) {
        return status;
    }
    return libraries.scsi(command, static_cast<uint8_t*>(response), static_cast<uint8_t*>(sense));
}

uint32_t putNumber(uint32_t status, uint32_t* out) {
    *out = libraries.number.value_or(*out);
    return status;
}

} // namespace

extern "C" {

fake::Libraries* fake_libraries() {
    return &libraries;
}

HBA_UINT32 HBA_GetNumberOfAdapters() {
    enter(__func__);
    return libraries.toldAdapters.value_or(static_cast<uint32_t>(libraries.adapters.size()));
}

HBA_STATUS HBA_GetAdapterName(HBA_UINT32 index, char* name) {
    const uint32_t status = enter(__func__);
    if (status != 0 || index >= libraries.adapters.size()) {
        return status != 0 ? status : HBA_STATUS_ERROR_ILLEGAL_INDEX;
    }
    // Without an end when the name fills the buffer.
    std::strncpy(name, libraries.adapters[index].name.c_str(), 256);
    return HBA_STATUS_OK;
}

HBA_HANDLE HBA_OpenAdapter(char* name) {
    if (enter(__func__) != 0) {
        return HBA_HANDLE_INVALID;
    }
    for (uint32_t i = 0; i < libraries.adapters.size(); ++i) {
        if (libraries.adapters[i].name == name) {
            ++libraries.openHandles;
            return i + 1;
        }
    }
    return HBA_HANDLE_INVALID;
}

void HBA_CloseAdapter(HBA_HANDLE) {
    enter(__func__);
    --libraries.openHandles;
}

HBA_STATUS HBA_RegisterForAdapterPortEvents(HBA_PORT_EVENT_CALLBACK callback, void* data,
                                            HBA_HANDLE, HBA_WWN port, HBA_CALLBACKHANDLE* handle) {
    const uint32_t status = enter(__func__);
    if (status == 0) {
        libraries.registrations.push_back({callback, data, port});
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a number that is told as a handle
        *handle = reinterpret_cast<HBA_CALLBACKHANDLE>(libraries.registrations.size());
    }
    return status;
}

HBA_STATUS HBA_RemoveCallback(HBA_CALLBACKHANDLE handle) {
    const uint32_t status = enter(__func__);
    if (status == 0) {
        libraries.registrations.at(reinterpret_cast<std::size_t>(handle) - 1).callback = nullptr;
    }
    return status;
}

void HBA_RefreshInformation(HBA_HANDLE) {
    enter(__func__);
}

HBA_STATUS HBA_GetAdapterAttributes(HBA_HANDLE handle, HBA_ADAPTERATTRIBUTES* attributes) {
    const uint32_t status = enter(__func__);
    return copy(status, libraries.adapters.at(handle - 1).record, attributes);
}

HBA_STATUS HBA_GetAdapterPortAttributes(HBA_HANDLE handle, HBA_UINT32 index,
                                        HBA_PORTATTRIBUTES* attributes) {
    const uint32_t status = enter(__func__);
    const std::vector<fake::Port>& ports = libraries.adapters.at(handle - 1).ports;
    return index < ports.size() ? copy(status, ports[index].record, attributes)
                                : HBA_STATUS_ERROR_ILLEGAL_INDEX;
}

HBA_STATUS HBA_GetFcpTargetMapping(HBA_HANDLE handle, HBA_FCPTARGETMAPPING* mapping) {
    const uint32_t status = request(__func__, mapping->NumberOfEntries);
    const std::vector<HBA_FCPSCSIENTRY>& rows = libraries.adapters.at(handle - 1).targets;
    const bool fits = rows.size() <= mapping->NumberOfEntries;
    if (fits) { // whatever the status
        HBA_FCPSCSIENTRY* const room = mapping->entry;
        std::copy(rows.begin(), rows.end(), room);
    }
    mapping->NumberOfEntries = libraries.toldTargets.value_or(static_cast<uint32_t>(rows.size()));
    return status != HBA_STATUS_OK ? status : fits ? HBA_STATUS_OK : HBA_STATUS_ERROR_MORE_DATA;
}

HBA_STATUS HBA_SendScsiInquiry(HBA_HANDLE, HBA_WWN, HBA_UINT64 lun, HBA_UINT8 evpd, HBA_UINT32 page,
                               void* response, HBA_UINT32 size, void* sense, HBA_UINT32 senseSize) {
    const uint32_t status = request(__func__, static_cast<int>(evpd), page, size, senseSize);
    return send(status, {0x12, page, lun}, response, sense);
}

HBA_STATUS HBA_SendReadCapacity(HBA_HANDLE, HBA_WWN, HBA_UINT64 lun, void* response,
                                HBA_UINT32 size, void* sense, HBA_UINT32 senseSize) {
    return send(request(__func__, size, senseSize), {0x25, 0, lun}, response, sense);
}

int32_t LRM_InitLib() {
    enter(__func__);
    return libraries.initLib ? libraries.initLib() : 0;
}

RM_STATUS LRM_GetHBAAttributes(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    return status != 0 ? status : fill(portOf(name).first->attributes, buffer, size);
}

RM_STATUS LRM_GetPortAttributes(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    return status != 0 ? status : fill(portOf(name).second->attributes, buffer, size);
}

RM_STATUS LRM_GetPortStatistics(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    return status != 0 ? status : fill(portOf(name).second->statistics, buffer, size);
}

RM_STATUS LRM_GetDriverType(HBA_WWN name, uint32_t* type) {
    const uint32_t status = enter(__func__);
    *type = status != 0 ? 0xBAD : portOf(name).first->driverType;
    return status;
}

void* RM_GetAttributeValue(void* buffer, uint16_t id, uint16_t* length, RM_STATUS* status) {
    auto* bytes = static_cast<char*>(buffer);
    for (uint32_t position = 0;;) {
        Head head;
        std::memcpy(&head, bytes + position, sizeof head);
        if (head.id == 0) {
            *status = RM_STATUS_NOT_SUPPORTED;
            return nullptr;
        }
        if (head.id == id) {
            *length = head.toldLength;
            *status = head.status;
            return libraries.attributePlace != nullptr ? libraries.attributePlace
                                                       : bytes + position + sizeof head;
        }
        position += head.step();
    }
}

RM_STATUS RM_IsLocalHBA(HBA_WWN name, uint32_t* isLocal) {
    *isLocal = portOf(name).second != nullptr;
    return enter(__func__);
}

RM_STATUS RM_StatusString(RM_STATUS status, char* text, uint32_t size) {
    std::snprintf(text, size, "text of %u", status);
    return RM_STATUS_OK;
}

// An entry is the lengths of keyword and value, in two bytes each, and both; one of length 0 ends.
RM_STATUS LRM_GetVPD(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    const auto& vpd = portOf(name).second->vpd;
    if (status != 0 || vpd.empty()) {
        return status != 0 ? status : RM_STATUS_ERROR;
    }
    std::string bytes;
    for (const auto& [keyword, value] : vpd) {
        const uint16_t lengths[] = {static_cast<uint16_t>(keyword.size()),
                                    static_cast<uint16_t>(value.size())};
        bytes.append(reinterpret_cast<const char*>(lengths), sizeof lengths);
        bytes += keyword + value;
    }
    bytes.append(4, '\0');
    if (bytes.size() > *size) {
        return RM_STATUS_MORE_DATA;
    }
    bytes.copy(static_cast<char*>(buffer), bytes.size());
    return RM_STATUS_OK;
}

// A text that fills its buffer has no end.
void* RM_GetNextVpdEntry(void* cursor, char* keyword, uint32_t keywordSize, char* value,
                         uint32_t valueSize) {
    uint16_t lengths[2];
    std::memcpy(lengths, cursor, sizeof lengths);
    if (lengths[0] == 0) {
        return nullptr;
    }
    char* const at = static_cast<char*>(cursor) + sizeof lengths;
    std::strncpy(keyword, std::string(at, lengths[0]).c_str(), keywordSize);
    std::strncpy(value, std::string(at + lengths[0], lengths[1]).c_str(), valueSize);
    char* const next = at + lengths[0] + lengths[1];
    return libraries.vpdStep ? libraries.vpdStep(static_cast<char*>(cursor), next) : next;
}

RM_STATUS LRM_GetSffData(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    const auto& transceiver = portOf(name).second->transceiver;
    if (status != 0 || !transceiver || *size != sizeof *transceiver) {
        return status != 0 ? status : RM_STATUS_NOT_SUPPORTED;
    }
    *size = 0xFFFFFFFF;
    return copy(status, *transceiver, static_cast<RM_SFFDATA*>(buffer));
}

RM_STATUS LRM_DiagGetLoadListParams(HBA_WWN name, RM_LOADLIST* list) {
    const auto& images = portOf(name).second->images;
    list->count = libraries.toldImages.value_or(static_cast<uint32_t>(images.size() + 1));
    RM_LOADENTRY* const room = list->entry;
    std::copy(images.begin(), images.end(), room);
    return enter(__func__);
}

RM_STATUS LRM_GetDriverParams(HBA_WWN name, RM_DRIVERPARAM* params, uint32_t* count) {
    fake::Port* port = portOf(name).second;
    const RM_STATUS status = enter(__func__);
    return port == nullptr ? RM_STATUS_ILLEGAL_WWN : fill(status, port->params, params, count);
}

RM_STATUS LRM_GetDriverParamsGlobal(HBA_WWN, RM_DRIVERPARAM* params, uint32_t* count) {
    return fill(enter(__func__), libraries.globalParams, params, count);
}

RM_STATUS LRM_SetDriverParam(HBA_WWN, const char* assignment, uint32_t control) {
    return request(__func__, assignment, control);
}

RM_STATUS LRM_SetDumpDirectory(HBA_WWN, const char* directory) {
    return request(__func__, directory);
}

RM_STATUS LRM_GetDumpDirectoryA(HBA_WWN, char* directory, uint32_t size) {
    std::strncpy(directory, libraries.dumpDirectory.c_str(), size);
    return request(__func__, size);
}

RM_STATUS LRM_SetDumpRetentionCount(HBA_WWN, uint32_t count) {
    return request(__func__, count);
}

RM_STATUS LRM_GetDumpRetentionCount(HBA_WWN, uint32_t* count) {
    return putNumber(request(__func__), count);
}

RM_STATUS LRM_DeleteDumpFiles(HBA_WWN) {
    return request(__func__);
}

RM_STATUS LRM_GenerateDump(HBA_WWN host, HBA_WWN port) {
    return request(__func__, static_cast<int>(host.wwn[0]), static_cast<int>(port.wwn[0]));
}

RM_STATUS LRM_GenerateEfdDump(HBA_WWN, uint32_t type, uint32_t flags) {
    return request(__func__, type, flags);
}

RM_STATUS LRM_GetDumpFileNames(HBA_WWN, RM_DUMPFILENAMES* names) {
    const uint32_t room = names->count;
    const uint32_t status = putNumber(request(__func__, room), &names->count);
    if (status != 0 || libraries.dumpFiles.empty()) {
        return status;
    }
    names->count = static_cast<uint32_t>(libraries.dumpFiles.size());
    if (room < names->count) {
        return RM_STATUS_BUFFER_TOO_SMALL;
    }
    char* name = reinterpret_cast<char*>(names) + offsetof(RM_DUMPFILENAMES, name);
    for (const std::string& file : libraries.dumpFiles) {
        std::strncpy(name, file.c_str(), sizeof names->name[0]);
        name += sizeof names->name[0];
    }
    return RM_STATUS_OK;
}

RM_STATUS LRM_GetWWNCapability(HBA_WWN, uint32_t* capability) {
    return putNumber(request(__func__, *capability), capability);
}

RM_STATUS LRM_ReadWWN(HBA_WWN port, uint32_t bank, HBA_WWN* wwpn, HBA_WWN* wwnn, uint32_t* state) {
    *wwpn = port;
    *wwnn = portOf(port).second->record.NodeWWN;
    return putNumber(request(__func__, bank), state);
}

RM_STATUS LRM_ChangeWWN(HBA_WWN, HBA_WWN wwpn, HBA_WWN wwnn, uint32_t bank, uint32_t* state) {
    return putNumber(
        request(__func__, static_cast<int>(wwpn.wwn[7]), static_cast<int>(wwnn.wwn[7]), bank),
        state);
}

RM_STATUS LRM_RestoreWWN(HBA_WWN, uint32_t bank, uint32_t* state) {
    return putNumber(request(__func__, bank), state);
}

RM_STATUS RM_ValidateWwn(const HBA_WWN*) {
    return enter(__func__);
}

uint32_t RM_GetNumberOfLocalAdapters() {
    enter(__func__);
    return static_cast<uint32_t>(libraries.adapters.size());
}

RM_STATUS RM_GetLocalHBAInfo(RM_LOCALHBAARGUMENT* argument, RM_LOCALHBAINFO* info) {
    const uint32_t status = enter(__func__);
    info->port = libraries.adapters.at(argument->adapterIndex).ports.at(0).record.PortWWN;
    return status;
}

RM_STATUS LRM_VPList(HBA_WWN port, RM_VPORTLIST* list) {
    const uint32_t status = enter(__func__);
    if (status != 0) {
        return status;
    }
    const auto& entries = portOf(port).second->virtualPorts;
    const bool fits = entries.size() <= list->count;
    if (fits) {
        RM_VPORTENTRY* const room = list->entry;
        std::copy(entries.begin(), entries.end(), room);
    }
    list->count = libraries.toldVirtualPorts.value_or(static_cast<uint32_t>(entries.size()));
    return fits ? RM_STATUS_OK : RM_STATUS_MORE_DATA;
}

// The name has no end.
RM_STATUS LRM_VPGetAttributes(HBA_WWN, HBA_WWN virtualPort, RM_VPORTATTRIBUTES* attributes) {
    if (attributes->version != RM_VPORT_ATTRIBUTES_VERSION) {
        return RM_STATUS_ERROR;
    }
    std::memset(attributes, 'a' + virtualPort.wwn[7], sizeof *attributes);
    return enter(__func__);
}

RM_STATUS LRM_VPListTargets(HBA_WWN, HBA_WWN, HBA_FCPTARGETMAPPING* targets) {
    return request(__func__, targets->NumberOfEntries);
}

RM_STATUS LRM_GetVMFromVPort(const RM_VPORTENTRY*, RM_VMENTRY* firstEntry) {
    auto* count = reinterpret_cast<uint32_t*>(firstEntry) - 1;
    const bool fits = libraries.machines.size() <= *count;
    if (fits) {
        std::copy(libraries.machines.begin(), libraries.machines.end(), firstEntry);
    }
    *count = static_cast<uint32_t>(libraries.machines.size());
    const uint32_t status = enter(__func__);
    return status != 0 ? status : fits ? RM_STATUS_OK : RM_STATUS_MORE_DATA;
}

RM_STATUS LRM_GetVMInfo(const RM_VMENTRY* machine, RM_VMINFO* info) {
    std::memcpy(info->machineName, machine->machine, sizeof info->machineName);
    info->memorySize = 512;
    return enter(__func__);
}

RM_STATUS LRM_SetBootBiosState(HBA_WWN, uint32_t enable) {
    return request(__func__, enable);
}

RM_STATUS RM_ImportHBAFileA(const char* path) {
    return request(__func__, path);
}

RM_STATUS RM_VerifyFirmwareA(HBA_WWN host, HBA_WWN port, const char* path) {
    return request(__func__, static_cast<int>(host.wwn[0]), static_cast<int>(port.wwn[0]), path);
}

RM_STATUS LRM_DownloadFirmware(HBA_WWN, const char* path, uint32_t flags) {
    return request(__func__, path, flags);
}

RM_STATUS LRM_ResetHBA(HBA_WWN, uint32_t mode) {
    return request(__func__, mode);
}

RM_STATUS LRM_SetPortEnabled(HBA_WWN, uint8_t enable, uint8_t* state) {
    *state = static_cast<uint8_t>(libraries.number.value_or(*state));
    return request(__func__, static_cast<int>(enable));
}

RM_STATUS LRM_DiagBeacon(HBA_WWN, uint32_t state) {
    return request(__func__, state);
}

RM_STATUS LRM_DiagBeaconState(HBA_WWN, uint32_t* state) {
    return putNumber(enter(__func__), state);
}

RM_STATUS LRM_DiagEchoTestV2(HBA_WWN, HBA_WWN target, uint32_t cycles, uint32_t haltOnError,
                             uint32_t* testId, uint32_t flags, const void* pattern) {
    *testId = 4711;
    return request(__func__, static_cast<int>(target.wwn[7]), cycles, haltOnError, flags,
                   static_cast<const char*>(pattern));
}

RM_STATUS LRM_DiagLoopBackTestV3(HBA_WWN, uint32_t internal, uint32_t cycles, uint32_t haltOnError,
                                 uint32_t* testId, uint32_t flags, const void* pattern) {
    *testId = 4711;
    return request(__func__, internal, cycles, haltOnError, flags,
                   static_cast<const char*>(pattern));
}

RM_STATUS LRM_DiagPciLoopBackTestV2(HBA_WWN, uint32_t cycles, uint32_t haltOnError,
                                    uint32_t* testId, uint32_t flags, const void* pattern) {
    *testId = 4711;
    return request(__func__, cycles, haltOnError, flags, static_cast<const char*>(pattern));
}

RM_STATUS LRM_DiagRunPOST(HBA_WWN, uint32_t* testId) {
    *testId = 4711;
    return request(__func__);
}

RM_STATUS LRM_DiagGetResults(HBA_WWN, uint32_t testId, RM_DIAGRESULT* result) {
    const uint32_t status = enter(__func__);
    if (testId != 4711) {
        return RM_STATUS_ERROR;
    }
    if (!libraries.results.empty()) {
        *result = libraries.results.front();
        if (libraries.results.size() > 1) {
            libraries.results.pop_front();
        }
    }
    return status;
}

RM_STATUS LRM_DiagCancelDiagnostic(HBA_WWN, uint32_t testId) {
    return request(__func__, testId);
}

RM_STATUS LRM_GetFcpTargetMapping(HBA_WWN name, HBA_FCPTARGETMAPPING* mapping) {
    if (const fake::Adapter* adapter = portOf(name).first) {
        mapping->NumberOfEntries = static_cast<uint32_t>(adapter->targets.size());
    }
    return enter(__func__);
}
}
