// The provider's own log as an instance, and what stands around it.
#include "agent/creation.h"
#include "agent/profile_instance.h"

namespace cimple {

namespace {

constexpr Profile record_log_profile{"Record Log", ORGANIZATION_DMTF, "1.0.1"};

// Value map of `RequestedState` and `EnabledState`.
constexpr uint16 state_enabled = 2;
constexpr uint16 state_disabled = 3;
constexpr uint16 state_no_change = 5;

} // namespace

void ProviderAgent::createRecordLog(const TVRHBA_SoftwareIdentity& provider) {
    const CLogger& logger = CLogger::getInstance();
    const bool enabled = logger.isEnabled() != 0;
    auto log = try_make<TVRHBA_RecordLog>();
    if (!log) {
        return;
    }
    log->InstanceID.set(std::string("TVRHBA:ProviderLog:") + computerSystem().Name.value.c_str());
    log->Name.set("Record logs for Tavrin CIM Provider");
    log->ElementName.set("Record logs for Tavrin CIM Provider");
    log->MaxNumberOfRecords.set(uint64{TVR_CIMLogger::capacity});
    log->LogState.set(uint16{4});
    log->OverwritePolicy.set(uint16{2});
    log->RequestedState.set(enabled ? state_enabled : state_no_change);
    log->EnabledState.set(enabled ? state_enabled : state_disabled);
    log->OperationalStatus.set(Array<uint16>{2});
    log->HealthState.set(uint16{5});
    if (const std::string path = m_FileLogger.getLogFile(); !path.empty()) {
        log->TracePath.set(path);
    }
    log->LogLevel.set(static_cast<uint16>(logger.getLevel()));
    log->LogMode.set(static_cast<uint16>(logger.getMode()));
    const TVRHBA_RecordLog& created = add_or_end(*this, std::move(log));

    if (const TVRHBA_RegisteredProfile* profile = createConformedProfile(record_log_profile)) {
        auto conformance = make<TVRHBA_RecordLogConformsToProfile>(any_namespace);
        conformance->ConformantStandard = profile->clone();
        conformance->ManagedElement = created.clone();
        add(*this, std::move(conformance));
    }
    createRecordLogCapabilities(created);
    auto use = make<TVRHBA_ProviderUseOfLog>();
    use->Antecedent = created.clone();
    use->Dependent = provider.clone();
    add(*this, std::move(use));
}

void ProviderAgent::createRecordLogCapabilities(const TVRHBA_RecordLog& log) {
    auto capabilities = make<TVRHBA_EnabledRecordLogCapabilities>();
    capabilities->InstanceID.set("TVRHBA provider log capabilities");
    capabilities->RequestedStatesSupported.set(Array<uint16>{state_enabled, state_disabled});
    capabilities->LogParamsSupported.set(Array<uint16>{2, 3});
    capabilities->ElementNameEditSupported.set(false);
    const TVRHBA_EnabledRecordLogCapabilities& created = add_or_end(*this, std::move(capabilities));
    auto element = make<TVRHBA_RecordLogCapabilities>();
    element->ManagedElement = log.clone();
    element->Capabilities = created.clone();
    add(*this, std::move(element));
}

} // namespace cimple
