// `tvrcim assoc`, `refs` and `graph`.
#include "host/tvrcim/commands.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/graph.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/progress.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <set>

namespace tvrcim {

using tvrhost::Answer;
using tvrhost::Cim_Path;
using tvrmof::Feature_Kind;

namespace {

struct Traversal {
    std::string path;
    tvrhost::Association_Filter filter;
    std::vector<std::string> properties;
    bool names = false;
};

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

std::vector<const tvrmof::Class*> classes_of(const Session& session,
                                             const std::vector<std::string>& names) {
    std::vector<const tvrmof::Class*> classes;
    classes.reserve(names.size());
    for (const std::string& name : names) {
        classes.push_back(&session.find_class(name));
    }
    return classes;
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

// What `assoc` and `refs` take alike.
void add_common_options(CLI::App& command, Traversal& read) {
    command.add_option("PATH", read.path, "CLASS.KEY=VALUE,..., or fewer keys")->required();
    command.add_option("--class", read.filter.association_class, "only associations of this class")
        ->type_name("CLASS");
    command.add_option("--role", read.filter.role, "only where the instance has this role")
        ->type_name("ROLE");
    command.add_option("-p,--property", read.properties, "only this property and the keys")
        ->delimiter(',')
        ->type_name("PROP")
        ->allow_extra_args(false);
    command.add_flag("--names", read.names, "paths alone");
}

} // namespace

void add_association_commands(CLI::App& app, Command& chosen) {
    {
        auto* const command =
            app.add_subcommand("assoc", "The instances that are associated with one");
        const auto read = std::make_shared<Traversal>();
        add_common_options(*command, *read);
        command
            ->add_option("--result-class", read->filter.result_class,
                         "only instances of this class or below it")
            ->type_name("CLASS");
        command
            ->add_option("--result-role", read->filter.result_role,
                         "only instances that have this role")
            ->type_name("ROLE");
        command->callback([&chosen, read] {
            chosen = [read](Session& session) { show_associators(session, *read); };
        });
    }
    {
        auto* const command = app.add_subcommand("refs", "The associations of an instance");
        const auto read = std::make_shared<Traversal>();
        add_common_options(*command, *read);
        command->callback([&chosen, read] {
            chosen = [read](Session& session) { show_references(session, *read); };
        });
    }
    {
        struct Words {
            std::string path;
            unsigned depth = 1;
            unsigned fold = 5;
            std::vector<std::string> leaves;
            std::vector<std::string> hidden;
        };
        auto* const command =
            app.add_subcommand("graph", "The associations around an instance, for Graphviz");
        const auto read = std::make_shared<Words>();
        command->add_option("PATH", read->path, "CLASS.KEY=VALUE,..., or fewer keys")->required();
        command->add_option("--depth", read->depth, "associations to follow, 1 unless given")
            ->check(CLI::Range(1u, 100u))
            ->type_name("N");
        command
            ->add_option("--fold", read->fold,
                         "draw more than N alike as one box, 5 unless given; 0: never")
            ->type_name("N");
        command->add_option("--leaf", read->leaves, "don't go on from instances of this class")
            ->delimiter(',')
            ->type_name("CLASS")
            ->allow_extra_args(false);
        command->add_option("--hide", read->hidden, "leave out instances of this class")
            ->delimiter(',')
            ->type_name("CLASS")
            ->allow_extra_args(false);
        command->callback([&chosen, read] {
            chosen = [read](Session& session) {
                draw_graph(session, {session.find_path(read->path), read->depth,
                                     classes_of(session, read->leaves),
                                     classes_of(session, read->hidden), read->fold});
            };
        });
    }
}

} // namespace tvrcim
