// The catalogue of diagnostic tests: what they are, take and need, published for the adapters' port
// controllers.
#ifndef TVR_AGENT_DIAGNOSTIC_CATALOGUE_H
#define TVR_AGENT_DIAGNOSTIC_CATALOGUE_H

#include "agent/instance_maps.h"

#include <string>

namespace cimple {

// What the two below answer beside 0.
enum Diagnostic_Failure : uint32 {
    DIAGNOSTICS_NO_VERSION = 32768,
    DIAGNOSTICS_NO_CONTROLLER = 33068,
    DIAGNOSTICS_NOT_SUPPORTED = 40002, // by no controller
};

// Reads the version of the diagnostics of the controller's adapter: 0 as well where the adapter
// doesn't tell one. 0; else DIAGNOSTICS_NO_VERSION, with `version` unchanged.
uint32 GetDiagnosticVersion(const std::string& deviceID, uint32* version);

// Makes the instances of all tests. A test whose instances can't all be made or inserted has none;
// the others are there all the same. 0, or one of the above: then there are none.
uint32 CreateFCHBADiagnosticClassFeature(Instance_Maps& maps);

} // namespace cimple

#endif
