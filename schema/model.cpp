#include "schema/model.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string_view>

namespace tvrgen {

using tvrmof::Class;
using tvrmof::Error;
using tvrmof::Feature;
using tvrmof::Typed;

namespace {

constexpr const char* value_types[tvrmof::type_count] = {
    "boolean", "uint8",  "sint8",  "uint16", "sint16", "uint32", "sint32",
    "uint64",  "sint64", "real32", "real64", "char16", "String", "Datetime",
};

constexpr std::string_view unusable_names[] = {
    // words of C++
    "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break",
    "case", "catch", "char", "char16_t", "char32_t", "char8_t", "class", "co_await", "co_return",
    "co_yield", "compl", "concept", "const", "const_cast", "consteval", "constexpr", "constinit",
    "continue", "decltype", "default", "delete", "do", "double", "dynamic_cast", "else", "enum",
    "explicit", "export", "extern", "false", "float", "for", "friend", "goto", "if", "inline",
    "int", "long", "mutable", "namespace", "new", "noexcept", "not", "not_eq", "nullptr",
    "operator", "or", "or_eq", "private", "protected", "public", "register", "reinterpret_cast",
    "requires", "return", "short", "signed", "sizeof", "static", "static_assert", "static_cast",
    "struct", "switch", "template", "this", "thread_local", "throw", "true", "try", "typedef",
    "typeid", "typename", "union", "unsigned", "using", "virtual", "void", "volatile", "wchar_t",
    "while", "xor", "xor_eq",
    // what the structures use themselves
    "Array", "Datetime", "Instance", "Meta_Class", "Meta_Method", "Property", "String", "boolean",
    "char16", "clone", "create", "real32", "real64", "return_value", "sint16", "sint32", "sint64",
    "sint8", "static_meta_class", "static_meta_method", "uint16", "uint32", "uint64", "uint8",
    // macros of the system's headers
    "EOF", "NULL", "assert", "errno", "linux", "major", "minor", "offsetof", "stderr", "stdin",
    "stdout", "unix"};

void check_name(const Typed& typed, const std::string& owner) {
    const bool unusable = std::find(std::begin(unusable_names), std::end(unusable_names),
                                    typed.name) != std::end(unusable_names);
    if (unusable || typed.name == owner || typed.name.find("__") != std::string::npos ||
        typed.name[0] == '_') {
        throw Error(typed.position.file + ":" + std::to_string(typed.position.line) + ": class " +
                    owner + ": \"" + typed.name + "\" cannot be the name of a field in C++");
    }
}

} // namespace

void check_names(const tvrmof::Schema& schema) {
    for (const auto& declared : schema.classes()) {
        for (const auto& feature : declared->own) {
            check_name(*feature, declared->name);
            for (const tvrmof::Parameter& parameter : feature->parameters) {
                check_name(parameter, declared->name);
            }
        }
    }
}

std::vector<Provider> read_providers(const std::string& path, const tvrmof::Schema& schema) {
    std::ifstream file(path);
    if (!file) {
        throw Error(path + ": cannot read the file");
    }
    std::vector<Provider> providers;
    std::string line;
    for (unsigned number = 1; std::getline(file, line); ++number) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string name, kinds, provider, rest;
        if (!(words >> name)) {
            continue;
        }
        const auto refuse = [&](const std::string& message) {
            throw Error(path + ":" + std::to_string(number) + ": " + message);
        };
        if (!(words >> kinds >> provider) || (words >> rest)) {
            refuse("expected a class, its kinds, and \"map\" or \"own\"");
        }
        const Class* served = schema.find(name);
        if (served == nullptr) {
            refuse("class " + name + " is not declared");
        }
        if (std::any_of(providers.begin(), providers.end(),
                        [&](const Provider& other) { return other.served == served; })) {
            refuse("class " + name + " stands twice");
        }
        const std::string expected = served->is_association()  ? "AIM"
                                     : served->is_indication() ? "MN"
                                                               : "IM";
        if (kinds != expected) {
            refuse("class " + name + " needs the kinds " + expected);
        }
        if (provider != "map" && provider != "own") {
            refuse("expected \"map\" or \"own\" and found \"" + provider + "\"");
        }
        providers.push_back({served, kinds, provider == "own"});
    }
    return providers;
}

std::string value_type(tvrmof::Type type) {
    return value_types[static_cast<std::size_t>(type)];
}

bool holds_instances(const Typed& typed) {
    return typed.is_reference || typed.is_embedded_instance() || typed.is_embedded_object();
}

std::string instance_class(const Typed& typed) {
    return typed.target.empty() ? "Instance" : typed.target;
}

std::string field_type(const Typed& typed) {
    if (holds_instances(typed)) {
        return typed.is_array ? "Property<Array<Instance*>>" : instance_class(typed) + "*";
    }
    const std::string value = value_type(typed.type);
    return typed.is_array ? "Property<Array<" + value + ">>" : "Property<" + value + ">";
}

std::string method_structure(const Feature& method) {
    return method.origin + "_" + method.name + "_method";
}

} // namespace tvrgen
