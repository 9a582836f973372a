#include "providers/TVRHBA_LogEntry_Provider.h"

#include "providers/log_records.h"

namespace cimple {

Enum_Instances_Status
TVRHBA_LogEntry_Provider::enum_instances(const Class*, const Enum_Instances_Handler& handler) {
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    TVR_LOG("Entering TVRHBA_LogEntry::enum_instances");
    const Enum_Instances_Status status = enumerate_made<TVRHBA_LogEntry>(
        handler, [](const ProviderAgent& agent, std::vector<Ref<TVRHBA_LogEntry>>& made) {
            const auto records = agent.m_CIMLogger.getRecords();
            const TVRHBA_RecordLog* log = find_log(agent.maps, provider_log_id(agent.maps));
            TVR_LOG("Log Size %d", static_cast<int>(records.size()));
            for (std::size_t place = 0; place < records.size(); ++place) {
                auto entry = make_log_entry("TVRHBA:ProviderLog:", place, records[place], log);
                if (!entry) {
                    TVR_LOG("Could not create TVRHBA_LogEntry instance");
                    made.clear();
                    return;
                }
                TVR_LOG("TVRHBA_LogEntry returned instance %d", static_cast<int>(place));
                made.push_back(std::move(entry));
            }
        });
    TVR_LOG("TVRHBA_LogEntry_Provider::enum_instances()");
    return status;
}

} // namespace cimple
