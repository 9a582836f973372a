// CIM data as plain values: what clients of the object manager hand in and get back. All of them
// own their content, copy deeply in effect (nested paths, instances and arrays are shared and
// constant) and compare by content. Names are compared without regard to the case of ASCII letters.
#ifndef TVR_HOST_CIM_VALUE_H
#define TVR_HOST_CIM_VALUE_H

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace tvrhost {

struct Cim_Path;
struct Cim_Instance;

// The codes are CMPI's.
enum class Cim_Type : std::uint16_t {
    none = 0,
    boolean = 2,
    char16 = 3,
    real32 = 8,
    real64 = 12,
    uint8 = 0x80,
    uint16 = 0x90,
    uint32 = 0xA0,
    uint64 = 0xB0,
    sint8 = 0xC0,
    sint16 = 0xD0,
    sint32 = 0xE0,
    sint64 = 0xF0,
    instance = 0x1000, // an embedded instance
    reference = 0x1100,
    string = 0x1600,
    datetime = 0x1800,
};

// "uint16" and the like; "none" for no type.
const char* type_name(Cim_Type type) noexcept;

// Thrown where a value is read as what it isn't, or a text cannot be read.
class Value_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A timestamp "yyyymmddhhmmss.mmmmmmsutc" or an interval "ddddddddhhmmss.mmmmmm:000".
class Cim_Datetime {
public:
    // The zero interval.
    Cim_Datetime();
    // Throws Value_Error for a text of neither form; a field may stand as asterisks.
    explicit Cim_Datetime(std::string_view text);

    // From microseconds: of the interval, or since 1970 in universal time.
    static Cim_Datetime from_microseconds(std::uint64_t microseconds, bool interval);
    static Cim_Datetime now();

    const std::string& text() const noexcept { return _text; } // 25 characters
    bool is_interval() const noexcept { return _text[21] == ':'; }
    // The reverse of `from_microseconds`; an asterisk counts as 0, a time before 1970 as 1970.
    std::uint64_t microseconds() const noexcept;

    bool operator==(const Cim_Datetime&) const = default;

private:
    std::string _text;
};

// A value of one type, an array of one, or NULL of a type.
class Cim_Value {
public:
    Cim_Value() noexcept = default; // NULL of no type
    Cim_Value(bool value) : _type(Cim_Type::boolean), _content(value) {}
    Cim_Value(std::uint8_t value) : Cim_Value(Cim_Type::uint8, std::uint64_t{value}) {}
    Cim_Value(std::uint16_t value) : Cim_Value(Cim_Type::uint16, std::uint64_t{value}) {}
    Cim_Value(std::uint32_t value) : Cim_Value(Cim_Type::uint32, std::uint64_t{value}) {}
    Cim_Value(std::uint64_t value) : Cim_Value(Cim_Type::uint64, value) {}
    Cim_Value(unsigned long long value) : Cim_Value(Cim_Type::uint64, std::uint64_t{value}) {}
    Cim_Value(std::int8_t value) : Cim_Value(Cim_Type::sint8, std::int64_t{value}) {}
    Cim_Value(std::int16_t value) : Cim_Value(Cim_Type::sint16, std::int64_t{value}) {}
    Cim_Value(std::int32_t value) : Cim_Value(Cim_Type::sint32, std::int64_t{value}) {}
    Cim_Value(std::int64_t value) : Cim_Value(Cim_Type::sint64, value) {}
    Cim_Value(float value) : _type(Cim_Type::real32), _content(double{value}) {}
    Cim_Value(double value) : _type(Cim_Type::real64), _content(value) {}
    Cim_Value(char16_t value)
        : Cim_Value(Cim_Type::char16, std::uint64_t{static_cast<std::uint16_t>(value)}) {}
    Cim_Value(const char* text) : Cim_Value(std::string(text)) {}
    Cim_Value(std::string_view text) : Cim_Value(std::string(text)) {}
    Cim_Value(std::string text) : _type(Cim_Type::string), _content(std::move(text)) {}
    Cim_Value(Cim_Datetime value) : _type(Cim_Type::datetime), _content(std::move(value)) {}
    Cim_Value(Cim_Path path);
    Cim_Value(Cim_Instance instance);

    // Defined once, here and below: inline they would be compiled wherever values are kept.
    Cim_Value(const Cim_Value& other);
    Cim_Value(Cim_Value&& other) noexcept;
    Cim_Value& operator=(const Cim_Value& other);
    Cim_Value& operator=(Cim_Value&& other) noexcept;
    ~Cim_Value();

    // NULL of a type.
    static Cim_Value null(Cim_Type type, bool array = false) noexcept;
    // An array; the elements are of `type`, or NULL. Throws Value_Error for one that isn't.
    static Cim_Value array(Cim_Type type, std::vector<Cim_Value> elements = {});
    template <class T> static Cim_Value array_of(std::initializer_list<T> elements) {
        Cim_Type type = Cim_Type::string;
        if constexpr (!std::is_convertible_v<T, std::string_view>) {
            type = Cim_Value(T{}).type();
        }
        return array(type, std::vector<Cim_Value>(elements.begin(), elements.end()));
    }
    // An integer or char16 of any width. Throws Value_Error if the number doesn't fit.
    static Cim_Value unsigned_of(Cim_Type type, std::uint64_t value);
    static Cim_Value signed_of(Cim_Type type, std::int64_t value);

    Cim_Type type() const noexcept { return _type; } // of the elements, for an array
    bool is_array() const noexcept { return _array; }
    bool is_null() const noexcept { return std::holds_alternative<std::monostate>(_content); }

    // The content; each throws Value_Error if the value is NULL or of another kind. The integer
    // forms take every width, and either sign where the number fits.
    bool as_bool() const;
    std::uint64_t as_uint() const; // char16 as well
    std::int64_t as_int() const;
    double as_real() const; // integers as well
    const std::string& as_string() const;
    const Cim_Datetime& as_datetime() const;
    const Cim_Path& as_path() const;
    const Cim_Instance& as_instance() const;
    const std::vector<Cim_Value>& elements() const;
    // An array of strings, or of unsigned numbers.
    std::vector<std::string> as_strings() const;
    std::vector<std::uint64_t> as_uints() const;

    // As in MOF: 5, TRUE, "text", {1, 2}, NULL; a path and a datetime in quotes.
    std::string literal() const;
    // As for a reader: without quotes, an array's elements joined by ", ", NULL as nothing.
    std::string plain() const;

    // Equal type, array form and content; -0.0 equals 0.0.
    bool operator==(const Cim_Value& other) const;

private:
    Cim_Value(Cim_Type type, std::uint64_t value) : _type(type), _content(value) {}
    Cim_Value(Cim_Type type, std::int64_t value) : _type(type), _content(value) {}
    [[noreturn]] void fail(const char* wanted) const;

    Cim_Type _type = Cim_Type::none;
    bool _array = false;
    std::variant<std::monostate, bool, std::uint64_t, std::int64_t, double, std::string,
                 Cim_Datetime, std::shared_ptr<const Cim_Path>, std::shared_ptr<const Cim_Instance>,
                 std::shared_ptr<const std::vector<Cim_Value>>>
        _content;
};

struct Named_Value {
    std::string name;
    Cim_Value value;

    bool operator==(const Named_Value& other) const; // the name in any case
};

// Named values in order: arguments of a method, keys, properties.
class Named_Values : public std::vector<Named_Value> {
public:
    using std::vector<Named_Value>::vector;

    const Cim_Value* find(std::string_view name) const noexcept; // null if there is none
    Cim_Value* find(std::string_view name) noexcept;
    // The value of that name; NULL of no type if there is none.
    const Cim_Value& operator[](std::string_view name) const noexcept;
    const Named_Value& operator[](std::size_t index) const noexcept { return data()[index]; }
    Named_Value& operator[](std::size_t index) noexcept { return data()[index]; }
    bool has(std::string_view name) const noexcept { return find(name) != nullptr; }
    // Changes the value of that name, or appends it; its place.
    std::size_t set(std::string_view name, Cim_Value value);
};

using Arguments = Named_Values;

// Names an instance, or without keys a class.
struct Cim_Path {
    std::string name_space;
    std::string class_name;
    Named_Values keys;
    std::string host;

    Cim_Path();
    Cim_Path(std::string space, std::string name, Named_Values key_values = {});
    Cim_Path(const Cim_Path& other);
    Cim_Path(Cim_Path&& other) noexcept;
    Cim_Path& operator=(const Cim_Path& other);
    Cim_Path& operator=(Cim_Path&& other) noexcept;
    ~Cim_Path();

    // "root/tavrin:TVRHBA_X.Name="a",Number=5"; without namespace where there is none, with
    // "//host/" before it where there is a host.
    std::string text() const;

    // Equal class, keys (in any order) and namespace; the host doesn't count.
    bool operator==(const Cim_Path& other) const;
};

struct Cim_Instance {
    Cim_Path path; // as the provider made it; its class name is the instance's
    Named_Values properties;

    Cim_Instance();
    Cim_Instance(Cim_Path instance_path, Named_Values values = {});
    Cim_Instance(const Cim_Instance& other);
    Cim_Instance(Cim_Instance&& other) noexcept;
    Cim_Instance& operator=(const Cim_Instance& other);
    Cim_Instance& operator=(Cim_Instance&& other) noexcept;
    ~Cim_Instance();

    const std::string& class_name() const noexcept { return path.class_name; }
    const Cim_Value& operator[](std::string_view name) const noexcept { return properties[name]; }
    bool has(std::string_view name) const noexcept { return properties.has(name); }

    // "instance of X {" and a line per property, as in MOF.
    std::string text() const;

    // Equal paths and properties, these in any order.
    bool operator==(const Cim_Instance& other) const;
};

// Compares names without regard to the case of ASCII letters.
bool same_name(std::string_view a, std::string_view b) noexcept;

} // namespace tvrhost

#endif
