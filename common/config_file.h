// The provider's own settings, kept over a restart.
#ifndef TVR_COMMON_CONFIG_FILE_H
#define TVR_COMMON_CONFIG_FILE_H

#include "runtime/thread.h"

#include <string>

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
    // `save` even if there is no such file. Null does nothing. What is passed over, a value that is
    // not allowed or a further line of a setting that was taken, is told in the runtime's log: the
    // provider's own has no settings yet when this is called, and no word for it.
    void load(const char* path);
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
    bool m_bRefreshAdapterData = false;
    bool m_bRefreshSANData = true;
    sint32 m_CacheTimeout = 10;
    std::string m_path;
    mutable Mutex m_mutex;
};

} // namespace cimple

#endif
