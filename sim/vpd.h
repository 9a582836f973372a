// The layout of a VPD buffer: entries one behind the other, each with the way to the next.
#pragma once

#include "sim/inventory.h"

namespace tvrsim {

/// The bytes of a buffer that holds the given data, always with an end behind them.
std::string packVpd(const Vpd& vpd);

/// Copies the entry at a cursor, if there is one, and answers the cursor of the next, or null at
/// the end of the walk. The content that packVpd gave must be whole.
void* nextVpdEntry(void* cursor, std::span<char> keyword, std::span<char> value);

} // namespace tvrsim
