// What software identities have in common.
#ifndef TVR_AGENT_SOFTWARE_IDENTITY_H
#define TVR_AGENT_SOFTWARE_IDENTITY_H

#include "common/logger.h"
#include "common/tvr_common.h"
#include "runtime/instance_map.h"
#include "schema/classes.h"

namespace cimple {

// Value map of `Classifications`.
enum Software_Class : uint16 {
    SOFTWARE_OTHER = 1,
    SOFTWARE_DRIVER = 2,
    SOFTWARE_DIAGNOSTICS = 7,
    SOFTWARE_FIRMWARE = 10,
    SOFTWARE_BOOT_CODE = 11,
};

// The identity of the driver; null if there is none.
const TVRHBA_SoftwareIdentity*
find_driver_identity(const Class_Map<TVRHBA_SoftwareIdentity>& identities);

// Reads the version text into the properties that tell a version part by part; those of a text that
// is no version stay as they are. The log tells of it under the label.
template <class Identity>
void set_version(Identity& identity, const std::string& version, const char* label) {
    TVR_LOG("%s- Parsing VersionString", label);
    ParsedVersion parsed;
    if (parseVersion(version.c_str(), parsed) == 0) {
        TVR_LOG("%s- Parsing Success", label);
        identity.MajorVersion.set(parsed.major);
        identity.MinorVersion.set(parsed.minor);
        identity.RevisionNumber.set(parsed.revision);
        identity.BuildNumber.set(parsed.build);
        identity.ReleaseType.set(parsed.releaseType);
        identity.TestReleaseVersion.set(parsed.testRelease);
    }
    TVR_LOG("%s- Parsing Done", label);
}

} // namespace cimple

#endif
