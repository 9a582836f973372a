#include "providers/TVRHBA_RegisteredProfile_Provider.h"

#include "agent/profile_instance.h"

namespace cimple {

namespace {

constexpr Profile profiles[] = {
    {"Profile Registration", ORGANIZATION_DMTF, "1.0.0"},
    {"Software Inventory", ORGANIZATION_DMTF, "1.0.0"},
    {"Physical Package", ORGANIZATION_SNIA, "1.3.0"},
    {"Host Discovered Resources", ORGANIZATION_SNIA, "1.2.0"},
    {"FC HBA", ORGANIZATION_SNIA, "1.2.0"},
    {"Storage HBA", ORGANIZATION_SNIA, "1.4.0"},
    {"FC Initiator Ports", ORGANIZATION_SNIA, "1.3.0"},
    {"Software Update", ORGANIZATION_DMTF, "1.0.0"},
    {"Record Log", ORGANIZATION_DMTF, "1.0.1"},
    {"Software", ORGANIZATION_SNIA, "1.2.0"},
    {"Access Points", ORGANIZATION_SNIA, "1.3.0"},
    {"PCI Device", ORGANIZATION_DMTF, "1.0.0"},
    {"FCHBA Diagnostics", ORGANIZATION_DMTF, "1.0.0"},
};

} // namespace

Enum_Instances_Status
TVRHBA_RegisteredProfile_Provider::enum_instances(const Class*,
                                                  const Enum_Instances_Handler& handler) {
    for (const Profile& profile : profiles) {
        handler.handle(make_profile(profile).release());
    }
    return ENUM_INSTANCES_OK;
}

} // namespace cimple
