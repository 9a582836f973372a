#include "common/logger.h"

#include <cstdio>

namespace cimple {

TVR_CIMLogger::~TVR_CIMLogger() {
    CLogger::getInstance().removeLogger(this);
}

std::vector<TVR_CIMLogger::Record> TVR_CIMLogger::getRecords() const {
    std::lock_guard lock(m_mutex);
    return m_records;
}

void TVR_CIMLogger::Log(uint32 level, const char*, uint32, const char* text) {
    const uint32 mode = CLogger::getInstance().getMode();
    if (text == nullptr || level > TVR_ERR ||
        (mode != TVR_LOG_RECORDS && mode != TVR_LOG_FILE_AND_RECORDS)) {
        return;
    }
    Record record;
    record.level = level;
    record.stamp = Datetime::now();
    const int length = snprintf(record.text, sizeof record.text, "[%s]", text);
    if (length < 0) {
        return;
    }
    std::lock_guard lock(m_mutex);
    // The capacity divides the range of the index, which may therefore wrap.
    const uint32 next = (m_index + 1) % capacity;
    if (m_records.size() < capacity) {
        m_records.push_back(record);
    } else {
        m_records[next] = record;
    }
    ++m_index;
}

void TVR_CIMLogger::clear() {
    std::lock_guard lock(m_mutex);
    m_records.clear();
    m_index = UINT32_MAX;
}

} // namespace cimple
