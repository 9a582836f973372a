#include "host/cim_value.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tvrhost {

namespace {

struct Type_Fact {
    Cim_Type type;
    const char* name;
    std::int64_t least; // of integers; no range where both are 0
    std::uint64_t most;
};

constexpr Type_Fact type_facts[] = {
    {Cim_Type::none, "none", 0, 0},
    {Cim_Type::boolean, "boolean", 0, 0},
    {Cim_Type::char16, "char16", 0, UINT16_MAX},
    {Cim_Type::real32, "real32", 0, 0},
    {Cim_Type::real64, "real64", 0, 0},
    {Cim_Type::uint8, "uint8", 0, UINT8_MAX},
    {Cim_Type::uint16, "uint16", 0, UINT16_MAX},
    {Cim_Type::uint32, "uint32", 0, UINT32_MAX},
    {Cim_Type::uint64, "uint64", 0, UINT64_MAX},
    {Cim_Type::sint8, "sint8", INT8_MIN, INT8_MAX},
    {Cim_Type::sint16, "sint16", INT16_MIN, INT16_MAX},
    {Cim_Type::sint32, "sint32", INT32_MIN, INT32_MAX},
    {Cim_Type::sint64, "sint64", INT64_MIN, INT64_MAX},
    {Cim_Type::instance, "instance", 0, 0},
    {Cim_Type::reference, "reference", 0, 0},
    {Cim_Type::string, "string", 0, 0},
    {Cim_Type::datetime, "datetime", 0, 0},
};

const Type_Fact& fact(Cim_Type type) noexcept {
    for (const Type_Fact& each : type_facts) {
        if (each.type == type) {
            return each;
        }
    }
    return type_facts[0];
}

char lower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        switch (c) {
        case '"':
            result += "\\\"";
            break;
        case '\\':
            result += "\\\\";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
                char escape[sizeof "\\x0000"];
                std::snprintf(escape, sizeof escape, "\\x%04X", static_cast<unsigned>(c));
                result += escape;
            } else {
                result += c;
            }
        }
    }
    return result + '"';
}

// The shortest text that reads as the value again.
template <class Real> std::string real_text(Real value) {
    char buffer[64];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    std::string text(buffer, end);
    if (text.find_first_not_of("-0123456789") == std::string::npos) {
        text += ".0";
    }
    return text;
}

// Either side has what the other has, in any order.
bool same_content(const Named_Values& a, const Named_Values& b) {
    return a.size() == b.size() && std::all_of(a.begin(), a.end(), [&](const Named_Value& each) {
               const Cim_Value* other = b.find(each.name);
               return other != nullptr && *other == each.value;
           });
}

const Cim_Value no_value;

} // namespace

const char* type_name(Cim_Type type) noexcept {
    return fact(type).name;
}

bool same_name(std::string_view a, std::string_view b) noexcept {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return x == y || lower(x) == lower(y);
           });
}

// ---- Cim_Value

Cim_Value::Cim_Value(const Cim_Value& other) = default;
Cim_Value::Cim_Value(Cim_Value&& other) noexcept = default;
Cim_Value& Cim_Value::operator=(const Cim_Value& other) = default;
Cim_Value& Cim_Value::operator=(Cim_Value&& other) noexcept = default;
Cim_Value::~Cim_Value() = default;

Cim_Path::Cim_Path() = default;
Cim_Path::Cim_Path(const Cim_Path& other) = default;
Cim_Path::Cim_Path(Cim_Path&& other) noexcept = default;
Cim_Path& Cim_Path::operator=(const Cim_Path& other) = default;
Cim_Path& Cim_Path::operator=(Cim_Path&& other) noexcept = default;
Cim_Path::~Cim_Path() = default;

Cim_Instance::Cim_Instance() = default;
Cim_Instance::Cim_Instance(const Cim_Instance& other) = default;
Cim_Instance::Cim_Instance(Cim_Instance&& other) noexcept = default;
Cim_Instance& Cim_Instance::operator=(const Cim_Instance& other) = default;
Cim_Instance& Cim_Instance::operator=(Cim_Instance&& other) noexcept = default;
Cim_Instance::~Cim_Instance() = default;

Cim_Value::Cim_Value(Cim_Path path)
    : _type(Cim_Type::reference), _content(std::make_shared<const Cim_Path>(std::move(path))) {}

Cim_Value::Cim_Value(Cim_Instance instance)
    : _type(Cim_Type::instance),
      _content(std::make_shared<const Cim_Instance>(std::move(instance))) {}

Cim_Value Cim_Value::null(Cim_Type type, bool array) noexcept {
    Cim_Value value;
    value._type = type;
    value._array = array;
    return value;
}

