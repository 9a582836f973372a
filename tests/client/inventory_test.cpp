// Whole instances of the default host through the loaded module, against those of default_host.txt.
#include "tests/client/client.h"

#include <dlfcn.h>
#include <sstream>

namespace client {
namespace {

// The whole instances that the tables name.
class Inventory : public Client {
protected:
    void compare();
};

void Inventory::compare() {
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
    stop();
}

TEST_F(Inventory, HasTheValuesOfItsTables) {
    compare();
}

// Libraries that keep to the letter of their interface, and no more, tell the same.
TEST_F(Inventory, IsTheSameWithHarshLibraries) {
    for (const char* staleness : {"everyHandle", "afterChanges"}) {
        SCOPED_TRACE(staleness);
        std::string adapters;
        for (const char* name : {"F1602-0", "F1602-1", "F0802-2", "F0802-3"}) {
            adapters += (adapters.empty() ? "\"Tavrin-TVR-" : ", \"Tavrin-TVR-") +
                        std::string(name) +
                        R"(": {"attributeLengths": "generous", "staleness": ")" + staleness + "\"}";
        }
        std::string ports;
        for (const char* name : {"4A1020", "4A1021", "3C7780", "3C7781"}) {
            ports += (ports.empty() ? "\"1000025456" : ", \"1000025456") + std::string(name) +
                     R"(": {"vpd": {"walk": "endsWithLast"}})";
        }
        control(R"({"adapters": {)" + adapters + R"(}, "ports": {)" + ports + "}}");
        compare();
    }
}

// A number is told whatever its length is told to be: a converged adapter stays out.
TEST_F(Inventory, NumbersNeedNoLength) {
    control(R"({"scenario": {"adapters": [
        {"attributeLengths": "zero", "attributes": {"functionType": 3}},
        {"attributeLengths": "zero", "attributes": {"portNumber": 258},
         "ports": [{"statistics": {"lipCount": 4294967298}}]}]}})");
    EXPECT_EQ(only("TVRHBA_FCPort")["PortNumber"].as_uint(), 258u);
    EXPECT_EQ(only("TVRHBA_FCPort")["OperationalStatus"].literal(), "{2}");
    EXPECT_EQ(only("TVRHBA_FCPortStatistics")["LIPCount"].as_uint(), 4294967298u);
}

// Without a physical state the HBA API's holds; a list of images beyond all bounds is not used.
TEST_F(Inventory, DoesWithoutWhatTheLibraryDoesNotTell) {
    control(R"({"scenario": {"adapters": [{"ports": [
        {"state": "online", "attributes": {"physicalState": null},
         "flash": {"images": [{"copies": 1200}]}}]}]}})");
    EXPECT_EQ(only("TVRHBA_FCPort")["OperationalStatus"].literal(), "{2}");
    EXPECT_EQ(only("TVRHBA_ControlledBy")["AccessState"].as_uint(), 1u);
    EXPECT_TRUE(enumerate("TVRHBA_FlashImageSoftwareIdentity").instances.empty());
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
