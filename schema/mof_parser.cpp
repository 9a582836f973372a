#include "schema/mof_parser.h"

#include <charconv>
#include <fstream>
#include <limits>
#include <sstream>
#include <utility>

namespace tvrmof {

namespace {

constexpr unsigned max_include_depth = 16;

bool is_datetime(std::string_view text) noexcept {
    // yyyymmddhhmmss.mmmmmmsutc, digits or '*', with ':' as sign for an interval.
    constexpr std::size_t size = 25, point = 14, sign = 21;
    if (text.size() != size) {
        return false;
    }
    for (std::size_t i = 0; i < size; ++i) {
        const char c = text[i];
        const bool fits = i == point  ? c == '.'
                          : i == sign ? c == ':' || c == '+' || c == '-'
                          : i > sign  ? c >= '0' && c <= '9'
                                      : (c >= '0' && c <= '9') || c == '*';
        if (!fits) {
            return false;
        }
    }
    return true;
}

// Value of a number as written: decimal, or hexadecimal behind "0x"; false if it is none or too
// large for T.
template <class T> bool parse_integer(std::string_view text, T& value) noexcept {
    bool negative = false;
    if (text.starts_with('+') || text.starts_with('-')) {
        negative = text[0] == '-';
        text.remove_prefix(1);
    }
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) {
        text.remove_prefix(2);
    }
    std::uint64_t magnitude = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != end) {
        return false;
    }
    const auto max = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    if (!negative) {
        value = static_cast<T>(magnitude);
        return magnitude <= max;
    }
    if constexpr (std::numeric_limits<T>::is_signed) {
        value = static_cast<T>(0 - magnitude);
        return magnitude <= max + 1;
    }
    value = 0;
    return magnitude == 0;
}

template <class T, class Stored> std::optional<Literal> integer(std::string_view text) noexcept {
    T value{};
    if (!parse_integer(text, value)) {
        return std::nullopt;
    }
    return Literal(static_cast<Stored>(value));
}

std::optional<Literal> real(std::string_view text, Type type) noexcept {
    const char* begin = text.data();
    const char* const end = begin + text.size();
    begin += text.starts_with('+');
    double value = 0;
    const auto result = std::from_chars(begin, end, value);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    constexpr double max_single = std::numeric_limits<float>::max();
    if (type == Type::real32 && (value > max_single || value < -max_single)) {
        return std::nullopt;
    }
    return Literal(value);
}

std::optional<Literal> number(std::string_view text, Type type) noexcept {
    switch (type) {
    case Type::uint8:
        return integer<std::uint8_t, std::uint64_t>(text);
    case Type::sint8:
        return integer<std::int8_t, std::int64_t>(text);
    case Type::uint16:
    case Type::char16:
        return integer<std::uint16_t, std::uint64_t>(text);
    case Type::sint16:
        return integer<std::int16_t, std::int64_t>(text);
    case Type::uint32:
        return integer<std::uint32_t, std::uint64_t>(text);
    case Type::sint32:
        return integer<std::int32_t, std::int64_t>(text);
    case Type::uint64:
        return integer<std::uint64_t, std::uint64_t>(text);
    case Type::sint64:
        return integer<std::int64_t, std::int64_t>(text);
    case Type::real32:
    case Type::real64:
        return real(text, type);
    default:
        return std::nullopt;
    }
}

