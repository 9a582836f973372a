#include "host/tvrcim/completion.h"

#include "host/tvrcim/command_line.h"
#include "host/tvrcim/commands.h"
#include "host/tvrcim/wwn.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace tvrcim {

using tvrmof::Feature_Kind;

namespace {

using Words = std::vector<std::string>;

bool begins(std::string_view word, std::string_view beginning) {
    return word.size() >= beginning.size() &&
           tvrmof::same_name(word.substr(0, beginning.size()), beginning);
}

// The blanks of quoted texts count as others do: what is completed here has none.
Words split(const std::string& line) {
    Words words = {""};
    for (const char c : line) {
        if (c == ' ' || c == '\t') {
            if (!words.back().empty()) {
                words.emplace_back();
            }
        } else {
            words.back() += c;
        }
    }
    return words;
}

Words class_words(Session& session, bool all, const char* suffix) {
    Words words;
    for (const auto& model : session.manager.schema()->classes()) {
        if (all || session.is_served(*model)) {
            words.push_back(model->name + suffix);
        }
    }
    return words;
}

Words indication_words(Session& session) {
    Words words;
    for (const auto& model : session.manager.schema()->classes()) {
        if (session.manager.serves(model->name, tvrhost::Kind::indication)) {
            words.push_back(model->name);
        }
    }
    return words;
}

Words feature_words(const tvrmof::Class* model, bool methods, const char* suffix) {
    Words words;
    for (const tvrmof::Feature* feature :
         model == nullptr ? std::vector<const tvrmof::Feature*>() : model->features) {
        if ((feature->kind == Feature_Kind::method) == methods &&
            (methods || *suffix == '\0' || !feature->is_key())) {
            words.push_back(feature->name + suffix);
        }
    }
    return words;
}

const tvrmof::Class* class_of(Session& session, const std::string& path) {
    return session.manager.schema()->find(path.substr(0, path.find('.')));
}

// Values of a text key without a blank or a comma in them, so that they need no quotes.
Words key_values(Session& session, const tvrmof::Class& model, const std::string& key) {
    Words words;
    for (const tvrhost::Cim_Path& path :
         session.manager.enumerate_instance_names(session.name_space_of(model), model.name).paths) {
        std::string value = path.keys[key].plain();
        if (!value.empty() && value.find_first_of(" ,\"'\\") == std::string::npos) {
            words.push_back(std::move(value));
        }
    }
    return words;
}

// CLASS., then CLASS.KEY=, then CLASS.KEY=VALUE and what follows behind a comma.
Words path_words(Session& session, const std::string& word) {
    const std::size_t point = word.find('.');
    if (point == std::string::npos) {
        return class_words(session, false, ".");
    }
    const tvrmof::Class* const model = class_of(session, word);
    if (model == nullptr) {
        return {};
    }
    const std::size_t last =
        std::max(point, word.rfind(',') == std::string::npos ? point : word.rfind(','));
    const std::string before = word.substr(0, last + 1);
    const std::size_t equals = word.find('=', last);
    Words words;
    if (equals == std::string::npos) {
        for (const tvrmof::Feature* key : model->keys()) {
            words.push_back(before + key->name + "=");
        }
        return words;
    }
    const std::string key = word.substr(last + 1, equals - last - 1);
    const std::string typed = word.substr(equals + 1);
    const std::optional<std::string> digits = wwn_digits(typed);
    for (const std::string& value : key_values(session, *model, key)) {
        // A WWN is found in any spelling, and shown in the module's.
        if (begins(value, typed) || (digits && value.starts_with(*digits))) {
            words.push_back(word.substr(0, equals + 1) + value);
        }
    }
    return words;
}

// Names of instances of a class, as a reference takes them.
Words instance_names(Session& session, const tvrmof::Class& model) {
    Words words;
    for (const tvrmof::Feature* key : model.keys()) {
        if (!names_system_or_class(key->name) && !key->is_reference) {
            const Words values = key_values(session, model, key->name);
            words.insert(words.end(), values.begin(), values.end());
        }
    }
    return words;
}

// NAME=, then NAME=VALUE where the declaration tells the values.
Words argument_words(Session& session, const tvrmof::Class* model, const std::string& method_name,
                     const std::string& word) {
    const tvrmof::Feature* const method =
        model == nullptr ? nullptr : model->find(method_name, Feature_Kind::method);
    Words words;
    if (method == nullptr) {
        return words;
    }
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) {
        for (const tvrmof::Parameter& parameter : method->parameters) {
            if (parameter.in()) {
                words.push_back(parameter.name + "=");
            }
        }
        return words;
    }
    const tvrmof::Parameter* const parameter = method->parameter(word.substr(0, equals));
    Words values;
    if (parameter != nullptr && parameter->is_reference && !parameter->is_array) {
        const tvrmof::Class* const target = session.class_meant(*parameter);
        values = target == nullptr ? values : instance_names(session, *target);
    } else if (parameter != nullptr && parameter->type == tvrmof::Type::boolean) {
        values = {"true", "false"};
    }
    const std::string typed = word.substr(equals + 1);
    const std::optional<std::string> digits = wwn_digits(typed);
    for (const std::string& value : values) {
        if (begins(value, typed) || (digits && value.starts_with(*digits))) {
            words.push_back(word.substr(0, equals + 1) + value);
        }
    }
    return words;
}

