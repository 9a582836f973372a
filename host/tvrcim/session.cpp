#include "host/tvrcim/session.h"

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

template <class Fits>
std::vector<Cim_Path> fitting(const std::vector<Cim_Path>& paths, const Cim_Path& wanted,
                              Fits fits) {
    std::vector<Cim_Path> result;
    for (const Cim_Path& path : paths) {
        if (std::all_of(wanted.keys.begin(), wanted.keys.end(), [&](const Named_Value& key) {
                const Cim_Value* const value = path.keys.find(key.name);
                return value != nullptr && fits(*value, key.value);
            })) {
            result.push_back(path);
        }
    }
    return result;
}

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

    tvrhost::Answer answer;
    {
        const Progress progress("looking for " + text);
        answer = manager.enumerate_instance_names(wanted.name_space, wanted.class_name);
        if (!answer.ok() && !is_served(model)) {
            answer.paths = ends_of(model);
            answer.rc = answer.paths.empty() ? answer.rc : 0;
        }
    }
    if (stands && !answer.ok()) {
        return wanted;
    }
    check(answer, text);
    const auto is_equal = [](const Cim_Value& value, const Cim_Value& key) { return value == key; };
    std::vector<Cim_Path> found = fitting(answer.paths, wanted, is_equal);
    if (found.empty()) {
        found = fitting(answer.paths, wanted, as_wwn(is_equal));
    }
    if (found.empty()) {
        found = fitting(answer.paths, wanted, begins_with);
    }
    if (found.empty()) {
        found = fitting(answer.paths, wanted, as_wwn(begins_with));
    }
    if (found.size() == 1) {
        return found.front();
    }
    if (found.empty() && stands) {
        return wanted;
    }
    if (found.empty() && answer.paths.empty()) {
        explain_nothing();
        throw Cim_Error(text + ": " + wanted.class_name + " has no instances");
    }
    if (found.empty()) {
        throw Cim_Error(text + ": no such instance; " + telling_key(answer.paths));
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

Cim_Value Session::read_value(const std::string& text, const tvrmof::Typed& declared,
                              const std::string& name_space) {
    if (declared.is_reference && !declared.is_array && text != "NULL") {
        bool is_whole = false;
        Cim_Path path = read_path(text, is_whole);
        return is_whole ? std::move(path) : find_path(text);
    }
    try {
        return tvrhost::parse_value(text, declared, manager.schema(), name_space);
    } catch (const tvrhost::Value_Error& error) {
        throw Usage_Error(declared.name + ": " + error.what());
    }
}

std::string identity(Cim_Path path) {
    path.name_space.clear();
    return path.text();
}

std::pair<std::string, std::string> split_assignment(const std::string& text) {
    const std::size_t at = text.find('=');
    if (at == std::string::npos || at == 0) {
        throw Usage_Error("'" + text + "' is not NAME=VALUE");
    }
    return {text.substr(0, at), text.substr(at + 1)};
}

} // namespace tvrcim
