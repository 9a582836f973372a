// Hears the system's log for a test.
#pragma once

#include "common/logger.h"

#include <mutex>
#include <string>
#include <vector>

namespace cimple {

// Registered as long as it lives. The log is disabled or enabled as the test wants; without a
// TVR_SysLogger every message arrives here.
class LogCapture final : public TVR_LoggerInterface {
public:
    struct Line {
        uint32 level;
        std::string file;
        std::string text;
    };

    LogCapture() { CLogger::getInstance().addLogger(this); }
    ~LogCapture() override { CLogger::getInstance().removeLogger(this); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    void Log(uint32 level, const char* file, uint32, const char* text) override {
        std::lock_guard lock(m_mutex);
        m_lines.push_back({level, file, text});
    }

    std::vector<Line> lines() const {
        std::lock_guard lock(m_mutex);
        return m_lines;
    }
    // What was heard so far, which is forgotten then.
    std::vector<std::string> take() {
        std::lock_guard lock(m_mutex);
        std::vector<std::string> texts;
        for (Line& line : m_lines) {
            texts.push_back(std::move(line.text));
        }
        m_lines.clear();
        return texts;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
};

} // namespace cimple
