// Sessions: texts of commands, each with the answer that is expected of it.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

// A file has sections under "[name]". In one, commands stand at the beginning of a line and what
// they answer below, by two columns further right; empty lines and lines of "#" are for the reader.
// Words are set apart by blanks, those between double quotes are part of a word. A blank that ends
// a line of an answer is followed by a backslash.
class Text_Session {
public:
    using Words = std::vector<std::string>;
    using Command = std::function<void(const Words& words, std::ostream& answer)>;

    static std::vector<std::string> sections(const std::string& file) {
        std::vector<std::string> names;
        std::ifstream lines(file);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with('[')) {
                names.push_back(line.substr(1, line.size() - 2));
            }
        }
        return names;
    }

    // A Command, or a call with the words behind its name or with nothing; what that returns is
    // a line of the answer. The one called "" gets lines that begin with no command's name.
    template <class Call> void on(const std::string& name, Call call) {
        if constexpr (std::is_invocable_v<Call&, const Words&, std::ostream&>) {
            _commands[name] = std::move(call);
        } else if constexpr (!std::is_invocable_v<Call&, const Words&>) {
            on(name, [call](const Words&) mutable { return call(); });
        } else if constexpr (std::is_void_v<std::invoke_result_t<Call&, const Words&>>) {
            on(name, [call](const Words& words, std::ostream&) mutable { call(words); });
        } else {
            on(name, [call](const Words& words, std::ostream& answer) mutable {
                answer << call(words) << '\n';
            });
        }
    }
    // All that stands behind the name of the command that runs, as it stands there.
    const std::string& rest() const { return _rest; }
    // `text`, which is another one in each run, stands as `name` in commands and answers.
    void rename(const std::string& text, const std::string& name) { _names[name] = text; }

    void run(const std::string& file, const std::string& section) {
        std::ifstream lines(file);
        std::string expected;
        std::string seen;
        bool inside = false;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with('[')) {
                inside = line == "[" + section + "]";
            } else if (inside && !line.empty() && line[0] != '#') {
                expected += line + '\n';
                if (line[0] != ' ') {
                    seen += line + '\n' + answer(line);
                }
            }
        }
        EXPECT_FALSE(expected.empty()) << section;
        EXPECT_EQ(seen, expected);
    }

private:
    static void replace(std::string& text, const std::string& from, const std::string& to) {
        for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
            text.replace(at, from.size(), to);
        }
    }
    static Words words_of(const std::string& line) {
        Words words;
        bool quoted = false;
        bool within = false;
        for (const char c : line) {
            if (c == '"') {
                quoted = !quoted;
            }
            const bool ends = c == ' ' && !quoted;
            if (!ends && !within) {
                words.emplace_back();
            }
            within = !ends;
            if (within && c != '"') {
                words.back() += c;
            }
        }
        return words;
    }
    std::string answer(std::string line) {
        for (const auto& [name, text] : _names) {
            replace(line, name, text);
        }
        Words words = words_of(line);
        auto command = _commands.find(words[0]);
        if (command == _commands.end()) {
            command = _commands.find("");
            if (command == _commands.end()) {
                return "  no such command\n";
            }
            _rest = line;
        } else {
            _rest = line.substr(std::min(words[0].size() + 1, line.size()));
            words.erase(words.begin());
        }
        std::stringstream told;
        command->second(words, told);
        std::string answer;
        for (std::string one; std::getline(told, one);) {
            for (const auto& [name, text] : _names) {
                replace(one, text, name);
            }
            answer += "  " + one + (one.ends_with(' ') ? "\\\n" : "\n");
        }
        return answer;
    }

    std::map<std::string, Command> _commands;
    std::map<std::string, std::string> _names;
    std::string _rest;
};

// Makes each section of the file a test of a fixture that has a `session`.
// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a class
#define TVR_SESSIONS(fixture, file)                                                                \
    class fixture##_Sessions : public fixture, public testing::WithParamInterface<std::string> {}; \
    TEST_P(fixture##_Sessions, Go) {                                                               \
        session.run(TVR_TEXTS "/" file, GetParam());                                               \
    }                                                                                              \
    INSTANTIATE_TEST_SUITE_P(, fixture##_Sessions,                                                 \
                             testing::ValuesIn(Text_Session::sections(TVR_TEXTS "/" file)),        \
                             [](const auto& one) { return one.param; })
// NOLINTEND(bugprone-macro-parentheses)
