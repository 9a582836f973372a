// Turns MOF text into declarations, one at a time. Names of classes are not yet resolved; those of
// qualifiers are.
#ifndef TVR_SCHEMA_MOF_PARSER_H
#define TVR_SCHEMA_MOF_PARSER_H

#include "schema/mof_lexer.h"

#include <memory>
#include <string>
#include <vector>

namespace tvrmof {

// A class as written: own features, and the parent by name.
struct Class_Declaration {
    std::unique_ptr<Class> declared;
    std::string super; // empty at a root
};

// What a qualifier may stand at: a bit each.
enum Scope : unsigned {
    scope_class = 1,
    scope_association = 2,
    scope_indication = 4,
    scope_property = 8,
    scope_reference = 16,
    scope_method = 32,
    scope_parameter = 64,
    scope_schema = 128, // of which no text makes use
    scope_any = 255,
};

struct Qualifier_Declaration {
    Position position;
    std::string name;
    Type type = Type::boolean;
    bool is_array = false;
    unsigned scopes = 0;
    // How it passes to subclasses and to features that redeclare one.
    bool is_inherited = true;
    bool may_be_overridden = true;
};

struct Declarations {
    std::vector<Qualifier_Declaration> qualifiers;
    std::vector<Class_Declaration> classes;

    // Null if there is none of that name.
    const Qualifier_Declaration* find_qualifier(std::string_view name) const noexcept;
};

// Appends what the file or text declares, in order, with what it includes. Throws `Error`.
void parse_file(const std::string& path, Declarations& declarations, unsigned depth = 0);
void parse_text(std::string_view text, const std::string& name, Declarations& declarations,
                unsigned depth = 0);

// Resolves parents and targets, lays out each class's features, and checks that qualifiers stand
// where they may. Throws `Error`.
Schema link(Declarations declarations);

} // namespace tvrmof

#endif
