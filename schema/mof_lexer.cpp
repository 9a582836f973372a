#include "schema/mof_lexer.h"

#include <utility>

namespace tvrmof {

namespace {

// ASCII only: the locale has no say in what a name is.
bool is_digit(char c) noexcept {
    return c >= '0' && c <= '9';
}
bool is_letter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool is_blank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

void append_utf8(std::string& text, char32_t c) {
    const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

} // namespace

void fail(const Position& position, const std::string& message) {
    throw Error(position.file + ":" + std::to_string(position.line) + ": " + message);
}

std::string Token::describe() const {
    switch (kind) {
    case END:
        return "the end of the file";
    case STRING:
        return "a string";
    case CHAR:
        return "a character";
    case PRAGMA:
        return "#pragma " + text;
    default:
        return "\"" + text + "\"";
    }
}

Lexer::Lexer(std::string_view text, std::string file) : _text(text), _file(std::move(file)) {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (_text.starts_with(byte_order_mark)) {
        _at = byte_order_mark.size();
    }
}

void Lexer::skip_blanks() {
    while (_at < _text.size()) {
        if (is_blank(peek())) {
            _line += peek() == '\n';
            ++_at;
        } else if (peek() == '/' && peek(1) == '/') {
            while (_at < _text.size() && peek() != '\n') {
                ++_at;
            }
        } else if (peek() == '/' && peek(1) == '*') {
            const Position begin = here();
            const std::size_t end = _text.find("*/", _at + 2);
            if (end == std::string_view::npos) {
                fail(begin, "the comment is not closed");
            }
            for (; _at < end + 2; ++_at) {
                _line += peek() == '\n';
            }
        } else {
            return;
        }
    }
}

char32_t Lexer::hex_escape() {
    char32_t value = 0;
    int digits = 0;
    for (; digits < 4; ++digits, ++_at) {
        const char c = peek();
        if (is_digit(c)) {
            value = value * 16 + static_cast<char32_t>(c - '0');
        } else if (const char lower = static_cast<char>(c | 0x20); lower >= 'a' && lower <= 'f') {
            value = value * 16 + static_cast<char32_t>(lower - 'a' + 10);
        } else {
            break;
        }
    }
    if (digits == 0 || value == 0 || (value >= 0xD800 && value <= 0xDFFF)) {
        fail(here(), "\\x needs the code of a character");
    }
    return value;
}

std::string Lexer::quoted(char quote) {
    std::string text;
    ++_at;
    while (peek() != quote || _at >= _text.size()) {
        if (_at >= _text.size() || peek() == '\n') {
            fail(here(), "the string is not closed on its line");
        }
        const char c = peek();
        ++_at;
        if (c != '\\') {
            text += c;
            continue;
        }
        constexpr std::string_view letters = "btnfr\"'\\";
        constexpr std::string_view meanings = "\b\t\n\f\r\"'\\";
        const char escape = peek();
        ++_at;
        if (escape == 'x' || escape == 'X') {
            append_utf8(text, hex_escape());
        } else if (const auto known = letters.find(escape); known != std::string_view::npos) {
            text += meanings[known];
        } else {
            fail(here(), "the string has an unknown escape");
        }
    }
    ++_at;
    return text;
}

Token Lexer::next() {
    skip_blanks();
    Token token;
    token.line = _line;
    if (_at >= _text.size()) {
        return token;
    }
    const std::size_t begin = _at;
    const char c = peek();
    const bool sign = c == '+' || c == '-';
    if (is_letter(c)) {
        while (is_letter(peek()) || is_digit(peek())) {
            ++_at;
        }
        token.kind = Token::NAME;
        token.text = _text.substr(begin, _at - begin);
    } else if (is_digit(c) || (sign && is_digit(peek(1)))) {
        // Letters belong to it for hexadecimal digits and exponents; the value is judged later.
        ++_at;
        while (is_letter(peek()) || is_digit(peek()) || peek() == '.' ||
               ((peek() == '-' || peek() == '+') && (_text[_at - 1] | 0x20) == 'e')) {
            ++_at;
        }
        token.kind = Token::NUMBER;
        token.text = _text.substr(begin, _at - begin);
    } else if (c == '"') {
        token.kind = Token::STRING;
        do {
            token.text += quoted('"');
            skip_blanks();
        } while (peek() == '"');
    } else if (c == '\'') {
        token.kind = Token::CHAR;
        token.text = quoted('\'');
    } else if (c == '#') {
        ++_at;
        const Token word = next();
        const Token name = word.is_keyword("pragma") ? next() : Token();
        if (name.kind != Token::NAME) {
            fail({_file, token.line}, "\"#\" begins a pragma and needs \"pragma\" and its name");
        }
        token.kind = Token::PRAGMA;
        token.text = name.text;
    } else if (constexpr std::string_view marks = "[](){}:;,=$"; marks.find(c) < marks.size()) {
        ++_at;
        token.kind = Token::MARK;
        token.text = std::string(1, c);
    } else if (c > ' ' && c <= '~') {
        fail(here(), std::string("\"") + c + "\" is not part of MOF");
    } else {
        fail(here(), "a character that is not part of MOF");
    }
    return token;
}

} // namespace tvrmof
