#include "sim/entry_points.h"

#include <algorithm>
#include <array>

namespace tvrsim {

namespace {

constexpr std::array<std::string_view, entryPointCount> names = {
#define TVRSIM_NAME(name) #name,
#define TVRSIM_NAME_BOTH(name, parameters, arguments) "LRM_" #name, "RM_" #name,
    TVRSIM_HBA_ENTRY_POINTS(TVRSIM_NAME) TVRSIM_RM_ENTRY_POINTS(TVRSIM_NAME) "LRM_InitLib",
    "RM_InitLib", TVRSIM_LRM_ENTRY_POINTS(TVRSIM_NAME_BOTH)
#undef TVRSIM_NAME
#undef TVRSIM_NAME_BOTH
};

} // namespace

std::string_view nameOf(EntryPoint entryPoint) {
    return names.at(static_cast<size_t>(entryPoint));
}

std::optional<EntryPoint> entryPointOf(std::string_view name) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        return std::nullopt;
    }
    return static_cast<EntryPoint>(found - names.begin());
}

} // namespace tvrsim
