// CIM values, paths and instances as plain C++ values: what the object manager keeps inside, and
// what its clients get and give.
#ifndef TVR_HOST_VALUE_H
#define TVR_HOST_VALUE_H

#include <cmpidt.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tvrhost {

struct Cim_Path;
struct Cim_Instance;

// One value with its CMPI type code. A null value has a type too. Copies are independent, but for
// paths and instances inside, which are shared and never changed.
struct Cim_Value {
    using Elements = std::vector<Cim_Value>;

    CMPIType type = CMPI_null;
    bool null = true;
    // By type: bool; char16_t; uint64_t for all unsigned, int64_t for all signed, double for both
    // real widths; text for strings and datetimes; paths and instances; elements of an array.
    std::variant<std::monostate, bool, char16_t, std::uint64_t, std::int64_t, double, std::string,
                 std::shared_ptr<const Cim_Path>, std::shared_ptr<const Cim_Instance>, Elements>
        data;

    static Cim_Value null_of(CMPIType type);
    static Cim_Value boolean(bool value);
    static Cim_Value of_uint(CMPIType type, std::uint64_t value);
    static Cim_Value of_sint(CMPIType type, std::int64_t value);
    static Cim_Value of_real(CMPIType type, double value);
    static Cim_Value char16(char16_t value);
    static Cim_Value uint8(std::uint8_t value) { return of_uint(CMPI_uint8, value); }
    static Cim_Value uint16(std::uint16_t value) { return of_uint(CMPI_uint16, value); }
    static Cim_Value uint32(std::uint32_t value) { return of_uint(CMPI_uint32, value); }
    static Cim_Value uint64(std::uint64_t value) { return of_uint(CMPI_uint64, value); }
    static Cim_Value string(std::string text);
    // The 25-character form.
    static Cim_Value datetime(std::string text);
    static Cim_Value reference(Cim_Path path);
    static Cim_Value instance(Cim_Instance instance);
    // `element_type` is the scalar's code.
    static Cim_Value array(CMPIType element_type, Elements elements);
    static Cim_Value strings(const std::vector<std::string>& texts);

    bool is_array() const noexcept { return (type & CMPI_ARRAY) != 0; }

    // The content if it is of that sort and not null; else zero, empty or null.
    bool as_bool() const noexcept;
    std::uint64_t as_uint() const noexcept;
    std::int64_t as_sint() const noexcept;
    double as_real() const noexcept;
    const std::string& as_string() const noexcept;
    const Cim_Path* as_path() const noexcept;
    const Cim_Instance* as_instance() const noexcept;
    const Elements& elements() const noexcept;

    // As in MOF: "NULL", texts in double quotes with escapes, arrays in braces. References and
    // instances are nested in double quotes.
    std::string text() const;

    // Type, null and content, names of classes and keys without regard to case.
    friend bool operator==(const Cim_Value& a, const Cim_Value& b);
};

using Named_Values = std::vector<std::pair<std::string, Cim_Value>>;

// The value of that name without regard to case, or null.
const Cim_Value* find_value(const Named_Values& values, std::string_view name) noexcept;
// Replaces the value of that name, or appends it.
void put_value(Named_Values& values, std::string_view name, Cim_Value value);

struct Cim_Path {
    std::string name_space;
    std::string class_name;
    Named_Values keys;

    const Cim_Value* key(std::string_view name) const noexcept { return find_value(keys, name); }

    // `Class.Key="value",...`, without the namespace.
    std::string text() const;

    // Same class and keys, whatever their order; the namespace is left out.
    friend bool operator==(const Cim_Path& a, const Cim_Path& b);
};

struct Cim_Instance {
    Cim_Path path;
    Named_Values properties; // in the order in which they were set

    const std::string& class_name() const noexcept { return path.class_name; }
    // Null if the instance doesn't have it.
    const Cim_Value* property(std::string_view name) const noexcept {
        return find_value(properties, name);
    }
    // The property, or a null value if the instance doesn't have it.
    const Cim_Value& operator[](std::string_view name) const noexcept;

    friend bool operator==(const Cim_Instance& a, const Cim_Instance& b);
};

// "uint16", "string[]" and the like.
std::string type_text(CMPIType type);

} // namespace tvrhost

#endif
