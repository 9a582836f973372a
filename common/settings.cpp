#include "common/settings.h"

#include "runtime/until_closed.h"

#include <cstdlib>

namespace cimple {

Settings::Settings(const std::string& prefix)
    : configFile(prefix + "/etc/tavrin_fc_provider.conf"),
      logSettingsFile(prefix + "/etc/tavrin_fc_provider.dmp"),
      webPortalFile(prefix + "/etc/tvr_smis.conf"), systemLog(prefix + "/var/log/messages"),
      kernelVersion(prefix + "/proc/version"), issue(prefix + "/etc/issue") {}

Settings& settings() {
    static Until_Closed<Settings> instance([] {
        const char* prefix = secure_getenv("TAVRIN_FC_PREFIX");
        return Settings(prefix == nullptr ? "" : prefix);
    }());
    return instance.get();
}

} // namespace cimple
