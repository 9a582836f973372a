// The provider's own log as an instance, and what stands around it.
#include "agent/record_log.h"

#include "agent/creation.h"
#include "agent/driver_log.h"
#include "agent/profiles.h"

namespace cimple {

namespace {

constexpr Profile record_log_profile{"Record Log", ORGANIZATION_DMTF, "1.0.1"};

// Value map of `RequestedState` and `EnabledState`.
constexpr uint16 state_enabled = 2;
constexpr uint16 state_disabled = 3;
constexpr uint16 state_no_change = 5;

void create_capabilities(Instance_Maps& maps, const TVRHBA_RecordLog& log) {
    auto capabilities = make<TVRHBA_EnabledRecordLogCapabilities>();
    capabilities->InstanceID.set("TVRHBA provider log capabilities");
    capabilities->RequestedStatesSupported.set(Array<uint16>{state_enabled, state_disabled});
    capabilities->LogParamsSupported.set(Array<uint16>{2, 3});
    capabilities->ElementNameEditSupported.set(false);
    const TVRHBA_EnabledRecordLogCapabilities& created = add_or_end(maps, std::move(capabilities));
    auto element = make<TVRHBA_RecordLogCapabilities>();
    element->ManagedElement = log.clone();
    element->Capabilities = created.clone();
    add(maps, std::move(element));
}

} // namespace

void create_record_log(Instance_Maps& maps, const Host_Facts& host, const TVR_FileLogger& file_log,
                       const TVRHBA_SoftwareIdentity& provider) {
    const CLogger& logger = CLogger::getInstance();
    const bool enabled = logger.isEnabled() != 0;
    auto log = try_make<TVRHBA_RecordLog>();
    if (!log) {
        return;
    }
    log->InstanceID.set(provider_log_id(maps));
    log->Name.set("Record logs for Tavrin CIM Provider");
    log->ElementName.set("Record logs for Tavrin CIM Provider");
    log->MaxNumberOfRecords.set(uint64{TVR_CIMLogger::capacity});
    log->LogState.set(uint16{4});
    log->OverwritePolicy.set(uint16{2});
    log->RequestedState.set(enabled ? state_enabled : state_no_change);
    log->EnabledState.set(enabled ? state_enabled : state_disabled);
    log->OperationalStatus.set(Array<uint16>{2});
    log->HealthState.set(uint16{5});
    if (const std::string path = file_log.getLogFile(); !path.empty()) {
        log->TracePath.set(path);
    }
    log->LogLevel.set(static_cast<uint16>(logger.getLevel()));
    log->LogMode.set(static_cast<uint16>(logger.getMode()));
    const TVRHBA_RecordLog& created = add_or_end(maps, std::move(log));

    if (const TVRHBA_RegisteredProfile* profile =
            create_conformed_profile(maps, host, record_log_profile)) {
        auto conformance = make<TVRHBA_RecordLogConformsToProfile>(any_namespace);
        conformance->ConformantStandard = profile->clone();
        conformance->ManagedElement = created.clone();
        add(maps, std::move(conformance));
    }
    create_capabilities(maps, created);
    auto use = make<TVRHBA_ProviderUseOfLog>();
    use->Antecedent = created.clone();
    use->Dependent = provider.clone();
    add(maps, std::move(use));
}

} // namespace cimple
