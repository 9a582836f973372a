// Whole instances of the default host through the loaded module, against those of default_host.txt.
#include "tests/client/client.h"

#include <dlfcn.h>
#include <sstream>

namespace client {
namespace {

TEST_F(Client, InventoryHasTheValuesOfItsTables) {
    start({computer_system("server-7")});
    const Sections& tables = default_host();
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
    EXPECT_EQ(compared, 35u);
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
    EXPECT_EQ(capabilities, default_host()["capabilities"]);
}

} // namespace
} // namespace client