Cim_Value Cim_Value::array(Cim_Type type, std::vector<Cim_Value> elements) {
    for (const Cim_Value& element : elements) {
        if (element._array || element._type != type) {
            throw Value_Error(std::string("an array of ") + type_name(type) +
                              " cannot hold an element of " + type_name(element._type));
        }
    }
    Cim_Value value = null(type, true);
    value._content = std::make_shared<const std::vector<Cim_Value>>(std::move(elements));
    return value;
}

Cim_Value Cim_Value::unsigned_of(Cim_Type type, std::uint64_t value) {
    const Type_Fact& range = fact(type);
    if (range.most == 0) {
        throw Value_Error(std::string(range.name) + " is not an integer");
    }
    if (value > range.most) {
        throw Value_Error(std::to_string(value) + " is beyond " + range.name + ", at most " +
                          std::to_string(range.most));
    }
    if (range.least < 0) {
        return Cim_Value(type, static_cast<std::int64_t>(value));
    }
    return Cim_Value(type, value);
}

Cim_Value Cim_Value::signed_of(Cim_Type type, std::int64_t value) {
    if (value >= 0) {
        return unsigned_of(type, static_cast<std::uint64_t>(value));
    }
    const Type_Fact& range = fact(type);
    if (range.most == 0) {
        throw Value_Error(std::string(range.name) + " is not an integer");
    }
    if (value < range.least) {
        throw Value_Error(std::to_string(value) + " is below " + range.name + ", at least " +
                          std::to_string(range.least));
    }
    return Cim_Value(type, value);
}

void Cim_Value::fail(const char* wanted) const {
    std::string found = is_null() ? "NULL" : type_name(_type);
    if (_array) {
        found += "[]";
    }
    throw Value_Error("value is " + found + ", not " + wanted);
}

bool Cim_Value::as_bool() const {
    if (const bool* value = std::get_if<bool>(&_content)) {
        return *value;
    }
    fail("boolean");
}

std::uint64_t Cim_Value::as_uint() const {
    if (const auto* value = std::get_if<std::uint64_t>(&_content)) {
        return *value;
    }
    const auto* value = std::get_if<std::int64_t>(&_content);
    if (value != nullptr && *value >= 0) {
        return static_cast<std::uint64_t>(*value);
    }
    fail("an unsigned integer");
}

std::int64_t Cim_Value::as_int() const {
    if (const auto* value = std::get_if<std::int64_t>(&_content)) {
        return *value;
    }
    const auto* value = std::get_if<std::uint64_t>(&_content);
    if (value != nullptr && *value <= static_cast<std::uint64_t>(INT64_MAX)) {
        return static_cast<std::int64_t>(*value);
    }
    fail("a signed integer");
}

double Cim_Value::as_real() const {
    if (const double* value = std::get_if<double>(&_content)) {
        return *value;
    }
    if (const auto* value = std::get_if<std::int64_t>(&_content)) {
        return static_cast<double>(*value);
    }
    if (const auto* value = std::get_if<std::uint64_t>(&_content)) {
        return static_cast<double>(*value);
    }
    fail("a number");
}

const std::string& Cim_Value::as_string() const {
    if (const auto* value = std::get_if<std::string>(&_content)) {
        return *value;
    }
    fail("string");
}

const Cim_Datetime& Cim_Value::as_datetime() const {
    if (const auto* value = std::get_if<Cim_Datetime>(&_content)) {
        return *value;
    }
    fail("datetime");
}

const Cim_Path& Cim_Value::as_path() const {
    if (const auto* value = std::get_if<std::shared_ptr<const Cim_Path>>(&_content)) {
        return **value;
    }
    fail("a reference");
}

const Cim_Instance& Cim_Value::as_instance() const {
    if (const auto* value = std::get_if<std::shared_ptr<const Cim_Instance>>(&_content)) {
        return **value;
    }
    fail("an instance");
}

const std::vector<Cim_Value>& Cim_Value::elements() const {
    if (const auto* value = std::get_if<std::shared_ptr<const std::vector<Cim_Value>>>(&_content)) {
        return **value;
    }
    fail("an array");
}

std::vector<std::string> Cim_Value::as_strings() const {
    std::vector<std::string> texts;
    for (const Cim_Value& element : elements()) {
        texts.push_back(element.as_string());
    }
    return texts;
}

std::vector<std::uint64_t> Cim_Value::as_uints() const {
    std::vector<std::uint64_t> numbers;
    for (const Cim_Value& element : elements()) {
        numbers.push_back(element.as_uint());
    }
    return numbers;
}

