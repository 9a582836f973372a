// `Value`: a tagged union through which conversion moves a field of any type.
#ifndef TVR_RUNTIME_VALUE_H
#define TVR_RUNTIME_VALUE_H

#include "runtime/instance.h"

#include <type_traits>
#include <utility>
#include <variant>

namespace cimple {

// Holds one value of a scalar, array or instance type, with a null flag. A held instance, alone or
// in an array, is held by one count each; copying a `Value` adds counts and copies arrays.
// Used by one thread at a time.
class Value {
    // In the order of the kinds: none, the scalars from `first_scalar`, the arrays from
    // `first_array`.
    using Payload =
        std::variant<std::monostate, bool, uint8, sint8, uint16, sint16, uint32, sint32, uint64,
                     sint64, real32, real64, char16, String, Datetime, Instance*, Array<bool>,
                     Array<uint8>, Array<sint8>, Array<uint16>, Array<sint16>, Array<uint32>,
                     Array<sint32>, Array<uint64>, Array<sint64>, Array<real32>, Array<real64>,
                     Array<char16>, Array<String>, Array<Datetime>, Array<Instance*>>;

public:
    // Array codes are 128 plus the scalar's.
    enum Kind : sint32 {
        NONE = -1,
        // 0 to 13: the codes of `Type`
        INSTANCE = 14,
        ARRAY = 128,
        INSTANCE_ARRAY = 142,
    };

    // Lower-case name of a kind, as "uint16", "uint16_array", "instance" or "none".
    static const char* kind_name(sint32 kind) noexcept;
    // The kind that a feature's value has; `NONE` for a method.
    static sint32 kind_of(const Meta_Feature& feature) noexcept;

    // Type `NONE`, not null.
    Value() noexcept = default;
    Value(const Value& other);
    Value(Value&& other) noexcept; // leaves the other cleared
    Value& operator=(Value other) noexcept;
    ~Value();

    sint32 type() const noexcept {
        const sint32 index = static_cast<sint32>(_payload.index());
        return index < first_array ? index - first_scalar : ARRAY + index - first_array;
    }
    bool null() const noexcept { return _null != 0; }
    void set_null(bool null) noexcept { _null = null; }

    // Drops the payload: type `NONE`, null.
    void clear() noexcept;

    // Replace the payload and clear the null flag. `T` is a scalar type, `String`, `Datetime`, or
    // an `Array` of these. For instances the `Value` takes over the caller's count(s).
    template <class T>
    requires std::is_constructible_v < Payload, std::in_place_type_t<T>,
    const T& > void set(const T& value) { replace(Payload(std::in_place_type<T>, value), 0); }
    void set(Instance* instance);
    void set(const Array<Instance*>& instances);
    // A zero, empty or empty-array payload of a kind, with the null flag set.
    void set_null_of(sint32 kind);

    // The payload, whether null or not; null pointer if the type differs.
    template <class T> const T* get() const noexcept { return std::get_if<T>(&_payload); }
    Instance* instance() const noexcept; // borrowed; null if the type differs

    // Fills a `Value` from a field: 0, or -1 for a method or without an instance. Counts are added,
    // arrays copied.
    static int get(Value& value, const Instance* instance, const Meta_Feature* feature);
    // Writes a `Value` into a field: 0, or -1, with the field as it was and a line in the runtime's
    // log: no instance, another type, or an instance of a class that the reference doesn't accept.
    // A method has no value to set: -1. The field gets counts of its own.
    static int set(const Value& value, Instance* instance, const Meta_Feature* feature);

private:
    static constexpr sint32 first_scalar = 1;
    static constexpr sint32 first_array = 16;

    // A payload with its zero, empty or empty-array value; of no type for an unknown kind.
    static Payload make_payload(sint32 kind);
    template <std::size_t... Index>
    static Payload make_indexed(std::size_t index, std::index_sequence<Index...>);

    // Takes the payload, with its counts, in place of the one held.
    void replace(Payload&& payload, uint8 null) noexcept;
    // The same where the one held has no counts any more. Built anew, since the assignment of a
    // union of so many types costs seconds of compilation.
    void take(Payload&& payload, uint8 null) noexcept;
    // Adds or drops one count on each instance held.
    void count(bool add) const noexcept;

    uint8 _null = 0;
    Payload _payload;
};

} // namespace cimple

#endif
