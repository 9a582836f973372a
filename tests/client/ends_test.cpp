// Ends that come while the module is at work: of a class, of the process, of a forked process, of a
// client's thread.
#include "tests/client/client.h"

#include <cmpift.h>
#include <deque>
#include <dlfcn.h>
#include <filesystem>
#include <functional>
#include <pthread.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
// What the threads of a parent own looks leaked in a forked child, where these are gone.
namespace {
int no_leak_check = 0;
}
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off() {
    return no_leak_check;
}
#else
static int no_leak_check = 0;
#endif

namespace client {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

std::string semaphore(pid_t process) {
    return "/dev/shm/sem.TVR_RM_INIT_LIB_" + std::to_string(process);
}

// A copy of a broker, of which nothing works any more once it has ended.
class Broker {
public:
    explicit Broker(const CMPIBroker* original)
        : _up_calls(*original->bft), _makers(*original->eft), _broker(*original) {
        _broker.bft = &_up_calls;
        _broker.eft = &_makers;
    }
    const CMPIBroker* get() const { return &_broker; }
    void end() {
        _broker.bft = nullptr;
        _broker.eft = nullptr;
    }

private:
    CMPIBrokerFT _up_calls;
    CMPIBrokerEncFT _makers;
    CMPIBroker _broker;
};

// A client's thread.
class Request {
public:
    explicit Request(std::function<void()> body) : _body(std::move(body)) {
        const auto run = [](void* self) -> void* {
            static_cast<Request*>(self)->_body();
            return nullptr;
        };
        EXPECT_EQ(pthread_create(&_thread, nullptr, run, this), 0);
    }
    void cancel() { pthread_cancel(_thread); }
    // Joins it.
    bool was_cancelled() {
        void* result = nullptr;
        EXPECT_EQ(pthread_join(_thread, &result), 0);
        return result == PTHREAD_CANCELED;
    }

private:
    std::function<void()> _body;
    pthread_t _thread{};
};

class Ends : public Client {
protected:
    // From now on the calls of an entry point take so much longer.
    static void slow(const std::string& entry_point, int ms) {
        control(R"({"entryPoints": {")" + entry_point + R"(": {"latencyMs": )" +
                std::to_string(ms) + "}}}");
    }
    static void wait_for_call(const char* entry_point) {
        for (int i = 0; i < 20'000 && calls(entry_point) == 0; ++i) {
            std::this_thread::sleep_for(milliseconds(1));
        }
        ASSERT_GT(calls(entry_point), 0);
    }

