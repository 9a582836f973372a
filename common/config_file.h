// The provider's own settings, kept over a restart.
#ifndef TVR_COMMON_CONFIG_FILE_H
#define TVR_COMMON_CONFIG_FILE_H

#include "runtime/thread.h"

#include <string>
#include <vector>

namespace cimple {

// The three refresh settings and the file they come from and go back to. Setters and getters may be
// called from any thread; `load` before there is a second one.
class TvrConfigFile {
public:
    static constexpr sint32 minCacheTimeout = 1; // minutes
    static constexpr sint32 maxCacheTimeout = 30;

    TvrConfigFile() : m_mutex(true) {}
    // Saves the settings.
    ~TvrConfigFile() { save(); }
    TvrConfigFile(const TvrConfigFile&) = delete;
    TvrConfigFile& operator=(const TvrConfigFile&) = delete;

    // Takes what the file says and keeps the present value of all else. The path is remembered for
    // `save` even if there is no such file. Null does nothing.
    void load(const char* path);
    // Logs what `load` has passed over: values that are not allowed, and further lines of a setting
    // that was taken. Apart from `load` because the log has no settings yet when that is called.
    void logPassedOver();
    // Rewrites the file that `load` named; silent when that can't be done.
    void save() noexcept;

    // 0, or -1 with the old value kept for one that isn't allowed.
    sint32 setCacheTimeout(sint32 minutes);
    sint32 setRefreshAdapterData(uint32 value); // 0 or 1
    sint32 setRefreshSANData(uint32 value);     // 0 or 1

    sint32 getCacheTimeout() const;
    bool getRefreshAdapterData() const;
    bool getRefreshSANData() const;

private:
    struct PassedOver {
        std::size_t line;
        const char* key;
        std::string value;   // its beginning
        const char* allowed; // values; null if an earlier line was taken
    };

    bool m_bRefreshAdapterData = false;
    bool m_bRefreshSANData = true;
    sint32 m_CacheTimeout = 10;
    std::string m_path;
    std::vector<PassedOver> m_passedOver;
    mutable Mutex m_mutex;
};

} // namespace cimple

#endif
