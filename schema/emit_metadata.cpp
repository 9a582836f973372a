#include "schema/emit.h"

#include <array>
#include <ostream>
#include <string_view>

namespace tvrgen {

using tvrmof::Class;
using tvrmof::Feature;
using tvrmof::Feature_Kind;
using tvrmof::Literal;
using tvrmof::Parameter;
using tvrmof::Qualifiers;
using tvrmof::Schema;
using tvrmof::Typed;

namespace {

struct Mark {
    const char* qualifier;
    const char* flag;
};

// Qualifiers that the flag word carries. Those that tell what a record is are set by its kind.
constexpr std::array<Mark, 22> marks = {{
    {"Abstract", "FLAG_ABSTRACT"},
    {"Aggregate", "FLAG_AGGREGATE"},
    {"Aggregation", "FLAG_AGGREGATION"},
    {"Composition", "FLAG_COMPOSITION"},
    {"Counter", "FLAG_COUNTER"},
    {"Delete", "FLAG_DELETE"},
    {"DN", "FLAG_DN"},
    {"EmbeddedObject", "FLAG_EMBEDDED_OBJECT"},
    {"Exception", "FLAG_EXCEPTION"},
    {"Expensive", "FLAG_EXPENSIVE"},
    {"Experimental", "FLAG_EXPERIMENTAL"},
    {"Gauge", "FLAG_GAUGE"},
    {"IfDeleted", "FLAG_IF_DELETED"},
    {"Invisible", "FLAG_INVISIBLE"},
    {"Large", "FLAG_LARGE"},
    {"OctetString", "FLAG_OCTET_STRING"},
    {"Required", "FLAG_REQUIRED"},
    {"Static", "FLAG_STATIC"},
    {"Terminal", "FLAG_TERMINAL"},
    {"Weak", "FLAG_WEAK"},
    {"Write", "FLAG_WRITE"},
    {"EmbeddedInstance", "FLAG_EMBEDDED_INSTANCE"},
}};

constexpr std::array<const char*, tvrmof::type_count> type_codes = {
    "BOOLEAN", "UINT8",  "SINT8",  "UINT16", "SINT16", "UINT32", "SINT32",
    "UINT64",  "SINT64", "REAL32", "REAL64", "CHAR16", "STRING", "DATETIME",
};

std::string type_code(tvrmof::Type type) {
    return type_codes[static_cast<std::size_t>(type)];
}

std::string with_marks(std::string flags, const Qualifiers& qualifiers) {
    for (const Mark& mark : marks) {
        if (qualifiers.has(mark.qualifier)) {
            flags += std::string(" | ") + mark.flag;
        }
    }
    return flags;
}

std::string class_flags(const Class& declared) {
    return with_marks(declared.is_association()  ? "FLAG_ASSOCIATION"
                      : declared.is_indication() ? "FLAG_INDICATION"
                                                 : "FLAG_CLASS",
                      declared.qualifiers);
}

std::string feature_flags(const Feature& feature) {
    std::string flags = feature.kind == Feature_Kind::method ? "FLAG_METHOD"
                        : holds_instances(feature)           ? "FLAG_REFERENCE"
                                                             : "FLAG_PROPERTY | FLAG_READ";
    flags += feature.is_key() ? " | FLAG_KEY" : "";
    return with_marks(flags, feature.qualifiers);
}

std::string parameter_flags(const Parameter& parameter) {
    std::string flags = holds_instances(parameter) ? "FLAG_REFERENCE" : "FLAG_PROPERTY";
    flags += parameter.in() ? " | FLAG_IN" : "";
    flags += parameter.out() ? " | FLAG_OUT" : "";
    return with_marks(flags, parameter.qualifiers);
}

std::string head(const std::string& flags, const std::string& name) {
    return "{0, " + flags + ", \"" + name + "\", nullptr, 0}";
}

std::string quoted(std::string_view text) {
    constexpr std::string_view digits = "01234567";
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte < 0x7F && c != '"' && c != '\\' && c != '?') {
            result += c;
        } else {
            result += {'\\', digits[byte >> 6], digits[(byte >> 3) & 7], digits[byte & 7]};
        }
    }
    return result + "\"";
}

