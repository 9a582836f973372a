// World wide names as people and other tools write them.
#ifndef TVR_HOST_TVRCIM_WWN_H
#define TVR_HOST_TVRCIM_WWN_H

#include <optional>
#include <string>
#include <string_view>

namespace tvrcim {

// The digits in upper case of a WWN, or of its beginning, that is written with or without 0x,
// colons or dashes, in either case; nothing for any other text.
std::optional<std::string> wwn_digits(std::string_view text);

// A text without colons and dashes, in upper case, to be compared with such digits.
std::string without_separators(std::string_view text);

} // namespace tvrcim

#endif
