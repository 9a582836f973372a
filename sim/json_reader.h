// Strict reading of JSON objects: every field is checked for its type and range, and a field that
// nobody asked for is an error. All failures are a FormatError that names the place.
#pragma once

#include "access/rm/rm_api.h"
#include "json/json.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tvrsim {

using tvrjson::Json;

/// What is wrong with a scenario or a control request, in one line.
class FormatError : public std::runtime_error {
public:
    FormatError(std::string_view path, std::string_view reason);
};

/// A word of the format and the number that it stands for.
struct Named {
    std::string_view name;
    uint32_t value;
};

/// Parses a text as JSON.
Json parseJson(std::string_view text);

/// A non-negative number, as such or as a text in hexadecimal ("0x1F").
uint64_t readNumber(const Json& value, const std::string& path, uint64_t highest);

/// A number, or one of the words.
uint32_t readNamed(const Json& value, const std::string& path, std::span<const Named> words);

/// A number, a word, or an array of words and numbers whose bits are joined.
uint32_t readMask(const Json& value, const std::string& path, std::span<const Named> words);

/// A text of at most longest bytes without zero bytes.
std::string readText(const Json& value, const std::string& path, size_t longest);

/// Bytes as hexadecimal digits; colons and blanks between pairs are passed over.
std::string readBytes(const Json& value, const std::string& path);

/// The same of at most most bytes.
std::string readBytes(const Json& value, const std::string& path, size_t most);

/// A text, or any bytes as {"bytes": "01 02 FF"}.
std::string readTextOrBytes(const Json& value, const std::string& path, size_t longest);

/// Calls each(element, path, index) for the elements of an array.
template <class Each> void forEachElement(const Json& array, const std::string& path, Each each) {
    if (!array.is_array()) {
        throw FormatError(path, "an array is wanted here");
    }
    for (size_t i = 0; i < array.size(); ++i) {
        each(array.elements()[i], path + '[' + std::to_string(i) + ']', i);
    }
}

bool readFlag(const Json& value, const std::string& path);
HBA_WWN readWwn(const Json& value, const std::string& path);
HBA_WWN parseWwn(std::string_view text, const std::string& path);

/// The 16 upper-case digits of a name.
std::string wwnText(const HBA_WWN& wwn);

/// A name as a number, its first byte the highest.
uint64_t numberOf(const HBA_WWN& wwn);

/// One object. Each field is asked for by name and at most once; finish() refuses the rest.
class ObjectReader {
public:
    ObjectReader(const Json& object, std::string path);

    /// The value of a field, or null when the object lacks it.
    const Json* find(std::string_view name);

    /// The place of a field, for messages.
    std::string pathOf(std::string_view name) const;

    template <class Number>
    void number(std::string_view name, Number& out,
                uint64_t highest = std::numeric_limits<Number>::max()) {
        if (const Json* value = find(name)) {
            out = static_cast<Number>(readNumber(*value, pathOf(name), highest));
        }
    }

    /// A number that null takes away.
    template <class Number> void optionalNumber(std::string_view name, std::optional<Number>& out) {
        if (const Json* value = find(name); value != nullptr && value->is_null()) {
            out.reset();
        } else if (value != nullptr) {
            out = static_cast<Number>(
                readNumber(*value, pathOf(name), std::numeric_limits<Number>::max()));
        }
    }

    void real(std::string_view name, float& out);
    void named(std::string_view name, uint32_t& out, std::span<const Named> words);

    /// A number that must be that of one of the words.
    void oneOf(std::string_view name, uint32_t& out, std::span<const Named> words);
    template <class Enum>
    requires std::is_enum_v<Enum>
    void oneOf(std::string_view name, Enum& out, std::span<const Named> words) {
        auto number = static_cast<uint32_t>(out);
        oneOf(name, number, words);
        out = static_cast<Enum>(number);
    }
    void mask(std::string_view name, uint32_t& out, std::span<const Named> words);
    void text(std::string_view name, std::string& out, size_t longest);
    void wwn(std::string_view name, HBA_WWN& out);
    void flag(std::string_view name, bool& out);

    /// Fills a character array. A text as long as the array leaves it without terminator.
    template <size_t size> void chars(std::string_view name, char (&out)[size]) {
        if (const Json* value = find(name)) {
            const std::string text = readText(*value, pathOf(name), size);
            std::fill_n(out, size, '\0');
            std::copy(text.begin(), text.end(), out);
        }
    }

    /// Fills the start of an array with bytes and the rest with zero.
    void bytes(std::string_view name, std::span<uint8_t> out);

    void finish() const;

private:
    const Json& m_object;
    std::string m_path;
    std::set<std::string, std::less<>> m_asked;
};

} // namespace tvrsim