Words port_words(Session& session) {
    const tvrmof::Class* const model = session.manager.schema()->find("TVRHBA_FCPort");
    return model == nullptr ? Words() : key_values(session, *model, "DeviceID");
}

// Names of the tests as `diag` takes them.
Words test_words(Session& session) {
    const tvrmof::Class* const model = session.manager.schema()->find("TVRHBA_FCHBADiagnosticTest");
    Words words;
    if (model != nullptr) {
        for (const tvrhost::Cim_Path& path :
             session.manager.enumerate_instance_names(session.name_space_of(*model), model->name)
                 .paths) {
            words.push_back(short_name_of(path.keys["Name"].plain()));
        }
    }
    return words;
}

// What may stand at the end of `words`.
Words candidates(Session& session, const Words& words) {
    Words commands = shell_commands();
    if (words.size() == 1) {
        commands.emplace_back("exit");
        return commands;
    }
    const std::string& name = words.front();
    if (name == "help") {
        return commands;
    }
    if (std::find(commands.begin(), commands.end(), name) == commands.end()) {
        return {};
    }
    const std::string& word = words.back();
    if (word.starts_with('-')) {
        return options_of(name);
    }
    const std::string& previous = words[words.size() - 2];
    const tvrmof::Class* const model = words.size() > 2 ? class_of(session, words[1]) : nullptr;
    if (previous == "-p" || previous == "--property") {
        return feature_words(model, false, "");
    }
    constexpr const char* class_options[] = {"--class", "--result-class", "--leaf", "--hide"};
    if (std::find(std::begin(class_options), std::end(class_options), previous) !=
        std::end(class_options)) {
        return class_words(session, true, "");
    }
    if (name == "list" || name == "tree") {
        return port_words(session);
    }
    if (name == "watch") {
        return indication_words(session);
    }
    if (name == "diag") {
        return words.size() == 2                        ? Words{"list", "run"}
               : words.size() == 3                      ? port_words(session)
               : words.size() == 4 && words[1] == "run" ? test_words(session)
                                                        : Words();
    }
    if (words.size() == 2) {
        return name == "enum" || name == "classes" ? class_words(session, false, "")
                                                   : path_words(session, word);
    }
    if (name == "set") {
        return feature_words(model, false, "=");
    }
    if (name == "call") {
        return words.size() == 3 ? feature_words(model, true, "")
                                 : argument_words(session, model, words[2], word);
    }
    return {};
}

} // namespace

std::vector<std::string> completions(Session& session, const std::string& line) noexcept {
    try {
        const Words words = split(line);
        const std::string& word = words.back();
        const bool is_value = word.find('=') != std::string::npos; // chosen already
        std::set<std::string> found;
        for (std::string& each : candidates(session, words)) {
            if (is_value || begins(each, word) ||
                (wwn_digits(word) && each.starts_with(*wwn_digits(word)))) {
                found.insert(std::move(each));
            }
        }
        return {found.begin(), found.end()};
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace tvrcim
