// What each RM entry point does once its call was counted and let through.
#pragma once

#include "access/rm/rm_api.h"

namespace tvrsim::behaviour {

#define TVRSIM_DECLARE(name, parameters, arguments) RM_STATUS name parameters;
TVRSIM_LRM_ENTRY_POINTS(TVRSIM_DECLARE)
#undef TVRSIM_DECLARE

/// The calls of one name that read firmware images.
RM_STATUS ImportHBAFile(const char* path);
RM_STATUS VerifyFirmware(const HBA_WWN& port, const char* path);

/// The text of a status, empty when there is none.
const char* statusText(RM_STATUS status);

/// A name with a known format that is not zero.
bool isValidName(const HBA_WWN& wwn);

} // namespace tvrsim::behaviour
