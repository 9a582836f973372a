// What callers change at a port through the RM library: driver parameters, boot code, state, dumps.
#include "sim/host.h"

#include "sim/restart.h"
#include "sim/rm_behaviour.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace tvrsim::behaviour {

namespace {

/// The number of a text in decimal, or in hexadecimal with 0x; nothing when it is none of 32 bits.
std::optional<uint32_t> numberOf(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number, base);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        return std::nullopt;
    }
    return number;
}

/// Calls work with the dumps of a port that has some.
template <class Work> RM_STATUS withDumps(const HBA_WWN& port, Work work) {
    return Host::instance().withPort(port, [&](Adapter&, Port& found) -> RM_STATUS {
        return found.inventory.dumps ? work(*found.inventory.dumps) : RM_STATUS_NOT_SUPPORTED;
    });
}

/// Removes the oldest files when there are more than are to be kept.
void keepRetained(Dumps& dumps) {
    const size_t kept = std::max(dumps.retentionCount, 1u);
    if (dumps.files.size() > kept) {
        dumps.files.erase(dumps.files.begin(),
                          dumps.files.end() - static_cast<std::ptrdiff_t>(kept));
    }
}

RM_STATUS writeDump(const HBA_WWN& port, const std::string& kind) {
    return withDumps(port, [&](Dumps& dumps) {
        dumps.files.push_back("tvrdump_" + wwnText(port) + kind + '_' +
                              std::to_string(++dumps.written) + ".dmp");
        keepRetained(dumps);
        return RM_STATUS_OK;
    });
}

bool hasBootCode(const Adapter& adapter) {
    const auto found = adapter.attributes.find(RM_HA_BOOT_CODE_ENABLED);
    return found != adapter.attributes.end() &&
           std::any_of(found->second.begin(), found->second.end(), [](char c) { return c != 0; });
}

} // namespace

RM_STATUS SetDriverParam(HBA_WWN port, const char* assignment, uint32_t control) {
    Host& host = Host::instance();
    return host.withPort(port, [&](Adapter&, Port& found) -> RM_STATUS {
        if (assignment == nullptr ||
            (control & ~(RM_DRIVER_PARAM_PERMANENT | RM_DRIVER_PARAM_GLOBAL)) != 0) {
            return RM_STATUS_ERROR;
        }
        auto& parameters = (control & RM_DRIVER_PARAM_GLOBAL) != 0
                               ? host.globalDriverParameters()
                               : found.inventory.driverParameters;
        if (!parameters) {
            return RM_STATUS_NOT_SUPPORTED;
        }
        const std::string_view text = assignment;
        const size_t sign = text.find('=');
        if (sign == std::string_view::npos) {
            return RM_STATUS_ERROR;
        }
        const auto parameter = std::find_if(
            parameters->entries.begin(), parameters->entries.end(), [&](const DriverParam& each) {
                return textIn(each.record.name) == text.substr(0, sign);
            });
        const auto value = numberOf(text.substr(sign + 1));
        if (parameter == parameters->entries.end() || !value || *value < parameter->record.low ||
            *value > parameter->record.high) {
            return RM_STATUS_ERROR;
        }
        parameter->record.current = *value;
        if ((control & RM_DRIVER_PARAM_PERMANENT) != 0) {
            parameter->permanent = *value;
        }
        return RM_STATUS_OK;
    });
}

RM_STATUS SetBootBiosState(HBA_WWN port, uint32_t enable) {
    return Host::instance().withPort(port, [=](Adapter& adapter, Port&) {
        if (!adapter.attributes.contains(RM_HA_BOOT_CODE_ENABLED)) {
            return RM_STATUS_NOT_SUPPORTED;
        }
        if (enable > 1) {
            return RM_STATUS_ERROR;
        }
        adapter.attributes[RM_HA_BOOT_CODE_ENABLED] = integerAttribute(enable);
        return RM_STATUS_OK;
    });
}