    // An instance MI with a broker of its own.
    CMPIInstanceMI* make(const std::string& class_name, const Broker& broker) {
        const auto create = reinterpret_cast<CMPIInstanceMI* (*)(const CMPIBroker*,
                                                                 const CMPIContext*, CMPIStatus*)>(
            dlsym(_module.get(), (class_name + "_Create_InstanceMI").c_str()));
        const tvrhost::Object_Manager::Scope scope(manager());
        return create(broker.get(), scope.context(), nullptr);
    }
    void clean_up(CMPIInstanceMI* mi) {
        const tvrhost::Object_Manager::Scope scope(manager());
        EXPECT_EQ(mi->ft->cleanup(mi, scope.context(), 0).rc, CMPI_RC_OK);
    }
    void open_module() {
        manager();
        _module.reset(dlopen(TVR_MODULE, RTLD_NOW | RTLD_NOLOAD));
    }

private:
    struct Close {
        void operator()(void* module) const { dlclose(module); }
    };
    std::unique_ptr<void, Close> _module;
};

// The class whose request started the refresh goes, with its broker, while the SAN is scanned.
TEST_F(Ends, AClassTakesItsBrokerAlong) {
    constexpr const char* scan = "HBA_GetFcpTargetMapping";
    slow(scan, 300);
    open_module();
    Broker first(manager().broker());
    CMPIInstanceMI* mi = make("TVRHBA_PhysicalPackage", first);
    EXPECT_EQ(enumerate("TVRHBA_PhysicalPackage").rc, 0);
    wait_for_call(scan);
    ASSERT_NE(manager().load("TVRHBA_StorageVolume", tvrhost::Kind::instance), nullptr);
    Answer volumes;
    std::thread waiting([&] { volumes = enumerate("TVRHBA_StorageVolume"); });
    manager().unload("TVRHBA_PhysicalPackage");
    clean_up(mi);
    EXPECT_LE(calls(scan), 2) << "of the four that a scan takes";
    first.end();

    waiting.join();
    EXPECT_EQ(volumes.rc, 0);
    EXPECT_FALSE(volumes.instances.empty());
    EXPECT_EQ(enumerate("TVRHBA_FCPort").instances.size(), 4u);
}

// What became of a forked process that runs `body`, as waitpid tells it; one that hangs is ended.
// Its names of semaphores are gone.
template <class Body> int forked(Body&& body) {
    const pid_t child = fork();
    if (child == 0) {
        no_leak_check = 1;
        alarm(30);
        body();
        std::exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_FALSE(std::filesystem::exists(semaphore(child)));
    return status;
}

// With requests waiting and a library call under way that takes long.
TEST_F(Ends, TheProcessEndsAtOnce) {
    for (const char* entry_point : {"HBA_GetNumberOfAdapters", "HBA_GetFcpTargetMapping"}) {
        SCOPED_TRACE(entry_point);
        const auto start = steady_clock::now();
        const int status = forked([&] {
            // Behind the module's own ends, while its threads go on.
            std::atexit([] { std::this_thread::sleep_for(milliseconds(300)); });
            slow(entry_point, 20'000);
            manager();
            for (const char* name : {"TVRHBA_FCPort", "TVRHBA_Product", "TVRHBA_StorageVolume"}) {
                std::thread([this, name] {
                    for (;;) {
                        enumerate(name);
                    }
                }).detach();
            }
            wait_for_call(entry_point);
        });
        EXPECT_EQ(status, 0);
        EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(15));
        EXPECT_TRUE(std::filesystem::is_empty(directory.file("etc")));
    }
}

TEST_F(Ends, AForkedProcessLeavesTheAgentToItsParent) {
    slow("HBA_GetFcpTargetMapping", 1000);
    EXPECT_EQ(enumerate("TVRHBA_FCPort").instances.size(), 4u);
    wait_for_call("HBA_GetFcpTargetMapping");
    ASSERT_TRUE(std::filesystem::exists(semaphore(getpid())));
    EXPECT_EQ(forked([] {}), 0);
    const tvrhost::Subscription alerts = manager().subscribe(name_space, "TVRHBA_AlertIndication",
                                                             [](const tvrhost::Indication&) {});
    EXPECT_EQ(forked([this] { manager().unload("TVRHBA_FCPort"); }), 0);
    EXPECT_EQ(forked([this] { manager().unload("TVRHBA_AlertIndication", true); }), 0);
    EXPECT_TRUE(alerts.is_active());
    EXPECT_TRUE(std::filesystem::exists(semaphore(getpid())));
    EXPECT_TRUE(std::filesystem::is_empty(directory.file("etc")));
    stop();
    EXPECT_FALSE(std::filesystem::is_empty(directory.file("etc")));
}

// An object manager that closes the module without a word: no thread of it goes on. Its objects are
// lost then, so that it closes in a process of its own.
TEST_F(Ends, AClosedModuleStopsItsAlerts) {
    const std::string copy = directory.file("module.so");
    std::filesystem::copy(TVR_MODULE, copy);
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    const auto close = [&] {
        std::thread([] {}).join(); // a sanitizer starts one of its own with the first
        const auto before = threads();
        void* const module = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << dlerror();
        const auto create =
            reinterpret_cast<CMPIIndicationMI* (*)(const CMPIBroker*, const CMPIContext*,
                                                   CMPIStatus*)>(
                dlsym(module, "TVRHBA_AlertIndication_Create_IndicationMI"));
        const tvrhost::Object_Manager::Scope scope(manager());
        CMPIIndicationMI* const mi = create(manager().broker(), scope.context(), nullptr);
        EXPECT_EQ(mi->ft->enableIndications(mi, scope.context()).rc, CMPI_RC_OK);
        control(
            R"({"linkEvents": {"port": "10000254564A1020", "type": "offline", "times": 1000}})");
        // The refresh ends; there remain the worker, and the thread that the events come on.
        for (int i = 0; i < 20'000 && threads() != before + 2; ++i) {
            std::this_thread::sleep_for(milliseconds(1));
        }
        dlclose(module);
        EXPECT_EQ(threads(), before);
    };
    EXPECT_EQ(forked(close), 0);
}

// A cancelled client ends where it waits: for a stage, for a lock, or for its turn in the class.
TEST_F(Ends, AClientMayBeCancelled) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer takes the stack of a thread that is unwound so for overrun";
#endif
    slow("HBA_GetNumberOfAdapters", 3000);
    manager();
    std::deque<Request> requests;
    for (const char* name : {"TVRHBA_FCPort", "TVRHBA_Product", "TVRHBA_StorageVolume"}) {
        for (int i = 0; i < 2; ++i) { // the second waits for the first
            requests.emplace_back([this, name] { enumerate(name); });
        }
    }
    wait_for_call("HBA_GetNumberOfAdapters");
    std::this_thread::sleep_for(milliseconds(200)); // until all wait
    for (Request& request : requests) {
        request.cancel();
    }
    for (Request& request : requests) {
        EXPECT_TRUE(request.was_cancelled());
    }
    EXPECT_EQ(calls("HBA_GetAdapterName"), 0) << "the refresh is still in its first call";
    EXPECT_EQ(enumerate("TVRHBA_FCPort").instances.size(), 4u);
    EXPECT_EQ(enumerate("TVRHBA_Product").rc, 0);
    EXPECT_FALSE(enumerate("TVRHBA_StorageVolume").instances.empty());
}

} // namespace
} // namespace client
