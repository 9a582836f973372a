#include "common/config_file.h"

#include "common/files.h"
#include "common/logger.h"
#include "runtime/log.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace cimple {

namespace {

constexpr std::size_t maxLines = 1000;
constexpr std::size_t maxLineLength = 1023;

constexpr char timeoutKey[] = "TVR_PROVIDER_CACHE_TIMEOUT";
constexpr char adapterKey[] = "TVR_PROVIDER_REFRESH_ADAPTERDATA";
constexpr char sanKey[] = "TVR_PROVIDER_REFRESH_SANDATA";

constexpr char frame[] = "##################################################\n";
constexpr char title[] = "# Tavrin HBA CIM Provider Configuration Settings #\n";

std::string_view trim(std::string_view text) noexcept {
    constexpr std::string_view space = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(space);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(space) - first + 1);
}

const char* toText(bool value) noexcept {
    return value ? "TRUE" : "FALSE";
}

// True for a value that is allowed, which is stored then.
bool takeFlag(std::string_view value, bool& flag) noexcept {
    if (value != "TRUE" && value != "FALSE") {
        return false;
    }
    flag = value == "TRUE";
    return true;
}

bool takeMinutes(std::string_view value, sint32& minutes) {
    const long number = std::strtol(std::string(value).c_str(), nullptr, 10);
    if (number < TvrConfigFile::minCacheTimeout || number > TvrConfigFile::maxCacheTimeout) {
        return false;
    }
    minutes = static_cast<sint32>(number);
    return true;
}

} // namespace

void TvrConfigFile::load(const char* path) {
    if (path == nullptr) {
        return;
    }
    m_path = path;
    const File file = openToRead(path);
    if (!file) {
        if (errno != ENOENT) {
            TVR_LOG("Unable to open provider config setting file - %s", path);
        }
        return;
    }
    struct Setting {
        const char* key;
        const char* allowed;
        bool (*take)(std::string_view value, TvrConfigFile& self);
        bool isTaken = false;
    };
    Setting known[] = {
        {timeoutKey, "1 to 30",
         [](std::string_view value, TvrConfigFile& self) {
             return takeMinutes(value, self.m_CacheTimeout);
         }},
        {adapterKey, "TRUE or FALSE",
         [](std::string_view value, TvrConfigFile& self) {
             return takeFlag(value, self.m_bRefreshAdapterData);
         }},
        {sanKey, "TRUE or FALSE",
         [](std::string_view value, TvrConfigFile& self) {
             return takeFlag(value, self.m_bRefreshSANData);
         }},
    };
    std::string line;
    for (std::size_t n = 1; n <= maxLines && readLine(file.get(), maxLineLength, line); ++n) {
        const std::string_view text = trim(line);
        const std::size_t equals = text.find('=');
        if (text.starts_with('#') || equals == std::string_view::npos) {
            continue;
        }
        const std::string_view key = trim(text.substr(0, equals));
        const std::string_view value = trim(text.substr(equals + 1));
        for (Setting& setting : known) {
            if (key != setting.key) {
                continue;
            }
            // The first line of a key that has an allowed value decides.
            if (setting.isTaken) {
                TVR_RUNTIME_LOG(LL_WARN, "%s:%zu: %s stands there once more and is passed over",
                                path, n, setting.key);
                continue;
            }
            setting.isTaken = setting.take(value, *this);
            if (!setting.isTaken) {
                TVR_RUNTIME_LOG(LL_WARN, "%s:%zu: %s takes %s, \"%.60s\" is passed over", path, n,
                                setting.key, setting.allowed, std::string(value).c_str());
            }
        }
    }
}

void TvrConfigFile::save() noexcept {
    const File file = openSettingsToWrite(m_path.c_str());
    if (!file) {
        return;
    }
    fprintf(file.get(), "%s%s%s%s = %d\n%s = %s\n%s = %s\n", frame, title, frame, timeoutKey,
            static_cast<int>(getCacheTimeout()), adapterKey, toText(getRefreshAdapterData()),
            sanKey, toText(getRefreshSANData()));
}

sint32 TvrConfigFile::setCacheTimeout(sint32 minutes) {
    if (minutes < minCacheTimeout || minutes > maxCacheTimeout) {
        return -1;
    }
    Lock lock(m_mutex);
    m_CacheTimeout = minutes;
    return 0;
}

sint32 TvrConfigFile::setRefreshAdapterData(uint32 value) {
    if (value > 1) {
        return -1;
    }
    Lock lock(m_mutex);
    m_bRefreshAdapterData = value != 0;
    return 0;
}

sint32 TvrConfigFile::setRefreshSANData(uint32 value) {
    if (value > 1) {
        return -1;
    }
    Lock lock(m_mutex);
    m_bRefreshSANData = value != 0;
    return 0;
}

sint32 TvrConfigFile::getCacheTimeout() const {
    Lock lock(m_mutex);
    return m_CacheTimeout;
}

bool TvrConfigFile::getRefreshAdapterData() const {
    Lock lock(m_mutex);
    return m_bRefreshAdapterData;
}

bool TvrConfigFile::getRefreshSANData() const {
    Lock lock(m_mutex);
    return m_bRefreshSANData;
}

} // namespace cimple
