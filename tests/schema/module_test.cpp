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
#include <sstream>
#include <string>

using namespace cimple;

namespace {

std::vector<const Registration*> registrations() {
    std::vector<const Registration*> list;
    for (const Registration* at = cimple_module(); at != nullptr; at = at->next) {
        list.push_back(at);
    }
    return list;
}

int call(const Registration& registration, int operation, void* arg0, void* arg1 = nullptr,
         void* arg2 = nullptr) {
    return registration.proc(&registration, operation, arg0, arg1, arg2, nullptr, nullptr, nullptr,
                             nullptr, nullptr);
}

TEST(Module, RegistersEachServedClassOnce) {
    std::set<std::string> names;
    for (const Registration* registration : registrations()) {
        SCOPED_TRACE(registration->provider_name);
        EXPECT_STREQ(registration->module_name, "tavrin_fc_provider_Module");
        EXPECT_TRUE(names.insert(registration->provider_name).second);
        EXPECT_EQ(registration->provider_name,
                  std::string(registration->meta_class->name) + "_Provider");

        const Meta_Class* meta_class = nullptr;
        EXPECT_EQ(call(*registration, OPERATION_GET_META_CLASS, &meta_class), 0);
        EXPECT_EQ(meta_class, registration->meta_class);
        const Meta_Repository* repository = nullptr;
        EXPECT_EQ(call(*registration, OPERATION_GET_REPOSITORY, &repository), 0);
        EXPECT_EQ(repository, &meta_repository);
        EXPECT_EQ(call(*registration, 17, nullptr), -1);
        EXPECT_EQ(call(*registration, OPERATION_DESTROY_PROVIDER, nullptr), 0);
    }
    EXPECT_EQ(names.size(), 137u);
    for (const auto& expected : catalogue::instance_classes) {
        EXPECT_TRUE(names.contains(std::string(expected.name) + "_Provider")) << expected.name;
    }
    for (const auto& expected : catalogue::association_classes) {
        EXPECT_TRUE(names.contains(std::string(expected.name) + "_Provider")) << expected.name;
    }
}

TEST(Module, HasTheFactoriesOfEachClass) {
    std::map<std::string, std::string> kinds; // by class, each letter once a name
    std::map<char, unsigned> totals;
    std::set<std::string> names;
    const std::map<char, std::string> words = {
        {'I', "Instance"}, {'M', "Method"}, {'A', "Association"}, {'N', "Indication"}};
    for (std::size_t i = 0; i < factory_count; ++i) {
        const Factory& factory = factories[i];
        const std::string tail = "Create_" + words.at(factory.kind) + "MI";
        const std::string name = factory.class_name;
        EXPECT_TRUE(factory.name == name + "_" + tail || factory.name == name + "_Provider_" + tail)
            << factory.name;
        EXPECT_TRUE(names.insert(factory.name).second) << factory.name;
        EXPECT_NE(factory.function, nullptr);
        kinds[name] += factory.kind;
        ++totals[factory.kind];
    }
    EXPECT_EQ(totals, (std::map<char, unsigned>{{'I', 272}, {'M', 274}, {'A', 176}, {'N', 2}}));
    EXPECT_EQ(names.size(), 724u);
    EXPECT_EQ(kinds.size(), 137u);
    for (const auto& expected : catalogue::instance_classes) {
        EXPECT_EQ(kinds[expected.name], "IIMM") << expected.name;
    }
    for (const auto& expected : catalogue::association_classes) {
        EXPECT_EQ(kinds[expected.name], "AAIIMM") << expected.name;
    }
    EXPECT_EQ(kinds["TVRHBA_AlertIndication"], "MMNN");
}

// Only associations have the three traversals, and only the alert has the two of indications.
TEST(Module, DispatchersHaveTheOperationsOfTheirKind) {
    for (const Registration* registration : registrations()) {
        SCOPED_TRACE(registration->provider_name);
        const bool association = (registration->meta_class->flags & FLAG_ASSOCIATION) != 0;
        const bool indication = (registration->meta_class->flags & FLAG_INDICATION) != 0;
        for (const int operation : {OPERATION_ENUM_ASSOCIATOR_NAMES, OPERATION_ENUM_REFERENCES,
                                    OPERATION_ENUM_ASSOCIATORS}) {
            if (!association) {
                EXPECT_EQ(call(*registration, operation, nullptr), -1);
            }
        }
        if (!indication) {
            EXPECT_EQ(call(*registration, OPERATION_ENABLE_INDICATIONS, nullptr), -1);
            EXPECT_EQ(call(*registration, OPERATION_DISABLE_INDICATIONS, nullptr), -1);
        }
    }
}

TEST(Module, FamilyMethodsAreAllUnsupported) {
    const tvrmof::Schema schema = tvrmof::read_file(TVR_MOF);
    std::set<std::string> family;
    for (const tvrgen::Provider& provider : tvrgen::read_providers(TVR_PROVIDERS, schema)) {
        if (!provider.is_own) {
            family.insert(provider.served->name);
        }
    }
    unsigned methods = 0;
    for (const Registration* registration : registrations()) {
        if (!family.contains(registration->meta_class->name)) {
            continue;
        }
        SCOPED_TRACE(registration->provider_name);
        void* provider = nullptr;
        ASSERT_EQ(call(*registration, OPERATION_CREATE_PROVIDER, &provider), 0);
        const Ref<> self(create(registration->meta_class, true));
        const auto invoke = [&](const Meta_Method& method) {
            const Ref<> fields(create(&method, false));
            return call(*registration, OPERATION_INVOKE_METHOD, provider, self.get(), fields.get());
        };
        for (const Meta_Feature* feature : *registration->meta_class) {
            if (feature->has(FLAG_METHOD)) {
                EXPECT_EQ(invoke(as_method(*feature)), INVOKE_METHOD_UNSUPPORTED);
                ++methods;
            }
        }
        Meta_Method unknown = CIM_Log_ClearLog_method::static_meta_method;
        unknown.name = "NoSuchMethod";
        EXPECT_EQ(invoke(unknown), -1);
        EXPECT_EQ(call(*registration, OPERATION_DESTROY_PROVIDER, provider), 0);
    }
    EXPECT_EQ(methods, 87u);
}

std::string output_of(const std::string& command) {
    const auto close = [](FILE* pipe) { pclose(pipe); };
    const std::unique_ptr<FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
    std::string output;
    char buffer[4096];
    while (pipe && fgets(buffer, sizeof buffer, pipe.get()) != nullptr) {
        output += buffer;
    }
    return output;
}

TEST(SharedObject, ExportsItsExternalInterfaceAndNothingElse) {
    std::set<std::string> expected = {"cimple_module", "__cimple_trace", "__cimple_assert",
                                      "_thread_context_key", "_thread_context_key_once"};
    for (std::size_t i = 0; i < factory_count; ++i) {
        expected.insert(factories[i].name);
    }
    std::istringstream lines(output_of("nm -D --defined-only --format=posix '" TVR_MODULE "'"));
    std::set<std::string> exported;
    for (std::string line; std::getline(lines, line);) {
        exported.insert(line.substr(0, line.find(' ')));
    }
    EXPECT_EQ(exported.size(), 729u);
    EXPECT_EQ(exported, expected);
}

TEST(SharedObject, LinksToNothingButRuntimes) {
    const std::set<std::string> runtimes = {"libstdc++", "libgcc_s",       "libm",    "libc",
                                            "libdl",     "libpthread",     "libasan", "libubsan",
                                            "libtsan",   "ld-linux-x86-64"};
    std::istringstream lines(output_of("readelf -d '" TVR_MODULE "'"));
    unsigned needed = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("(NEEDED)") != std::string::npos) {
            const std::size_t begin = line.find('[') + 1;
            const std::string name = line.substr(begin, line.find(".so", begin) - begin);
            EXPECT_TRUE(runtimes.contains(name)) << line;
            ++needed;
        }
    }
    EXPECT_GE(needed, 2u);
}

} // namespace
