#include "agent/diagnostic_records.h"

#include "agent/creation.h"
#include "agent/diagnostic_tests.h"

#include <string>
#include <vector>

namespace cimple {

namespace {

constexpr uint32 settings_overridden = 1;

// The rest of an outcome's records isn't made; the log has a line.
struct Records_Ended {};

// Makes an instance with `work`; without memory the work ends with that line.
template <class Work> auto make_or_end(const char* failure, Work&& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        TVR_LOG("%s", failure);
        throw Records_Ended();
    }
}

template <class C> C& insert_or_end(Instance_Maps& maps, Ref<C> instance, const char* failure) {
    C* inserted = try_insert(maps.*map_of<C>, std::move(instance), failure);
    if (inserted == nullptr) {
        throw Records_Ended();
    }
    return *inserted;
}

// ---- records

template <class Record>
void describe_record(Record& record, const Diagnostic_Outcome& outcome, const std::string& id,
                     const char* description, const char* kind) {
    const std::string test(outcome.test_name.view());
    record.InstanceID.set(id);
    record.Description.set(description);
    record.ElementName.set(test + " " + kind);
    record.ServiceName.set(outcome.test_name);
}

// What the records of service and completion tell of the result.
template <class Record> void set_result(Record& record, const Diagnostic_Outcome& outcome) {
    constexpr uint16 record_type = 2;
    record.RecordType.set(record_type);
    record.RecordData.set(outcome.result_text);
    record.ManagedElementName.set(outcome.element == nullptr ? String("TVRHBA_Adapter")
                                                             : outcome.element->ElementName.value);
    record.CreationTimeStamp.set(Datetime::now());
    const Diagnostic_Test* test = find_diagnostic_test(outcome.test_name);
    if (outcome.counts != nullptr && test != nullptr && test->has_counts()) {
        record.LoopsFailed.set(outcome.counts->loops_failed);
        record.CompletedCycles.set(outcome.counts->completed_cycles);
        record.TimeToExecute.set(outcome.counts->time_to_execute);
    }
}

Ref<TVRHBA_DiagnosticServiceRecord> make_service_record(const Diagnostic_Outcome& outcome) {
    auto record = make<TVRHBA_DiagnosticServiceRecord>();
    describe_record(*record, outcome, std::string(outcome.job_id.view()) + ":Service Record",
                    "This class holds the results(service) of the test", "Service Record");
    set_result(*record, outcome);
    return record;
}

Ref<TVRHBA_DiagnosticCompletionRecord> make_completion_record(const Diagnostic_Outcome& outcome) {
    auto record = make<TVRHBA_DiagnosticCompletionRecord>();
    describe_record(*record, outcome, std::string(outcome.job_id.view()),
                    "This class holds the result of the test", "Completion Record");
    set_result(*record, outcome);
    record->CompletionState.set(outcome.completion_state);
    return record;
}

Ref<TVRHBA_DiagnosticSettingDataRecord> make_settings_record(const Diagnostic_Outcome& outcome) {
    auto record = make<TVRHBA_DiagnosticSettingDataRecord>();
    describe_record(*record, outcome, std::string(outcome.job_id.view()) + ":SettingData Record",
                    "This class holds the overrided setting data of the test",
                    "SettingData Record");
    record->Caption.set(outcome.job_id);
    return record;
}

const TVRHBA_DiagnosticSettingDataRecord* find_settings_record(const Instance_Maps& maps,
                                                               const String& job_id) {
    for (const auto* record : maps.m_TVRHBA_DiagnosticSettingDataRecord_map) {
        if (record->Caption.value == job_id) {
            return record;
        }
    }
    return nullptr;
}

// ---- what ties them together

template <class Record>
void add_to_log(Instance_Maps& maps, const String& test_name, const Record& record) {
    constexpr char failure[] = "Failed to create TVRHBA_LogManagesRecord";
    for (const TVRHBA_DiagnosticsLog* log : maps.m_TVRHBA_DiagnosticsLog_map) {
        if (log->InstanceID.value == test_name) {
            auto managed = make_or_end(failure, [&] {
                return join(&TVRHBA_LogManagesRecord::Log, End(*log),
                            &TVRHBA_LogManagesRecord::Record,
                            End(record).template as<CIM_DiagnosticRecord>());
            });
            insert_or_end(maps, std::move(managed), "Insert Failed : TVRHBA_LogManagesRecord");
            return;
        }
    }
    TVR_LOG("%s", failure);
    throw Records_Ended();
}

template <class Record>
void add_settings_record(Instance_Maps& maps, const Record& record,
                         const TVRHBA_DiagnosticSettingDataRecord& settings) {
    auto corresponding = make_or_end("Failed to create TVRHBA_CorrespondingSettingDataRecord", [&] {
        return join(&TVRHBA_CorrespondingSettingDataRecord::DataRecord,
                    End(record).template as<CIM_DiagnosticRecord>(),
                    &TVRHBA_CorrespondingSettingDataRecord::SettingsRecord, End(settings));
    });
    insert_or_end(maps, std::move(corresponding),
                  "Insert Failed : TVRHBA_CorrespondingSettingDataRecord");
}

template <class Record>
void apply_to_element(Instance_Maps& maps, const Record& record,
                      const TVRHBA_PortController& element) {
    auto applies = make_or_end("Failed to create TVRHBA_RecordAppliesToElement", [&] {
        return join(&TVRHBA_RecordAppliesToElement::Antecedent,
                    End(record).template as<CIM_RecordForLog>(),
                    &TVRHBA_RecordAppliesToElement::Dependent, End(element));
    });
    insert_or_end(maps, std::move(applies), "Insert Failed : RecordAppliesToElement");
}

// ---- removal

// Removes what belongs to a test from one map, all of it or, without memory, nothing.
template <class C, class Belongs>
bool remove_from_map(Class_Map<C>& map, Belongs&& belongs, const char* failure) {
    try {
        std::vector<uint32> positions;
        for (std::size_t i = 0; i < map.size(); ++i) {
            if (belongs(*map.get(i))) {
                positions.push_back(static_cast<uint32>(i));
            }
        }
        map.erase(positions);
        return true;
    } catch (const std::bad_alloc&) {
        TVR_LOG("%s", failure);
        return false;
    }
}

} // namespace

