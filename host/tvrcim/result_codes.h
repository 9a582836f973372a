// What the numbers that methods of the module return mean.
#ifndef TVR_HOST_TVRCIM_RESULT_CODES_H
#define TVR_HOST_TVRCIM_RESULT_CODES_H

#include "host/cim_value.h"
#include "schema/mof_reader.h"

#include <string>

namespace tvrcim {

// Of a method's return value, as "success"; empty where none is known, as for NULL.
std::string result_meaning(const tvrmof::Class& model, const std::string& method,
                           const tvrhost::Cim_Value& result);

// An output argument as a literal, with the meaning of a number that has one behind it.
std::string output_literal(const tvrmof::Class& model, const std::string& method,
                           const tvrhost::Named_Value& argument);

} // namespace tvrcim

#endif