// A constant of the property's type; text types are held as a pointer to characters.
std::string default_constant(const Feature& property, const std::string& name) {
    const auto number = [](const auto& value) {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, bool>) {
            return std::string(value ? "true" : "false");
        } else if constexpr (std::is_same_v<Value, std::string>) {
            return quoted(value);
        } else if constexpr (std::is_same_v<Value, std::int64_t>) {
            return value == INT64_MIN ? std::string("INT64_MIN") : std::to_string(value);
        } else {
            return std::to_string(value) + (std::is_same_v<Value, std::uint64_t> ? "u" : "");
        }
    };
    const bool is_text =
        property.type == tvrmof::Type::string || property.type == tvrmof::Type::datetime;
    return "constexpr " + (is_text ? "const char*" : value_type(property.type)) + " " + name +
           " = " + std::visit(number, *property.value) + ";\n";
}

// The record of a property or reference that is a field of `structure`.
std::string field_record(const Typed& typed, const std::string& flags, const std::string& structure,
                         const std::string& value) {
    const std::string subscript = typed.is_array ? "-1" : "0";
    const std::string offset = "offsetof(" + structure + ", " + typed.name + ")";
    const std::string begin = "{\n    " + head(flags, typed.name) + ",\n    ";
    if (holds_instances(typed)) {
        return begin + subscript + ", &cimple::" + instance_class(typed) + "::static_meta_class, " +
               offset + "};\n";
    }
    return begin + type_code(typed.type) + ", " + subscript + ", " + offset + ", " + value + "};\n";
}

const char* record_type(const Typed& typed) {
    return holds_instances(typed) ? "Meta_Reference" : "Meta_Property";
}

void emit_list(std::ostream& out, const char* type, const char* name,
               const std::vector<std::string>& items) {
    out << "constexpr " << type << ' ' << name << "[] = {";
    for (const std::string& item : items) {
        out << "\n    " << item << ',';
    }
    out << "\n};\n";
}

void emit_method(std::ostream& out, const Feature& method) {
    const std::string structure = "cimple::" + method_structure(method);
    out << "namespace " << method.name << "_parameters {\n";
    std::vector<std::string> features;
    for (const Parameter& parameter : method.parameters) {
        out << "constexpr " << record_type(parameter) << ' ' << parameter.name << " = "
            << field_record(parameter, parameter_flags(parameter), structure, "nullptr");
        features.push_back("&" + parameter.name);
    }
    out << "constexpr Meta_Property return_value = {\n    "
        << head("FLAG_PROPERTY | FLAG_OUT", "return_value") << ",\n    " << type_code(method.type)
        << ", 0, offsetof(" << structure << ", return_value), nullptr};\n";
    features.push_back("&return_value");
    emit_list(out, "const Meta_Feature*", "all_parameters", features);
    out << "} // namespace " << method.name << "_parameters\n";
}

void emit_method_record(std::ostream& out, const Feature& method) {
    const std::string structure = method_structure(method);
    out << "constinit const Meta_Method " << structure << "::static_meta_method = {\n    {"
        << head(feature_flags(method), method.name) << ",\n     records::" << method.origin
        << "::" << method.name << "_parameters::all_parameters, " << method.parameters.size() + 1
        << ", sizeof(" << structure << ")},\n    " << type_code(method.type) << "};\n";
}

std::string record_address(const Feature& feature) {
    std::string address = "&";
    return feature.kind == Feature_Kind::method
               ? address.append(method_structure(feature)).append("::static_meta_method")
               : address.append("records::")
                     .append(feature.origin)
                     .append("::")
                     .append(feature.name);
}

