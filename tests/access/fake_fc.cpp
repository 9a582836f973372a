#include "tests/access/fake_fc.h"

#include <cstdio>
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
    if (statuses.empty()) {
        return 0;
    }
    const uint32_t status = statuses.front();
    statuses.pop_front();
    return status;
}

std::string toText(const HBA_WWN& wwn) {
    char text[17];
    for (int i = 0; i < 8; ++i) {
        snprintf(text + 2 * i, 3, "%02X", wwn.wwn[i]);
    }
    return text;
}

fake::Adapter* adapterOf(HBA_HANDLE handle) {
    return handle == 0 || handle > libraries.adapters.size() ? nullptr
                                                             : &libraries.adapters[handle - 1];
}

// The port of a name, with its adapter.
fake::Port* portOf(const HBA_WWN& name, fake::Adapter** owner = nullptr) {
    for (fake::Adapter& adapter : libraries.adapters) {
        for (fake::Port& port : adapter.ports) {
            if (std::memcmp(&port.record.PortWWN, &name, sizeof name) == 0) {
                if (owner != nullptr) {
                    *owner = &adapter;
                }
                return &port;
            }
        }
    }
    return nullptr;
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
    if (const uint32_t status = enter(__func__)) {
        return status;
    }
    if (index >= libraries.adapters.size()) {
        return HBA_STATUS_ERROR_ILLEGAL_INDEX;
    }
    // As it is written on paper, without an end when the name fills the buffer.
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
    // A failing call leaves rubbish.
    if (const uint32_t status = enter(__func__)) {
        std::memset(attributes, 0x5A, sizeof *attributes);
        return status;
    }
    *attributes = adapterOf(handle)->record;
    return HBA_STATUS_OK;
}

HBA_STATUS HBA_GetAdapterPortAttributes(HBA_HANDLE handle, HBA_UINT32 index,
                                        HBA_PORTATTRIBUTES* attributes) {
    if (const uint32_t status = enter(__func__)) {
        std::memset(attributes, 0x5A, sizeof *attributes);
        return status;
    }
    const fake::Adapter* adapter = adapterOf(handle);
    if (index >= adapter->ports.size()) {
        return HBA_STATUS_ERROR_ILLEGAL_INDEX;
    }
    *attributes = adapter->ports[index].record;
    return HBA_STATUS_OK;
}

int32_t LRM_InitLib() {
    enter(__func__);
    return libraries.initLib ? libraries.initLib() : 0;
}

RM_STATUS LRM_GetHBAAttributes(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    fake::Adapter* adapter = nullptr;
    if (status != 0 || portOf(name, &adapter) == nullptr) {
        return status != 0 ? status : static_cast<uint32_t>(RM_STATUS_ERROR);
    }
    return fill(adapter->attributes, buffer, size);
}

RM_STATUS LRM_GetPortAttributes(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    const fake::Port* port = portOf(name);
    if (status != 0 || port == nullptr) {
        return status != 0 ? status : static_cast<uint32_t>(RM_STATUS_ERROR);
    }
    return fill(port->attributes, buffer, size);
}

RM_STATUS LRM_GetPortStatistics(HBA_WWN name, void* buffer, uint32_t* size) {
    const uint32_t status = enter(__func__);
    const fake::Port* port = portOf(name);
    if (status != 0 || port == nullptr) {
        return status != 0 ? status : static_cast<uint32_t>(RM_STATUS_ERROR);
    }
    return fill(port->statistics, buffer, size);
}

RM_STATUS LRM_GetDriverType(HBA_WWN name, uint32_t* type) {
    *type = 0xBAD;
    if (const uint32_t status = enter(__func__)) {
        return status;
    }
    fake::Adapter* adapter = nullptr;
    if (portOf(name, &adapter) == nullptr) {
        return RM_STATUS_ERROR;
    }
    *type = adapter->driverType;
    return RM_STATUS_OK;
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
    if (const uint32_t status = enter(__func__)) {
        return status;
    }
    *isLocal = libraries.localPorts[toText(name)] ? 1 : 0;
    return RM_STATUS_OK;
}

RM_STATUS RM_StatusString(RM_STATUS status, char* text, uint32_t size) {
    const auto found = libraries.statusTexts.find(status);
    if (found == libraries.statusTexts.end()) {
        return RM_STATUS_ERROR;
    }
    std::strncpy(text, found->second.c_str(), size);
    return RM_STATUS_OK;
}
}
