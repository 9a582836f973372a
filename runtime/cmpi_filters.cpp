#include "runtime/cmpi_filters.h"

#include <algorithm>

namespace cimple {

std::vector<CMPI_Filters::Entry>::iterator CMPI_Filters::find(std::string_view name_space) {
    return std::find_if(_filters.begin(), _filters.end(),
                        [&](const Entry& entry) { return entry.name_space == name_space; });
}

void CMPI_Filters::add(const char* name_space) {
    const Lock lock(_mutex);
    const auto found = find(name_space);
    if (found == _filters.end()) {
        _filters.push_back({name_space, 1});
    } else {
        ++found->count;
    }
}

void CMPI_Filters::remove(const char* name_space) {
    const Lock lock(_mutex);
    const auto found = find(name_space);
    if (found != _filters.end() && --found->count == 0) {
        _filters.erase(found);
    }
}

} // namespace cimple
