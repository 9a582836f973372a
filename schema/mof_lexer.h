// Cuts MOF text into tokens. Part of the reader; see mof_reader.h for what is understood.
#ifndef TVR_SCHEMA_MOF_LEXER_H
#define TVR_SCHEMA_MOF_LEXER_H

#include "schema/mof_reader.h"

#include <string>
#include <string_view>

namespace tvrmof {

// Throws an `Error` that begins with the position.
[[noreturn]] void fail(const Position& position, const std::string& message);

struct Token {
    enum Kind {
        NAME,   // an identifier or a keyword
        NUMBER, // with its sign, as written
        STRING, // `text` without quotes and escapes; adjacent strings are one
        CHAR,   // likewise, one character
        MARK,   // a single character of punctuation
        PRAGMA, // `text` is the name behind "#pragma"
        END,
    };

    Kind kind = END;
    std::string text;
    unsigned line = 0;

    bool is(char mark) const noexcept { return kind == MARK && text[0] == mark; }
    bool is_keyword(std::string_view word) const noexcept {
        return kind == NAME && same_name(text, word);
    }
    // For messages: the token as a reader of the file knows it.
    std::string describe() const;
};

class Lexer {
public:
    // `text` must live as long as the lexer.
    Lexer(std::string_view text, std::string file);

    const std::string& file() const noexcept { return _file; }
    // The next token; END again and again at the end.
    Token next();

private:
    Position here() const { return {_file, _line}; }
    char peek(std::size_t ahead = 0) const noexcept {
        return _at + ahead < _text.size() ? _text[_at + ahead] : '\0';
    }
    void skip_blanks();
    std::string quoted(char quote);
    char32_t hex_escape();

    std::string_view _text;
    std::string _file;
    std::size_t _at = 0;
    unsigned _line = 1;
};

} // namespace tvrmof

#endif
