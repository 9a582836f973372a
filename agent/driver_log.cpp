#include "agent/driver_log.h"

#include "agent/creation.h"
#include "agent/fc_adapters.h"
#include "agent/service_links.h"
#include "common/settings.h"
#include "common/tvr_common.h"

#include <array>
#include <cerrno>
#include <deque>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace cimple {

namespace {

constexpr char driver_word[] = "tvfc"; // in all lines of the driver

constexpr std::size_t longest_line = 65536;
constexpr std::size_t log_block = 65536;

Ref<TVRHBA_RecordLog> make_driver_log(const Instance_Maps& maps) {
    auto log = try_make<TVRHBA_RecordLog>();
    if (!log) {
        TVR_LOG("Failed to allocate memory to create TVRHBA_RecordLog");
        return log;
    }
    const std::string id = driver_log_id(maps);
    log->InstanceID.set(id);
    log->ElementName.set(id);
    log->Name.set("Driver logs for Tavrin FC Provider");
    log->MaxNumberOfRecords.set(DeviceLog::capacity);
    log->CurrentNumberOfRecords.set(0);
    log->LogState.set(4);
    log->OverwritePolicy.set(2);
    const uint16 status = CLogger::getInstance().isEnabled() != 0 ? 2 : 10;
    log->OperationalStatus.set(Array<uint16>{status});
    log->RequestedState.set(2);
    log->EnabledState.set(3);
    log->HealthState.set(5);
    return log;
}

bool create_driver_log_capabilities(Instance_Maps& maps) {
    auto capabilities = try_make<TVRHBA_EnabledRecordLogCapabilities>();
    if (!capabilities) {
        TVR_LOG("Failed to allocate memory to create TVRHBA_EnabledRecordLogCapabilities");
        return false;
    }
    capabilities->InstanceID.set("TVR:FC Driver Record Log Capabilities");
    capabilities->RequestedStatesSupported.set(Array<uint16>{2, 3, 11});
    capabilities->ElementNameEditSupported.set(false);
    capabilities->MaxElementNameLen.set(0);
    return insert(maps.m_TVRHBA_TVRHBA_EnabledRecordLogCapabilities_map, std::move(capabilities),
                  "Insert Failed : m_TVRHBA_EnabledRecordLogCapabilities_map") != nullptr;
}

const TVRHBA_SoftwareIdentity* find_identity(const Instance_Maps& maps, const std::string& id) {
    for (const TVRHBA_SoftwareIdentity* identity : maps.m_TVRHBA_SoftwareIdentity_map) {
        if (identity->InstanceID.value.equali(id.c_str())) {
            return identity;
        }
    }
    TVR_LOG("Missing Provider Software Identity");
    return nullptr;
}

void create_use_of_log(Instance_Maps& maps, const TVRHBA_RecordLog& log,
                       const TVRHBA_SoftwareIdentity& identity) {
    TVR_LOG("%s uses log : %s", identity.ElementName.value.c_str(), log.InstanceID.value.c_str());
    if (auto use = try_association<TVRHBA_ProviderUseOfLog>(implementation_namespace)) {
        use->Antecedent = log.clone();
        use->Dependent = identity.clone();
        add_association(maps, std::move(use));
    }
}

uint32 create_driver_log(Instance_Maps& maps, const std::string& identity_id) {
    auto made = make_driver_log(maps);
    if (!made) {
        return TVR_FAILURE;
    }
    const TVRHBA_RecordLog* log = insert(maps.m_TVRHBA_TVRHBA_RecordLog_map, std::move(made),
                                         "Insert Failed : m_TVRHBA_RecordLog_map");
    if (log == nullptr || !create_driver_log_capabilities(maps)) {
        return TVR_FAILURE;
    }
    const TVRHBA_SoftwareIdentity* identity = find_identity(maps, identity_id);
    if (identity == nullptr) {
        return TVR_FAILURE;
    }
    create_use_of_log(maps, *log, *identity);
    return 0;
}

// ---- the system's log

// Takes the blocks of a file and keeps its newest lines that have the driver's word.
class Driver_Lines {
public:
    void take(std::string_view block) {
        while (!block.empty()) {
            const std::size_t end = block.find('\n');
            const std::string_view part = block.substr(0, end);
            _line.append(part.substr(0, longest_line - std::min(longest_line, _line.size())));
            if (end == std::string_view::npos) {
                return;
            }
            end_line();
            block.remove_prefix(end + 1);
        }
    }
    // Ends a last line without its end.
    const std::deque<std::string>& finish() {
        end_line();
        return _newest;
    }

private:
    void end_line() {
        if (_line.find(driver_word) != std::string::npos) {
            _newest.push_back(_line);
            if (_newest.size() > DeviceLog::capacity) {
                _newest.pop_front();
            }
        }
        _line.clear();
    }

    std::string _line;
    std::deque<std::string> _newest; // the last one is the newest
};

// A file that ends in time: nothing that waits for a writer, and no more than it has now.
void read_file(const std::string& path, Driver_Lines& lines) {
    const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) {
        return;
    }
    struct stat status {};
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
        std::array<char, log_block> block;
        for (off_t left = status.st_size; left > 0;) {
            const ssize_t read = ::read(file, block.data(), block.size());
            if (read < 0 && errno == EINTR) {
                continue;
            }
            if (read <= 0) {
                break;
            }
            lines.take({block.data(), static_cast<std::size_t>(std::min<off_t>(read, left))});
            left -= read;
        }
    }
    ::close(file);
}

} // namespace

std::string driver_log_id(const Instance_Maps& maps) {
    const auto& systems = maps.m_CIM_ComputerSystem_map;
    return std::string("TVR: FC Driver Record Log:") +
           (systems.empty() ? "" : systems.get(0)->Name.value.c_str());
}

std::string provider_log_id(const Instance_Maps& maps) {
    const auto& systems = maps.m_CIM_ComputerSystem_map;
    return std::string("TVRHBA:ProviderLog:") +
           (systems.empty() ? "" : systems.get(0)->Name.value.c_str());
}

const TVRHBA_RecordLog* find_log(const Instance_Maps& maps, const std::string& id) {
    for (const TVRHBA_RecordLog* log : maps.m_TVRHBA_TVRHBA_RecordLog_map) {
        if (log->InstanceID.value.equali(id.c_str())) {
            return log;
        }
    }
    return nullptr;
}

uint32 CreateFCDriverLogClasses(Instance_Maps& maps, const Data* data) try {
    TVR_LOG("Enter CreateFCDriverLogClasses");
    uint32 status = 0;
    for_each_FC_adapter(data, [&](const FCAdapter& adapter) {
        const FCAdapterAttributes& attributes = *adapter.getFCAttributes();
        status = create_driver_log(maps, "TVR FC HBA: Driver " + attributes.DriverName + " v" +
                                             attributes.DriverVersion);
        return false;
    });
    if (status == 0) {
        TVR_LOG("Exit CreateFCDriverLogClasses");
    }
    return status;
} catch (const std::bad_alloc&) {
    return TVR_FAILURE;
}

void ReadDriverEvents(DeviceLog& log) {
    TVR_LOG("Reading Events for %s", driver_word);
    Driver_Lines lines;
    read_file(settings().systemLog, lines);
    const std::deque<std::string>& newest = lines.finish();
    for (auto line = newest.rbegin(); line != newest.rend() && log.add(*line) == 0; ++line) {
    }
    TVR_LOG("Finished reading Events for %s", driver_word);
    TVR_LOG("Logging of FC Driver Log Ends");
}

} // namespace cimple
