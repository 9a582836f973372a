#include "tests/access/fake_fc.h"

#include <cstring>
#include <mutex>

namespace {

fake::Libraries libraries;
std::mutex mutex;

// Counts a call; the status that the test has set for it, if any.
uint32_t enter(const char* entryPoint) {
    if (libraries.entered) {
        libraries.entered(entryPoint);
    }
    std::lock_guard lock(mutex);
    ++libraries.calls[entryPoint];
    std::deque<uint32_t>& statuses = libraries.statuses[entryPoint];
    const uint32_t status = statuses.empty() ? 0 : statuses.front();
    if (!statuses.empty()) {
        statuses.pop_front();
    }
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
    uint16_t padding;
    uint32_t status;
    uint32_t next;
};

uint32_t fill(const fake::Attributes& attributes, void* buffer, uint32_t* size) {
    auto* bytes = static_cast<char*>(buffer);
    uint32_t used = 0;
    for (const auto& [id, attribute] : attributes) {
        Head head{};
        head.id = id;
        head.length = static_cast<uint16_t>(attribute.bytes.size());
        head.toldLength = attribute.toldLength.value_or(head.length);
        head.status = attribute.status;
        head.next = used + static_cast<uint32_t>((sizeof head + head.length + 7) / 8 * 8);
        if (head.next + sizeof head > *size) {
            return RM_STATUS_MORE_DATA;
        }
        std::memcpy(bytes + used, &head, sizeof head);
        std::memcpy(bytes + used + sizeof head, attribute.bytes.data(), head.length);
        used = head.next;
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
            return bytes + position + sizeof head;
        }
        position = head.next;
    }
}

RM_STATUS RM_IsLocalHBA(HBA_WWN name, uint32_t* isLocal) {
    *isLocal = portOf(name).second != nullptr;
    return enter(__func__);
}
}
