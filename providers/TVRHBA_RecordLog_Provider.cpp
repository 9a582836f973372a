#include "providers/TVRHBA_RecordLog_Provider.h"

#include "agent/driver_log.h"
#include "providers/service_call.h"

namespace cimple {

namespace {

constexpr uint16 log_enabled = 2;
constexpr uint16 log_disabled = 3;
constexpr uint32 settable_level = TVR_DBG; // the one at which the system logs

// The log that a client names, to the letter; null, with a line in the log, for any other.
TVRHBA_RecordLog* find_own_log(const Instance_Maps& maps, const TVRHBA_RecordLog* self) {
    for (TVRHBA_RecordLog* log : maps.m_TVRHBA_TVRHBA_RecordLog_map) {
        if (log->InstanceID.value == self->InstanceID.value) {
            return log;
        }
    }
    TVR_LOG("Invalid instance of Record Log");
    return nullptr;
}

bool is_driver_log(const Instance_Maps& maps, const TVRHBA_RecordLog* self) {
    return self->InstanceID.value.equali(driver_log_id(maps).c_str());
}

// Writes the settings of the log, and takes them back as they were written.
void keep_log_settings() {
    CLogger& logger = CLogger::getInstance();
    logger.saveConfigData();
    logger.loadConfigData();
}

bool sets_log_file(TVR_FileLogger& file, uint16 mode, const String& path) {
    return (mode != TVR_LOG_FILE && mode != TVR_LOG_FILE_AND_RECORDS) ||
           (!path.empty() && file.setLogFile(path.c_str()) == 0);
}

uint32 set_log_params(ProviderAgent& agent, const TVRHBA_RecordLog* self, uint16 level, uint16 mode,
                      const String& path) {
    TVRHBA_RecordLog* log = find_own_log(agent.maps, self);
    if (log == nullptr) {
        return METHOD_INVALID_INSTANCE;
    }
    if (level != settable_level) {
        TVR_LOG("Log level provided is out of range");
        return METHOD_INVALID_PORT;
    }
    if (mode == TVR_LOG_NONE || mode >= TVR_LOG_MODES) {
        TVR_LOG("Log mode provided is out of range");
        return METHOD_INVALID_PORT;
    }
    if (!sets_log_file(agent.m_FileLogger, mode, path)) {
        TVR_LOG("Setting the trace path failed");
        return METHOD_INVALID_PORT;
    }
    TVR_LOG("Changing the record log parameters %d-%d-%s", level, mode, path.c_str());
    CLogger& logger = CLogger::getInstance();
    logger.setLevel(level);
    logger.setLogMode(mode);
    const std::string file = agent.m_FileLogger.getLogFile();
    TVR_LOG("Setting path as %s", file.c_str());
    log->TracePath.set(file);
    log->LogLevel.set(level);
    log->LogMode.set(mode);
    keep_log_settings();
    return METHOD_COMPLETED;
}

uint32 clear_log(ProviderAgent& agent, const TVRHBA_RecordLog* self) {
    TVRHBA_RecordLog* log = find_own_log(agent.maps, self);
    if (log == nullptr) {
        return METHOD_INVALID_INSTANCE;
    }
    if (is_driver_log(agent.maps, self)) {
        agent.maps.m_DeviceLog.clear();
        log->CurrentNumberOfRecords.set(0);
    } else {
        CLogger::getInstance().clearLogs();
        TVR_LOG("Cleared all the logs");
    }
    return METHOD_COMPLETED;
}

void enable_log(Instance_Maps& maps, TVRHBA_RecordLog& log, bool is_driver) {
    CLogger::getInstance().enable();
    log.RequestedState.set(log_enabled);
    log.EnabledState.set(log_enabled);
    if (is_driver) {
        ReadDriverEvents(maps.m_DeviceLog);
        log.CurrentNumberOfRecords.set(maps.m_DeviceLog.size());
    } else {
        TVR_LOG("FC Record Logs enabled");
        keep_log_settings();
    }
}

void disable_log(Instance_Maps& maps, TVRHBA_RecordLog& log, bool is_driver) {
    TVR_LOG("Logs disabled");
    CLogger::getInstance().disable();
    log.RequestedState.set(log_disabled);
    log.EnabledState.set(log_disabled);
    if (is_driver) {
        maps.m_DeviceLog.clear();
    } else {
        keep_log_settings();
    }
}

uint32 change_log_state(ProviderAgent& agent, const TVRHBA_RecordLog* self, uint16 state) {
    TVRHBA_RecordLog* log = find_own_log(agent.maps, self);
    if (log == nullptr) {
        return METHOD_INVALID_INSTANCE;
    }
    const bool is_driver = is_driver_log(agent.maps, self);
    if (is_driver) {
        TVR_LOG("Instance of FC Driver Record Log");
    }
    switch (state) {
    case log_enabled:
        enable_log(agent.maps, *log, is_driver);
        return METHOD_COMPLETED;
    case log_disabled:
        disable_log(agent.maps, *log, is_driver);
        return METHOD_COMPLETED;
    default:
        TVR_LOG("Invalid input");
        return METHOD_INVALID_PORT;
    }
}

} // namespace

Enum_Instances_Status
TVRHBA_RecordLog_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    const Enum_Instances_Status status = enumerate<TVRHBA_RecordLog>(handler);
    TVR_LOG("TVRHBA_RecordLog_Provider::enum_instances()");
    return status;
}

Invoke_Method_Status TVRHBA_RecordLog_Provider::SetLogParams(const Class* self,
                                                             const Property<uint16>& LogLevel,
                                                             const Property<uint16>& LogMode,
                                                             const Property<String>& TracePath,
                                                             Property<uint32>& return_value) {
    bool is_supported = true;
    const Invoke_Method_Status status =
        call_method(return_value, [&](ProviderAgent& agent) -> uint32 {
            if (is_driver_log(agent.maps, self)) {
                TVR_LOG("SetLogParams is not supported for Driver Record Log Instance");
                is_supported = false;
                return METHOD_COMPLETED;
            }
            return set_log_params(agent, self, LogLevel.value, LogMode.value, TracePath.value);
        });
    return is_supported ? status : INVOKE_METHOD_UNSUPPORTED;
}

Invoke_Method_Status TVRHBA_RecordLog_Provider::ClearLog(const Class* self,
                                                         Property<uint32>& return_value) {
    return call_method(return_value, [&](ProviderAgent& agent) { return clear_log(agent, self); });
}

Invoke_Method_Status TVRHBA_RecordLog_Provider::RequestStateChange(
    const Class* self, const Property<uint16>& RequestedState, CIM_ConcreteJob*& /*Job*/,
    const Property<Datetime>&, Property<uint32>& return_value) {
    return call_method(return_value, [&](ProviderAgent& agent) {
        return change_log_state(agent, self, RequestedState.value);
    });
}

} // namespace cimple
