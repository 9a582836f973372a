// The dump files of an adapter.

#include "access/method_wrapper.h"

#include "access/entry_points.h"
#include "common/logger.h"

#include <cstring>

namespace cimple {

namespace {

constexpr uint32 minRetentionCount = 1;
constexpr uint32 maxRetentionCount = 20;

} // namespace

uint32 TVR_MethodWrapper::tvrcimSetDumpDirectory(const HBA_WWN& port,
                                                 const std::string& directory) {
    TVR_LOG("TVR_MethodWrapper::tvrcimSetDumpDirectory");
    if (!isLocal(port)) {
        return 1;
    }
    const RM_STATUS status = rm::LRM_SetDumpDirectory(port, directory.c_str());
    switch (status) {
    case RM_STATUS_OK:
        TVR_LOG("tvrcimSetDumpDirectory: Success");
        break;
    case RM_STATUS_DUMP_DIRECTORY:
        TVR_LOG("ERROR: tvrcimSetDumpDirectory: RM_SetDumpDirectory call failed. The specified "
                "directory [' / vmfs / volumes / %s'] cannot be opened",
                directory.c_str());
        break;
    case RM_STATUS_CONFIG_FILE:
    case RM_STATUS_CONFIG_FILE_WRITE:
        TVR_LOG("ERROR: tvrcimSetDumpDirectory: RM_SetDumpDirectory call failed. The "
                "configuration file could not be opened");
        break;
    default:
        TVR_LOG("ERROR: tvrcimSetDumpDirectory: RM_SetDumpDirectory call failed with error code "
                ": %d \n",
                status);
        break;
    }
    return status;
}

uint32 TVR_MethodWrapper::tvrcimGetDumpDirectory(const HBA_WWN& port,
                                                 char (&directory)[RM_DUMP_DIRECTORY_SIZE]) {
    TVR_LOG("TVR_MethodWrapper::tvrcimGetRetentionCount");
    if (!isLocal(port)) {
        return 1;
    }
    std::memset(directory, 0, sizeof directory);
    const RM_STATUS status = rm::LRM_GetDumpDirectoryA(port, directory, RM_DUMP_DIRECTORY_SIZE);
    directory[sizeof directory - 1] = '\0';
    if (status != RM_STATUS_OK) {
        directory[0] = '\0';
        TVR_LOG("Failed to get the Dump directory, returned with error code %d", status);
        logRMStatus(status);
    }
    return status;
}

uint32 TVR_MethodWrapper::tvrcimGetRetentionCount(const HBA_WWN& port, uint32* count) {
    TVR_LOG("TVR_MethodWrapper::tvrcimGetRetentionCount");
    if (!isLocal(port)) {
        return 1;
    }
    const RM_STATUS status = rm::LRM_GetDumpRetentionCount(port, count);
    if (status != RM_STATUS_OK) {
        TVR_LOG("Failed to get the retention count, returned with error code %d", status);
        logRMStatus(status);
    }
    return status;
}

uint32 TVR_MethodWrapper::tvrcimSetRetentionCount(const HBA_WWN& port, uint32 count) {
    TVR_LOG("TVR_MethodWrapper::tvrcimSetRetentionCount");
    if (!isLocal(port)) {
        return 1;
    }
    if (count < minRetentionCount || count > maxRetentionCount) {
        TVR_LOG("ERROR: RetentionCount value must be in-between %d and %d", minRetentionCount,
                maxRetentionCount);
        return 1;
    }
    const RM_STATUS status = rm::LRM_SetDumpRetentionCount(port, count);
    if (status != RM_STATUS_OK) {
        TVR_LOG("Failed to set the retention count, exited with error code %d", status);
        logRMStatus(status);
    }
    return status;
}

uint32 TVR_MethodWrapper::tvrcimDeleteDumpFiles(const HBA_WWN& port) {
    TVR_LOG("TVR_MethodWrapper::tvrcimDeleteDumpFiles");
    if (!isLocal(port)) {
        return 1;
    }
    const RM_STATUS status = rm::LRM_DeleteDumpFiles(port);
    if (status != RM_STATUS_OK) {
        TVR_LOG("Failed to delete the Dump files, exited with error code %d", status);
        logRMStatus(status);
    }
    return status;
}

uint32 TVR_MethodWrapper::tvrcimDumpDiagnostic(const HBA_WWN& port, uint32 type) {
    TVR_LOG("TVR_MethodWrapper::tvrcimDumpDiagnostic");
    if (!isLocal(port)) {
        return 1;
    }
    const RM_STATUS status = type == plainDump ? rm::LRM_GenerateDump(HBA_WWN{}, port)
                                               : rm::LRM_GenerateEfdDump(port, type, 0);
    if (status != RM_STATUS_OK) {
        TVR_LOG("Failed to generate the dump file, exited with error code %d", status);
        logRMStatus(status);
    }
    return status;
}

uint32 TVR_MethodWrapper::tvrcimGetDumpFileNames(const HBA_WWN& port, RM_DUMPFILENAMES* names) {
    TVR_LOG("Entering the Get Dump filenames method");
    if (!isLocal(port)) {
        return 1;
    }
    const RM_STATUS status = rm::LRM_GetDumpFileNames(port, names);
    if (status != RM_STATUS_OK) {
        logRMStatus(status);
    }
    TVR_LOG("Exit the Get Dump filenames method");
    return status;
}

} // namespace cimple
