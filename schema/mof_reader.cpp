#include "schema/mof_reader.h"

#include "schema/mof_parser.h"

#include <algorithm>
#include <utility>

namespace tvrmof {

namespace {

constexpr const char* type_names[type_count] = {
    "boolean", "uint8",  "sint8",  "uint16", "sint16", "uint32", "sint32",
    "uint64",  "sint64", "real32", "real64", "char16", "string", "datetime",
};

char lower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

} // namespace

bool same_name(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

const char* type_name(Type type) noexcept {
    return type_names[static_cast<std::size_t>(type)];
}

std::optional<Type> find_type(std::string_view name) noexcept {
    for (std::uint8_t i = 0; i < type_count; ++i) {
        if (same_name(type_names[i], name)) {
            return static_cast<Type>(i);
        }
    }
    return std::nullopt;
}

const Qualifier* Qualifiers::find(std::string_view name) const noexcept {
    for (const Qualifier& qualifier : list) {
        if (same_name(qualifier.name, name)) {
            return &qualifier;
        }
    }
    return nullptr;
}

bool Qualifiers::has(std::string_view name) const noexcept {
    const Qualifier* found = find(name);
    if (found == nullptr) {
        return false;
    }
    const bool* value = found->value ? std::get_if<bool>(&*found->value) : nullptr;
    return value == nullptr || *value;
}

std::string_view Qualifiers::text(std::string_view name) const noexcept {
    const Qualifier* found = find(name);
    const std::string* text =
        found != nullptr && found->value ? std::get_if<std::string>(&*found->value) : nullptr;
    return text != nullptr ? std::string_view(*text) : std::string_view();
}

bool Parameter::in() const noexcept {
    return qualifiers.find("In") == nullptr || qualifiers.has("In");
}

bool Feature::is_key() const noexcept {
    return qualifiers.has("Key") || (overridden != nullptr && overridden->is_key());
}

const Parameter* Feature::parameter(std::string_view wanted) const noexcept {
    for (const Parameter& candidate : parameters) {
        if (same_name(candidate.name, wanted)) {
            return &candidate;
        }
    }
    return nullptr;
}

bool Class::is_local(const Feature& feature) const noexcept {
    return std::any_of(own.begin(), own.end(),
                       [&](const auto& candidate) { return candidate.get() == &feature; });
}

const Feature* Class::find(std::string_view feature) const noexcept {
    for (const Feature* candidate : features) {
        if (same_name(candidate->name, feature)) {
            return candidate;
        }
    }
    return nullptr;
}

const Feature* Class::find(std::string_view feature, Feature_Kind kind) const noexcept {
    const Feature* found = find(feature);
    return found != nullptr && found->kind == kind ? found : nullptr;
}

std::vector<const Feature*> Class::keys() const {
    std::vector<const Feature*> result;
    std::copy_if(features.begin(), features.end(), std::back_inserter(result),
                 [](const Feature* feature) { return feature->is_key(); });
    return result;
}

std::vector<const Feature*> Class::methods() const {
    std::vector<const Feature*> result;
    std::copy_if(features.begin(), features.end(), std::back_inserter(result),
                 [](const Feature* feature) { return feature->kind == Feature_Kind::method; });
    return result;
}

bool Class::is_a(const Class& ancestor) const noexcept {
    for (const Class* at = this; at != nullptr; at = at->super) {
        if (at == &ancestor) {
            return true;
        }
    }
    return false;
}

bool Schema::Less::operator()(std::string_view a, std::string_view b) const noexcept {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char x, char y) { return lower(x) < lower(y); });
}

const Class* Schema::find(std::string_view name) const noexcept {
    const auto found = _by_name.find(name);
    return found != _by_name.end() ? found->second : nullptr;
}

bool Schema::is_a(std::string_view descendant, std::string_view ancestor) const noexcept {
    const Class* below = find(descendant);
    const Class* above = find(ancestor);
    return below != nullptr && above != nullptr && below->is_a(*above);
}

Schema read_file(const std::string& path) {
    return read_files({path});
}

Schema read_files(const std::vector<std::string>& paths) {
    Declarations declarations;
    for (const std::string& path : paths) {
        parse_file(path, declarations);
    }
    return link(std::move(declarations));
}

Schema read_text(std::string_view text, const std::string& name) {
    Declarations declarations;
    parse_text(text, name, declarations);
    return link(std::move(declarations));
}

} // namespace tvrmof