RM_STATUS SetPortEnabled(HBA_WWN port, uint8_t enable, uint8_t* state) {
    Host& host = Host::instance();
    return host.withPort(port, [&](Adapter& adapter, Port& found) {
        if (enable > 1 || state == nullptr) {
            return RM_STATUS_ERROR;
        }
        const uint32_t present = physicalStateOf(found);
        if (enable == 0 && hasBootCode(adapter)) {
            return RM_STATUS_BOOT_CODE_ENABLED;
        }
        *state = enable;
        found.stateAfterReset.reset();
        if ((enable != 0) == (present != RM_PORT_STATE_DISABLED)) {
            return RM_STATUS_OK;
        }
        if (enable == 0) {
            found.stateWhenEnabled = present;
        }
        const uint32_t next = enable == 0 ? RM_PORT_STATE_DISABLED : found.stateWhenEnabled;
        if (found.enableNeedsReset) {
            found.stateAfterReset = next;
            *state = RM_PORT_ENABLED_AFTER_RESET;
        } else {
            const Link before = linkOf(found);
            setState(found, next);
            host.events().raiseChange(before, linkOf(found), false);
        }
        return RM_STATUS_OK;
    });
}

RM_STATUS ResetHBA(HBA_WWN port, uint32_t mode) {
    Host& host = Host::instance();
    return host.withPort(port, [&](Adapter& adapter, Port& found) {
        if (mode != 1) {
            return RM_STATUS_ERROR;
        }
        const Link before = linkOf(found);
        restart(adapter, found, Restart::reset);
        host.events().raiseChange(before, linkOf(found), true);
        host.indexPorts();
        dropTemporaryValues(host.globalDriverParameters());
        return RM_STATUS_OK;
    });
}

RM_STATUS GenerateDump(HBA_WWN, HBA_WWN port) {
    return writeDump(port, "");
}

RM_STATUS GenerateEfdDump(HBA_WWN port, uint32_t type, uint32_t) {
    return writeDump(port, "_type" + std::to_string(type));
}

RM_STATUS GetDumpDirectoryA(HBA_WWN port, char* directory, uint32_t size) {
    return withDumps(port, [=](Dumps& dumps) -> RM_STATUS {
        if (directory == nullptr) {
            return RM_STATUS_ERROR;
        }
        if (dumps.directory.size() > size) {
            return RM_STATUS_BUFFER_TOO_SMALL;
        }
        // A directory that fills the buffer has no terminator.
        if (dumps.directory.copy(directory, size) < size) {
            directory[dumps.directory.size()] = '\0';
        }
        return RM_STATUS_OK;
    });
}

RM_STATUS SetDumpDirectory(HBA_WWN port, const char* directory) {
    return withDumps(port, [=](Dumps& dumps) {
        const std::string_view text = directory == nullptr ? "" : directory;
        if (!text.starts_with('/') || text.size() >= RM_DUMP_DIRECTORY_SIZE) {
            return RM_STATUS_DUMP_DIRECTORY;
        }
        dumps.directory = text;
        return RM_STATUS_OK;
    });
}

RM_STATUS GetDumpRetentionCount(HBA_WWN port, uint32_t* count) {
    return withDumps(port, [=](Dumps& dumps) {
        if (count == nullptr) {
            return RM_STATUS_ERROR;
        }
        *count = dumps.retentionCount;
        return RM_STATUS_OK;
    });
}

RM_STATUS SetDumpRetentionCount(HBA_WWN port, uint32_t count) {
    return withDumps(port, [=](Dumps& dumps) {
        if (count == 0) {
            return RM_STATUS_ERROR;
        }
        dumps.retentionCount = count;
        keepRetained(dumps);
        return RM_STATUS_OK;
    });
}

RM_STATUS GetDumpFileNames(HBA_WWN port, RM_DUMPFILENAMES* names) {
    return withDumps(port, [=](Dumps& dumps) -> RM_STATUS {
        if (names == nullptr) {
            return RM_STATUS_ERROR;
        }
        const uint32_t room = names->count;
        names->count = static_cast<uint32_t>(dumps.files.size());
        if (room < dumps.files.size()) {
            return RM_STATUS_BUFFER_TOO_SMALL;
        }
        char* name = reinterpret_cast<char*>(names) + offsetof(RM_DUMPFILENAMES, name);
        for (const std::string& file : dumps.files) {
            std::memset(name, 0, sizeof names->name[0]);
            file.copy(name, sizeof names->name[0]);
            name += sizeof names->name[0];
        }
        return RM_STATUS_OK;
    });
}

RM_STATUS DeleteDumpFiles(HBA_WWN port) {
    return withDumps(port, [](Dumps& dumps) {
        dumps.files.clear();
        return RM_STATUS_OK;
    });
}

} // namespace tvrsim::behaviour