std::string Cim_Value::literal() const {
    if (is_null()) {
        return "NULL";
    }
    if (_array) {
        std::string text = "{";
        for (const Cim_Value& element : elements()) {
            text += (text.size() > 1 ? ", " : "") + element.literal();
        }
        return text + "}";
    }
    switch (_type) {
    case Cim_Type::boolean:
        return as_bool() ? "TRUE" : "FALSE";
    case Cim_Type::string:
        return quoted(as_string());
    case Cim_Type::datetime:
        return quoted(as_datetime().text());
    case Cim_Type::reference:
        return quoted(as_path().text());
    case Cim_Type::instance:
        return as_instance().text();
    default:
        return plain();
    }
}

std::string Cim_Value::plain() const {
    if (is_null()) {
        return {};
    }
    if (_array) {
        std::string text;
        for (const Cim_Value& element : elements()) {
            text += (&element == elements().data() ? "" : ", ") + element.plain();
        }
        return text;
    }
    if (const auto* value = std::get_if<std::uint64_t>(&_content)) {
        return std::to_string(*value);
    }
    if (const auto* value = std::get_if<std::int64_t>(&_content)) {
        return std::to_string(*value);
    }
    if (const auto* value = std::get_if<double>(&_content)) {
        return _type == Cim_Type::real32 ? real_text(static_cast<float>(*value))
                                         : real_text(*value);
    }
    switch (_type) {
    case Cim_Type::string:
        return as_string();
    case Cim_Type::datetime:
        return as_datetime().text();
    case Cim_Type::reference:
        return as_path().text();
    default:
        return literal();
    }
}

bool Cim_Value::operator==(const Cim_Value& other) const {
    if (_type != other._type || _array != other._array ||
        _content.index() != other._content.index()) {
        return false;
    }
    if (const auto* path = std::get_if<std::shared_ptr<const Cim_Path>>(&_content)) {
        return **path == other.as_path();
    }
    if (const auto* instance = std::get_if<std::shared_ptr<const Cim_Instance>>(&_content)) {
        return **instance == other.as_instance();
    }
    if (_array && !is_null()) {
        return elements() == other.elements();
    }
    return _content == other._content;
}

// ---- names

bool Named_Value::operator==(const Named_Value& other) const {
    return same_name(name, other.name) && value == other.value;
}

const Cim_Value* Named_Values::find(std::string_view name) const noexcept {
    for (const Named_Value& each : *this) {
        if (same_name(each.name, name)) {
            return &each.value;
        }
    }
    return nullptr;
}

Cim_Value* Named_Values::find(std::string_view name) noexcept {
    return const_cast<Cim_Value*>(std::as_const(*this).find(name));
}

const Cim_Value& Named_Values::operator[](std::string_view name) const noexcept {
    const Cim_Value* value = find(name);
    return value == nullptr ? no_value : *value;
}

std::size_t Named_Values::set(std::string_view name, Cim_Value value) {
    for (std::size_t i = 0; i < size(); ++i) {
        if (same_name((*this)[i].name, name)) {
            (*this)[i].value = std::move(value);
            return i;
        }
    }
    push_back({std::string(name), std::move(value)});
    return size() - 1;
}

// ---- paths and instances

Cim_Path::Cim_Path(std::string space, std::string name, Named_Values key_values)
    : name_space(std::move(space)), class_name(std::move(name)), keys(std::move(key_values)) {}

std::string Cim_Path::text() const {
    std::string text;
    if (!host.empty()) {
        text += "//" + host + "/";
    }
    if (!name_space.empty()) {
        text += name_space + ":";
    }
    text += class_name;
    char separator = '.';
    for (const Named_Value& key : keys) {
        text += separator + key.name + "=" + key.value.literal();
        separator = ',';
    }
    return text;
}

bool Cim_Path::operator==(const Cim_Path& other) const {
    return same_name(class_name, other.class_name) && same_name(name_space, other.name_space) &&
           same_content(keys, other.keys);
}

Cim_Instance::Cim_Instance(Cim_Path instance_path, Named_Values values)
    : path(std::move(instance_path)), properties(std::move(values)) {}

std::string Cim_Instance::text() const {
    std::string text = "instance of " + class_name() + " {\n";
    for (const Named_Value& property : properties) {
        std::string value = property.value.literal();
        for (std::size_t at = 0; (at = value.find('\n', at)) != std::string::npos; at += 5) {
            value.insert(at + 1, "    "); // an embedded instance
        }
        text += "    " + property.name + " = " + value + ";\n";
    }
    return text + "}";
}

bool Cim_Instance::operator==(const Cim_Instance& other) const {
    return path == other.path && same_content(properties, other.properties);
}

} // namespace tvrhost
