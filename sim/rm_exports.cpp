// The exported RM library: the calls of one name, and those that exist as LRM_name and RM_name.
#define RM_API __attribute__((visibility("default")))
#define HBA_API __attribute__((visibility("default")))

#include "sim/guarded.h"

#include "sim/attribute_buffer.h"
#include "sim/rm_behaviour.h"
#include "sim/vpd.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>

using namespace tvrsim;

namespace {

/// What a call is about: the port that its first argument names.
template <class... Rest> Subject subjectOf(const HBA_WWN& port, const Rest&...) {
    return Host::instance().subjectOf(port);
}

/// LRM_GenerateDump names its host before its port.
Subject subjectOf(const HBA_WWN&, const HBA_WWN& port) {
    return Host::instance().subjectOf(port);
}

/// A virtual port is named by its entry in a list.
Subject subjectOf(const RM_VPORTENTRY* virtualPort, RM_VMENTRY*) {
    return virtualPort == nullptr ? Subject{} : Host::instance().subjectOf(virtualPort->wwpn);
}

template <class... Any> Subject subjectOf(const Any&...) {
    return {};
}

/// HBA_LoadLibrary of the real HBA API library, or null when this library stands in its place. The
/// lookup goes through the program's handle: one in the default scope would begin with this
/// library.
decltype(&HBA_LoadLibrary) loadOfRealLibrary() {
    void* const program = dlopen(nullptr, RTLD_NOW);
    if (program == nullptr) {
        return nullptr;
    }
    const auto load =
        reinterpret_cast<decltype(&HBA_LoadLibrary)>(dlsym(program, "HBA_LoadLibrary"));
    dlclose(program);
    return load == &HBA_LoadLibrary ? nullptr : load;
}

/// The status of LRM_InitLib and RM_InitLib. Under the real HBA API library this one is a vendor's
/// among others, and that library knows no adapters until it was told to load its vendors. It has
/// loaded them already when it refuses to do so again.
RM_STATUS initialize(Host& host) {
    if (!host.usable()) {
        return RM_STATUS_ERROR;
    }
    if (const auto load = loadOfRealLibrary()) {
        load();
    }
    return RM_STATUS_OK;
}

} // namespace

extern "C" {

int32_t LRM_InitLib(void) {
    return static_cast<int32_t>(guarded(EntryPoint::LRM_InitLib, {}, initialize));
}

RM_API int32_t RM_InitLib(void);
int32_t RM_InitLib(void) {
    return static_cast<int32_t>(guarded(EntryPoint::RM_InitLib, {}, initialize));
}

void* RM_GetAttributeValue(void* buffer, uint16_t attribute, uint16_t* length, RM_STATUS* status) {
    void* value = nullptr;
    uint16_t found = 0;
    const RM_STATUS result = guarded(EntryPoint::RM_GetAttributeValue, {}, [&](Host&) {
        value = buffer == nullptr ? nullptr : findAttribute(buffer, attribute, found);
        return value == nullptr ? RM_STATUS_ERROR : RM_STATUS_OK;
    });
    if (length != nullptr) {
        *length = found;
    }
    if (status != nullptr) {
        *status = result;
    }
    return value;
}

void* RM_GetNextVpdEntry(void* cursor, char* keyword, uint32_t keywordSize, char* value,
                         uint32_t valueSize) {
    void* next = nullptr;
    guarded(EntryPoint::RM_GetNextVpdEntry, {}, [&](Host&) {
        if (cursor != nullptr && keyword != nullptr && value != nullptr) {
            next = nextVpdEntry(cursor, {keyword, keywordSize}, {value, valueSize});
        }
        return RM_STATUS_OK;
    });
    return next;
}

uint32_t RM_GetNumberOfLocalAdapters(void) {
    return guarded(EntryPoint::RM_GetNumberOfLocalAdapters, {},
                   [](Host& host) { return static_cast<uint32_t>(host.portCount()); });
}

RM_STATUS RM_GetLocalHBAInfo(RM_LOCALHBAARGUMENT* argument, RM_LOCALHBAINFO* info) {
    return guarded(EntryPoint::RM_GetLocalHBAInfo, {}, [=](Host& host) {
        if (argument == nullptr || info == nullptr) {
            return RM_STATUS_ERROR;
        }
        const auto name = host.portName(argument->adapterIndex);
        if (!name) {
            return RM_STATUS_ERROR;
        }
        info->port = *name;
        return RM_STATUS_OK;
    });
}

RM_STATUS RM_ImportHBAFileA(const char* path) {
    return guarded(EntryPoint::RM_ImportHBAFileA, {},
                   [=](Host&) { return behaviour::ImportHBAFile(path); });
}

RM_STATUS RM_IsLocalHBA(HBA_WWN port, uint32_t* isLocal) {
    return guarded(EntryPoint::RM_IsLocalHBA, subjectOf(port), [=](Host& host) {
        if (isLocal == nullptr) {
            return RM_STATUS_ERROR;
        }
        *isLocal = host.isLocal(port) ? 1 : 0;
        return RM_STATUS_OK;
    });
}

RM_STATUS RM_StatusString(RM_STATUS status, char* text, uint32_t textSize) {
    return guarded(EntryPoint::RM_StatusString, {}, [=](Host&) {
        if (text == nullptr || textSize == 0) {
            return RM_STATUS_ERROR;
        }
        const std::string_view found = behaviour::statusText(status);
        text[found.copy(text, textSize - 1)] = '\0';
        return RM_STATUS_OK;
    });
}

RM_STATUS RM_ValidateWwn(const HBA_WWN* wwn) {
    return guarded(EntryPoint::RM_ValidateWwn, {}, [=](Host&) {
        return wwn != nullptr && behaviour::isValidName(*wwn) ? RM_STATUS_OK
                                                              : RM_STATUS_ILLEGAL_WWN;
    });
}

RM_STATUS RM_VerifyFirmwareA(HBA_WWN, HBA_WWN port, const char* path) {
    return guarded(EntryPoint::RM_VerifyFirmwareA, subjectOf(port),
                   [=](Host&) { return behaviour::VerifyFirmware(port, path); });
}

#define TVRSIM_EXPORT(name, parameters, arguments)                                                 \
    RM_STATUS LRM_##name parameters {                                                              \
        return guarded(EntryPoint::LRM_##name, subjectOf arguments,                                \
                       [=](Host&) { return behaviour::name arguments; });                          \
    }                                                                                              \
    RM_API RM_STATUS RM_##name parameters;                                                         \
    RM_STATUS RM_##name parameters {                                                               \
        return guarded(EntryPoint::RM_##name, subjectOf arguments,                                 \
                       [=](Host&) { return behaviour::name arguments; });                          \
    }
TVRSIM_LRM_ENTRY_POINTS(TVRSIM_EXPORT)
#undef TVRSIM_EXPORT

} // extern "C"
