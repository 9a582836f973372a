// Texts in the libraries' records.
#ifndef TVR_ACCESS_BOUNDED_TEXT_H
#define TVR_ACCESS_BOUNDED_TEXT_H

#include <cstring>
#include <string>

namespace cimple {

// The text in an array, taken no further than the array reaches.
template <std::size_t size> std::string toString(const char (&text)[size]) {
    return {text, strnlen(text, size)};
}

} // namespace cimple

#endif
