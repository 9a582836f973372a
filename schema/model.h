// What the generator works on: the class model, and which classes have providers of which kind.
#ifndef TVR_SCHEMA_MODEL_H
#define TVR_SCHEMA_MODEL_H

#include "schema/mof_reader.h"

#include <string>
#include <vector>

namespace tvrgen {

// A row of the table of providers.
struct Provider {
    const tvrmof::Class* served;
    std::string kinds; // letters among I, M, A, N in the order written
    bool is_own;       // written by hand; else of the map-backed family
};

// Reads the table; every class is one of the schema. Throws `tvrmof::Error`.
std::vector<Provider> read_providers(const std::string& path, const tvrmof::Schema& schema);

// Refuses names that the generated structures could not have as they stand: words of C++ and names
// that the structures themselves use. Throws `tvrmof::Error`.
void check_names(const tvrmof::Schema& schema);

// C++ type of the field that holds a property, reference or parameter, as "Property<uint16>".
std::string field_type(const tvrmof::Typed& typed);

// C++ type of a CIM type, as "String".
std::string value_type(tvrmof::Type type);

// Name of the structure of a call of a method, which the class `origin` declares.
std::string method_structure(const tvrmof::Feature& method);

// True if the field is a pointer, or an array of pointers, to instances.
bool holds_instances(const tvrmof::Typed& typed);

// Class of those instances: the target's name, or "Instance" where any class may come.
std::string instance_class(const tvrmof::Typed& typed);

} // namespace tvrgen

#endif
