#include "host/tvrcim/shell.h"

#include "host/tvrcim/command_line.h"
#include "host/tvrcim/completion.h"
#include "host/tvrcim/ending.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/line_editor.h"

#include <unistd.h>

#include <iostream>
#include <utility>

namespace tvrcim {

std::vector<std::string> split_words(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool in_word = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == ' ' || c == '\t' || c == '\r') {
            if (in_word) {
                words.push_back(std::exchange(word, {}));
            }
            in_word = false;
            continue;
        }
        // CLASS.KEY="VALUE" and [1, "b"] go on to their readers as they are; NAME="VALUE" has no
        // other.
        const bool keep = in_word && word.find_first_of("=.") + 1 != word.size();
        in_word = true;
        if (c == '\\' && i + 1 < line.size()) {
            word += line[++i];
        } else if (c == '"' || c == '\'') {
            if (keep && c == '"') {
                word += c;
            }
            for (++i; i < line.size() && line[i] != c; ++i) {
                if (line[i] == '\\' && c == '"' && i + 1 < line.size()) {
                    if (keep) {
                        word += '\\';
                    }
                    ++i;
                }
                word += line[i];
            }
            if (i == line.size()) {
                throw Usage_Error("a quotation mark is missing");
            }
            if (keep && c == '"') {
                word += c;
            }
        } else {
            word += c;
        }
    }
    if (in_word) {
        words.push_back(std::move(word));
    }
    return words;
}

namespace {

// Runs one command. `status` is that of the one before, which an empty line leaves as it is.
int run_line(Session& session, std::vector<std::string> words, int status) {
    if (words.empty() || words.front().starts_with('#')) {
        return status;
    }
    Command command;
    if (const std::optional<int> over = read_shell_line(std::move(words), command, session.out)) {
        return *over;
    }
    session.status = success;
    command(session);
    session.out << std::flush;
    return session.status;
}

} // namespace

int run_shell(Session& session, const Next_Line& next, bool tell_lines) {
    int status = success;
    bool is_over = false;
    for (std::size_t number = 1; !is_over && session.out; ++number) {
        const std::optional<std::string> line = next();
        if (!line) {
            break;
        }
        const std::string place = tell_lines ? "line " + std::to_string(number) + ": " : "";
        status = guarded(
            [&] {
                std::vector<std::string> words = split_words(*line);
                is_over = words.size() == 1 && (words.front() == "exit" || words.front() == "quit");
                return is_over ? status : run_line(session, std::move(words), status);
            },
            place);
    }
    return status;
}

int run_shell(Session& session) {
    if (isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0) {
        Ending::keep_terminal();
        Line_Editor editor(
            [&session](const std::string& line) { return completions(session, line); });
        const int status = run_shell(
            session, [&editor] { return editor.read(); }, false);
        session.out << std::flush;
        return status;
    }
    const int status = run_shell(
        session,
        []() -> std::optional<std::string> {
            std::string line;
            return std::getline(std::cin, line) ? std::optional(std::move(line)) : std::nullopt;
        },
        true);
    if (std::cin.bad()) {
        throw Usage_Error("standard input cannot be read");
    }
    return status;
}

} // namespace tvrcim
