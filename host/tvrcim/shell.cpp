#include "host/tvrcim/shell.h"

#include "host/tvrcim/command_line.h"
#include "host/tvrcim/errors.h"

#include <iostream>

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
        const bool keep = in_word; // KEY="VALUE" goes on to the reader of paths as it is
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

int run_shell(Session& session, std::istream& in, bool prompt) {
    int status = success;
    std::string line;
    for (;;) {
        if (prompt) {
            session.out << "tvrcim> " << std::flush;
        }
        if (!std::getline(in, line)) {
            break;
        }
        status = guarded([&] {
            std::vector<std::string> words = split_words(line);
            if (words.empty() || words.front().starts_with('#')) {
                return status;
            }
            if (words.size() == 1 && (words.front() == "exit" || words.front() == "quit")) {
                in.setstate(std::ios::eofbit);
                return status;
            }
            Command command;
            if (const std::optional<int> over =
                    read_shell_line(std::move(words), command, session.out)) {
                return *over;
            }
            command(session);
            session.out << std::flush;
            return int{success};
        });
        if (in.eof() || !session.out) {
            break;
        }
    }
    if (in.bad()) {
        throw Usage_Error("standard input cannot be read");
    }
    if (prompt) {
        session.out << '\n';
    }
    return status;
}

} // namespace tvrcim
