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

Usage_Error no_command(const std::string& name, const std::vector<std::string>& commands) {
    return Usage_Error("there is no command '" + name + "'" + suggestion(name, commands) +
                       "; --help lists them");
}

// Of the command, or of all.
void show_help(const CLI::App& app, const CLI::App* command, std::ostream& out) {
    if (command == nullptr) {
        // Not app.help(), which goes on to a command that was read.
        out << app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
        return;
    }
    out << command->help(app.get_name());
    if (!app.get_name().empty()) {
        out << "'tvrcim --help' shows the options that may stand before the command.\n";
    }
}

} // namespace

void prepare(CLI::App& app) {
    constexpr std::size_t names = 22; // columns; with the text behind them on a line of 80
    app.get_formatter()->column_width(names);
    app.require_subcommand(1);
    app.fallthrough();
}

void add_help(CLI::App& app) {
    app.add_subcommand("help", "The commands; what one of them does")
        ->add_option("COMMAND", "command name");
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
        if (!app.got_subcommand("help")) {
            return std::nullopt;
        }
        const auto named = app.get_subcommand("help")->get_option("COMMAND")->results();
        if (!named.empty() &&
            std::find(commands.begin(), commands.end(), named.front()) == commands.end()) {
            throw no_command(named.front(), commands);
        }
        show_help(app, named.empty() ? nullptr : app.get_subcommand(named.front()), out);
        return success;
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> parsed = app.get_subcommands();
        show_help(app, parsed.empty() ? nullptr : parsed.front(), out);
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
            throw no_command(left.front(), commands);
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

int guarded(const std::function<int()>& work, const std::string& place) noexcept {
    try {
        return work();
    } catch (const Cim_Error& error) {
        return failed(place + error.what(), cim_error);
    } catch (const std::exception& error) {
        return failed(place + error.what(), usage_error);
    }
}

} // namespace tvrcim
