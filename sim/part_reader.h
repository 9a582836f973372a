// Reading of optional parts: objects that a scenario names, changes, or takes away with null.
#pragma once

#include "sim/json_reader.h"

#include <optional>

namespace tvrsim {

/// Reads a part with read(reader, part), from its present or its usual values.
template <class Part, class Read>
void readPart(ObjectReader& owner, std::string_view name, std::optional<Part>& part,
              Part (*usual)(), Read read) {
    const Json* const value = owner.find(name);
    if (value == nullptr) {
        return;
    }
    if (value->is_null()) {
        part.reset();
        return;
    }
    if (!part) {
        part = usual();
    }
    ObjectReader reader(*value, owner.pathOf(name));
    read(reader, *part);
    reader.finish();
}

} // namespace tvrsim
