// Turns MOF text into declarations, one class at a time, whose names are not yet resolved.
#ifndef TVR_SCHEMA_MOF_PARSER_H
#define TVR_SCHEMA_MOF_PARSER_H

#include "schema/mof_lexer.h"

#include <memory>
#include <string>
#include <vector>

namespace tvrmof {

// A class as written: own features, and the parent by name.
struct Declaration {
    std::unique_ptr<Class> declared;
    std::string super; // empty at a root
};

using Declarations = std::vector<Declaration>;

// Appends what the file or text declares, in order, with what it includes. Throws `Error`.
void parse_file(const std::string& path, Declarations& declarations, unsigned depth = 0);
void parse_text(std::string_view text, const std::string& name, Declarations& declarations,
                unsigned depth = 0);

// Resolves parents and targets and lays out each class's features. Throws `Error`.
Schema link(Declarations declarations);

} // namespace tvrmof

#endif
