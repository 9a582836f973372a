// Paths and values from the text that a person writes.
#include "host/cim_json.h"
#include "host/declared_type.h"
#include "host/object_manager.h"

#include <algorithm>
#include <charconv>

namespace tvrhost {

namespace {

bool is_identifier(std::string_view text) {
    const auto letter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    };
    return !text.empty() && letter(text[0]) && std::all_of(text.begin(), text.end(), [&](char c) {
        return letter(c) || (c >= '0' && c <= '9');
    });
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return text;
}

template <class Number> std::optional<Number> number(std::string_view text, int base) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

// An integer of any sign, decimal or 0x; nothing if the text is none or beyond 64 bits.
std::optional<Cim_Value> integer(std::string_view text) {
    const bool hexadecimal =
        text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    if (const auto value = hexadecimal ? number<std::uint64_t>(text.substr(2), 16)
                                       : number<std::uint64_t>(text, 10)) {
        return Cim_Value(*value);
    }
    if (const auto value = number<std::int64_t>(text, 10)) {
        return Cim_Value(*value);
    }
    return std::nullopt;
}

Cim_Value integer_of(Cim_Type type, std::string_view text) {
    const std::optional<Cim_Value> value = integer(text);
    if (!value) {
        throw Value_Error(std::string("takes a number (") + type_name(type) + "), not \"" +
                          std::string(text) + "\"");
    }
    if (value->type() == Cim_Type::uint64) {
        return Cim_Value::unsigned_of(type, value->as_uint());
    }
    return Cim_Value::signed_of(type, value->as_int());
}

std::optional<bool> boolean(std::string_view text) {
    if (same_name(text, "true")) {
        return true;
    }
    if (same_name(text, "false")) {
        return false;
    }
    return std::nullopt;
}

// Where nothing but a boolean is meant, in further words of people.
Cim_Value boolean_of(std::string_view text) {
    constexpr std::pair<const char*, bool> words[] = {
        {"true", true},   {"yes", true}, {"on", true},   {"1", true},
        {"false", false}, {"no", false}, {"off", false}, {"0", false}};
    for (const auto& [word, value] : words) {
        if (same_name(text, word)) {
            return value;
        }
    }
    throw Value_Error("takes true or false (or yes, no, on, off, 1, 0), not \"" +
                      std::string(text) + "\"");
}

Cim_Value untyped_key(std::string_view text, bool quoted) {
    if (quoted) {
        return Cim_Value(text);
    }
    if (const auto value = boolean(text)) {
        return *value;
    }
    if (const auto value = integer(text)) {
        return *value;
    }
    return Cim_Value(text);
}

// Reads the keys of a path.
class Key_Reader {
public:
    Key_Reader(std::string_view text, std::size_t at) : _text(text), _at(at) {}

    bool at_end() const { return _at >= _text.size(); }

    std::string_view name() {
        const std::size_t end = _text.find('=', _at);
        const std::string_view name = trimmed(_text.substr(_at, end - _at));
        if (end == std::string_view::npos || !is_identifier(name)) {
            fail("takes KEY=VALUE, not \"" + std::string(_text.substr(_at)) + "\"");
        }
        _at = end + 1;
        return name;
    }

    struct Word {
        std::string text;
        bool quoted;
    };

    // The value, and past the comma behind it.
    Word value() {
        Word word{{}, !at_end() && _text[_at] == '"'};
        if (word.quoted) {
            word.text = quoted();
        } else {
            const std::size_t end = std::min(_text.find(',', _at), _text.size());
            word.text = trimmed(_text.substr(_at, end - _at));
            _at = end;
        }
        if (!at_end() && _text[_at] != ',') {
            fail("takes a comma before \"" + std::string(_text.substr(_at)) + "\"");
        }
        if (_at + 1 == _text.size()) {
            fail("ends with a comma");
        }
        ++_at;
        return word;
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw Value_Error("path " + std::string(_text) + ": " + what);
    }

private:
    std::string quoted() {
        std::string word;
        for (++_at; !at_end() && _text[_at] != '"'; ++_at) {
            char c = _text[_at];
            if (c == '\\' && _at + 1 < _text.size()) {
                c = _text[++_at];
                c = c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c == 'x' ? control() : c;
            }
            word += c;
        }
        if (at_end()) {
            fail("a quotation mark is missing");
        }
        ++_at;
        return word;
    }

    // The control character of an escape such as \x001B; other escapes of that kind are none.
    char control() {
        constexpr std::size_t digits = 4;
        const auto code = number<unsigned>(_text.substr(_at + 1, digits), 16);
        if (!code || *code > 0x7F || _text.size() - _at <= digits) {
            return 'x';
        }
        _at += digits;
        return static_cast<char>(*code);
    }

