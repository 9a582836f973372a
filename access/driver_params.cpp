#include "access/driver_params.h"

#include "access/entry_points.h"
#include "common/logger.h"

#include <algorithm>
#include <new>

namespace cimple {

namespace {

constexpr uint32_t usualParams = 52;

// Makes room for so many records, all zero. False when there is no memory for them.
bool makeRoom(std::vector<RM_DRIVERPARAM>& params, uint32_t count) noexcept {
    if (count > maxDriverParams) {
        return false;
    }
    try {
        params.assign(count, {});
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// Fills the room with records. The count is the library's in the end, whatever it may mean.
RM_STATUS call(const HBA_WWN& port, DriverParamScope scope, std::vector<RM_DRIVERPARAM>& params,
               uint32_t& count) {
    count = static_cast<uint32_t>(params.size());
    return scope == DriverParamScope::global
               ? rm::LRM_GetDriverParamsGlobal(port, params.data(), &count)
               : rm::LRM_GetDriverParams(port, params.data(), &count);
}

bool wantsRoom(RM_STATUS status) noexcept {
    return status == RM_STATUS_MORE_DATA || status == RM_STATUS_BUFFER_TOO_SMALL;
}

} // namespace

DriverParamAnswer readDriverParams(const HBA_WWN& port, DriverParamScope scope) {
    std::vector<RM_DRIVERPARAM> params;
    if (!makeRoom(params, usualParams)) {
        return {DriverParamOutcome::noMemory, RM_STATUS_OK, {}};
    }
    uint32_t count = 0;
    RM_STATUS status = call(port, scope, params, count);
    TVR_LOG(scope == DriverParamScope::global ? "RM_GetDriverParamsGlobal: status=%d"
                                              : "RM_GetDriverParams: status=%d",
            status);
    if (wantsRoom(status)) {
        // Never less than before, though a library may say so.
        if (!makeRoom(params, std::max(count, usualParams))) {
            return {DriverParamOutcome::noMemoryForNeed, status, {}};
        }
        status = call(port, scope, params, count);
        if (status != RM_STATUS_OK) {
            return {DriverParamOutcome::refusedAgain, status, {}};
        }
    } else if (status != RM_STATUS_OK) {
        return {DriverParamOutcome::refused, status, {}};
    }
    params.resize(std::min<std::size_t>(count, params.size()));
    return {DriverParamOutcome::read, status, std::move(params)};
}

} // namespace cimple
