// The fixed files of the system in one place.
#ifndef TVR_COMMON_SETTINGS_H
#define TVR_COMMON_SETTINGS_H

#include <string>

namespace cimple {

// Paths that the system reads or writes. The environment variable TAVRIN_FC_PREFIX, a directory, is
// put before each of them; it is read once and ignored in a set-user-ID process.
struct Settings {
    explicit Settings(const std::string& prefix = {});

    std::string configFile;      // refresh settings, read and rewritten
    std::string logSettingsFile; // mode, level, enabled flag and file of the log
    std::string webPortalFile;   // one line, the URL of the web portal
    std::string systemLog;       // where the driver's messages are found
    std::string kernelVersion;   // the kernel's banner line
    std::string issue;           // the login banner, which names the distribution
};

// The settings in force. Tests assign to the members, or a whole `Settings` with a prefix of their
// own, while no other thread reads them.
Settings& settings();

// Brings the settings into being before any static object of a source that includes this header, so
// that they are still there when such an object is destroyed at the module's end.
[[maybe_unused]] static const Settings& settingsOfModule = settings();

} // namespace cimple

#endif
