#include "model/target_mapping.h"

#include "access/entry_points.h"
#include "common/logger.h"

#include <algorithm>
#include <cstddef>

namespace cimple {

namespace {

constexpr uint32 usualRows = 256;
constexpr int mapping_attempts = 3;

} // namespace

bool TargetMapping::allocate(uint32 rows) noexcept {
    m_mapping.reset();
    m_capacity = 0;
    if (rows > maxRows) {
        return false;
    }
    const std::size_t size =
        std::max(sizeof(HBA_FCPTARGETMAPPING), offsetof(HBA_FCPTARGETMAPPING, entry) +
                                                   std::size_t{rows} * sizeof(HBA_FCPSCSIENTRY));
    m_mapping.reset(static_cast<HBA_FCPTARGETMAPPING*>(std::calloc(1, size)));
    if (!m_mapping) {
        return false;
    }
    m_capacity = rows;
    m_mapping->NumberOfEntries = rows;
    return true;
}

uint32 TargetMapping::size() const noexcept {
    const auto is_written = [this](uint32 row) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&m_mapping->entry[row]);
        return std::any_of(bytes, bytes + sizeof(HBA_FCPSCSIENTRY),
                           [](unsigned char byte) { return byte != 0; });
    };
    if (!m_mapping || toldRows() <= m_capacity) {
        return m_mapping ? toldRows() : 0;
    }
    uint32 rows = m_capacity;
    while (rows > 0 && !is_written(rows - 1)) {
        --rows;
    }
    return rows;
}

HBA_STATUS fetchTargetMapping(HBA_HANDLE handle, TargetMapping& mapping) {
    uint32 rows = usualRows;
    HBA_STATUS status = HBA_STATUS_ERROR;
    for (int attempt = 0; attempt < mapping_attempts; ++attempt) {
        TVR_LOG("To retry the HBA_GetFcpTargetMapping command");
        if (mapping) {
            TVR_LOG("Deleting the allocated memory");
        }
        if (!mapping.allocate(rows)) {
            TVR_LOG("Could not allocate memory..break ");
            return status;
        }
        status = rm::HBA_GetFcpTargetMapping(handle, mapping.get());
        switch (status) {
        case HBA_STATUS_OK:
            TVR_LOG("All Ok ...break ");
            TVR_LOG("Successful target info fetched");
            return status;
        case HBA_STATUS_ERROR_STALE_DATA:
            rm::HBA_RefreshInformation(handle);
            TVR_LOG("Refresh and retry ... ");
            break;
        case HBA_STATUS_ERROR_MORE_DATA:
            // Never less than before, though a library may say so.
            rows = std::max(rows, mapping.toldRows());
            TVR_LOG("Increasing the buffer to = %d", rows);
            break;
        default:
            mapping = TargetMapping();
            TVR_LOG("Error hbaStatus=%d", status);
            return status;
        }
    }
    TVR_LOG("Successful target info fetched");
    return status;
}

} // namespace cimple
