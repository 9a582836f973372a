#include "providers/TVRHBA_DriverRecordLogManagesRecord_Provider.h"

#include "providers/log_records.h"

namespace cimple {

namespace {

void collect_managed_lines(const ProviderAgent& agent,
                           std::vector<Ref<TVRHBA_DriverRecordLogManagesRecord>>& made) {
    const std::vector<std::string> lines = agent.maps.m_DeviceLog.getLines();
    TVR_LOG("Entering TVRHBA_DriverRecordLogManagesRecord::enum_instances");
    const TVRHBA_RecordLog* log = find_log(agent.maps, driver_log_id(agent.maps));
    for (std::size_t place = 0; place < lines.size(); ++place) {
        auto entry =
            make_driver_log_entry("TVRHBA:FC Driver Record Log:", place, lines[place], log);
        if (!entry) {
            TVR_LOG("Could not create TVRHBA_FCDriverLogEntry instance");
            made.clear();
            return;
        }
        auto managed = try_make<TVRHBA_DriverRecordLogManagesRecord>();
        if (!managed || log == nullptr) {
            continue;
        }
        managed->Log = log->clone();
        managed->Record = entry.release();
        TVR_LOG("TVRHBA_DriverRecordLogManagesRecord returned instance %d",
                static_cast<int>(place));
        made.push_back(std::move(managed));
    }
}

} // namespace

Enum_Instances_Status TVRHBA_DriverRecordLogManagesRecord_Provider::enum_instances(
    const Class*, const Enum_Instances_Handler& handler) {
    TVR_LOG("Enter -- TVRHBA_DriverRecordLogManagesRecord");
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    const Enum_Instances_Status status =
        enumerate_made<TVRHBA_DriverRecordLogManagesRecord>(handler, collect_managed_lines);
    TVR_LOG("Exit -- TVRHBA_DriverRecordLogManagesRecord");
    return status;
}

} // namespace cimple
