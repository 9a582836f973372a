// The layout of an opaque attribute buffer: a head, then records of identifier, lengths and value,
// one right behind the other.
#pragma once

#include "sim/scenario.h"

namespace tvrsim {

/// The bytes of a buffer that holds the given attributes.
std::string packAttributes(const Attributes& attributes, AttributeLengths lengths);

/// A value in a packed buffer, with the length to tell. Null when the buffer is none of this
/// library's or lacks the attribute.
void* findAttribute(void* buffer, uint16_t attribute, uint16_t& length);

/// Answers a sized call: copies content when size has room for it, else status 7. size gets the
/// need.
RM_STATUS answerSized(const std::string& content, void* buffer, uint32_t* size);

} // namespace tvrsim
