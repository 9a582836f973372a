// Firmware images. An image is a file whose first line is "TVRFW MODEL VERSION"; what follows it
// has no meaning to the simulated adapters.
#pragma once

#include "access/rm/rm_api.h"

#include <optional>
#include <string>

namespace tvrsim {

/// Statuses of firmware calls that are this library's own, or mean something only to it.
inline constexpr RM_STATUS firmwareFileUnreadable = 240;
inline constexpr RM_STATUS firmwareFileMalformed = 241;
inline constexpr RM_STATUS firmwareOfOtherModel = 242;
inline constexpr RM_STATUS firmwareNeedsReboot = 247; ///< the image is in the flash

/// When a downloaded image takes effect, and the version that waits for that.
struct FirmwareUpdate {
    bool needsReset = false;
    bool needsReboot = false; ///< wins over needsReset
    std::optional<std::string> waitingVersion;
};

} // namespace tvrsim
