#include "providers/log_records.h"

namespace cimple {

namespace {

// What records of both kinds tell of their place and their log.
template <class Entry>
void describe_place(Entry& entry, const char* id_prefix, std::size_t place,
                    const TVRHBA_RecordLog* log) {
    const std::string number = std::to_string(place);
    const String none;
    const String& name = log == nullptr ? none : log->ElementName.value;
    entry.InstanceID.set(id_prefix + number);
    entry.RecordID.set(number);
    entry.LogInstanceID.set(log == nullptr ? none : log->InstanceID.value);
    entry.LogName.set(name);
    entry.ElementName.set(name);
}

} // namespace

Ref<TVRHBA_LogEntry> make_log_entry(const char* id_prefix, std::size_t place,
                                    const TVR_CIMLogger::Record& record,
                                    const TVRHBA_RecordLog* log) {
    auto entry = try_make<TVRHBA_LogEntry>();
    if (entry) {
        describe_place(*entry, id_prefix, place, log);
        entry->CreationTimeStamp.set(record.stamp);
        entry->RecordData.set(record.text);
        entry->LogLevel.set(std::to_string(record.level));
        entry->RecordFormat.set("[string fileName][uint32 lineNumber]:[string record]");
    }
    return entry;
}

Ref<TVRHBA_FCDriverLogEntry> make_driver_log_entry(const char* id_prefix, std::size_t place,
                                                   const std::string& line,
                                                   const TVRHBA_RecordLog* log) {
    auto entry = try_make<TVRHBA_FCDriverLogEntry>();
    if (entry) {
        describe_place(*entry, id_prefix, place, log);
        entry->RecordData.set(line);
        entry->RecordFormat.set("[string record]");
    }
    return entry;
}

} // namespace cimple
