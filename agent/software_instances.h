// Software identities, and what those of all kinds have in common.
#ifndef TVR_AGENT_SOFTWARE_INSTANCES_H
#define TVR_AGENT_SOFTWARE_INSTANCES_H

#include "agent/instance_maps.h"
#include "common/tvr_common.h"
#include "model/data.h"

namespace cimple {

// Value map of `Classifications`.
enum Software_Class : uint16 {
    SOFTWARE_OTHER = 1,
    SOFTWARE_DRIVER = 2,
    SOFTWARE_DIAGNOSTICS = 7,
    SOFTWARE_FIRMWARE = 10,
    SOFTWARE_BOOT_CODE = 11,
};

// The provider's identity, with what joins it to the host. Throws Rebuild_Ended.
const TVRHBA_SoftwareIdentity& create_provider_identity(Instance_Maps& maps);

// The identities of driver and diagnostics, as the first FC adapter tells them. Throws
// Rebuild_Ended.
void create_driver_identities(Instance_Maps& maps, const Data& data);

// Joins an identity with the computer system that it is installed on, and with the profile of that
// name, if it is registered. A rebuild goes on without an association that isn't inserted.
void create_installed_software_identity(Instance_Maps& maps,
                                        const TVRHBA_SoftwareIdentity& identity);
void create_software_conforms_to_profile(Instance_Maps& maps, const char* profile,
                                         const TVRHBA_SoftwareIdentity& identity);

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
