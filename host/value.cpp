#include "host/value.h"

#include "schema/mof_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace tvrhost {

using tvrmof::same_name;

Cim_Value Cim_Value::null_of(CMPIType type) {
    Cim_Value value;
    value.type = type;
    return value;
}

Cim_Value Cim_Value::boolean(bool value) { return {CMPI_boolean, false, value}; }

Cim_Value Cim_Value::of_uint(CMPIType type, std::uint64_t value) { return {type, false, value}; }

Cim_Value Cim_Value::of_sint(CMPIType type, std::int64_t value) { return {type, false, value}; }

Cim_Value Cim_Value::of_real(CMPIType type, double value) { return {type, false, value}; }

Cim_Value Cim_Value::char16(char16_t value) { return {CMPI_char16, false, value}; }

Cim_Value Cim_Value::string(std::string text) { return {CMPI_string, false, std::move(text)}; }

Cim_Value Cim_Value::datetime(std::string text) { return {CMPI_dateTime, false, std::move(text)}; }

Cim_Value Cim_Value::reference(Cim_Path path) {
    return {CMPI_ref, false, std::make_shared<const Cim_Path>(std::move(path))};
}

Cim_Value Cim_Value::instance(Cim_Instance instance) {
    return {CMPI_instance, false, std::make_shared<const Cim_Instance>(std::move(instance))};
}

Cim_Value Cim_Value::array(CMPIType element_type, Elements elements) {
    return {static_cast<CMPIType>(element_type | CMPI_ARRAY), false, std::move(elements)};
}

Cim_Value Cim_Value::strings(const std::vector<std::string>& texts) {
    Elements elements;
    for (const std::string& text : texts) {
        elements.push_back(string(text));
    }
    return array(CMPI_string, std::move(elements));
}

namespace {

template <class T> const T* content(const Cim_Value& value) noexcept {
    return value.null ? nullptr : std::get_if<T>(&value.data);
}

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (char c : text) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\x%04X", static_cast<unsigned>(c));
                out += escape;
            } else {
                out += c;
            }
        }
    }
    return out + '"';
}

std::string real_text(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", value);
    std::string out = text;
    if (out.find_first_of(".en") == std::string::npos) {
        out += ".0"; // a real is told from an integer
    }
    return out;
}

bool same_values(const Named_Values& a, const Named_Values& b) {
    return a.size() == b.size() && std::all_of(a.begin(), a.end(), [&b](const auto& entry) {
               const Cim_Value* other = find_value(b, entry.first);
               return other != nullptr && entry.second == *other;
           });
}

} // namespace

bool Cim_Value::as_bool() const noexcept {
    const bool* value = content<bool>(*this);
    return value != nullptr && *value;
}

std::uint64_t Cim_Value::as_uint() const noexcept {
    const std::uint64_t* value = content<std::uint64_t>(*this);
    return value == nullptr ? 0 : *value;
}

std::int64_t Cim_Value::as_sint() const noexcept {
    const std::int64_t* value = content<std::int64_t>(*this);
    return value == nullptr ? 0 : *value;
}

double Cim_Value::as_real() const noexcept {
    const double* value = content<double>(*this);
    return value == nullptr ? 0 : *value;
}

const std::string& Cim_Value::as_string() const noexcept {
    static const std::string empty;
    const std::string* value = content<std::string>(*this);
    return value == nullptr ? empty : *value;
}

const Cim_Path* Cim_Value::as_path() const noexcept {
    const auto* value = content<std::shared_ptr<const Cim_Path>>(*this);
    return value == nullptr ? nullptr : value->get();
}

const Cim_Instance* Cim_Value::as_instance() const noexcept {
    const auto* value = content<std::shared_ptr<const Cim_Instance>>(*this);
    return value == nullptr ? nullptr : value->get();
}

const Cim_Value::Elements& Cim_Value::elements() const noexcept {
    static const Elements none;
    const Elements* value = content<Elements>(*this);
    return value == nullptr ? none : *value;
}

