// Metadata written by hand, for the classes of tests. A record is named like its class and feature.
#ifndef TVR_TESTS_RUNTIME_META_RECORDS_H
#define TVR_TESTS_RUNTIME_META_RECORDS_H

#include "runtime/instance.h"

#include <cstddef>
#include <iterator>

// Fields of structures with a base lie where the compiler says, whatever the standard promises.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace cimple {

constexpr Meta_Property property_record(const char* name, Type type, std::size_t offset,
                                        uint32 flags, sint16 subscript,
                                        const void* value = nullptr) {
    return {{0, FLAG_PROPERTY | FLAG_READ | flags, name, nullptr, 0},
            static_cast<uint16>(type),
            subscript,
            static_cast<uint32>(offset),
            value};
}

#define SCALAR(Class, name, type, ...)                                                             \
    constexpr Meta_Property Class##_##name =                                                       \
        property_record(#name, type, offsetof(Class, name), FLAGS_THEN_VALUE(0, __VA_ARGS__))
#define ARRAY_OF(Class, name, type, ...)                                                           \
    constexpr Meta_Property Class##_##name =                                                       \
        property_record(#name, type, offsetof(Class, name), FLAGS_THEN_VALUE(-1, __VA_ARGS__))
#define FLAGS_THEN_VALUE(subscript, flags, ...) flags, subscript __VA_OPT__(, ) __VA_ARGS__
#define REFERENCE(Class, name, target, flags, subscript)                                           \
    constexpr Meta_Reference Class##_##name = {{0, FLAG_REFERENCE | (flags), #name, nullptr, 0},   \
                                               subscript,                                          \
                                               &target::static_meta_class,                         \
                                               static_cast<uint32>(offsetof(Class, name))}

// Nothing at run time asks which features a class declares itself.
inline constexpr uint8 no_locals[64] = {};

template <class C, std::size_t size>
constexpr Meta_Class
class_record(const char* name, uint32 flags, const Meta_Feature* const (&features)[size],
             const Meta_Class* parent, uint64 keys, const Meta_Repository& repository) {
    return {{{0, flags, name, nullptr, 0}, features, size, sizeof(C)},
            no_locals,
            parent,
            keys,
            &repository};
}
template <class C, std::size_t size>
constexpr Meta_Method method_record(const char* name, const Meta_Feature* const (&features)[size]) {
    return {{{0, FLAG_METHOD, name, nullptr, 0}, features, size, sizeof(C)}, UINT32};
}

} // namespace cimple

#endif
