// How classes come and go, and what is left of the module when it is closed.
#include "tests/client/client.h"

#include "runtime/cmpi_adapter.h"

#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <pthread.h>
#include <sstream>

namespace client {
namespace {

using cimple::CMPI_Static_Data;
using Instance_Factory = CMPIInstanceMI* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*);

std::string process_file(const char* name) {
    std::ostringstream text;
    text << std::ifstream(std::string("/proc/self/") + name).rdbuf();
    return text.str();
}

// Sanitizers have threads of their own.
std::size_t threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

std::size_t open_files() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

// A class has two names among the exported ones, each of which counts for itself.
TEST_F(Client, AClassIsLoadedOnceForAllItsKindsAndNames) {
    tvrhost::Object_Manager& om = manager();
    const std::string name = "TVRHBA_FCPortSystemDevice";
    auto* instance = static_cast<CMPIInstanceMI*>(om.load(name, tvrhost::Kind::instance));
    auto* association = static_cast<CMPIAssociationMI*>(om.load(name, tvrhost::Kind::association));
    ASSERT_TRUE(instance != nullptr && association != nullptr);
    EXPECT_EQ(instance->hdl, association->hdl);
    void* module = dlopen(TVR_MODULE, RTLD_NOW | RTLD_NOLOAD);
    const tvrhost::Object_Manager::Scope scope(om);
    for (const char* end : {"_Create_InstanceMI", "_Provider_Create_InstanceMI"}) {
        const auto create = reinterpret_cast<Instance_Factory>(dlsym(module, (name + end).c_str()));
        EXPECT_EQ(create(om.broker(), scope.context(), nullptr), instance);
    }
    dlclose(module);
    EXPECT_EQ(static_cast<CMPI_Static_Data*>(instance->hdl)->adapter.load()->load_count(), 4u);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(instance->ft->cleanup(instance, scope.context(), 0).rc, CMPI_RC_OK);
    }
}

TEST_F(Client, TheAgentLivesFromTheFirstClassToTheLast) {
    EXPECT_EQ(enumerate("TVRHBA_FCPort").instances.size(), 4u);
    EXPECT_EQ(enumerate("TVRHBA_SoftwareIdentity").rc, 0);
    const long inits = calls("LRM_InitLib");
    EXPECT_EQ(inits, 1);
    manager().unload("TVRHBA_FCPort");
    EXPECT_EQ(enumerate("TVRHBA_SoftwareIdentity").rc, 0);
    EXPECT_EQ(calls("LRM_InitLib"), inits);
    manager().unload("TVRHBA_SoftwareIdentity");
    EXPECT_THAT(directory.read("etc/tavrin_fc_provider.conf"),
                testing::HasSubstr("TVR_PROVIDER_CACHE_TIMEOUT = 10\n"))
        << "the settings are written when the agent ends";

    EXPECT_EQ(enumerate("TVRHBA_FCPort").instances.size(), 4u) << "and it comes again";
    EXPECT_EQ(calls("LRM_InitLib"), inits + 1);
}

// In its own life a module may log, start threads, open files and libraries. Nothing of it stays.
TEST_F(Client, NothingIsLeftOfTheModuleOnceItIsClosed) {
    directory.write("etc/tavrin_fc_provider.dmp", "2,5,1\n" + directory.file("provider.log"));
    EXPECT_EQ(enumerate("TVRHBA_FCPort").instances.size(), 4u);
    EXPECT_NE(process_file("maps").find("libtavrin_fc_provider"), std::string::npos);
    stop();
    EXPECT_EQ(process_file("maps").find("libtavrin_fc_provider"), std::string::npos);
    EXPECT_THAT(directory.read("provider.log"), testing::HasSubstr("ProviderAgent::addRef[0]"));
    EXPECT_THAT(directory.read("provider.log"),
                testing::HasSubstr("[TVR_DBG] Tavrin Provider Unloaded\n"));

    // A thread key that the module kept would move the next one on.
    const auto next_key = [] {
        pthread_key_t key{};
        EXPECT_EQ(::pthread_key_create(&key, nullptr), 0);
        ::pthread_key_delete(key);
        return key;
    };
    const pthread_key_t key = next_key();
    const std::size_t files = open_files();
    const std::size_t threads_before = threads(); // a sanitizer's own one among them
    for (int life = 0; life < 3; ++life) {
        EXPECT_EQ(enumerate("TVRHBA_FCPort").instances.size(), 4u);
        stop();
    }
    EXPECT_EQ(next_key(), key);
    EXPECT_EQ(open_files(), files);
    EXPECT_EQ(threads(), threads_before);
}

} // namespace
} // namespace client
