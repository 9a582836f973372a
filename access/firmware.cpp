// Firmware images on their way to an adapter.

#include "access/method_wrapper.h"

#include "access/entry_points.h"
#include "common/logger.h"

#include <cerrno>
#include <sys/stat.h>

namespace cimple {

namespace {

bool isThere(const std::string& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) == 0) {
        return true;
    }
    if (errno == ENOENT) {
        TVR_LOG("\nERROR: tvrcimDownloadFW: FW file not found");
    } else {
        TVR_LOG("\nERROR: tvrcimDownloadFW: Can't stat FW file");
    }
    return false;
}

RM_STATUS download(const HBA_WWN& port, const std::string& file) {
    TVR_LOG("Starting Firmware download");
    const RM_STATUS status = rm::LRM_DownloadFirmware(port, file.c_str(), 0);
    TVR_LOG("Checking Firmware download status");
    switch (status) {
    case RM_STATUS_OK:
        break;
    case RM_STATUS_MAILBOX_FAILED:
        TVR_LOG("\nERROR: RM_DownloadFirmware: Mailbox failed; Internal Driver Error.\n");
        break;
    case RM_STATUS_MAILBOX_TIMEOUT:
        TVR_LOG("\nERROR: RM_DownloadFirmware: Mailbox timed out.\n");
        break;
    case RM_STATUS_MAILBOX_BUSY:
        TVR_LOG("\nERROR: RM_DownloadFirmware: Mailbox busy; retry.\n");
        break;
    default:
        TVR_LOG("\nERROR: RM_DownloadFirmware: status = %d", status);
        break;
    }
    return status;
}

// Imports, verifies and downloads the image, as far as it comes.
RM_STATUS bringToAdapter(const HBA_WWN& port, const std::string& file) {
    RM_STATUS status = rm::RM_ImportHBAFileA(file.c_str());
    TVR_LOG("\n: RM_ImportHBAFile: status = %d", status);
    if (status != RM_STATUS_OK) {
        return status;
    }
    const HBA_UINT8* b = port.wwn;
    TVR_LOG("wwpn %2x %2x %2x %2x %2x %2x %2x %2x", b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7]);
    status = rm::RM_VerifyFirmwareA(HBA_WWN{}, port, file.c_str());
    TVR_LOG("\n: RM_VerifyFirmware: status = %d", status);
    return status == RM_STATUS_OK ? download(port, file) : status;
}

} // namespace

uint32 TVR_MethodWrapper::tvrcimDownloadFW(const HBA_WWN& port, const std::string& file) {
    TVR_LOG("entering the tvrcimDownloadFW function");
    if (!isLocal(port)) {
        return 1;
    }
    TVR_LOG("\n firmware file name \"%s\"\n", file.c_str());
    if (!isThere(file)) {
        return 1;
    }
    const RM_STATUS status = bringToAdapter(port, file);
    logRMStatus(status);
    return status;
}

} // namespace cimple