// The value of a literal of a type, or none if it doesn't fit.
std::optional<Literal> literal(const Token& token, Type type) {
    switch (token.kind) {
    case Token::NUMBER:
        return number(token.text, type);
    case Token::STRING:
        if (type == Type::string || (type == Type::datetime && is_datetime(token.text))) {
            return Literal(token.text);
        }
        return std::nullopt;
    case Token::CHAR:
        return type == Type::char16 && !token.text.empty() ? std::optional(Literal(token.text))
                                                           : std::nullopt;
    case Token::NAME:
        if (type == Type::boolean && token.is_keyword("true")) {
            return Literal(true);
        }
        if (type == Type::boolean && token.is_keyword("false")) {
            return Literal(false);
        }
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

class Parser {
public:
    Parser(std::string_view text, const std::string& file, unsigned depth,
           Declarations& declarations)
        : _lexer(text, file), _depth(depth), _declarations(declarations), _token(_lexer.next()) {}

    void parse() {
        while (_token.kind != Token::END) {
            if (_token.kind == Token::PRAGMA) {
                pragma();
            } else if (_token.is_keyword("qualifier")) {
                _declarations.qualifiers.push_back(qualifier_declaration());
            } else {
                _declarations.classes.push_back(class_declaration());
            }
        }
    }

private:
    Position here() const { return {_lexer.file(), _token.line}; }

    Token take() { return std::exchange(_token, _lexer.next()); }

    bool take_if(char mark) {
        if (!_token.is(mark)) {
            return false;
        }
        take();
        return true;
    }

    [[noreturn]] void unexpected(const std::string& wanted) const {
        fail(here(), "expected " + wanted + " and found " + _token.describe());
    }

    void expect(char mark, const char* behind) {
        if (!take_if(mark)) {
            unexpected(std::string("\"") + mark + "\" " + behind);
        }
    }

    std::string name(const char* what) {
        if (_token.kind != Token::NAME) {
            unexpected(what);
        }
        return take().text;
    }

    void pragma() {
        const Position position = here();
        const bool include = same_name(take().text, "include");
        expect('(', "behind the pragma's name");
        if (_token.kind != Token::STRING) {
            unexpected("a string");
        }
        const std::string text = take().text;
        expect(')', "behind the pragma's value");
        if (!include) {
            return;
        }
        if (_depth >= max_include_depth) {
            fail(position, "files include one another more than " +
                               std::to_string(max_include_depth) + " deep");
        }
        if (text.empty()) {
            fail(position, "the name of the included file is empty");
        }
        const std::size_t slash = _lexer.file().rfind('/');
        const bool beside = text[0] != '/' && slash != std::string::npos;
        const std::string path = beside ? _lexer.file().substr(0, slash + 1) + text : text;
        if (!std::ifstream(path)) {
            fail(position, "cannot open the included file \"" + path + "\"");
        }
        parse_file(path, _declarations, _depth + 1);
    }

    // Names in parentheses, each one of `known`; returns their numbers.
    template <std::size_t size>
    std::vector<std::size_t> words(const std::string_view (&known)[size], const char* what) {
        std::vector<std::size_t> result;
        expect('(', "before the list");
        do {
            const Position position = here();
            const std::string word = name(what);
            std::size_t i = 0;
            while (i < size && !same_name(known[i], word)) {
                ++i;
            }
            if (i == size) {
                fail(position, "\"" + word + "\" is not " + what);
            }
            result.push_back(i);
        } while (take_if(','));
        expect(')', "behind the list");
        return result;
    }

    void keyword(const char* word) {
        if (!_token.is_keyword(word)) {
            unexpected(word);
        }
        take();
    }

    Qualifier_Declaration qualifier_declaration() {
        constexpr std::string_view scopes[] = {"class",     "association", "indication",
                                               "property",  "reference",   "method",
                                               "parameter", "schema",      "any"};
        constexpr std::string_view flavors[] = {"EnableOverride", "DisableOverride", "ToSubclass",
                                                "Restricted", "Translatable"};
        take();
        Qualifier_Declaration result;
        result.position = here();
        result.name = name("the name of a qualifier");
        if (const Qualifier_Declaration* other = _declarations.find_qualifier(result.name)) {
            fail(result.position, "qualifier " + result.name + ": already declared at " +
                                      other->position.file + ":" +
                                      std::to_string(other->position.line));
        }
        expect(':', "before the qualifier's type");
        const Position type_position = here();
        const std::string type = name("a type");
        const std::optional<Type> known = find_type(type);
        if (!known) {
            fail(type_position, "\"" + type + "\" is not a type");
        }
        result.type = *known;
        if (take_if('[')) {
            result.is_array = true;
            expect(']', "behind \"[\"");
        }
        if (take_if('=')) {
            qualifier_value(result);
        }
        expect(',', "before the scope");
        keyword("Scope");
        for (const std::size_t scope : words(scopes, "a scope")) {
            result.scopes |= scope + 1 == std::size(scopes) ? scope_any : 1u << scope;
        }
        if (take_if(',')) {
            keyword("Flavor");
            for (const std::size_t flavor : words(flavors, "a flavor")) {
                result.may_be_overridden = result.may_be_overridden && flavor != 1;
                result.is_inherited = result.is_inherited && flavor != 3;
            }
        }
        expect(';', "behind the qualifier");
        return result;
    }

    Qualifiers qualifiers() {
        Qualifiers result;
        if (!take_if('[')) {
            return result;
        }
        do {
            Qualifier qualifier;
            qualifier.position = here();
            qualifier.name = name("the name of a qualifier");
            const Qualifier_Declaration* const declared =
                _declarations.find_qualifier(qualifier.name);
            if (declared == nullptr) {
                fail(qualifier.position,
                     "the qualifier " + qualifier.name + " is not declared before it");
            }
            if (result.find(qualifier.name) != nullptr) {
                fail(qualifier.position, "the qualifier " + qualifier.name + " stands twice");
            }
            if (_token.is('{')) {
                qualifier_value(*declared);
            } else if (take_if('(')) {
                qualifier.value = qualifier_value(*declared);
                expect(')', "behind the qualifier's value");
            } else if (declared->type == Type::boolean && !declared->is_array) {
                qualifier.value = true;
            } else {
                unexpected("the value of " + declared->name);
            }
            if (take_if(':')) {
                while (_token.kind == Token::NAME) {
                    take(); // what its declaration says holds all the same
                }
            }
            result.list.push_back(std::move(qualifier));
        } while (take_if(','));
        expect(']', "behind the qualifiers");
        return result;
    }

    // A value of the declared type. An array's are checked and not kept.
    std::optional<Literal> qualifier_value(const Qualifier_Declaration& declared) {
        if (_token.is_keyword("null")) {
            take();
            return std::nullopt;
        }
        const auto element = [&] {
            std::optional<Literal> value = literal(_token, declared.type);
            if (!value) {
                fail(here(), "the qualifier " + declared.name + ": " + _token.describe() +
                                 " is not a value of type " + type_name(declared.type));
            }
            take();
            return value;
        };
        if (!declared.is_array) {
            return element();
        }
        expect('{', ("before the values of " + declared.name).c_str());
        do {
            element();
        } while (take_if(','));
        expect('}', ("behind the values of " + declared.name).c_str());
        return std::nullopt;
    }

    // Type, "REF", name and brackets of a property, reference, method or parameter.
    void typed(Typed& result, const char* what) {
        result.position = here();
        result.qualifiers = qualifiers();
        const Position type_position = here();
        const std::string type = name("a type or a class");
        result.is_reference = _token.is_keyword("ref");
        if (result.is_reference) {
            take();
            result.target = type;
        } else if (const std::optional<Type> known = find_type(type)) {
            result.type = *known;
            result.target = result.qualifiers.text("EmbeddedInstance");
            if ((!result.target.empty() || result.is_embedded_object()) &&
                result.type != Type::string) {
                fail(type_position, "an embedded instance is declared as a string");
            }
            if (result.target.empty() && result.qualifiers.has("EmbeddedInstance")) {
                fail(result.position, "EmbeddedInstance needs the name of a class");
            }
        } else {
            fail(type_position, "\"" + type + "\" is not a type");
        }
        result.name = name(what);
        if (take_if('[')) {
            result.is_array = true;
            if (!take_if(']')) {
                unexpected("\"]\": arrays of a fixed size are not supported");
            }
        }
    }

    Parameter parameter() {
        Parameter result;
        typed(result, "the name of a parameter");
        return result;
    }

    void method(Feature& feature) {
        feature.kind = Feature_Kind::method;
        if (feature.is_reference || feature.is_array) {
            fail(feature.position, "method " + feature.name + ": the result must be a scalar");
        }
        if (!take_if(')')) {
            do {
                Parameter next = parameter();
                if (feature.parameter(next.name) != nullptr) {
                    fail(next.position, "parameter " + next.name + " is declared twice");
                }
                feature.parameters.push_back(std::move(next));
            } while (take_if(','));
            expect(')', "behind the parameters");
        }
    }

    void default_value(Feature& feature) {
        const Position position = here();
        if (_token.is_keyword("null")) {
            take();
            feature.value_is_null = true;
            return;
        }
        if (feature.is_array) {
            fail(position, "property " + feature.name + ": array defaults are not supported");
        }
        if (feature.is_reference || feature.is_embedded_instance() ||
            feature.is_embedded_object()) {
            fail(position, "property " + feature.name + ": an instance has no default but NULL");
        }
        feature.value = literal(_token, feature.type);
        if (!feature.value) {
            fail(position, "property " + feature.name + ": " + _token.describe() +
                               " is not a value of type " + type_name(feature.type));
        }
        take();
    }

    std::unique_ptr<Feature> feature() {
        auto result = std::make_unique<Feature>();
        typed(*result, "the name of a property or method");
        result->kind = result->is_reference ? Feature_Kind::reference : Feature_Kind::property;
        if (!result->is_array && take_if('(')) {
            method(*result);
        } else if (take_if('=')) {
            default_value(*result);
        }
        expect(';', ("behind " + result->name).c_str());
        return result;
    }

    Class_Declaration class_declaration() {
        Class_Declaration result;
        result.declared = std::make_unique<Class>();
        Class& declared = *result.declared;
        declared.qualifiers = qualifiers();
        if (!_token.is_keyword("class")) {
            unexpected("a class declaration");
        }
        take();
        declared.position = here();
        declared.name = name("the name of a class");
        if (take_if(':')) {
            result.super = name("the name of the parent");
        }
        expect('{', "before the features of the class");
        while (!take_if('}')) {
            std::unique_ptr<Feature> next = feature();
            for (const std::unique_ptr<Feature>& other : declared.own) {
                if (same_name(other->name, next->name)) {
                    fail(next->position,
                         "class " + declared.name + ": " + next->name + " is declared twice");
                }
            }
            next->origin = declared.name;
            declared.own.push_back(std::move(next));
        }
        expect(';', "behind the class");
        return result;
    }

    Lexer _lexer;
    unsigned _depth;
    Declarations& _declarations;
    Token _token;
};

} // namespace

const Qualifier_Declaration* Declarations::find_qualifier(std::string_view name) const noexcept {
    for (const Qualifier_Declaration& qualifier : qualifiers) {
        if (same_name(qualifier.name, name)) {
            return &qualifier;
        }
    }
    return nullptr;
}

void parse_text(std::string_view text, const std::string& name, Declarations& declarations,
                unsigned depth) {
    Parser(text, name, depth, declarations).parse();
}

void parse_file(const std::string& path, Declarations& declarations, unsigned depth) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf()) || file.bad()) {
        // An empty file sets the failure bit of `text` as well, and declares nothing.
        if (!file || file.peek() != std::ifstream::traits_type::eof() || file.bad()) {
            throw Error(path + ": cannot read the file");
        }
    }
    parse_text(text.str(), path, declarations, depth);
}

} // namespace tvrmof
