// Texts by printf's formats.
#ifndef TVR_COMMON_FORMATTED_H
#define TVR_COMMON_FORMATTED_H

#include <string>

namespace cimple {

// The text, cut behind 255 characters.
__attribute__((format(printf, 1, 2))) std::string formatted(const char* format, ...);

} // namespace cimple

#endif
