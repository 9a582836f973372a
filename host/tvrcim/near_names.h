// Names that resemble one that doesn't exist.
#ifndef TVR_HOST_TVRCIM_NEAR_NAMES_H
#define TVR_HOST_TVRCIM_NEAR_NAMES_H

#include <string>
#include <string_view>
#include <vector>

namespace tvrcim {

// Up to three of `names`, the nearest first: those within a few edits, or that contain the name.
std::vector<std::string> near_names(std::string_view name, const std::vector<std::string>& names);

// "; did you mean A or B?", or nothing if no name is near.
std::string suggestion(std::string_view name, const std::vector<std::string>& names);

// Compares with a pattern of `*` and `?`, without regard to case.
bool matches(std::string_view pattern, std::string_view name);

} // namespace tvrcim

#endif
