#include "common/logger.h"

namespace cimple {

uint32 DeviceLog::add(const std::string& line) {
    if (line.empty()) {
        return 0;
    }
    TVR_LOG("Handlelog ---  Prior to Inserting into DeviceLog Vector");
    if (m_lines.size() >= capacity) {
        return 1;
    }
    m_lines.push_back(line);
    return 0;
}

} // namespace cimple
