#include "sim/json_reader.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <vector>

namespace tvrsim {

namespace {

std::string listOf(std::span<const Named> words) {
    std::string list;
    for (const Named& word : words) {
        list += list.empty() ? "" : ", ";
        list += word.name;
    }
    return list;
}

std::string oneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return text;
}

std::string inQuotes(std::string_view text) {
    return '"' + std::string(text.substr(0, 60)) + '"';
}

int digitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

FormatError::FormatError(std::string_view path, std::string_view reason)
    : std::runtime_error(
          oneLine(std::string(path.empty() ? "document" : path) + ": " + std::string(reason))) {}

Json parseJson(std::string_view text) {
    try {
        return Json::parse(text);
    } catch (const tvrjson::Parse_Error& error) {
        throw FormatError("", error.what());
    }
}

uint64_t readNumber(const Json& value, const std::string& path, uint64_t highest) {
    uint64_t number = 0;
    if (value.is_unsigned()) {
        number = value.as_unsigned();
    } else if (value.is_string() && value.as_string().starts_with("0x")) {
        const std::string& text = value.as_string();
        const char* const end = text.data() + text.size();
        const auto parsed = std::from_chars(text.data() + 2, end, number, 16);
        if (parsed.ec != std::errc() || parsed.ptr != end) {
            throw FormatError(path, inQuotes(text) + " is no hexadecimal number");
        }
    } else {
        throw FormatError(path, "a non-negative whole number is wanted here");
    }
    if (number > highest) {
        throw FormatError(path, std::to_string(number) + " is above the highest value " +
                                    std::to_string(highest));
    }
    return number;
}

uint32_t readNamed(const Json& value, const std::string& path, std::span<const Named> words) {
    if (!value.is_string() || value.as_string().starts_with("0x")) {
        if (!value.is_unsigned() && !value.is_string()) {
            throw FormatError(path,
                              "a number or one of the words " + listOf(words) + " is wanted here");
        }
        return static_cast<uint32_t>(readNumber(value, path, UINT32_MAX));
    }
    const std::string& text = value.as_string();
    const auto word = std::find_if(words.begin(), words.end(),
                                   [&text](const Named& each) { return each.name == text; });
    if (word == words.end()) {
        throw FormatError(path, inQuotes(text) + " is none of " + listOf(words));
    }
    return word->value;
}

uint32_t readMask(const Json& value, const std::string& path, std::span<const Named> words) {
    if (!value.is_array()) {
        return readNamed(value, path, words);
    }
    uint32_t mask = 0;
    for (size_t i = 0; i < value.size(); ++i) {
        mask |= readNamed(value.elements()[i], path + '[' + std::to_string(i) + ']', words);
    }
    return mask;
}

std::string readText(const Json& value, const std::string& path, size_t longest) {
    if (!value.is_string()) {
        throw FormatError(path, "a text is wanted here");
    }
    const std::string& text = value.as_string();
    if (text.size() > longest) {
        throw FormatError(path, "a text of " + std::to_string(text.size()) +
                                    " bytes is longer than " + std::to_string(longest));
    }
    if (text.find('\0') != std::string::npos) {
        throw FormatError(path, "a text cannot hold a zero byte");
    }
    return text;
}

std::string readBytes(const Json& value, const std::string& path) {
    const std::string text = readText(value, path, 8192);
    std::string bytes;
    int high = -1;
    for (const char c : text) {
        const int digit = digitValue(c);
        if (digit >= 0 && high < 0) {
            high = digit;
        } else if (digit >= 0) {
            bytes += static_cast<char>(high * 16 + digit);
            high = -1;
        } else if (high >= 0 || (c != ':' && c != ' ')) {
            throw FormatError(path, inQuotes(text) + " is no row of hexadecimal byte pairs");
        }
    }
    if (high >= 0) {
        throw FormatError(path, inQuotes(text) + " ends within a byte");
    }
    return bytes;
}

std::string readBytes(const Json& value, const std::string& path, size_t most) {
    std::string bytes = readBytes(value, path);
    if (bytes.size() > most) {
        throw FormatError(path, std::to_string(bytes.size()) + " bytes are more than " +
                                    std::to_string(most));
    }
    return bytes;
}

std::string readTextOrBytes(const Json& value, const std::string& path, size_t longest) {
    if (!value.is_object()) {
        return readText(value, path, longest);
    }
    ObjectReader raw(value, path);
    const Json* const bytes = raw.find("bytes");
    raw.finish();
    if (bytes == nullptr) {
        throw FormatError(path, "an object here holds \"bytes\"");
    }
    return readBytes(*bytes, raw.pathOf("bytes"), longest);
}

bool readFlag(const Json& value, const std::string& path) {
    if (!value.is_boolean()) {
        throw FormatError(path, "true or false is wanted here");
    }
    return value.as_boolean();
}

HBA_WWN readWwn(const Json& value, const std::string& path) {
    const std::string bytes = readBytes(value, path);
    HBA_WWN wwn = {};
    if (bytes.size() != sizeof wwn.wwn) {
        throw FormatError(path, "a world wide name has 16 hexadecimal digits");
    }
    std::copy(bytes.begin(), bytes.end(), wwn.wwn);
    return wwn;
}

HBA_WWN parseWwn(std::string_view text, const std::string& path) {
    return readWwn(Json(std::string(text)), path);
}

std::string wwnText(const HBA_WWN& wwn) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const HBA_UINT8 byte : wwn.wwn) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

