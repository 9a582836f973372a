// The provider's own log as an instance, and what stands around it.
#include "agent/creation.h"
#include "agent/profile_instance.h"
#include "agent/provider_agent.h"
#include "common/tvr_common.h"

namespace cimple {

namespace {

constexpr Profile record_log_profile{"Record Log", ORGANIZATION_DMTF, "1.0.1"};

// Value map of `RequestedState` and `EnabledState`.
constexpr uint16 state_enabled = 2;
constexpr uint16 state_disabled = 3;
constexpr uint16 state_no_change = 5;

} // namespace

uint32 ProviderAgent::createRecordLog(const TVRHBA_SoftwareIdentity& provider) {
    const CLogger& logger = CLogger::getInstance();
    const bool enabled = logger.isEnabled() != 0;
    auto log = make<TVRHBA_RecordLog>();
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
    const TVRHBA_RecordLog* created = insert(m_TVRHBA_TVRHBA_RecordLog_map, std::move(log),
                                             "Insert Failed : m_TVRHBA_TVRHBA_RecordLog_map");
    if (created == nullptr) {
        return TVR_FAILURE;
    }

    if (const TVRHBA_RegisteredProfile* profile = createConformedProfile(record_log_profile)) {
        auto conformance = make<TVRHBA_RecordLogConformsToProfile>(any_namespace);
        conformance->ConformantStandard = profile->clone();
        conformance->ManagedElement = created->clone();
        insert(m_TVRHBA_RecordLogConformsToProfile_map, std::move(conformance),
               "Insert Failed : m_TVRHBA_RecordLogConformsToProfile_map");
    }
    if (createRecordLogCapabilities(*created) != 0) {
        return TVR_FAILURE;
    }
    auto use = make<TVRHBA_ProviderUseOfLog>();
    use->Antecedent = created->clone();
    use->Dependent = provider.clone();
    insert(m_TVRHBA_ProviderUseOfLog_map, std::move(use),
           "Insert Failed : m_TVRHBA_ProviderUseOfLog_map");
    return 0;
}

uint32 ProviderAgent::createRecordLogCapabilities(const TVRHBA_RecordLog& log) {
    auto capabilities = make<TVRHBA_EnabledRecordLogCapabilities>();
    capabilities->InstanceID.set("TVRHBA provider log capabilities");
    capabilities->RequestedStatesSupported.set(Array<uint16>{state_enabled, state_disabled});
    capabilities->LogParamsSupported.set(Array<uint16>{2, 3});
    capabilities->ElementNameEditSupported.set(false);
    const TVRHBA_EnabledRecordLogCapabilities* created =
        insert(m_TVRHBA_TVRHBA_EnabledRecordLogCapabilities_map, std::move(capabilities),
               "Insert Failed : m_TVRHBA_TVRHBA_EnabledRecordLogCapabilities_map");
    if (created == nullptr) {
        return TVR_FAILURE;
    }
    auto element = make<TVRHBA_RecordLogCapabilities>();
    element->ManagedElement = log.clone();
    element->Capabilities = created->clone();
    insert(m_TVRHBA_RecordLogCapabilities_map, std::move(element),
           "Insert Failed : m_TVRHBA_RecordLogCapabilities_map");
    return 0;
}

} // namespace cimple
