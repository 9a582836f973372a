#include "host/tvrcim/commands.h"

#include "host/declared_type.h"
#include "host/tvrcim/ending.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/not_served.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/progress.h"
#include "host/tvrcim/result_codes.h"
#include "host/tvrcim/value_names.h"

#include <algorithm>

namespace tvrcim {

using tvrhost::Answer;
using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;
using tvrhost::Json;
using tvrhost::Kind;
using tvrhost::Named_Value;
using tvrmof::Feature_Kind;

namespace {

// ---- classes

std::string signature(const tvrmof::Feature& method) {
    std::string text = method.name + "(";
    for (const tvrmof::Parameter& parameter : method.parameters) {
        if (&parameter != method.parameters.data()) {
            text += ", ";
        }
        text += parameter.out() ? (parameter.in() ? "in out " : "out ") : "";
        text += (parameter.is_reference
                     ? parameter.target + " ref"
                     : std::string(tvrhost::type_name(tvrhost::declared_type(parameter)))) +
                " " + parameter.name + (parameter.is_array ? "[]" : "");
    }
    return text + ")";
}

// A served class that never has instances; the module must be there to say so.
bool is_empty(Session& session, const tvrmof::Class& model) {
    return session.is_served(model) && is_always_empty(model);
}

// What a class offers, in one word each.
std::vector<std::string> offers(Session& session, const tvrmof::Class& model) {
    std::vector<std::string> words;
    const std::pair<Kind, const char*> kinds[] = {{Kind::instance, "instances"},
                                                  {Kind::association, "association"},
                                                  {Kind::indication, "indications"}};
    for (const auto& [kind, word] : kinds) {
        if (session.manager.serves(model.name, kind)) {
            words.emplace_back(word);
        }
    }
    if (session.manager.serves(model.name, Kind::method) && !model.methods().empty()) {
        const auto methods = model.methods();
        const auto count =
            std::count_if(methods.begin(), methods.end(), [&](const tvrmof::Feature* method) {
                return !is_unsupported(model, *method);
            });
        if (count != 0) {
            words.push_back(std::to_string(count) + (count == 1 ? " method" : " methods"));
        }
    }
    return words;
}

Json class_json(Session& session, const tvrmof::Class& model) {
    Json json = {{"class", model.name}};
    json["super"] = model.super == nullptr ? Json(nullptr) : Json(model.super->name);
    json["namespace"] = session.name_space_of(model);
    json["offers"] = Json::array();
    for (const std::string& word : offers(session, model)) {
        json["offers"].push_back(word);
    }
    json["empty"] = is_empty(session, model);
    json["properties"] = Json::array();
    json["methods"] = Json::array();
    json["unsupported"] = Json::array();
    for (const tvrmof::Feature* feature : model.features) {
        if (feature->kind == Feature_Kind::method) {
            json["methods"].push_back(signature(*feature));
            if (session.is_served(model) && is_unsupported(model, *feature)) {
                json["unsupported"].push_back(feature->name);
            }
            continue;
        }
        json["properties"].push_back(
            {{"name", feature->name},
             {"type", feature->is_reference
                          ? feature->target + " ref"
                          : std::string(tvrhost::type_name(tvrhost::declared_type(*feature)))},
             {"array", feature->is_array},
             {"key", feature->is_key()}});
    }
    return json;
}

void describe_class(Session& session, const tvrmof::Class& model) {
    session.out << model.name << (model.super == nullptr ? "" : " : " + model.super->name)
                << (is_empty(session, model) ? "  (always empty)" : "") << '\n';
    for (const tvrmof::Feature* feature : model.features) {
        if (feature->kind == Feature_Kind::method) {
            const bool is_told = session.is_served(model) && is_unsupported(model, *feature);
            print_wrapped(session, "  ", "      ",
                          signature(*feature) + (is_told ? " (not supported)" : ""));
            continue;
        }
        session.out << "  "
                    << (feature->is_reference
                            ? feature->target + " ref"
                            : std::string(tvrhost::type_name(tvrhost::declared_type(*feature))))
                    << ' ' << feature->name << (feature->is_array ? "[]" : "")
                    << (feature->is_key() ? " (key)" : "") << '\n';
    }
}

} // namespace

void show_classes(Session& session, const std::string& pattern, bool all) {
    const bool wild = pattern.find_first_of("*?") != std::string::npos;
    if (!pattern.empty() && !wild) {
        const tvrmof::Class& model = session.find_class(pattern);
        if (session.format == Format::json) {
            print_json(session, class_json(session, model));
        } else {
            describe_class(session, model);
        }
        return;
    }
    Json json = Json::array();
    std::vector<std::vector<std::string>> rows = {{"CLASS", "OFFERS"}};
    for (const auto& model : session.manager.schema()->classes()) {
        if (!(pattern.empty() || matches(pattern, model->name)) ||
            !(all || session.is_served(*model))) {
            continue;
        }
        if (session.format == Format::json) {
            json.push_back(class_json(session, *model));
            continue;
        }
        std::string words;
        for (const std::string& word : offers(session, *model)) {
            words += (words.empty() ? "" : ", ") + word;
        }
        rows.push_back({model->name, is_empty(session, *model) ? "no instances" : words});
    }
    if (rows.size() == 1 && json.empty()) {
        throw Usage_Error("no class matches '" + pattern + "'" +
                          (all ? "" : "; --all adds those that the module doesn't serve"));
    }
    if (session.format == Format::json) {
        print_json(session, json);
    } else {
        print_table(session, rows);
    }
}

// ---- instances

namespace {

tvrhost::Properties properties_of(Session& session, const tvrmof::Class& model,
                                  const std::vector<std::string>& names) {
    if (names.empty()) {
        return std::nullopt;
    }
    std::vector<std::string> properties;
    properties.reserve(names.size());
    for (const std::string& name : names) {
        properties.push_back(session.find_feature(model, name, Feature_Kind::property).name);
    }
    return properties;
}

} // namespace

void show_instances(Session& session, const std::string& class_name,
                    const std::vector<std::string>& properties, bool names) {
    if (names && !properties.empty()) {
        throw Usage_Error("--names shows no properties: it can't stand together with --property");
    }
    const tvrmof::Class& model = session.find_class(class_name);
    const std::string space = session.name_space_of(model);
    const tvrhost::Properties wanted = properties_of(session, model, properties);
    Answer answer;
    {
        const Progress progress("reading " + model.name);
        answer = names ? session.manager.enumerate_instance_names(space, model.name)
                       : session.manager.enumerate_instances(space, model.name, wanted);
    }
    Session::check(answer, model.name);
    if (answer.paths.empty() && answer.instances.empty()) {
        session.explain_nothing();
    }
    print_answer(session, answer);
}

void show_instance(Session& session, const std::string& text,
                   const std::vector<std::string>& properties) {
    const Cim_Path path = session.find_path(text);
    const tvrmof::Class& model = session.find_class(path.class_name);
    const tvrhost::Properties wanted = properties_of(session, model, properties);
    Answer answer;
    {
        const Progress progress("reading " + text);
        answer = session.manager.get_instance(path, wanted);
    }
    Session::check(answer, path.text());
    for (const Cim_Instance& instance : answer.instances) {
        if (session.format == Format::json) {
            print_json(session, to_json(instance));
        } else {
            print_instance(session, instance);
        }
    }
}

void change_instance(Session& session, const std::string& text,
                     const std::vector<std::string>& values) {
    const Cim_Path path = session.find_path(text);
    const tvrmof::Class& model = session.find_class(path.class_name);
    Cim_Instance instance(path, path.keys);
    std::vector<std::string> changed;
    for (const std::string& each : values) {
        const auto [name, value] = split_assignment(each);
        const tvrmof::Feature& property = session.find_feature(model, name, Feature_Kind::property);
        if (property.is_key()) {
            throw Usage_Error(property.name + " is a key of " + model.name +
                              " and cannot be changed");
        }
        if (std::find(changed.begin(), changed.end(), property.name) != changed.end()) {
            throw Usage_Error("property " + property.name + " stands there twice");
        }
        instance.properties.set(property.name,
                                session.read_value(number_of_name(&model, property.name, value),
                                                   property, path.name_space));
        changed.push_back(property.name);
    }
    const Progress progress("changing " + text);
    const Ending::Change change;
    Session::check(session.manager.modify_instance(path, instance, changed), path.text());
}

void call_method(Session& session, const std::string& text, const std::string& method_name,
                 const std::vector<std::string>& values) {
    const Cim_Path path = session.find_path(text);
    const tvrmof::Class& model = session.find_class(path.class_name);
    const tvrmof::Feature& method = session.find_feature(model, method_name, Feature_Kind::method);
    tvrhost::Arguments in;
    for (const std::string& each : values) {
        const auto [name, value] = split_assignment(each);
        const tvrmof::Parameter* const parameter = method.parameter(name);
        if (parameter == nullptr || !parameter->in()) {
            std::vector<std::string> names;
            for (const tvrmof::Parameter& known : method.parameters) {
                if (known.in()) {
                    names.push_back(known.name);
                }
            }
            const std::string near = suggestion(name, names);
            throw Usage_Error(model.name + "." + method.name + " takes no argument " + name +
                              (near.empty() ? "; it is " + signature(method) : near));
        }
        if (in.has(parameter->name)) {
            throw Usage_Error("argument " + parameter->name + " stands there twice");
        }
        in.set(parameter->name, session.read_value(value, *parameter, path.name_space));
    }
    Answer answer;
    {
        const Progress progress("calling " + method.name);
        const Ending::Change change;
        answer = session.manager.invoke_method(path, method.name, in);
    }
    Session::check(answer, path.text() + " " + method.name);
    const tvrhost::Cim_Value& result = answer.return_value();
    const std::string meaning = result_meaning(model, method.name, result);
    session.status = result.literal() == "0" ? success : cim_error;
    if (session.format == Format::json) {
        Json out = Json::object();
        for (const Named_Value& value : answer.out) {
            out[value.name] = to_json(value.value);
        }
        Json json = {{"method", method.name}, {"returnValue", to_json(result)}};
        if (!meaning.empty()) {
            json["meaning"] = meaning;
        }
        json["out"] = std::move(out);
        print_json(session, json);
        return;
    }
    session.out << method.name << " returned " << result.literal()
                << (meaning.empty() ? "" : " (" + meaning + ")") << '\n';
    print_values(session, answer.out, [&](const Named_Value& argument) {
        return output_literal(model, method.name, argument);
    });
}

} // namespace tvrcim
