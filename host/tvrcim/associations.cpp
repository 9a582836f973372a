// `tvrcim assoc`, `refs` and `graph`.
#include "host/tvrcim/commands.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/graph.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/progress.h"

#include <iostream>
#include <set>

namespace tvrcim {

using tvrhost::Answer;
using tvrhost::Cim_Path;
using tvrmof::Feature_Kind;

namespace {

// The class's own spelling. Throws Usage_Error for a name that no class has.
std::string checked_class(const Session& session, const std::string& name) {
    return name.empty() ? name : session.find_class(name).name;
}

std::string checked_association(const Session& session, const std::string& name) {
    if (name.empty()) {
        return name;
    }
    const tvrmof::Class& model = session.find_class(name);
    if (!model.is_association()) {
        throw Usage_Error(model.name + " is no association");
    }
    return model.name;
}

// Throws Usage_Error for a role that no association has, or none below `association`.
void check_role(const Session& session, const std::string& role, const std::string& association) {
    if (role.empty()) {
        return;
    }
    const tvrmof::Schema& schema = *session.manager.schema();
    std::set<std::string> roles;
    for (const auto& each : schema.classes()) {
        if (!each->is_association() ||
            !(association.empty() || schema.is_a(each->name, association))) {
            continue;
        }
        for (const tvrmof::Feature* feature : each->features) {
            if (feature->kind == Feature_Kind::reference) {
                roles.insert(feature->name);
            }
        }
        if (each->find(role, Feature_Kind::reference) != nullptr) {
            return;
        }
    }
    std::string near = suggestion(role, {roles.begin(), roles.end()});
    if (near.empty() && !association.empty()) {
        for (const std::string& each : roles) {
            near += (near.empty() ? "; it has " : ", ") + each;
        }
    }
    throw Usage_Error((association.empty() ? "no association" : association) + " has " +
                      (association.empty() ? "a" : "no") + " role " + role + near);
}

// The properties asked for. Throws Usage_Error for one that no class of the answer has: no class
// below `top`, or no class at all where that is empty.
tvrhost::Properties wanted(const Session& session, const std::vector<std::string>& properties,
                           const std::string& top) {
    if (properties.empty()) {
        return std::nullopt;
    }
    const tvrmof::Schema& schema = *session.manager.schema();
    for (const std::string& property : properties) {
        std::set<std::string> known;
        bool found = false;
        for (const auto& each : schema.classes()) {
            if (!(top.empty() || schema.is_a(each->name, top))) {
                continue;
            }
            for (const tvrmof::Feature* feature : each->features) {
                if (feature->kind != Feature_Kind::method) {
                    known.insert(feature->name);
                }
            }
            const tvrmof::Feature* const feature = each->find(property);
            found = found || (feature != nullptr && feature->kind != Feature_Kind::method);
        }
        if (!found) {
            throw Usage_Error((top.empty() ? "no class" : top) + " has " +
                              (top.empty() ? "a" : "no") + " property " + property +
                              suggestion(property, {known.begin(), known.end()}));
        }
    }
    return properties;
}

// An instance that several associations lead to stands in an answer as often; here it stays once.
void keep_first_of_each(Answer& answer) {
    std::set<std::string> seen;
    std::erase_if(answer.paths,
                  [&](const Cim_Path& path) { return !seen.insert(path.text()).second; });
    seen.clear();
    std::erase_if(answer.instances, [&](const tvrhost::Cim_Instance& instance) {
        return !seen.insert(instance.path.text()).second;
    });
}

// An associated instance that its provider doesn't give ends the answer of its association without
// an error. The reader is told which are missing.
void tell_missing(Session& session, const Cim_Path& from, const tvrhost::Association_Filter& filter,
                  const Answer& instances) {
    std::set<std::string> delivered;
    for (const tvrhost::Cim_Instance& instance : instances.instances) {
        delivered.insert(identity(instance.path));
    }
    Answer names = session.manager.associator_names(from, filter);
    keep_first_of_each(names);
    std::erase_if(names.paths,
                  [&](const Cim_Path& path) { return delivered.contains(identity(path)); });
    if (!names.paths.empty()) {
        const std::size_t others = names.paths.size() - 1;
        std::cerr << "tvrcim: not delivered by its provider: " << names.paths.front().text()
                  << (others == 0 ? "" : " and " + std::to_string(others) + " more")
                  << "; --names shows all" << std::endl;
    }
}

} // namespace

void show_associators(Session& session, Traversal traversal) {
    tvrhost::Association_Filter& filter = traversal.filter;
    filter.association_class = checked_association(session, filter.association_class);
    filter.result_class = checked_class(session, filter.result_class);
    check_role(session, filter.role, filter.association_class);
    check_role(session, filter.result_role, filter.association_class);
    const tvrhost::Properties properties =
        wanted(session, traversal.properties, filter.result_class);
    const Cim_Path path = session.find_path(traversal.path);
    Answer answer;
    {
        const Progress progress("following associations");
        answer = traversal.names ? session.manager.associator_names(path, filter)
                                 : session.manager.associators(path, filter, properties);
    }
    Session::check(answer, path.text());
    if (answer.paths.empty() && answer.instances.empty()) {
        session.check_exists(path);
    }
    keep_first_of_each(answer);
    print_answer(session, answer);
    if (!traversal.names) {
        tell_missing(session, path, filter, answer);
    }
}

void show_references(Session& session, const Traversal& traversal) {
    const std::string model = checked_association(session, traversal.filter.association_class);
    const std::string& role = traversal.filter.role;
    check_role(session, role, model);
    const tvrhost::Properties properties = wanted(session, traversal.properties, model);
    const Cim_Path path = session.find_path(traversal.path);
    Answer answer;
    {
        const Progress progress("following associations");
        answer = traversal.names ? session.manager.reference_names(path, model, role)
                                 : session.manager.references(path, model, role, properties);
    }
    Session::check(answer, path.text());
    if (answer.paths.empty() && answer.instances.empty()) {
        session.check_exists(path);
    }
    print_answer(session, answer);
}

void show_graph(Session& session, const Graph_Words& words) {
    const auto classes_of = [&session](const std::vector<std::string>& names) {
        std::vector<const tvrmof::Class*> classes;
        classes.reserve(names.size());
        for (const std::string& name : names) {
            classes.push_back(&session.find_class(name));
        }
        return classes;
    };
    draw_graph(session, {session.find_path(words.path), words.depth, classes_of(words.leaves),
                         classes_of(words.hidden), words.fold});
}

} // namespace tvrcim