std::string Cim_Value::text() const {
    if (null) {
        return "NULL";
    }
    struct Writer {
        const Cim_Value& value;
        std::string operator()(std::monostate) const { return "NULL"; }
        std::string operator()(bool v) const { return v ? "TRUE" : "FALSE"; }
        std::string operator()(char16_t v) const { return std::to_string(unsigned{v}); }
        std::string operator()(std::uint64_t v) const { return std::to_string(v); }
        std::string operator()(std::int64_t v) const { return std::to_string(v); }
        std::string operator()(double v) const { return real_text(v); }
        std::string operator()(const std::string& v) const { return quoted(v); }
        std::string operator()(const std::shared_ptr<const Cim_Path>& v) const {
            return v == nullptr ? "NULL" : quoted(v->text());
        }
        std::string operator()(const std::shared_ptr<const Cim_Instance>& v) const {
            if (v == nullptr) {
                return "NULL";
            }
            std::string inner = "instance of " + v->class_name() + " {";
            for (const auto& [name, property] : v->properties) {
                inner += " " + name + " = " + property.text() + ";";
            }
            return quoted(inner + " }");
        }
        std::string operator()(const Elements& v) const {
            std::string out = "{";
            for (const Cim_Value& element : v) {
                out += (out.size() == 1 ? "" : ", ") + element.text();
            }
            return out + "}";
        }
    };
    return std::visit(Writer{*this}, data);
}

bool operator==(const Cim_Value& a, const Cim_Value& b) {
    if (a.type != b.type || a.null != b.null) {
        return false;
    }
    if (a.null) {
        return true;
    }
    if (const Cim_Path* path = a.as_path()) {
        return b.as_path() != nullptr && *path == *b.as_path();
    }
    if (const Cim_Instance* instance = a.as_instance()) {
        return b.as_instance() != nullptr && *instance == *b.as_instance();
    }
    return a.data == b.data;
}

const Cim_Value* find_value(const Named_Values& values, std::string_view name) noexcept {
    for (const auto& [value_name, value] : values) {
        if (same_name(value_name, name)) {
            return &value;
        }
    }
    return nullptr;
}

void put_value(Named_Values& values, std::string_view name, Cim_Value value) {
    for (auto& [value_name, present] : values) {
        if (same_name(value_name, name)) {
            present = std::move(value);
            return;
        }
    }
    values.emplace_back(std::string(name), std::move(value));
}

std::string Cim_Path::text() const {
    std::string out = class_name;
    char separator = '.';
    for (const auto& [name, value] : keys) {
        out += separator + name + "=" + value.text();
        separator = ',';
    }
    return out;
}

bool operator==(const Cim_Path& a, const Cim_Path& b) {
    return same_name(a.class_name, b.class_name) && same_values(a.keys, b.keys);
}

const Cim_Value& Cim_Instance::operator[](std::string_view name) const noexcept {
    static const Cim_Value absent;
    const Cim_Value* value = property(name);
    return value == nullptr ? absent : *value;
}

bool operator==(const Cim_Instance& a, const Cim_Instance& b) {
    return a.path == b.path && same_values(a.properties, b.properties);
}

std::string type_text(CMPIType type) {
    static constexpr std::array<std::pair<CMPIType, const char*>, 16> names{{
        {CMPI_boolean, "boolean"},
        {CMPI_char16, "char16"},
        {CMPI_real32, "real32"},
        {CMPI_real64, "real64"},
        {CMPI_uint8, "uint8"},
        {CMPI_uint16, "uint16"},
        {CMPI_uint32, "uint32"},
        {CMPI_uint64, "uint64"},
        {CMPI_sint8, "sint8"},
        {CMPI_sint16, "sint16"},
        {CMPI_sint32, "sint32"},
        {CMPI_sint64, "sint64"},
        {CMPI_string, "string"},
        {CMPI_dateTime, "datetime"},
        {CMPI_ref, "reference"},
        {CMPI_instance, "instance"},
    }};
    const auto scalar = static_cast<CMPIType>(type & ~CMPI_ARRAY);
    for (const auto& [code, name] : names) {
        if (code == scalar) {
            return std::string(name) + ((type & CMPI_ARRAY) != 0 ? "[]" : "");
        }
    }
    return "type " + std::to_string(type);
}

} // namespace tvrhost