void CreateDiagnosticServiceRecord(Instance_Maps& maps, const Diagnostic_Outcome& outcome) try {
    TVR_LOG("TVR_Diagnostics::CreateDiagnosticServiceRecord");
    if (outcome.element == nullptr) {
        TVR_LOG("Invalid managed element");
    }
    auto& record = insert_or_end(maps,
                                 make_or_end("Failed to create DiagnosticServiceRecord",
                                             [&] { return make_service_record(outcome); }),
                                 "Insert Failed, DiagnosticServiceRecord");
    add_to_log(maps, outcome.test_name, record);
    const TVRHBA_DiagnosticSettingDataRecord* settings = nullptr;
    if (outcome.overridden == settings_overridden) {
        settings = &insert_or_end(maps,
                                  make_or_end("Failed to create TVRHBA_DiagnosticSettingDataRecord",
                                              [&] { return make_settings_record(outcome); }),
                                  "Insert in TVRHBA_DiagnosticSettingDataRecord Failed");
        add_settings_record(maps, record, *settings);
        add_to_log(maps, outcome.test_name, *settings);
    }
    if (outcome.element != nullptr) {
        TVR_LOG("PortController : %s", outcome.element->DeviceID.value.c_str());
        apply_to_element(maps, record, *outcome.element);
        if (settings != nullptr) {
            apply_to_element(maps, *settings, *outcome.element);
        }
    }
} catch (const Records_Ended&) {
}

void CreateDiagnosticCompletionRecord(Instance_Maps& maps, const Diagnostic_Outcome& outcome) try {
    constexpr char failure[] = "Failed to create TVRHBA_DiagnosticCompletionRecord";
    TVR_LOG("TVR_Diagnostics::CreateDiagnosticCompletionRecord");
    if (outcome.element == nullptr) {
        TVR_LOG("Invalid managed element");
    }
    auto made = make_or_end(failure, [&] { return make_completion_record(outcome); });
    // Also a record that the map refuses is tied to the log and the rest.
    const auto record = make_or_end(failure, [&] { return Ref(made->clone()); });
    try_insert(maps.m_TVRHBA_DiagnosticCompletionRecord_map, std::move(made),
               "Insert in DiagnosticCompletionRecord Failed");
    add_to_log(maps, outcome.test_name, *record);
    if (outcome.overridden == settings_overridden) {
        if (const auto* settings = find_settings_record(maps, outcome.job_id)) {
            add_settings_record(maps, *record, *settings);
        }
    }
    if (outcome.element != nullptr) {
        TVR_LOG("PortController : %s", outcome.element->DeviceID.value.c_str());
        apply_to_element(maps, *record, *outcome.element);
    }
} catch (const Records_Ended&) {
}

bool clear_diagnostic_records(Instance_Maps& maps, const String& test_name) {
    const auto is_of_test = [&](const auto& record) {
        return record.ServiceName.value == test_name;
    };
    return remove_from_map(
               maps.m_TVRHBA_LogManagesRecord_map,
               [&](const TVRHBA_LogManagesRecord& managed) {
                   return managed.Log != nullptr && managed.Log->InstanceID.value == test_name;
               },
               "Insert Failed : temp_TVRHBA_LogManagesRecord_map") &&
           remove_from_map(
               maps.m_TVRHBA_RecordAppliesToElement_map,
               [&](const TVRHBA_RecordAppliesToElement& applies) {
                   const Instance* record = applies.Antecedent;
                   return is_a<CIM_DiagnosticRecord>(record) &&
                          is_of_test(*static_cast<const CIM_DiagnosticRecord*>(record));
               },
               "Insert Failed : TVRHBA_RecordAppliesToElement_map") &&
           remove_from_map(maps.m_TVRHBA_DiagnosticCompletionRecord_map, is_of_test,
                           "Insert Failed : temp_TVRHBA_DiagnosticCompletionRecord_map") &&
           remove_from_map(maps.m_TVRHBA_DiagnosticServiceRecord_map, is_of_test,
                           "Insert Failed : temp_TVRHBA_DiagnosticServiceRecord_map");
}

} // namespace cimple
