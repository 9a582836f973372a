// tvr_generate: makes C++ of the class model.
//
//     tvr_generate schema MOF DIR                 structures and metadata, into DIR
//     tvr_generate module MOF PROVIDERS DIR       dispatchers, registrations, factories, into DIR
//     tvr_generate signatures MOF PROVIDERS       members of the hand-written providers, to stdout
#include "schema/emit.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace tvrgen {

namespace {

// Collects the text of a file and writes it in one go.
// A file that says so already stays as it is, and what was compiled of it too.
template <class Emit>
void write_file(const std::filesystem::path& directory, const std::string& name, Emit emit) {
    std::ostringstream text;
    emit(text);
    const std::filesystem::path path = directory / name;
    if (std::ifstream present(path, std::ios::binary);
        present && std::string(std::istreambuf_iterator<char>(present), {}) == text.view()) {
        return;
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text.view();
    file.close();
    if (!file) {
        throw tvrmof::Error(path.string() + ": cannot write the file");
    }
}

std::string part_name(const char* stem, unsigned part) {
    return std::string(stem) + "_" + std::to_string(part) + ".cpp";
}

void write_schema(const tvrmof::Schema& schema, const std::string& directory) {
    std::filesystem::create_directories(directory);
    write_file(directory, "classes.h", [&](std::ostream& out) { emit_classes(out, schema); });
    write_file(directory, "records.h", [&](std::ostream& out) { emit_records(out, schema); });
    for (unsigned part = 0; part < metadata_parts; ++part) {
        write_file(directory, part_name("metadata", part),
                   [&](std::ostream& out) { emit_metadata(out, schema, part); });
    }
}

void write_module(const std::vector<Provider>& providers, const std::string& directory) {
    std::filesystem::create_directories(directory);
    write_file(directory, "registrations.h",
               [&](std::ostream& out) { emit_registrations(out, providers); });
    for (unsigned part = 0; part < module_parts; ++part) {
        write_file(directory, part_name("module", part),
                   [&](std::ostream& out) { emit_module(out, providers, part); });
    }
    write_file(directory, "factory_table.cpp",
               [&](std::ostream& out) { emit_factory_table(out, providers); });
}

int usage() {
    std::cerr << "usage: tvr_generate schema MOF DIR\n"
                 "       tvr_generate module MOF PROVIDERS DIR\n"
                 "       tvr_generate signatures MOF PROVIDERS\n";
    return 2;
}

int run(const std::vector<std::string>& arguments) {
    const std::string task = arguments.empty() ? "" : arguments[0];
    const bool known = (task == "schema" && arguments.size() == 3) ||
                       (task == "module" && arguments.size() == 4) ||
                       (task == "signatures" && arguments.size() == 3);
    if (!known) {
        return usage();
    }
    const tvrmof::Schema schema = tvrmof::read_file(arguments[1]);
    check_names(schema);
    if (task == "schema") {
        write_schema(schema, arguments[2]);
        return 0;
    }
    const std::vector<Provider> providers = read_providers(arguments[2], schema);
    if (task == "module") {
        write_module(providers, arguments[3]);
    } else {
        emit_signatures(std::cout, providers);
    }
    return 0;
}

} // namespace

} // namespace tvrgen

int main(int argc, char** argv) {
    try {
        return tvrgen::run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "tvr_generate: " << error.what() << '\n';
        return 1;
    }
}
