// `tvrcim assoc`, `refs` and `graph`.
#include "host/tvrcim/commands.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/graph.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/progress.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace tvrcim {

using tvrhost::Answer;
using tvrhost::Cim_Path;

namespace {

struct Traversal {
    std::string path;
    tvrhost::Association_Filter filter;
    std::vector<std::string> properties;
    bool names = false;
};

// The class's own spelling. Throws Usage_Error for a name that no class has.
std::string checked_class(Session& session, const std::string& name) {
    return name.empty() ? name : session.find_class(name).name;
}

std::string checked_association(Session& session, const std::string& name) {
    if (name.empty()) {
        return name;
    }
    const tvrmof::Class& model = session.find_class(name);
    if (!model.is_association()) {
        throw Usage_Error(model.name + " is no association");
    }
    return model.name;
}

std::vector<const tvrmof::Class*> classes_of(Session& session,
                                             const std::vector<std::string>& names) {
    std::vector<const tvrmof::Class*> classes;
    classes.reserve(names.size());
    for (const std::string& name : names) {
        classes.push_back(&session.find_class(name));
    }
    return classes;
}

tvrhost::Properties wanted(const Traversal& traversal) {
    if (traversal.properties.empty()) {
        return std::nullopt;
    }
    return traversal.properties;
}

void show_associators(Session& session, Traversal traversal) {
    tvrhost::Association_Filter& filter = traversal.filter;
    filter.association_class = checked_association(session, filter.association_class);
    filter.result_class = checked_class(session, filter.result_class);
    const Cim_Path path = session.find_path(traversal.path);
    Answer answer;
    {
        const Progress progress("following associations");
        answer = traversal.names ? session.manager.associator_names(path, filter)
                                 : session.manager.associators(path, filter, wanted(traversal));
    }
    Session::check(answer, path.text());
    print_answer(session, answer);
}

void show_references(Session& session, Traversal traversal) {
    const std::string model = checked_association(session, traversal.filter.association_class);
    const std::string& role = traversal.filter.role;
    const Cim_Path path = session.find_path(traversal.path);
    Answer answer;
    {
        const Progress progress("following associations");
        answer = traversal.names ? session.manager.reference_names(path, model, role)
                                 : session.manager.references(path, model, role, wanted(traversal));
    }
    Session::check(answer, path.text());
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
            std::vector<std::string> leaves;
            std::vector<std::string> hidden;
        };
        auto* const command = app.add_subcommand(
            "graph", "The associations around an instance, as a drawing for Graphviz");
        const auto read = std::make_shared<Words>();
        command->add_option("PATH", read->path, "CLASS.KEY=VALUE,..., or fewer keys")->required();
        command->add_option("--depth", read->depth, "associations to follow, 1 unless given")
            ->check(CLI::Range(1u, 100u))
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
                draw_graph(session,
                           {session.find_path(read->path), read->depth,
                            classes_of(session, read->leaves), classes_of(session, read->hidden)});
            };
        });
    }
}

} // namespace tvrcim
