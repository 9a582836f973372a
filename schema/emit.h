// The files that the generator writes.
#ifndef TVR_SCHEMA_EMIT_H
#define TVR_SCHEMA_EMIT_H

#include "schema/model.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace tvrgen {

// Big tables are split so that they compile side by side.
constexpr unsigned metadata_parts = 4;
constexpr unsigned module_parts = 4;

// classes.h: the structures of all classes and methods.
void emit_classes(std::ostream& out, const tvrmof::Schema& schema);

// records.h: declares the metadata records that classes share.
void emit_records(std::ostream& out, const tvrmof::Schema& schema);

// metadata_<part>.cpp: the constant records of a part of the classes; the first has the repository.
void emit_metadata(std::ostream& out, const tvrmof::Schema& schema, unsigned part);

// registrations.h: declares what the module holds for each provider.
void emit_registrations(std::ostream& out, const std::vector<Provider>& providers);

// module_<part>.cpp: dispatchers, registrations, static blocks and factories of a part of the
// providers; the first has the head of the list.
void emit_module(std::ostream& out, const std::vector<Provider>& providers, unsigned part);

// factory_table.cpp: all factories by name.
void emit_factory_table(std::ostream& out, const std::vector<Provider>& providers);

// The members that each hand-written provider has to define.
void emit_signatures(std::ostream& out, const std::vector<Provider>& providers);

// The range of `count` things that falls to a part.
struct Range {
    std::size_t begin, end;
};
constexpr Range part_of(std::size_t count, unsigned part, unsigned parts) {
    return {count * part / parts, count * (part + 1) / parts};
}

} // namespace tvrgen

#endif
