// The log of the adapters' driver: its instance, and its lines in the system's log.
#ifndef TVR_AGENT_DRIVER_LOG_H
#define TVR_AGENT_DRIVER_LOG_H

#include "agent/instance_maps.h"
#include "model/data.h"

namespace cimple {

// `InstanceID` of the log, and that of the provider's own.
std::string driver_log_id(const Instance_Maps& maps);
std::string provider_log_id(const Instance_Maps& maps);

// The log with that `InstanceID`, whatever the case of its letters; null if there is none.
const TVRHBA_RecordLog* find_log(const Instance_Maps& maps, const std::string& id);

// Makes the log, with its capabilities and its use by the driver, if there is an FC adapter; it
// stands in the maps of the provider's log. 0, or TVR_FAILURE for one that could not be made whole.
uint32 CreateFCDriverLogClasses(Instance_Maps& maps, const Data* data);

// Adds the driver's lines in the system's log to those that are there, the newest first, up to the
// capacity. Of a line that is longer than 64 KiB the beginning counts. Reads what the file has when
// it begins, and nothing of what is no regular file; keeps no more than the lines that are wanted.
void ReadDriverEvents(DeviceLog& log);

} // namespace cimple

#endif
