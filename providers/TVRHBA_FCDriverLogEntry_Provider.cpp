#include "providers/TVRHBA_FCDriverLogEntry_Provider.h"

#include "providers/log_records.h"

namespace cimple {

Unload_Status TVRHBA_FCDriverLogEntry_Provider::unload() {
    TVR_LOG("TVRHBA_FCDriverLogEntry_Provider::unload()");
    return unload_agent();
}

Enum_Instances_Status
TVRHBA_FCDriverLogEntry_Provider::enum_instances(const Class*,
                                                 const Enum_Instances_Handler& handler) {
    if (!TVR_IS_AGENT_LOADED()) {
        return ENUM_INSTANCES_OK;
    }
    TVR_LOG("Entering TVRHBA_FCDriverLogEntry::enum_instances");
    const Enum_Instances_Status status = enumerate_made<TVRHBA_FCDriverLogEntry>(
        handler, [](const ProviderAgent& agent, std::vector<Ref<TVRHBA_FCDriverLogEntry>>& made) {
            const TVRHBA_RecordLog* log = find_log(agent.maps, driver_log_id(agent.maps));
            const std::vector<std::string> lines = agent.maps.m_DeviceLog.getLines();
            TVR_LOG("TVRHBA_FCDriverLogEntry Entry");
            for (std::size_t place = 0; place < lines.size(); ++place) {
                auto entry =
                    make_driver_log_entry("TVR:HBA FC Driver Record:", place, lines[place], log);
                if (!entry) {
                    return;
                }
                TVR_LOG("TVRHBA_FCDriverLogEntry returned instance %d", static_cast<int>(place));
                made.push_back(std::move(entry));
                TVR_LOG("TVRHBA_FCDriverLogEntry Exit");
            }
        });
    TVR_LOG("TVRHBA_FCDriverLogEntry_Provider::enum_instances()");
    return status;
}

} // namespace cimple
