// What the numbers of the CIM schema's enumerated properties mean.
#ifndef TVR_HOST_TVRCIM_VALUE_NAMES_H
#define TVR_HOST_TVRCIM_VALUE_NAMES_H

#include "host/cim_value.h"
#include "schema/mof_reader.h"

#include <string>

namespace tvrcim {

// A property's value as a literal, with the meaning of each number that has one: "2 (OK)".
std::string named_literal(const tvrmof::Class* model, const tvrhost::Named_Value& property);

// The number of a property's value that is given by its meaning, in any case; other texts as they
// are.
std::string number_of_name(const tvrmof::Class* model, const std::string& property,
                           const std::string& text);

} // namespace tvrcim

#endif
