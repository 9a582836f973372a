// How the tree reads the HBA API: handles that close themselves, the one retry on stale data.
#ifndef TVR_MODEL_HBA_ACCESS_H
#define TVR_MODEL_HBA_ACCESS_H

#include "access/bounded_text.h"
#include "access/entry_points.h"
#include "common/logger.h"

#include <stdexcept>
#include <string>

namespace cimple {

// An adapter that is open as long as the object lives.
class OpenAdapter {
public:
    // Throws std::runtime_error when the adapter can't be opened.
    explicit OpenAdapter(std::string name) : m_handle(open(name)) {
        if (m_handle == HBA_HANDLE_INVALID) {
            TVR_LOG("HBA_OpenAdapter failed, skipping Adapter %s", name.c_str());
            throw std::runtime_error("HBA_OpenAdapter failed");
        }
    }
    ~OpenAdapter() { rm::HBA_CloseAdapter(m_handle); }
    OpenAdapter(const OpenAdapter&) = delete;
    OpenAdapter& operator=(const OpenAdapter&) = delete;

    HBA_HANDLE handle() const noexcept { return m_handle; }

    // Fills a record by `call`; once more, after a refresh, if the library's data was stale.
    template <class Record, class Call> HBA_STATUS read(Record& record, Call call) const {
        record = {};
        HBA_STATUS status = call(m_handle, &record);
        if (status == HBA_STATUS_ERROR_STALE_DATA) {
            rm::HBA_RefreshInformation(m_handle);
            record = {};
            status = call(m_handle, &record);
        }
        return status;
    }

    HBA_STATUS readPort(HBA_UINT32 index, HBA_PORTATTRIBUTES& record) const {
        return read(record, [index](HBA_HANDLE handle, HBA_PORTATTRIBUTES* attributes) {
            return rm::HBA_GetAdapterPortAttributes(handle, index, attributes);
        });
    }

private:
    static HBA_HANDLE open(std::string& name) {
        return rm::callsAreStopped() ? HBA_HANDLE_INVALID : rm::HBA_OpenAdapter(name.data());
    }

    HBA_HANDLE m_handle;
};

} // namespace cimple

#endif
