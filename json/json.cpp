#include "json/json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <utility>

namespace tvrjson {

namespace {

using Library = nlohmann::json;

// The library's words without its own prefix: "[json.exception.parse_error.101] parse error at ..."
std::string plain(std::string what) {
    if (const std::size_t end = what.find("] "); end != std::string::npos) {
        what.erase(0, end + 2);
    }
    return what;
}

// Builds the value while the library reads the text.
class Builder final : public Library::json_sax_t {
public:
    Json result;

    bool null() override { return put(nullptr); }
    bool boolean(bool value) override { return put(value); }
    bool number_integer(std::int64_t value) override { return put(value); }
    bool number_unsigned(std::uint64_t value) override { return put(value); }
    bool number_float(double value, const std::string&) override { return put(value); }
    bool string(std::string& value) override { return put(std::move(value)); }
    bool binary(Library::binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool key(std::string& name) override {
        if (!_open.back().names.insert(name).second) {
            throw Parse_Error("the name \"" + name.substr(0, 60) + "\" stands twice in one object");
        }
        _open.back().name = std::move(name);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t, const std::string&,
                     const nlohmann::detail::exception& error) override {
        throw Parse_Error(plain(error.what()));
    }

private:
    // An array or object whose end has not been read.
    struct Level {
        Json value;
        std::string name; // of the member that comes next
        std::set<std::string> names;
    };

    bool put(Json value) {
        if (_open.empty()) {
            result = std::move(value);
        } else if (Level& level = _open.back(); level.value.is_array()) {
            level.value.push_back(std::move(value));
        } else {
            level.value.append(std::move(level.name), std::move(value));
        }
        return true;
    }

    bool open(Json value) {
        if (_open.size() == Json::most_nested) {
            throw Parse_Error("nested deeper than " + std::to_string(Json::most_nested) +
                              " levels");
        }
        _open.push_back({std::move(value), {}, {}});
        return true;
    }

    bool close() {
        Json value = std::move(_open.back().value);
        _open.pop_back();
        return put(std::move(value));
    }

    std::vector<Level> _open;
};

// Scalars are written by the library.
std::string scalar_text(const Library& value) {
    return value.dump(-1, ' ', false, Library::error_handler_t::replace);
}

void break_line(std::string& out, int indent, int depth) {
    if (indent >= 0) {
        out += '\n';
        out.append(static_cast<std::size_t>(indent) * static_cast<std::size_t>(depth), ' ');
    }
}

void write(std::string& out, const Json& json, int indent, int depth) {
    if (json.is_array() || json.is_object()) {
        const bool is_array = json.is_array();
        const std::size_t count = json.size();
        out += is_array ? '[' : '{';
        for (std::size_t i = 0; i < count; ++i) {
            out += i == 0 ? "" : ",";
            break_line(out, indent, depth + 1);
            if (is_array) {
                write(out, json.elements()[i], indent, depth + 1);
            } else {
                const Json::Member& member = json.members()[i];
                out += scalar_text(member.name);
                out += indent >= 0 ? ": " : ":";
                write(out, member.value, indent, depth + 1);
            }
        }
        if (count != 0) {
            break_line(out, indent, depth);
        }
        out += is_array ? ']' : '}';
    } else if (json.is_string()) {
        out += scalar_text(json.as_string());
    } else if (json.is_unsigned()) {
        out += std::to_string(json.as_unsigned());
    } else if (json.is_negative()) {
        out += std::to_string(json.as_negative());
    } else if (json.is_number()) {
        out += scalar_text(json.as_number());
    } else {
        out += json.is_null() ? "null" : json.as_boolean() ? "true" : "false";
    }
}

} // namespace

Json::Json() noexcept = default;
Json::Json(std::nullptr_t) noexcept {}
Json::Json(double value) : _value(value) {}
Json::Json(std::string text) : _value(std::move(text)) {}
Json::Json(std::string_view text) : _value(std::string(text)) {}
Json::Json(const char* text) : _value(std::string(text)) {}

Json::Json(std::initializer_list<Json> list) {
    const bool is_object = std::all_of(list.begin(), list.end(), [](const Json& each) {
        return each.is_array() && each.size() == 2 && each.elements().front().is_string();
    });
    if (!is_object) {
        _value = std::vector<Json>(list);
        return;
    }
    *this = object();
    for (const Json& pair : list) {
        (*this)[pair.elements().front().as_string()] = pair.elements().back();
    }
}

Json::Json(const Json& other) = default;
Json::Json(Json&& other) noexcept = default;
Json::~Json() = default;

Json& Json::operator=(Json other) noexcept {
    _value = std::move(other._value);
    return *this;
}

Json Json::array() {
    Json json;
    json._value.emplace<std::vector<Json>>();
    return json;
}

Json Json::object() {
    Json json;
    json._value.emplace<std::vector<Member>>();
    return json;
}

Json Json::parse(std::string_view text) {
    Builder builder;
    Library::sax_parse(text, &builder);
    return std::move(builder.result);
}

std::string Json::text(int indent) const {
    std::string out;
    write(out, *this, indent, 0);
    return out;
}

bool Json::is_null() const noexcept {
    return std::holds_alternative<std::monostate>(_value);
}
bool Json::is_boolean() const noexcept {
    return std::holds_alternative<bool>(_value);
}
bool Json::is_number() const noexcept {
    return is_unsigned() || is_negative() || std::holds_alternative<double>(_value);
}
bool Json::is_unsigned() const noexcept {
    return std::holds_alternative<std::uint64_t>(_value);
}
bool Json::is_negative() const noexcept {
    return std::holds_alternative<std::int64_t>(_value);
}
bool Json::is_string() const noexcept {
    return std::holds_alternative<std::string>(_value);
}
bool Json::is_array() const noexcept {
    return std::holds_alternative<std::vector<Json>>(_value);
}
bool Json::is_object() const noexcept {
    return std::holds_alternative<std::vector<Member>>(_value);
}

bool Json::as_boolean() const {
    return std::get<bool>(_value);
}
std::uint64_t Json::as_unsigned() const {
    return std::get<std::uint64_t>(_value);
}
std::int64_t Json::as_negative() const {
    return std::get<std::int64_t>(_value);
}
double Json::as_number() const {
    if (is_unsigned()) {
        return static_cast<double>(as_unsigned());
    }
    return is_negative() ? static_cast<double>(as_negative()) : std::get<double>(_value);
}
const std::string& Json::as_string() const {
    return std::get<std::string>(_value);
}
const std::vector<Json>& Json::elements() const {
    return std::get<std::vector<Json>>(_value);
}
const std::vector<Json::Member>& Json::members() const {
    return std::get<std::vector<Member>>(_value);
}

std::size_t Json::size() const noexcept {
    return is_array() ? elements().size() : is_object() ? members().size() : 0;
}

bool Json::empty() const noexcept {
    return size() == 0;
}

const Json* Json::find(std::string_view name) const noexcept {
    if (const auto* members = std::get_if<std::vector<Member>>(&_value)) {
        for (const Member& member : *members) {
            if (member.name == name) {
                return &member.value;
            }
        }
    }
    return nullptr;
}

Json& Json::operator[](std::string_view name) {
    if (const Json* known = find(name)) {
        return const_cast<Json&>(*known);
    }
    return append(std::string(name), nullptr);
}

Json& Json::append(std::string name, Json value) {
    if (is_null()) {
        *this = object();
    }
    auto& members = std::get<std::vector<Member>>(_value);
    members.push_back({std::move(name), std::move(value)});
    return members.back().value;
}

void Json::push_back(Json element) {
    if (is_null()) {
        *this = array();
    }
    std::get<std::vector<Json>>(_value).push_back(std::move(element));
}

void Json::set_boolean(bool value) noexcept {
    _value = value;
}

void Json::set_unsigned(std::uint64_t value) noexcept {
    _value = value;
}

void Json::set_integer(std::int64_t value) noexcept {
    if (value < 0) {
        _value = value;
    } else {
        set_unsigned(static_cast<std::uint64_t>(value));
    }
}

} // namespace tvrjson
