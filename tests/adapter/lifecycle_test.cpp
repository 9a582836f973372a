// How adapters come and go, and what surrounds every request.
#include "runtime/cmpi_thread_context.h"
#include "tests/adapter/fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

namespace cimple {
namespace {

class Lifecycle_Test : public Adapter_Test {
protected:
    CMPIrc cleanup(bool terminating = false) {
        const auto flag = static_cast<CMPIBoolean>(terminating);
        return block.instance_ft.cleanup(&block.instance_mi, context, flag).rc;
    }
    CMPIrc enum_instances(CMPIInstanceMI* mi) {
        return mi->ft->enumerateInstances(mi, context, result, class_path(), nullptr).rc;
    }
};

TEST_F(Lifecycle_Test, MisPointToTheBlockAndItsTables) {
    EXPECT_EQ(load('N'), &block.indication_mi);
    EXPECT_EQ(block.indication_mi.ft->ftVersion, 100);
    EXPECT_STREQ(block.indication_mi.ft->miName, "indicationWidget_Provider");
    EXPECT_EQ(block.magic, 0x5DE2B131u);

    void* untouched = &block;
    cimple_cmpi_adapter(block, &fixture_registration, broker.get(), context, provider_name, 'x',
                        untouched);
    EXPECT_EQ(untouched, &block);
    EXPECT_EQ(block.adapter.load()->load_count(), 2u);

    CMPI_Static_Data other{};
    void* mi = nullptr;
    const std::string name(300, 'x');
    cimple_cmpi_adapter(other, &fixture_registration, broker.get(), context, name.c_str(), 'I', mi);
    EXPECT_EQ(std::strlen(other.association_ft.miName), 255u);
    other.adapter.load()->cleanup(true);
}

TEST_F(Lifecycle_Test, AFailingLoadLeavesNothingAndAFailingUnloadEndsTheAdapter) {
    script.hook = [](int) { throw std::runtime_error("load"); };
    void* mi = nullptr;
    EXPECT_EQ(cimple_cmpi_adapter(block, &fixture_registration, broker.get(), context,
                                  provider_name, 'I', mi),
              -1);
    EXPECT_EQ(mi, nullptr);
    EXPECT_EQ(block.adapter.load(), nullptr);
    EXPECT_EQ(script.alive, 0);
    EXPECT_EQ(Thread_Context::top(), nullptr);

    script.hook = nullptr; // a status is not looked at
    script.status = {{OPERATION_LOAD, LOAD_FAILED}, {OPERATION_UNLOAD, UNLOAD_FAILED}};
    EXPECT_EQ(enum_instances(instance_mi()), CMPI_RC_OK);
    EXPECT_EQ(cleanup(), CMPI_RC_OK);
    EXPECT_EQ(script.alive, 0);

    load('I');
    script.hook = [](int) { throw 1; };
    EXPECT_EQ(cleanup(), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(block.adapter.load(), nullptr);
    EXPECT_EQ(script.alive, 0);
    EXPECT_EQ(Thread_Context::top(), nullptr);
}

TEST_F(Lifecycle_Test, UnloadMayBeForbiddenUntilTermination) {
    CMPIInstanceMI* mi = instance_mi();
    block.adapter.load()->set_allow_unload(false);
    EXPECT_EQ(cleanup(), CMPI_RC_DO_NOT_UNLOAD);
    EXPECT_EQ(block.adapter.load()->load_count(), 1u);
    EXPECT_EQ(cleanup(true), CMPI_RC_OK);
    EXPECT_EQ(enum_instances(mi), CMPI_RC_ERR_FAILED); // the adapter has ended
    EXPECT_EQ(cleanup(), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(script.calls[OPERATION_UNLOAD], 1);
    EXPECT_EQ(block.magic, 0xDDDDDDDDu);
}

TEST_F(Lifecycle_Test, EntriesLogEnterAndReturnAndLetNoExceptionPass) {
    const Runtime_Log log;
    CMPIInstanceMI* mi = instance_mi();
    script.status[OPERATION_ENUM_INSTANCES] = ENUM_INSTANCES_ACCESS_DENIED;
    mi->ft->enumerateInstanceNames(mi, context, result, class_path());
    script.status.clear();
    script.hook = [](int) { throw std::runtime_error("provider gave up"); };
    EXPECT_EQ(enum_instances(mi), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(Thread_Context::top(), nullptr);
    script.hook = nullptr;
    std::thread([&] { EXPECT_EQ(enum_instances(mi), CMPI_RC_OK); }).join(); // the mutex is free
    cleanup();

    std::string text;
    for (const std::string& line : log.lines()) {
        text += line + '\n';
    }
    EXPECT_THAT(text, ::testing::ContainsRegex(
                          "enter: CMPI_Adapter\\(\\)\n.*return: CMPI_Adapter\\(\\): CMPI_RC_OK\n.*"
                          "return: enumInstanceNames\\(\\): CMPI_RC_ERR_ACCESS_DENIED\n.*enter: "
                          "enumInstances\\(\\)\n.*"
                          "return: enumInstances\\(\\): CMPI_RC_ERR_FAILED.*"
                          "exception: enumInstances\\(\\): provider gave up\n.*cleanup unload.*"
                          "return: cleanup\\(\\): CMPI_RC_OK\n"));
}

TEST_F(Lifecycle_Test, RequestsOfOneClassAreSerialisedButMayComeInAgain) {
    CMPIInstanceMI* mi = instance_mi();
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    script.hook = [&](int operation) {
        if (operation == OPERATION_ENUM_INSTANCES) {
            const int now = ++inside;
            most = std::max(most.load(), now);
            const Thread_Context* outer = Thread_Context::top();
            EXPECT_EQ(mi->ft->deleteInstance(mi, context, result, widget_path("a")).rc, CMPI_RC_OK);
            EXPECT_EQ(Thread_Context::top(), outer);
            std::this_thread::yield();
            --inside;
        }
    };
    std::barrier start(4);
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int n = 0; n < 50; ++n) {
                EXPECT_EQ(enum_instances(mi), CMPI_RC_OK);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(most, 1);
    EXPECT_EQ(script.calls[OPERATION_DELETE_INSTANCE], 200);
}

} // namespace
} // namespace cimple
