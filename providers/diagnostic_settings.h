// The settings that a diagnostic test is run with: the published ones, changed by what a client
// sends. What is changed stays changed for later runs, until the next rebuild.
#ifndef TVR_PROVIDERS_DIAGNOSTIC_SETTINGS_H
#define TVR_PROVIDERS_DIAGNOSTIC_SETTINGS_H

#include "agent/instance_maps.h"

namespace cimple {

// The published settings: of all jobs, and of the test of that name. Null if there are none.
TVRHBA_JobSettingData* getDefaultTVRHBA_JobSettingDataInstance(const Instance_Maps& maps);
TVRHBA_FCHBADiagnosticSettingData*
getDefaultTVRHBA_FCHBADiagnosticSettingDataInstance(const Instance_Maps& maps, const String& name);

// The published settings with what `input` says of them, as far as it is valid; each value that is
// not leaves the one in force, and the log tells. Null for an input that doesn't name these
// settings, or is of another class; then nothing is changed.
TVRHBA_JobSettingData* getTVRHBA_JobSettingDataInstance(const Instance_Maps& maps,
                                                        const Instance* input);
TVRHBA_FCHBADiagnosticSettingData*
getTVRHBA_FCHBADiagnosticSettingDataInstance(const Instance_Maps& maps, const Instance* input,
                                             const String& name);

} // namespace cimple

#endif