    std::string_view _text;
    std::size_t _at;
};

std::string key_list(const tvrmof::Class& model) {
    std::string list;
    for (const tvrmof::Feature* key : model.keys()) {
        list += (list.empty() ? "" : ", ") + key->name;
    }
    return list.empty() ? "none" : list;
}

// The elements between commas; none for an empty text.
Cim_Value array_of_words(std::string_view text, const tvrmof::Typed& declared,
                         const tvrmof::Schema* schema, const std::string& name_space) {
    tvrmof::Typed element = declared;
    element.is_array = false;
    std::vector<Cim_Value> elements;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        elements.push_back(
            parse_value(trimmed(text.substr(at, end - at)), element, schema, name_space));
        at = end + 1;
        if (at == text.size()) {
            throw Value_Error("ends with a comma");
        }
    }
    return Cim_Value::array(declared_type(declared), std::move(elements));
}

} // namespace

Cim_Value parse_value(std::string_view text, const tvrmof::Typed& declared,
                      const tvrmof::Schema* schema, const std::string& name_space) {
    const Cim_Type type = declared_type(declared);
    if (text == "NULL") {
        return Cim_Value::null(type, declared.is_array);
    }
    const bool has_commas = type == Cim_Type::reference || type == Cim_Type::instance;
    if (declared.is_array && !has_commas && !trimmed(text).starts_with('[')) {
        return array_of_words(text, declared, schema, name_space);
    }
    if (declared.is_array || type == Cim_Type::instance) {
        Json json;
        try {
            json = Json::parse(text);
        } catch (const tvrjson::Parse_Error&) {
            throw Value_Error(std::string("takes ") +
                              (declared.is_array ? "an array such as [1, 2] or [\"a\", \"b\"]"
                                                 : "an instance as a JSON object") +
                              ", not \"" + std::string(text) + "\"");
        }
        return value_from_json(json, declared, schema, name_space);
    }
    switch (type) {
    case Cim_Type::string:
        return Cim_Value(text);
    case Cim_Type::datetime:
        return Cim_Datetime(text);
    case Cim_Type::reference:
        return parse_path(text, schema, name_space);
    case Cim_Type::boolean:
        return boolean_of(text);
    case Cim_Type::real32:
    case Cim_Type::real64: {
        double value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size()) {
            throw Value_Error(std::string("takes a number (") + type_name(type) + "), not \"" +
                              std::string(text) + "\"");
        }
        return type == Cim_Type::real32 ? Cim_Value(static_cast<float>(value)) : Cim_Value(value);
    }
    default:
        return integer_of(type, text);
    }
}

Cim_Path parse_path(std::string_view text, const tvrmof::Schema* schema,
                    const std::string& name_space) {
    Cim_Path path;
    path.name_space = name_space;
    std::size_t at = 0;
    if (text.substr(0, 2) == "//") {
        at = std::min(text.find('/', 2), text.size());
        path.host = text.substr(2, at - 2);
        at = std::min(at + 1, text.size());
    }
    const std::size_t colon = text.find_first_of(":.=\"", at);
    if (colon != std::string_view::npos && text[colon] == ':') {
        path.name_space = text.substr(at, colon - at);
        at = colon + 1;
    }
    const std::size_t end = std::min(text.find('.', at), text.size());
    path.class_name = trimmed(text.substr(at, end - at));
    Key_Reader reader(text, std::min(end + 1, text.size()));
    if (!is_identifier(path.class_name)) {
        reader.fail("takes a class name, not \"" + path.class_name + "\"");
    }
    if (end + 1 == text.size()) {
        reader.fail("takes KEY=VALUE after the point");
    }

    const tvrmof::Class* model = schema == nullptr ? nullptr : schema->find(path.class_name);
    if (model != nullptr) {
        path.class_name = model->name;
    }
    while (!reader.at_end()) {
        const std::string name(reader.name());
        const Key_Reader::Word word = reader.value();
        const tvrmof::Feature* key = model == nullptr ? nullptr : model->find(name);
        if (model != nullptr && (key == nullptr || !key->is_key())) {
            reader.fail(model->name + " has no key " + name + "; its keys are " + key_list(*model));
        }
        if (path.keys.has(name)) {
            reader.fail("key " + name + " stands there twice");
        }
        if (key == nullptr) {
            path.keys.push_back({name, untyped_key(word.text, word.quoted)});
            continue;
        }
        try {
            // Nothing but a string can be NULL in a path, and there it is a text.
            Cim_Value value = declared_type(*key) == Cim_Type::string
                                  ? Cim_Value(word.text)
                                  : parse_value(word.text, *key, schema, path.name_space);
            path.keys.push_back({key->name, std::move(value)});
        } catch (const Value_Error& error) {
            reader.fail("key " + key->name + ": " + error.what());
        }
    }
    return path;
}

} // namespace tvrhost
