#include "host/tvrcim/session.h"

#include "host/declared_type.h"
#include "host/tvrcim/byte_file.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/progress.h"
#include "host/tvrcim/wwn.h"

#include <algorithm>
#include <set>

namespace tvrcim {

using tvrhost::Cim_Path;
using tvrhost::Cim_Type;
using tvrhost::Cim_Value;
using tvrhost::Named_Value;

namespace {

constexpr int not_found = 6; // as an answer's status
constexpr char default_name_space[] = "root/tavrin";
constexpr char interop_name_space[] = "root/pg_interop";

// Classes whose instances stand in the interop namespace, with those below them.
constexpr const char* interop_classes[] = {"CIM_RegisteredProfile", "CIM_ReferencedProfile"};

std::string kind_text(tvrmof::Feature_Kind kind) {
    return kind == tvrmof::Feature_Kind::method ? "method" : "property";
}

bool begins_with(const Cim_Value& value, const Cim_Value& beginning) {
    return value.type() == Cim_Type::string && !value.is_null() &&
           beginning.type() == Cim_Type::string && !beginning.is_null() &&
           value.as_string().starts_with(beginning.as_string());
}

// As `fits`, but for a WWN that may be spelled in another way than the key.
template <class Fits> auto as_wwn(Fits fits) {
    return [fits](const Cim_Value& value, const Cim_Value& key) {
        const bool are_texts = value.type() == Cim_Type::string && !value.is_null() &&
                               key.type() == Cim_Type::string && !key.is_null();
        const std::optional<std::string> digits =
            are_texts ? wwn_digits(key.as_string()) : std::nullopt;
        return digits ? fits(Cim_Value(without_separators(value.as_string())), Cim_Value(*digits))
                      : fits(value, key);
    };
}

// The paths that are chosen by equal keys, else by a WWN, else by the beginning of a key.
template <class Chooses>
std::vector<Cim_Path> fitting(const std::vector<Cim_Path>& paths, Chooses chooses) {
    const auto is_equal = [](const Cim_Value& value, const Cim_Value& key) { return value == key; };
    const auto all = [&](auto fits) {
        std::vector<Cim_Path> result;
        std::copy_if(paths.begin(), paths.end(), std::back_inserter(result),
                     [&](const Cim_Path& path) { return chooses(path, fits); });
        return result;
    };
    std::vector<Cim_Path> found = all(is_equal);
    if (found.empty()) {
        found = all(as_wwn(is_equal));
    }
    if (found.empty()) {
        found = all(begins_with);
    }
    return found.empty() ? all(as_wwn(begins_with)) : found;
}

// What the module takes where its methods are declared for elements of any class.
constexpr std::pair<const char*, const char*> meant_classes[] = {
    {"Target", "TVRHBA_FCPort"}, {"ManagedElement", "TVRHBA_PortController"}};

// "KEY=value, value, ..." for the key whose values differ most among the paths.
std::string telling_key(const std::vector<Cim_Path>& paths) {
    constexpr std::size_t shown = 4;
    std::string best;
    std::vector<std::string> best_values;
    for (const Named_Value& key : paths.front().keys) {
        std::vector<std::string> values;
        for (const Cim_Path& path : paths) {
            std::string value = path.keys[key.name].literal();
            if (std::find(values.begin(), values.end(), value) == values.end()) {
                values.push_back(std::move(value));
            }
        }
        if (values.size() > best_values.size()) {
            best = key.name;
            best_values = std::move(values);
        }
    }
    std::string text = best + " is ";
    for (std::size_t i = 0; i < std::min(shown, best_values.size()); ++i) {
        text += (i == 0 ? "" : ", ") + best_values[i];
    }
    return best_values.size() > shown ? text + " and so on" : text;
}

} // namespace

Session::Session(tvrhost::Object_Manager& object_manager, Format output_format,
                 std::string name_space, std::ostream& stream)
    : manager(object_manager), format(output_format), out(stream),
      _name_space(std::move(name_space)) {}

const tvrmof::Class& Session::find_class(const std::string& name) const {
    if (const tvrmof::Class* const model = manager.schema()->find(name)) {
        return *model;
    }
    // Names of the module's own classes come first.
    std::vector<std::string> served;
    std::vector<std::string> others;
    for (const auto& each : manager.schema()->classes()) {
        (is_served(*each) ? served : others).push_back(each->name);
    }
    std::string near = suggestion(name, served);
    if (near.empty()) {
        near = suggestion(name, others);
    }
    throw Usage_Error("there is no class " + name +
                      (near.empty() ? "; 'tvrcim classes' lists them" : near));
}

const tvrmof::Feature& Session::find_feature(const tvrmof::Class& model, const std::string& name,
                                             tvrmof::Feature_Kind kind) const {
    const bool method = kind == tvrmof::Feature_Kind::method;
    const tvrmof::Feature* const found = model.find(name);
    if (found != nullptr && (found->kind == tvrmof::Feature_Kind::method) == method) {
        return *found;
    }
    std::vector<std::string> names;
    for (const tvrmof::Feature* each : model.features) {
        if ((each->kind == tvrmof::Feature_Kind::method) == method) {
            names.push_back(each->name);
        }
    }
    const std::string near = suggestion(name, names);
    throw Usage_Error(
        model.name + " has no " + kind_text(kind) + " " + name +
        (near.empty() ? "; 'tvrcim classes " + model.name + "' lists what it has" : near));
}

std::string Session::name_space_of(const tvrmof::Class& model) const {
    if (!_name_space.empty()) {
        return _name_space;
    }
    for (const char* interop : interop_classes) {
        if (manager.schema()->is_a(model.name, interop)) {
            return interop_name_space;
        }
    }
    return default_name_space;
}

bool Session::is_served(const tvrmof::Class& model) const {
    return manager.serves(model.name, tvrhost::Kind::instance) ||
           manager.serves(model.name, tvrhost::Kind::indication);
}

void Session::check(const tvrhost::Answer& answer, const std::string& what) {
    if (answer.ok()) {
        return;
    }
    throw Cim_Error(what + ": " + tvrhost::rc_name(answer.rc) +
                    (answer.message.empty() ? "" : ", " + answer.message));
}

std::vector<Cim_Path> Session::ends_of(const tvrmof::Class& model) const {
    const tvrmof::Schema& schema = *manager.schema();
    std::vector<Cim_Path> ends;
    std::set<std::string> seen;
    for (const auto& association : schema.classes()) {
        const bool leads_there =
            std::any_of(association->features.begin(), association->features.end(),
                        [&](const tvrmof::Feature* feature) {
                            return feature->kind == tvrmof::Feature_Kind::reference &&
                                   (schema.is_a(feature->target, model.name) ||
                                    schema.is_a(model.name, feature->target));
                        });
        if (!leads_there || !manager.serves(association->name, tvrhost::Kind::instance)) {
            continue;
        }
        for (const Cim_Path& path :
             manager.enumerate_instance_names(name_space_of(*association), association->name, {})
                 .paths) {
            for (const Named_Value& key : path.keys) {
                if (key.value.type() == Cim_Type::reference && !key.value.is_null() &&
                    schema.is_a(key.value.as_path().class_name, model.name) &&
                    seen.insert(identity(key.value.as_path())).second) {
                    ends.push_back(key.value.as_path());
                }
            }
        }
    }
    return ends;
}

Cim_Path Session::read_path(const std::string& text, bool& is_whole) const {
    Cim_Path path;
    try {
        path = tvrhost::parse_path(text, manager.schema(), "");
    } catch (const tvrhost::Value_Error& error) {
        throw Usage_Error(error.what());
    }
    const tvrmof::Class& model = find_class(path.class_name);
    if (path.name_space.empty()) {
        path.name_space = name_space_of(model);
    }
    is_whole = !model.keys().empty() && path.keys.size() == model.keys().size();
    return path;
}

Cim_Path Session::find_path(const std::string& text) {
    bool is_whole = false;
    Cim_Path wanted = read_path(text, is_whole);
    const tvrmof::Class& model = find_class(wanted.class_name);
    // Of a whole path that leads to nothing the module's own answer says most.
    const bool stands = is_whole && manager.serves(wanted.class_name, tvrhost::Kind::instance);
    if (stands && manager.get_instance(wanted, std::vector<std::string>{}).rc != not_found) {
        return wanted;
    }

    const tvrhost::Answer answer = names_of(model, wanted.name_space, text);
    if (stands && !answer.ok()) {
        return wanted;
    }
    check(answer, text);
    const std::vector<Cim_Path> found =
        fitting(answer.paths, [&](const Cim_Path& path, const auto& fits) {
            return std::all_of(wanted.keys.begin(), wanted.keys.end(), [&](const Named_Value& key) {
                const Cim_Value* const value = path.keys.find(key.name);
                return value != nullptr && fits(*value, key.value);
            });
        });
    if (found.empty() && stands) {
        return wanted;
    }
    return the_only(found, answer.paths, model, text);
}

Cim_Path Session::find_named(const std::string& name, const tvrmof::Class& model) {
    const tvrhost::Answer answer = names_of(model, name_space_of(model), name);
    check(answer, name);
    const Cim_Value wanted(name);
    const std::vector<Cim_Path> found =
        fitting(answer.paths, [&](const Cim_Path& path, const auto& fits) {
            return std::any_of(path.keys.begin(), path.keys.end(), [&](const Named_Value& key) {
                return !names_system_or_class(key.name) && fits(key.value, wanted);
            });
        });
    return the_only(found, answer.paths, model, name);
}

tvrhost::Answer Session::names_of(const tvrmof::Class& model, const std::string& name_space,
                                  const std::string& text) {
    const Progress progress("looking for " + text);
    tvrhost::Answer answer = manager.enumerate_instance_names(name_space, model.name);
    if (!answer.ok() && !is_served(model)) {
        answer.paths = ends_of(model);
        answer.rc = answer.paths.empty() ? answer.rc : 0;
    }
    return answer;
}

Cim_Path Session::the_only(const std::vector<Cim_Path>& found, const std::vector<Cim_Path>& among,
                           const tvrmof::Class& model, const std::string& text) {
    if (found.size() == 1) {
        return found.front();
    }
    if (among.empty()) {
        explain_nothing();
        throw Cim_Error(text + ": " + model.name + " has no instances");
    }
    if (found.empty()) {
        throw Cim_Error(text + ": no such instance; " + telling_key(among));
    }
    throw Usage_Error(text + " fits " + std::to_string(found.size()) + " instances; " +
                      telling_key(found));
}

void Session::check_exists(const Cim_Path& path) {
    if (manager.serves(path.class_name, tvrhost::Kind::instance)) {
        const tvrhost::Answer answer = manager.get_instance(path, std::vector<std::string>{});
        if (answer.rc == not_found) {
            check(answer, path.text());
        }
    }
}

const tvrmof::Class* Session::class_meant(const tvrmof::Typed& reference) const {
    const tvrmof::Schema& schema = *manager.schema();
    for (const auto& [name, class_name] : meant_classes) {
        if (tvrhost::same_name(reference.name, name) && schema.is_a(class_name, reference.target)) {
            return schema.find(class_name);
        }
    }
    return schema.find(reference.target);
}

Cim_Value Session::read_value(const std::string& text, const tvrmof::Typed& declared,
                              const std::string& name_space) {
    if (declared.is_reference && !declared.is_array && text != "NULL") {
        const std::size_t colon = text.rfind(':'); // behind a namespace
        const bool is_path = text.find('=') != std::string::npos ||
                             manager.schema()->find(text.substr(colon + 1)) != nullptr;
        const tvrmof::Class* const model = class_meant(declared);
        if (!is_path && !text.empty() && model != nullptr) {
            return find_named(text, *model);
        }
        bool is_whole = false;
        Cim_Path path = read_path(text, is_whole);
        return is_whole ? std::move(path) : find_path(text);
    }
    try {
        if (declared.is_array && tvrhost::declared_type(declared) == Cim_Type::uint8 &&
            text.starts_with('@')) {
            return read_bytes(text.substr(1));
        }
        return tvrhost::parse_value(text, declared, manager.schema(), name_space);
    } catch (const tvrhost::Value_Error& error) {
        throw Usage_Error(declared.name + ": " + error.what());
    }
}

std::string identity(Cim_Path path) {
    path.name_space.clear();
    return path.text();
}

bool names_system_or_class(const std::string& key) {
    return tvrhost::same_name(key, "CreationClassName") ||
           tvrhost::same_name(key.substr(0, 6), "System");
}

std::pair<std::string, std::string> split_assignment(const std::string& text) {
    const std::size_t at = text.find('=');
    if (at == std::string::npos || at == 0) {
        throw Usage_Error("'" + text + "' is not NAME=VALUE");
    }
    return {text.substr(0, at), text.substr(at + 1)};
}

} // namespace tvrcim
