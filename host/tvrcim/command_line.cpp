#include "host/tvrcim/command_line.h"

#include "host/object_manager.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace tvrcim {

namespace {

std::string first_line(std::string text) {
    text.erase(std::min(text.find('\n'), text.size()));
    return text;
}

int failed(const std::string& text, int status) {
    std::cerr << "tvrcim: " << first_line(text) << std::endl;
    return status;
}

std::vector<std::string> option_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

// Throws Usage_Error for the first word that looks like an option and is none.
void check_options(const CLI::App& app, const CLI::App* command,
                   const std::vector<std::string>& left) {
    const auto unknown = std::find_if(left.begin(), left.end(), [](const std::string& word) {
        return word.size() > 1 && word.starts_with('-');
    });
    if (unknown == left.end()) {
        return;
    }
    std::vector<std::string> names = option_names(app);
    if (command != nullptr) {
        const std::vector<std::string> own = option_names(*command);
        names.insert(names.end(), own.begin(), own.end());
    }
    const std::string name = unknown->substr(0, unknown->find('='));
    throw Usage_Error("there is no option " + name + suggestion(name, names) +
                      "; --help lists them");
}

} // namespace

void prepare(CLI::App& app) {
    app.require_subcommand(1);
    app.fallthrough();
}

std::vector<std::string> command_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

std::optional<int> parse(CLI::App& app, std::vector<std::string> words, std::ostream& out) {
    const std::vector<std::string> commands = command_names(app);
    try {
        app.parse(std::move(words));
        return std::nullopt;
    } catch (const CLI::CallForHelp&) {
        for (const CLI::App* command : app.get_subcommands()) {
            if (command->parsed()) {
                out << command->help(app.get_name());
                if (!app.get_name().empty()) {
                    out << "'tvrcim --help' shows the options that may stand before the "
                           "command.\n";
                }
                return success;
            }
        }
        out << app.help();
        return success;
    } catch (const CLI::CallForVersion& version) {
        out << version.what() << '\n';
        return success;
    } catch (const CLI::ParseError& error) {
        const CLI::App* command = nullptr;
        for (const CLI::App* each : app.get_subcommands()) {
            command = each;
        }
        const std::vector<std::string> left = app.remaining(true);
        check_options(app, command, left);
        if (command == nullptr && !left.empty() && !left.front().starts_with('-')) {
            throw Usage_Error("there is no command '" + left.front() + "'" +
                              suggestion(left.front(), commands) + "; --help lists them");
        }
        std::string list;
        if (command == nullptr) {
            for (const std::string& each : commands) {
                list += (list.empty() ? "" : ", ") + each;
            }
        }
        if (command == nullptr && left.empty() &&
            dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
            throw Usage_Error("a command is missing: " + list);
        }
        throw Usage_Error(first_line(error.what()) + "; 'tvrcim " +
                          (command == nullptr ? "" : command->get_name() + " ") +
                          "--help' tells the usage");
    }
}

int guarded(const std::function<int()>& work) noexcept {
    try {
        return work();
    } catch (const Cim_Error& error) {
        return failed(error.what(), cim_error);
    } catch (const std::exception& error) {
        return failed(error.what(), usage_error);
    }
}

} // namespace tvrcim
