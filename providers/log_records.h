// The records of both logs as instances.
//
// The same record has one key as an entry and another one as the end of an association.
#ifndef TVR_PROVIDERS_LOG_RECORDS_H
#define TVR_PROVIDERS_LOG_RECORDS_H

#include "agent/creation.h"
#include "agent/driver_log.h"
#include "providers/service_call.h"

#include <vector>

namespace cimple {

// Makes instances with `collect`, which gets the agent and a list, while the agent's locks are
// held, and hands them to the client without them.
template <class C, class Collect>
Enum_Instances_Status enumerate_made(const Enum_Instances_Handler& handler, Collect&& collect) {
    ProviderAgent* agent = ProviderAgent::instance();
    if (agent == nullptr) {
        return ENUM_INSTANCES_OK;
    }
    std::vector<Ref<C>> made;
    try {
        const Full_Guard guard(*agent);
        collect(*agent, made);
    } catch (const Refresh_Unavailable&) {
        return ENUM_INSTANCES_FAILED;
    }
    for (Ref<C>& instance : made) {
        handler.handle(instance.release());
    }
    return ENUM_INSTANCES_OK;
}

// A record of the provider's log at that place. `log` may be null; so is the answer if there is no
// memory.
Ref<TVRHBA_LogEntry> make_log_entry(const char* id_prefix, std::size_t place,
                                    const TVR_CIMLogger::Record& record,
                                    const TVRHBA_RecordLog* log);

// The same of the driver's log.
Ref<TVRHBA_FCDriverLogEntry> make_driver_log_entry(const char* id_prefix, std::size_t place,
                                                   const std::string& line,
                                                   const TVRHBA_RecordLog* log);

} // namespace cimple

#endif
