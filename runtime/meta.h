// Class metadata: constant records that tell, feature by feature, what a generated structure holds
// and where. Nothing registers or changes them at run time; they are safe to read from anywhere.
#ifndef TVR_RUNTIME_META_H
#define TVR_RUNTIME_META_H

#include "runtime/type.h"

namespace cimple {

// Bits of the flag word that a class, property, reference, method and parameter draw on alike.
enum Flag : uint32 {
    FLAG_PROPERTY = 1u << 0,
    FLAG_REFERENCE = 1u << 1,
    FLAG_METHOD = 1u << 2,
    FLAG_CLASS = 1u << 3,
    FLAG_ABSTRACT = 1u << 4,
    FLAG_AGGREGATE = 1u << 5,
    FLAG_AGGREGATION = 1u << 6,
    FLAG_ASSOCIATION = 1u << 7,
    FLAG_COMPOSITION = 1u << 8,
    FLAG_COUNTER = 1u << 9,
    FLAG_DELETE = 1u << 10,
    FLAG_DN = 1u << 11,
    FLAG_EMBEDDED_OBJECT = 1u << 12,
    FLAG_EXCEPTION = 1u << 13,
    FLAG_EXPENSIVE = 1u << 14,
    FLAG_EXPERIMENTAL = 1u << 15,
    FLAG_GAUGE = 1u << 16,
    FLAG_IF_DELETED = 1u << 17,
    FLAG_IN = 1u << 18,
    FLAG_INDICATION = 1u << 19,
    FLAG_INVISIBLE = 1u << 20,
    FLAG_KEY = 1u << 21,
    FLAG_LARGE = 1u << 22,
    FLAG_OCTET_STRING = 1u << 23,
    FLAG_OUT = 1u << 24,
    FLAG_READ = 1u << 25,
    FLAG_REQUIRED = 1u << 26,
    FLAG_STATIC = 1u << 27,
    FLAG_TERMINAL = 1u << 28,
    FLAG_WEAK = 1u << 29,
    FLAG_WRITE = 1u << 30,
    FLAG_EMBEDDED_INSTANCE = 1u << 31,
};

// Masks of `find_feature`.
constexpr uint32 PROPERTIES = FLAG_PROPERTY;
constexpr uint32 REFERENCES = FLAG_REFERENCE;
constexpr uint32 PROPERTIES_AND_REFERENCES = FLAG_PROPERTY | FLAG_REFERENCE;
constexpr uint32 METHODS = FLAG_METHOD;
constexpr uint32 ALL_FEATURES = FLAG_PROPERTY | FLAG_REFERENCE | FLAG_METHOD;

struct Meta_Class;

// Qualifiers are not carried: every record has none, and this type only keeps its place.
struct Meta_Qualifier;

// Head of every record. `refs` 0 marks a constant record that is never counted or freed.
struct Meta_Feature {
    uint32 refs;
    uint32 flags;
    const char* name;
    const Meta_Qualifier* const* meta_qualifiers;
    uint64 num_meta_qualifiers;

    bool has(uint32 mask) const noexcept { return (flags & mask) != 0; }
};

struct Meta_Property : Meta_Feature {
    uint16 type;       // a `Type`
    sint16 subscript;  // 0 a scalar, else an array
    uint32 offset;     // of the `Property` in the structure
    const void* value; // the default, or null: the value itself; for a string or datetime a pointer
                       // to characters; for an array a `Default_Array`

    bool is_array() const noexcept { return subscript != 0; }
};

// Default of an array property. Elements of strings and datetimes are `const char*`.
struct Default_Array {
    const void* elements;
    uint64 size;
};

struct Meta_Reference : Meta_Feature {
    sint16 subscript; // 0 a single reference, else an array of references
    const Meta_Class* meta_class;
    uint32 offset;

    bool is_array() const noexcept { return subscript != 0; }
};

// What a structure is made from: the common part of classes and methods.
struct Meta_Structure : Meta_Feature {
    const Meta_Feature* const* meta_features;
    uint64 num_meta_features;
    uint64 size; // bytes of the generated structure

    const Meta_Feature* const* begin() const noexcept { return meta_features; }
    const Meta_Feature* const* end() const noexcept { return meta_features + num_meta_features; }
};

// A method: its features are the parameters in order, and last the property "return_value".
struct Meta_Method : Meta_Structure {
    uint16 return_type; // a `Type`
};

struct Meta_Repository {
    const Meta_Class* const* meta_classes;
    uint64 num_meta_classes;
};

// A class: its features are the parent's first, then its own; a redeclared one keeps its place.
struct Meta_Class : Meta_Structure {
    const uint8* locals; // one byte a feature: 1 declared here, 0 inherited unchanged
    const Meta_Class* super_meta_class;
    uint64 num_keys;
    const Meta_Repository* meta_repository;
};

inline const Meta_Property& as_property(const Meta_Feature& feature) noexcept {
    return static_cast<const Meta_Property&>(feature);
}
inline const Meta_Reference& as_reference(const Meta_Feature& feature) noexcept {
    return static_cast<const Meta_Reference&>(feature);
}
inline const Meta_Method& as_method(const Meta_Feature& feature) noexcept {
    return static_cast<const Meta_Method&>(feature);
}

// The class of that name without regard to case, or null. A null repository has none.
const Meta_Class* find_meta_class(const Meta_Repository* repository, const char* name) noexcept;

// The first feature of that name, without regard to case, whose flags share a bit with `mask`, or
// null.
const Meta_Feature* find_feature(const Meta_Structure* structure, const char* name,
                                 uint32 mask) noexcept;

// True if `ancestor` is the base class "Instance", or `descendant` or a class above it is
// `ancestor` by address or by name.
bool is_subclass(const Meta_Class* ancestor, const Meta_Class* descendant) noexcept;

} // namespace cimple

#endif
