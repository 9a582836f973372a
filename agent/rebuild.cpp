#include "agent/rebuild.h"

#include "agent/adapter_instances.h"
#include "agent/clear_maps.h"
#include "agent/computer_system.h"
#include "agent/creation.h"
#include "agent/diagnostic_catalogue.h"
#include "agent/driver_log.h"
#include "agent/driver_parameters.h"
#include "agent/dump_instances.h"
#include "agent/port_virtualization.h"
#include "agent/profiles.h"
#include "agent/record_log.h"
#include "agent/remote_access_point.h"
#include "agent/service_instances.h"
#include "agent/settings_instances.h"
#include "agent/software_instances.h"
#include "common/tvr_common.h"

#include <stdexcept>

namespace cimple {

namespace {

// What a host has only with an FC adapter. Throws if it has none.
void create_from_adapters(const Rebuild& rebuild) {
    const auto& [maps, host, data, config, file_log] = rebuild;
    if (data == nullptr) {
        TVR_LOG("Could not locate the data pointer - Serious issue");
        throw Rebuild_Ended();
    }
    if (!data->isBuilt()) {
        TVR_LOG("FC Adapter Not present !!!!, throw error !!!");
        throw std::runtime_error("no FC adapter");
    }
    const TVRHBA_SoftwareIdentity& provider = create_provider_identity(maps);
    create_settings(maps, config);
    create_services(maps, host);
    create_record_log(maps, host, file_log, provider);
    create_remote_access_point(maps);
    create_driver_identities(maps, *data);
    create_adapter_instances(maps, *data);
    fetchDriverParams(maps, *data);
    TVR_LOG("Done with the Driver Parameter fetching");
}

// What an adapter has beside its ports. None of it keeps the rest from being made.
void create_features(Instance_Maps& maps, const Data* data) {
    TVR_LOG("Calling FC_CreateDumpClasses");
    TVR_LOG(CreateFCDriverLogClasses(maps, data) == 0
                ? "FC Driver Log classes are successfully created"
                : "Issue with FC Driver Log classes");
    if (const uint32 status = FC_CreateDumpClasses(maps); status == 0) {
        TVR_LOG("FC_CreateDumpClasses succesful");
    } else {
        TVR_LOG("FC_CreateDumpClasses failed");
        TVR_LOG("tvrstatus = %d", status);
    }
    if (const uint32 status = CreatePortVirtualizationClasses(maps); status == 0) {
        TVR_LOG("FC Port Virtualization classes are successfully created");
    } else {
        TVR_LOG("CreatePortVirtualizationClasses failed: %d", status);
    }
}

// Leaves a catalogue of whole tests, or none. Also on a host without adapters.
void create_diagnostics(Instance_Maps& maps) {
    try {
        ClearDiagnosticClassMaps(maps, 0);
        try {
            TVR_LOG(CreateFCHBADiagnosticClassFeature(maps) == 0
                        ? "FCHBA Diagnositcs classes created Successfully"
                        : "FCHBA Diagnositcss either Not Supported/Failed to Create the feature");
        } catch (...) {
            ClearDiagnosticClassMaps(maps, 0);
            TVR_LOG("Exception in FCHBA Diagnostics feature class creation");
        }
    } catch (...) {
        TVR_LOG("Dignostic Test creation failed");
    }
    TVR_LOG("Create the Diagnostic classes");
}

} // namespace

uint32 updateAdapterMaps(const Rebuild& rebuild) {
    const auto& [maps, host, data, config, file_log] = rebuild;
    TVR_LOG("PERF: updateAdapterMaps: Entry");
    clearAdapterMaps(maps);
    if (host.m_pBaseServerProfile) {
        TVR_LOG("Destroying the Base Server Profile instance");
        host.m_pBaseServerProfile.reset();
    }
    if (create_computer_system(maps, host) != 0) {
        return TVR_FAILURE;
    }
    create_profiles(maps, host);
    try {
        create_from_adapters(rebuild);
        create_features(maps, data);
    } catch (const Rebuild_Ended&) {
        return TVR_FAILURE;
    } catch (...) {
        TVR_LOG("No FC card found");
    }
    create_diagnostics(maps);
    TVR_LOG("PERF: updateAdapterMaps: cleanExit");
    return 0;
}

} // namespace cimple
