#include "schema/emit.h"

#include <array>
#include <ostream>
#include <string_view>

namespace tvrgen {

using tvrmof::Class;
using tvrmof::Feature;
using tvrmof::Parameter;

namespace {

struct Kind {
    char letter;
    const char* name; // in the exported name
};
constexpr std::array<Kind, 4> kinds = {{
    {'I', "Instance"},
    {'M', "Method"},
    {'A', "Association"},
    {'N', "Indication"},
}};

const char* kind_name(char letter) {
    for (const Kind& kind : kinds) {
        if (kind.letter == letter) {
            return kind.name;
        }
    }
    return "";
}

std::string provider_class(const Class& served) {
    return served.name + "_Provider";
}

const char* provider_kind(const Class& served) {
    return served.is_association()  ? "association"
           : served.is_indication() ? "indication"
                                    : "instance";
}

// How a member of a provider gets a parameter.
std::string argument_type(const Parameter& parameter) {
    const bool pointer = holds_instances(parameter) && !parameter.is_array;
    if (parameter.out()) {
        return field_type(parameter) + "&";
    }
    return "const " + field_type(parameter) + (pointer ? "" : "&");
}

void emit_methods(std::ostream& out, const Provider& provider) {
    const std::string& name = provider.served->name;
    const std::string own = provider_class(*provider.served);
    out << "const Provider_Method<" << own << ", " << name << "> " << name << "_methods[] = {\n";
    for (const Feature* method : provider.served->methods()) {
        const std::string structure = method_structure(*method);
        out << "    {&" << structure << "::static_meta_method,\n     [](" << own
            << "& provider, const " << name
            << "* self, Instance* fields) -> int {\n         auto& call = *static_cast<"
            << structure << "*>(fields);\n         return provider." << method->name << "(self";
        for (const Parameter& parameter : method->parameters) {
            out << ", call." << parameter.name;
        }
        out << ", call.return_value);\n     }},\n";
    }
    out << "};\n\nint " << name << "_invoke(" << own
        << "& provider, const Instance* self, Instance* call) {\n    return invoke_member(" << name
        << "_methods, provider, self, call);\n}\n\n";
}

std::string invoker(const Provider& provider) {
    const std::string& name = provider.served->name;
    if (provider.served->methods().empty()) {
        return "invoke_nothing<" + provider_class(*provider.served) + ">";
    }
    return provider.is_own
               ? name + "_invoke"
               : "invoke_unsupported<" + provider_class(*provider.served) + ", " + name + ">";
}

void emit_provider(std::ostream& out, const Provider& provider, const Provider* previous) {
    const Class& served = *provider.served;
    out << "\n// " << served.name << "\nnamespace cimple {\nnamespace {\n\n";
    if (!provider.is_own) {
        out << "using " << provider_class(served) << " = Map_Backed_Provider<" << served.name
            << ">;\n\n";
    } else if (!served.methods().empty()) {
        emit_methods(out, provider);
    }
    out << "} // namespace\n\nconstinit const Registration " << served.name
        << "_registration = {\n    module_name, \"" << provider_class(served)
        << "\",\n    dispatch<" << provider_class(served) << ", " << served.name
        << ", Provider_Kind::" << provider_kind(served) << ", " << invoker(provider) << ">,\n    &"
        << served.name << "::static_meta_class, "
        << (previous != nullptr ? "&" + previous->served->name + "_registration" : "nullptr")
        << "};\nconstinit CMPI_Static_Data " << served.name << "_static_data = {};\n\n"
        << "} // namespace cimple\n\n";
    for (const char letter : provider.kinds) {
        out << "TVR_FACTORIES(" << served.name << ", " << kind_name(letter) << ", '" << letter
            << "')\n";
    }
}

const char* const generated_notice =
    "// Generated from the table of providers and the MOF; changes here are lost.\n";

void emit_method_signature(std::ostream& out, const Feature& method) {
    out << "    Invoke_Method_Status " << method.name << "(const "
        << "C* self";
    for (const Parameter& parameter : method.parameters) {
        out << ",\n        " << argument_type(parameter) << ' ' << parameter.name;
    }
    out << ",\n        Property<" << value_type(method.type) << ">& return_value);\n";
}

} // namespace

void emit_registrations(std::ostream& out, const std::vector<Provider>& providers) {
    out << generated_notice
        << "#ifndef TVR_GENERATED_MODULE_REGISTRATIONS_H\n"
           "#define TVR_GENERATED_MODULE_REGISTRATIONS_H\n\n"
           "#include \"module/factory.h\"\n\nnamespace cimple {\n\n";
    for (const Provider& provider : providers) {
        out << "extern const Registration " << provider.served->name << "_registration;\n"
            << "extern CMPI_Static_Data " << provider.served->name << "_static_data;\n";
    }
    out << "\n// The head of the list.\ninline constexpr const Registration& last_registration = "
        << providers.back().served->name << "_registration;\n\n} // namespace cimple\n\n";
    for (const Provider& provider : providers) {
        for (const char letter : provider.kinds) {
            out << "TVR_DECLARE_FACTORIES(" << provider.served->name << ", " << kind_name(letter)
                << ")\n";
        }
    }
    out << "\n#endif\n";
}

void emit_module(std::ostream& out, const std::vector<Provider>& providers, unsigned part) {
    const Range range = part_of(providers.size(), part, module_parts);
    out << generated_notice
        << "#include \"derivedObjects/map_backed_provider.h\"\n"
           "#include \"module/dispatcher.h\"\n"
           "#include \"module/registrations.h\"\n"
           "#include \"schema/classes.h\"\n\n";
    for (std::size_t i = range.begin; i < range.end; ++i) {
        if (providers[i].is_own) {
            out << "#include \"providers/" << provider_class(*providers[i].served) << ".h\"\n";
        }
    }
    for (std::size_t i = range.begin; i < range.end; ++i) {
        emit_provider(out, providers[i], i == 0 ? nullptr : &providers[i - 1]);
    }
}

void emit_factory_table(std::ostream& out, const std::vector<Provider>& providers) {
    out << generated_notice
        << "#include \"module/factories.h\"\n#include \"module/registrations.h\"\n\n"
        << "namespace cimple {\n\n#define TVR_ENTRY(class, kind, letter, function) \\\n"
           "    {#function, reinterpret_cast<Any_Factory>(function), letter, #class}\n\n"
           "const Factory factories[] = {\n";
    std::size_t count = 0;
    for (const Provider& provider : providers) {
        for (const char letter : provider.kinds) {
            const std::string kind = kind_name(letter);
            for (const char* infix : {"_Provider_Create_", "_Create_"}) {
                out << "    TVR_ENTRY(" << provider.served->name << ", " << kind << ", '" << letter
                    << "', " << provider.served->name << infix << kind << "MI),\n";
                ++count;
            }
        }
    }
    out << "};\nconst std::size_t factory_count = " << count << ";\n\n} // namespace cimple\n";
}

void emit_signatures(std::ostream& out, const std::vector<Provider>& providers) {
    for (const Provider& provider : providers) {
        if (!provider.is_own) {
            continue;
        }
        const Class& served = *provider.served;
        out << "class " << provider_class(served) << " {\npublic:\n"
            << "    using C = " << served.name << ";\n\n"
            << "    Load_Status load();\n    Unload_Status unload();\n"
               "    Get_Instance_Status get_instance(const C* model, C*& instance);\n"
               "    Enum_Instances_Status enum_instances(const C* model,\n"
               "                                         const Enum_Instances_Handler& handler);\n"
               "    Create_Instance_Status create_instance(C* instance);\n"
               "    Delete_Instance_Status delete_instance(const C* instance);\n"
               "    Modify_Instance_Status modify_instance(const C* model, const C* instance);\n";
        if (served.is_association()) {
            out << "\n    Enum_Associator_Names_Status enum_associator_names(\n"
                   "        const Instance* instance, const String& result_class, const String& "
                   "role,\n"
                   "        const String& result_role, const Enum_Associator_Names_Handler& "
                   "handler);\n"
                   "    Enum_References_Status enum_references(\n"
                   "        const Instance* instance, const C* model, const String& role,\n"
                   "        const Enum_References_Handler& handler);\n"
                   "    Enum_Associators_Status enum_associators(\n"
                   "        const Instance* instance, const String& result_class, const String& "
                   "role,\n"
                   "        const String& result_role, const Enum_Associators_Handler& handler);\n";
        }
        if (served.is_indication()) {
            out << "\n    Enable_Indications_Status enable_indications(\n"
                   "        std::unique_ptr<Enable_Indications_Handler> handler);\n"
                   "    Disable_Indications_Status disable_indications();\n";
        }
        out << (served.methods().empty() ? "" : "\n");
        for (const Feature* method : served.methods()) {
            emit_method_signature(out, *method);
        }
        out << "};\n\n";
    }
}

} // namespace tvrgen
