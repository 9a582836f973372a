// What makes the module: its list of registrations, its factories, and what the shared object lets
// out and links to.
#include "catalogue.h"

#include "module/factories.h"
#include "runtime/instance.h"
#include "runtime/provider.h"
#include "schema/classes.h"
#include "schema/model.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>

using namespace cimple;

namespace {

// The served classes of a table, each with the words of its group's head.
std::map<std::string, catalogue::Words> served_in(const char* table) {
    std::map<std::string, catalogue::Words> classes;
    for (const auto& [group, words] : catalogue::entries(table)) {
        classes[catalogue::served(words.at(0))] = group;
    }
    return classes;
}

int call(const Registration& registration, int operation, void* arg0, void* arg1 = nullptr,
         void* arg2 = nullptr) {
    return registration.proc(&registration, operation, arg0, arg1, arg2, nullptr, nullptr, nullptr,
                             nullptr, nullptr);
}

TEST(Module, RegistersEachServedClassOnce) {
    std::set<std::string> names;
    for (const Registration* at = cimple_module(); at != nullptr; at = at->next) {
        SCOPED_TRACE(at->provider_name);
        EXPECT_STREQ(at->module_name, "tavrin_fc_provider_Module");
        EXPECT_EQ(at->provider_name, std::string(at->meta_class->name) + "_Provider");
        EXPECT_THAT(at->meta_class->name, testing::StartsWith("TVRHBA_"));
        EXPECT_TRUE(names.insert(at->meta_class->name).second);

        const Meta_Class* meta_class = nullptr;
        EXPECT_EQ(call(*at, OPERATION_GET_META_CLASS, &meta_class), 0);
        EXPECT_EQ(meta_class, at->meta_class);
        const Meta_Repository* repository = nullptr;
        EXPECT_EQ(call(*at, OPERATION_GET_REPOSITORY, &repository), 0);
        EXPECT_EQ(repository, &meta_repository);
        EXPECT_EQ(call(*at, OPERATION_DESTROY_PROVIDER, nullptr), 0);

        // Only associations have the traversals, and only the alert the operations of indications.
        const uint32 flags = at->meta_class->flags;
        for (const int operation :
             {17, -1, (flags & FLAG_ASSOCIATION) == 0 ? OPERATION_ENUM_ASSOCIATORS : 17,
              (flags & FLAG_INDICATION) == 0 ? OPERATION_ENABLE_INDICATIONS : 17}) {
            EXPECT_EQ(call(*at, operation, nullptr), -1) << operation;
        }
    }
    EXPECT_EQ(names.size(), 137u);
}

// Names, kinds and classes of the factories: of each kind that a class has there are two.
std::map<std::string, std::pair<char, std::string>> expected_factories() {
    std::map<std::string, std::string> kinds = {{"TVRHBA_AlertIndication", "MN"}};
    for (const auto& [name, keys] : served_in("instance_classes")) {
        kinds[name] = "IM";
    }
    for (const auto& [name, ends] : served_in("association_classes")) {
        kinds[name] = "AIM";
    }
    const std::map<char, std::string> words = {
        {'I', "Instance"}, {'M', "Method"}, {'A', "Association"}, {'N', "Indication"}};
    std::map<std::string, std::pair<char, std::string>> expected;
    for (const auto& [name, letters] : kinds) {
        for (const char kind : letters) {
            for (const char* middle : {"_Create_", "_Provider_Create_"}) {
                expected[name + middle + words.at(kind) + "MI"] = {kind, name};
            }
        }
    }
    return expected;
}

TEST(Module, HasTheFactoriesOfEachClass) {
    std::map<std::string, std::pair<char, std::string>> found;
    for (std::size_t i = 0; i < factory_count; ++i) {
        EXPECT_NE(factories[i].function, nullptr);
        found[factories[i].name] = {factories[i].kind, factories[i].class_name};
    }
    EXPECT_EQ(found, expected_factories());
    EXPECT_EQ(factory_count, 724u);
}

TEST(Module, FamilyHasTheMethodsOfItsTable) {
    std::map<std::string, catalogue::Words> expected = served_in("family_methods");
    const tvrmof::Schema schema = tvrmof::read_file(TVR_MOF);
    std::size_t methods = 0;
    for (const tvrgen::Provider& provider : tvrgen::read_providers(TVR_PROVIDERS, schema)) {
        if (!provider.is_own) {
            catalogue::Words names;
            for (const tvrmof::Feature* method : provider.served->methods()) {
                names.push_back(method->name);
            }
            EXPECT_EQ(names, expected[provider.served->name]);
            methods += names.size();
        }
    }
    EXPECT_EQ(methods, 87u);
}

std::set<std::string> lines_of(const std::string& command) {
    const auto close = [](FILE* pipe) { pclose(pipe); };
    const std::unique_ptr<FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
    std::set<std::string> lines;
    char line[4096];
    while (pipe && fgets(line, sizeof line, pipe.get()) != nullptr) {
        lines.emplace(line, std::strcspn(line, "\n"));
    }
    return lines;
}

TEST(SharedObject, ExportsItsExternalInterfaceAndNothingElse) {
    std::set<std::string> expected = {"cimple_module", "__cimple_trace", "__cimple_assert",
                                      "_thread_context_key", "_thread_context_key_once"};
    for (const auto& [name, factory] : expected_factories()) {
        expected.insert(name);
    }
    EXPECT_EQ(expected.size(), 729u);
    EXPECT_EQ(lines_of("nm -D --defined-only --format=posix '" TVR_MODULE "' | cut -d' ' -f1"),
              expected);
}

TEST(SharedObject, LinksToNothingButRuntimes) {
    const auto needed = lines_of("readelf -d '" TVR_MODULE "' | sed -n '/(NEEDED)/s/.*\\[//p'");
    EXPECT_GE(needed.size(), 2u);
    EXPECT_THAT(needed, testing::Each(testing::ContainsRegex(
                            "^(libstdc\\+\\+|libgcc_s|libm|libc|libdl|libpthread|libasan|libubsan|"
                            "libtsan|ld-linux-x86-64)\\.so")));
}

} // namespace
