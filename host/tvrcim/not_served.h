// What the module's classes declare and the module doesn't serve yet. Each line of the tables goes
// with the change that brings what it names.
#ifndef TVR_HOST_TVRCIM_NOT_SERVED_H
#define TVR_HOST_TVRCIM_NOT_SERVED_H

#include "schema/mof_reader.h"

namespace tvrcim {

// True for a class of the module that has no instances whatever the host, or delivers nothing.
bool is_always_empty(const tvrmof::Class& model);

// True for a method of the module's classes that answers "not supported".
bool is_unsupported(const tvrmof::Class& model, const tvrmof::Feature& method);

} // namespace tvrcim

#endif