void emit_class(std::ostream& out, const Class& declared) {
    out << "\nnamespace records::" << declared.name << " {\n";
    for (const auto& feature : declared.own) {
        if (feature->kind == Feature_Kind::method) {
            emit_method(out, *feature);
            continue;
        }
        std::string value = "nullptr";
        if (feature->value) {
            const std::string constant = feature->name + "_default";
            out << default_constant(*feature, constant);
            value = "&" + constant;
        }
        out << "constinit const " << record_type(*feature) << ' ' << feature->name << " = "
            << field_record(*feature, feature_flags(*feature), "cimple::" + declared.name, value);
    }
    std::vector<std::string> features, locals;
    for (const Feature* feature : declared.features) {
        features.push_back(record_address(*feature));
        locals.emplace_back(declared.is_local(*feature) ? "1" : "0");
    }
    emit_list(out, "const Meta_Feature*", "all_features", features);
    out << "constexpr uint8 all_locals[] = {";
    for (const std::string& local : locals) {
        out << local << ',';
    }
    out << "};\n} // namespace records::" << declared.name << "\n\n";
    for (const auto& feature : declared.own) {
        if (feature->kind == Feature_Kind::method) {
            emit_method_record(out, *feature);
        }
    }
    const std::string records = "records::" + declared.name;
    out << "constinit const Meta_Class " << declared.name << "::static_meta_class = {\n    {"
        << head(class_flags(declared), declared.name) << ",\n     " << records << "::all_features, "
        << features.size() << ", sizeof(" << declared.name << ")},\n    " << records
        << "::all_locals, "
        << (declared.super != nullptr ? "&" + declared.super->name + "::static_meta_class"
                                      : "nullptr")
        << ", " << declared.keys().size() << ", &meta_repository};\n";
}

void emit_repository(std::ostream& out, const Schema& schema) {
    std::vector<std::string> classes;
    for (const auto& declared : schema.classes()) {
        classes.push_back("&" + declared->name + "::static_meta_class");
    }
    out << "\nnamespace {\n";
    emit_list(out, "const Meta_Class*", "all_classes", classes);
    out << "} // namespace\n\n"
        << "constinit const Meta_Repository meta_repository = {all_classes, " << classes.size()
        << "};\n";
}

} // namespace

void emit_records(std::ostream& out, const Schema& schema) {
    out << "// Generated from the MOF of the class model; changes here are lost.\n"
           "// The records of properties and references, by declaring class: classes that inherit "
           "a\n"
           "// feature unchanged share its record.\n"
           "#ifndef TVR_GENERATED_SCHEMA_RECORDS_H\n#define TVR_GENERATED_SCHEMA_RECORDS_H\n\n"
           "#include \"runtime/meta.h\"\n\nnamespace cimple::records {\n";
    for (const auto& declared : schema.classes()) {
        out << "\nnamespace " << declared->name << " {\n";
        for (const auto& feature : declared->own) {
            if (feature->kind != Feature_Kind::method) {
                out << "extern const " << record_type(*feature) << ' ' << feature->name << ";\n";
            }
        }
        out << "} // namespace " << declared->name << '\n';
    }
    out << "\n} // namespace cimple::records\n\n#endif\n";
}

void emit_metadata(std::ostream& out, const Schema& schema, unsigned part) {
    out << "// Generated from the MOF of the class model; changes here are lost.\n"
           "#include \"schema/classes.h\"\n#include \"schema/records.h\"\n\n"
           "#include <cstddef>\n\n"
           "// The structures have a base, of a fixed size and without a tail: offsets are what "
           "they\n"
           "// seem.\n"
           "#pragma GCC diagnostic ignored \"-Winvalid-offsetof\"\n\n"
           "namespace cimple {\n";
    const auto& classes = schema.classes();
    const Range range = part_of(classes.size(), part, metadata_parts);
    for (std::size_t i = range.begin; i < range.end; ++i) {
        emit_class(out, *classes[i]);
    }
    if (part == 0) {
        emit_repository(out, schema);
    }
    out << "\n} // namespace cimple\n";
}

} // namespace tvrgen
