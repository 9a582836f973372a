#include "providers/TVRHBA_RecordLogManagesRecord_Provider.h"

#include "providers/log_records.h"

namespace cimple {

namespace {

void collect_managed_records(const ProviderAgent& agent,
                             std::vector<Ref<TVRHBA_RecordLogManagesRecord>>& made) {
    const auto records = agent.m_CIMLogger.getRecords();
    const TVRHBA_RecordLog* log = find_log(agent.maps, provider_log_id(agent.maps));
    const auto first_log = first_end(agent.maps.m_TVRHBA_TVRHBA_RecordLog_map);
    TVR_LOG("Log Size %d", static_cast<int>(records.size()));
    for (std::size_t place = 0; place < records.size(); ++place) {
        auto entry = make_log_entry("TVRHBA: FC Driver Record:", place, records[place], log);
        if (!entry) {
            TVR_LOG("Could not create TVRHBA_LogEntry instance");
            made.clear();
            return;
        }
        auto managed = try_make<TVRHBA_RecordLogManagesRecord>();
        if (!managed || !first_log) {
            continue;
        }
        managed->Log = *first_log;
        managed->Record = entry.release();
        TVR_LOG("TVRHBA_RecordLogManagesRecord returned instance %d", static_cast<int>(place));
        made.push_back(std::move(managed));
    }
}

} // namespace

Enum_Instances_Status
TVRHBA_RecordLogManagesRecord_Provider::enum_instances(const Class*,
                                                       const Enum_Instances_Handler& handler) {
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    TVR_LOG("Entering TVRHBA_RecordLogManagesRecord::enum_instances");
    const Enum_Instances_Status status =
        enumerate_made<TVRHBA_RecordLogManagesRecord>(handler, collect_managed_records);
    TVR_LOG("TVRHBA_RecordLogManagesRecord_Provider::enum_instances()");
    return status;
}

} // namespace cimple
