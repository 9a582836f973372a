// Hashes of property values, for tables of keys: what `key_eq` calls equal hashes equal.
#ifndef TVR_RUNTIME_KEY_HASH_H
#define TVR_RUNTIME_KEY_HASH_H

#include "runtime/instance.h"

#include <bit>
#include <functional>
#include <string_view>

namespace cimple {

class Value_Hash {
public:
    std::size_t value() const noexcept { return _hash; }

    void add_number(std::size_t number) noexcept {
        _hash ^= number + 0x9E3779B97F4A7C15u + (_hash << 6) + (_hash >> 2);
        _hash *= 0xD6E8FEB86659FD93u;
        _hash ^= _hash >> 32;
    }

    // The value of a property, scalar or array, and whether it is NULL.
    void add_property(const Meta_Property& property, const Instance& instance) noexcept {
        const Type type = static_cast<Type>(property.type);
        add_number(null_flag(&instance, property));
        const void* at = field(&instance, property.offset);
        if (!property.is_array()) {
            add_value(type, at);
            return;
        }
        const Array_Base& array = *static_cast<const Array_Base*>(at);
        add_number(array.size());
        for (std::size_t i = 0; i < array.size(); ++i) {
            add_value(type, array.at(i));
        }
    }

private:
    void add_bytes(const void* bytes, std::size_t size) noexcept {
        add_number(std::hash<std::string_view>()({static_cast<const char*>(bytes), size}));
    }

    void add_value(Type type, const void* value) noexcept {
        switch (type) {
        case REAL32:
            add_real(*static_cast<const real32*>(value));
            break;
        case REAL64:
            add_real(*static_cast<const real64*>(value));
            break;
        case STRING:
            add_number(std::hash<std::string_view>()(static_cast<const String*>(value)->view()));
            break;
        case DATETIME:
            add_number(static_cast<const Datetime*>(value)->get_usec());
            break;
        default:
            add_bytes(value, type_width(type));
        }
    }

    // Zero has two forms that are equal.
    void add_real(real64 value) noexcept {
        add_number(std::bit_cast<uint64>(value == 0 ? real64{0} : value));
    }

    std::size_t _hash = 0;
};

} // namespace cimple

#endif
