// The scalar types of CIM and their C++ representation.
#ifndef TVR_RUNTIME_TYPE_H
#define TVR_RUNTIME_TYPE_H

#include <cstddef>
#include <cstdint>

namespace cimple {

using uint8 = std::uint8_t;
using sint8 = std::int8_t;
using uint16 = std::uint16_t;
using sint16 = std::int16_t;
using uint32 = std::uint32_t;
using sint32 = std::int32_t;
using uint64 = std::uint64_t;
using sint64 = std::int64_t;
using boolean = bool;
using real32 = float;
using real64 = double;

// A UCS-2 character, a type of its own so that it is never mistaken for a uint16.
enum class char16 : std::uint16_t {};

// Type code of a property, as metadata and `Value` carry it.
enum Type : uint16 {
    BOOLEAN = 0,
    UINT8 = 1,
    SINT8 = 2,
    UINT16 = 3,
    SINT16 = 4,
    UINT32 = 5,
    SINT32 = 6,
    UINT64 = 7,
    SINT64 = 8,
    REAL32 = 9,
    REAL64 = 10,
    CHAR16 = 11,
    STRING = 12,
    DATETIME = 13,
};

constexpr std::size_t type_count = 14;

// CIM name of a type, as "uint16". An unknown code gives "unknown".
const char* type_name(Type type) noexcept;

// Width in bytes of a scalar value; the null flag of a scalar `Property` stands right behind it.
std::size_t type_width(Type type) noexcept;

} // namespace cimple

#endif
