#include "host/tvrcim/wwn.h"

#include <algorithm>
#include <cctype>

namespace tvrcim {

std::string without_separators(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c != ':' && c != '-') {
            result += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return result;
}

std::optional<std::string> wwn_digits(std::string_view text) {
    constexpr std::size_t most = 16;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
    }
    std::string digits = without_separators(text);
    const bool is_hexadecimal = std::all_of(digits.begin(), digits.end(),
                                            [](unsigned char c) { return std::isxdigit(c) != 0; });
    if (digits.empty() || digits.size() > most || !is_hexadecimal) {
        return std::nullopt;
    }
    return digits;
}

} // namespace tvrcim
