#include "runtime/type.h"

namespace cimple {

namespace {

struct Type_Fact {
    const char* name;
    std::size_t width;
};

constexpr Type_Fact type_facts[type_count] = {
    {"boolean", 1}, {"uint8", 1},  {"sint8", 1},  {"uint16", 2},   {"sint16", 2},
    {"uint32", 4},  {"sint32", 4}, {"uint64", 8}, {"sint64", 8},   {"real32", 4},
    {"real64", 8},  {"char16", 2}, {"string", 8}, {"datetime", 8},
};

} // namespace

const char* type_name(Type type) noexcept {
    return type < type_count ? type_facts[type].name : "unknown";
}

std::size_t type_width(Type type) noexcept {
    return type < type_count ? type_facts[type].width : 0;
}

} // namespace cimple
