// The version of the provider, as its instances and its log tell it.
#ifndef TVR_AGENT_VERSION_H
#define TVR_AGENT_VERSION_H

#include "runtime/type.h"

#include <string>

namespace cimple {

constexpr uint16 version_major = 2;
constexpr uint16 version_minor = 5;
constexpr uint16 version_revision = 11;
constexpr uint16 version_build = 1;

// "2.5.11-1"
inline std::string version_text() {
    return std::to_string(version_major) + '.' + std::to_string(version_minor) + '.' +
           std::to_string(version_revision) + '-' + std::to_string(version_build);
}

} // namespace cimple

#endif