uint64_t numberOf(const HBA_WWN& wwn) {
    uint64_t number = 0;
    for (const HBA_UINT8 byte : wwn.wwn) {
        number = number << 8 | byte;
    }
    return number;
}

ObjectReader::ObjectReader(const Json& object, std::string path)
    : m_object(object), m_path(std::move(path)) {
    if (!object.is_object()) {
        throw FormatError(m_path, "an object is wanted here");
    }
}

const Json* ObjectReader::find(std::string_view name) {
    m_asked.emplace(name);
    return m_object.find(name);
}

std::string ObjectReader::pathOf(std::string_view name) const {
    return (m_path.empty() ? "" : m_path + '.') + std::string(name);
}

void ObjectReader::real(std::string_view name, float& out) {
    if (const Json* value = find(name)) {
        const double number = value->is_number() ? value->as_number() : HUGE_VAL;
        if (!(std::abs(number) <= std::numeric_limits<float>::max())) {
            throw FormatError(pathOf(name), "a number is wanted here");
        }
        out = static_cast<float>(number);
    }
}

void ObjectReader::named(std::string_view name, uint32_t& out, std::span<const Named> words) {
    if (const Json* value = find(name)) {
        out = readNamed(*value, pathOf(name), words);
    }
}

void ObjectReader::oneOf(std::string_view name, uint32_t& out, std::span<const Named> words) {
    named(name, out, words);
    if (std::none_of(words.begin(), words.end(),
                     [out](const Named& each) { return each.value == out; })) {
        throw FormatError(pathOf(name), "one of the words " + listOf(words) + " is wanted here");
    }
}

void ObjectReader::mask(std::string_view name, uint32_t& out, std::span<const Named> words) {
    if (const Json* value = find(name)) {
        out = readMask(*value, pathOf(name), words);
    }
}

void ObjectReader::text(std::string_view name, std::string& out, size_t longest) {
    if (const Json* value = find(name)) {
        out = readText(*value, pathOf(name), longest);
    }
}

void ObjectReader::wwn(std::string_view name, HBA_WWN& out) {
    if (const Json* value = find(name)) {
        out = readWwn(*value, pathOf(name));
    }
}

void ObjectReader::flag(std::string_view name, bool& out) {
    if (const Json* value = find(name)) {
        out = readFlag(*value, pathOf(name));
    }
}

void ObjectReader::bytes(std::string_view name, std::span<uint8_t> out) {
    if (const Json* value = find(name)) {
        const std::string content = readBytes(*value, pathOf(name), out.size());
        std::fill(std::copy(content.begin(), content.end(), out.begin()), out.end(), 0);
    }
}

void ObjectReader::finish() const {
    for (const auto& [name, value] : m_object.members()) {
        if (!m_asked.contains(name)) {
            throw FormatError(pathOf(name), "no such field");
        }
    }
}

} // namespace tvrsim
