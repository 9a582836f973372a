#include "common/formatted.h"

#include <cstdarg>
#include <cstdio>

namespace cimple {

std::string formatted(const char* format, ...) {
    char text[256];
    std::va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the line above is not understood
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

} // namespace cimple
