// The class catalogue, as the module promises it to its clients.
#ifndef TVR_TESTS_SCHEMA_CATALOGUE_H
#define TVR_TESTS_SCHEMA_CATALOGUE_H

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace catalogue {

// The tables are text files beside this one: groups of classes that share the facts before the
// colon. Class names stand without their prefix, which is that of the base classes or, in a table
// of served classes, of these; base classes among the targets of an association have it.

using Words = std::vector<std::string>;

struct Entry {
    Words group; // what stands before the colon
    Words words; // of the class
};

inline Words words_of(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

// Of a table, without the comments at its head.
inline std::string text_of(const std::string& table) {
    std::ifstream lines(TVR_CATALOGUE "/" + table + ".txt");
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        text += line.starts_with('#') ? "" : line + "\n";
    }
    return text;
}

inline std::vector<Entry> entries(const char* table) {
    std::vector<Entry> result;
    std::istringstream stream(text_of(table));
    for (std::string group, part; std::getline(stream, group, ';');) {
        std::istringstream parts(group);
        std::getline(parts, part, ':');
        const Words head = words_of(part);
        while (std::getline(parts, part, ',')) {
            result.push_back({head, words_of(part)});
            std::string& name = result.back().words.at(0);
            name = name == "=" ? head[0].substr(head[0][0] == '+') : name;
        }
    }
    return result;
}

inline std::string base(const std::string& name) {
    return (name.find('_') == std::string::npos ? "CIM_" : "") + name;
}
inline std::string served(const std::string& name) {
    return (name.find('_') == std::string::npos ? "TVRHBA_" : "") + name;
}

} // namespace catalogue

#endif
