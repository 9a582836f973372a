// JSON documents as plain values. The library that reads and writes JSON is made of templates and
// costs each source that includes it seconds of compilation: json.cpp alone does.
#ifndef TVR_JSON_JSON_H
#define TVR_JSON_JSON_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tvrjson {

// What keeps a text from being JSON, and where in it.
class Parse_Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A value of JSON. Objects keep the order in which their members came.
class Json {
public:
    struct Member;

    Json() noexcept; // null
    Json(std::nullptr_t) noexcept;
    template <std::same_as<bool> Bool> Json(Bool value) : Json() { set_boolean(value); }
    template <std::unsigned_integral Number>
    requires(!std::same_as<Number, bool>) Json(Number value) : Json() { set_unsigned(value); }
    // A number that isn't negative is an unsigned one, as in a text.
    template <std::signed_integral Number> Json(Number value) : Json() { set_integer(value); }
    Json(double value);
    Json(std::string text);
    Json(std::string_view text);
    Json(const char* text);
    // Pairs of a text and a value are an object, anything else is an array.
    Json(std::initializer_list<Json> list);

    Json(const Json& other);
    Json(Json&& other) noexcept;
    Json& operator=(Json other) noexcept;
    ~Json();

    static Json array();
    static Json object();

    // Reads a text. Throws Parse_Error for what is no JSON, is nested deeper than `most_nested`, or
    // names a member of an object twice.
    static Json parse(std::string_view text);
    static constexpr std::size_t most_nested = 200;

    // The text, in lines with so many blanks a level, or in one line if `indent` is negative. Bytes
    // that are no UTF-8 are replaced.
    std::string text(int indent = 2) const;

    bool is_null() const noexcept;
    bool is_boolean() const noexcept;
    bool is_number() const noexcept;
    bool is_unsigned() const noexcept; // a whole number from 0 on, of up to 64 bits
    bool is_negative() const noexcept; // a whole number below 0, of up to 64 bits
    bool is_string() const noexcept;
    bool is_array() const noexcept;
    bool is_object() const noexcept;

    // Each for a value of its kind, as the questions above tell; else std::bad_variant_access.
    bool as_boolean() const;
    std::uint64_t as_unsigned() const;
    std::int64_t as_negative() const;
    double as_number() const; // of any number
    const std::string& as_string() const;
    const std::vector<Json>& elements() const;
    const std::vector<Member>& members() const;

    // Of an array or object; 0 for others.
    std::size_t size() const noexcept;
    bool empty() const noexcept;

    // A member of an object, or null if there is none; null too if this is no object.
    const Json* find(std::string_view name) const noexcept;

    // Of an object, or of null, which becomes one; the member is made if it is missing.
    Json& operator[](std::string_view name);
    // The same for a name that the object hasn't, without looking for it.
    Json& append(std::string name, Json value);
    // To an array, or to null, which becomes one.
    void push_back(Json element);

private:
    void set_boolean(bool value) noexcept;
    void set_unsigned(std::uint64_t value) noexcept;
    void set_integer(std::int64_t value) noexcept;

    std::variant<std::monostate, bool, std::uint64_t, std::int64_t, double, std::string,
                 std::vector<Json>, std::vector<Member>>
        _value;
};

struct Json::Member {
    std::string name;
    Json value;
};

} // namespace tvrjson

#endif
