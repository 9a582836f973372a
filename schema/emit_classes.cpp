#include "schema/emit.h"

#include <ostream>

namespace tvrgen {

using tvrmof::Class;
using tvrmof::Feature;
using tvrmof::Feature_Kind;
using tvrmof::Parameter;

namespace {

void emit_class(std::ostream& out, const Class& declared) {
    out << "\nstruct " << declared.name << " : Instance {\n";
    for (const Feature* feature : declared.features) {
        if (feature->kind != Feature_Kind::method) {
            out << "    " << field_type(*feature) << ' ' << feature->name << ";\n";
        }
    }
    out << "\n    static const Meta_Class static_meta_class;\n"
        << "    static " << declared.name << "* create(bool defaults) {\n"
        << "        return static_cast<" << declared.name
        << "*>(cimple::create(&static_meta_class, defaults));\n    }\n"
        << "    " << declared.name << "* clone() const { return clone_of(this); }\n};\n";
}

void emit_method(std::ostream& out, const Feature& method) {
    const std::string name = method_structure(method);
    out << "\nstruct " << name << " : Instance {\n";
    for (const Parameter& parameter : method.parameters) {
        out << "    " << field_type(parameter) << ' ' << parameter.name << ";\n";
    }
    out << "    Property<" << value_type(method.type) << "> return_value;\n\n"
        << "    static const Meta_Method static_meta_method;\n"
        << "    static " << name << "* create(bool defaults) {\n"
        << "        return static_cast<" << name
        << "*>(cimple::create(&static_meta_method, defaults));\n    }\n};\n";
}

} // namespace

void emit_classes(std::ostream& out, const tvrmof::Schema& schema) {
    out << "// Generated from the MOF of the class model; changes here are lost.\n"
           "//\n"
           "// One structure a class, flat: a field for each property and reference, inherited "
           "ones\n"
           "// first. And one a declared method, for a call of it: the parameters and last\n"
           "// `return_value`. Structures are made by `create` and `clone` only, with a count of "
           "1;\n"
           "// runtime/instance.h tells what an instance owns.\n"
           "#ifndef TVR_GENERATED_SCHEMA_CLASSES_H\n"
           "#define TVR_GENERATED_SCHEMA_CLASSES_H\n\n"
           "#include \"runtime/instance.h\"\n\n"
           "namespace cimple {\n\n"
           "// All classes, in order of declaration.\n"
           "extern const Meta_Repository meta_repository;\n\n";
    for (const auto& declared : schema.classes()) {
        out << "struct " << declared->name << ";\n";
    }
    for (const auto& declared : schema.classes()) {
        emit_class(out, *declared);
        for (const auto& feature : declared->own) {
            if (feature->kind == Feature_Kind::method) {
                emit_method(out, *feature);
            }
        }
    }
    out << "\n} // namespace cimple\n\n#endif\n";
}

} // namespace tvrgen
