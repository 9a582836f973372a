// Whole instances of the default host through the loaded module, against those of default_host.txt.
#include "tests/client/client.h"

#include <dlfcn.h>
#include <fstream>
#include <sstream>

namespace client {
namespace {

// The sections of a file: lines of NAME=VALUE, "+" and a section that goes in, and comments.
class Sections {
public:
    using Properties = std::map<std::string, std::string>;

    explicit Sections(const char* file) {
        std::ifstream lines(file);
        Properties* section = nullptr;
        for (std::string line; std::getline(lines, line);) {
            const std::size_t equals = line.find('=');
            if (line.starts_with('[')) {
                _names.push_back(line.substr(1, line.size() - 2));
                section = &_sections[_names.back()];
            } else if (line.starts_with('+')) {
                const Properties& group = _sections.at(line.substr(1));
                section->insert(group.begin(), group.end());
            } else if (equals != std::string::npos && !line.starts_with('#')) {
                section->emplace(line.substr(0, equals), line.substr(equals + 1));
            }
        }
    }
    const std::vector<std::string>& names() const { return _names; }
    const Properties& operator[](const std::string& name) const { return _sections.at(name); }

private:
    std::vector<std::string> _names; // in the order of the file
    std::map<std::string, Properties> _sections;
};

TEST_F(Client, InventoryHasTheValuesOfItsTables) {
    start({computer_system("server-7")});
    const Sections tables(TVR_DEFAULT_HOST);
    std::size_t compared = 0;
    for (const std::string& name : tables.names()) {
        std::istringstream words(name);
        std::string class_name;
        std::size_t position = 0;
        if (!(words >> class_name >> position)) {
            continue;
        }
        const Answer answer = enumerate(class_name);
        ASSERT_GT(answer.instances.size(), position) << class_name;
        EXPECT_EQ(literals(answer.instances[position]), tables[name]) << class_name;
        ++compared;
    }
    EXPECT_EQ(compared, 26u);
}

// What can be fetched depends on a library of the host's.
TEST_F(Client, InstallationCapabilitiesTellWhatTheHostCanFetch) {
    std::map<std::string, std::string> capabilities =
        literals(only("TVRHBA_SoftwareInstallationServiceCapabilities"));
    const auto has = [](const char* library) {
        void* handle = dlopen(library, RTLD_NOW);
        return handle != nullptr && dlclose(handle) == 0;
    };
    const bool fetches = has("/lib/libcurl.so.4") || has("/usr/lib/libcurl.so.4") ||
                         has("libcurl.so") || has("curl.dll");
    EXPECT_EQ(capabilities["SupportedURISchemes"], fetches ? "{3, 4, 5, 6, 8}" : "{3}");
    capabilities.erase("SupportedURISchemes");
    EXPECT_EQ(capabilities, Sections(TVR_DEFAULT_HOST)["capabilities"]);
}

} // namespace
} // namespace client
