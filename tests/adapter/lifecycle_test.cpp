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

using ::testing::Each;

class Lifecycle_Test : public Adapter_Test {
protected:
    // Cleans up the MI of a kind through its table.
    CMPIStatus cleanup(char kind, bool terminating = false) {
        const auto flag = static_cast<CMPIBoolean>(terminating);
        switch (kind) {
        case 'I':
            return block.instance_ft.cleanup(&block.instance_mi, context, flag);
        case 'M':
            return block.method_ft.cleanup(&block.method_mi, context, flag);
        case 'A':
            return block.association_ft.cleanup(&block.association_mi, context, flag);
        default:
            return block.indication_ft.cleanup(&block.indication_mi, context, flag);
        }
    }
    int loads() const { return script.calls[OPERATION_LOAD]; }
    int unloads() const { return script.calls[OPERATION_UNLOAD]; }
};

TEST_F(Lifecycle_Test, KindsShareOneProviderUntilTheLastCleanup) {
    std::string order = "AIMN";
    do {
        for (const char kind : order) {
            ASSERT_NE(load(kind), nullptr);
        }
        EXPECT_EQ(script.alive, 1);
        EXPECT_EQ(block.adapter.load()->load_count(), 4u);
        EXPECT_EQ(block.magic, 0x5DE2B131u);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NE(block.adapter.load(), nullptr);
            const CMPIStatus status = cleanup(order[i], i % 2 == 0);
            EXPECT_EQ(status.rc, CMPI_RC_OK);
            EXPECT_EQ(status.msg, nullptr);
        }
        EXPECT_EQ(loads(), 1);
        EXPECT_EQ(unloads(), 1);
        EXPECT_EQ(script.alive, 0);
        EXPECT_EQ(block.adapter.load(), nullptr);
        EXPECT_EQ(block.magic, 0xDDDDDDDDu);
        script.calls.clear();
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(Lifecycle_Test, EachFactoryCallNeedsItsCleanup) {
    EXPECT_EQ(load('I'), load('I'));
    cleanup('I');
    EXPECT_EQ(unloads(), 0);
    cleanup('I');
    EXPECT_EQ(unloads(), 1);

    load('M');
    EXPECT_EQ(loads(), 2);
    EXPECT_EQ(script.calls[OPERATION_CREATE_PROVIDER], 2);
}

TEST_F(Lifecycle_Test, MisPointToTheBlockAndItsTables) {
    CMPIInstanceMI* instance = instance_mi();
    EXPECT_EQ(instance, &block.instance_mi);
    EXPECT_EQ(instance->hdl, &block);
    EXPECT_EQ(instance->ft, &block.instance_ft);
    EXPECT_STREQ(instance->ft->miName, "instanceWidget_Provider");
    EXPECT_EQ(load('M'), &block.method_mi);
    EXPECT_STREQ(block.method_mi.ft->miName, "methodWidget_Provider");
    EXPECT_EQ(load('A'), &block.association_mi);
    EXPECT_STREQ(block.association_mi.ft->miName, "associationWidget_Provider");
    EXPECT_EQ(load('N'), &block.indication_mi);
    EXPECT_STREQ(block.indication_mi.ft->miName, "indicationWidget_Provider");
    for (const int version :
         {block.instance_ft.ftVersion, block.instance_ft.miVersion, block.method_ft.ftVersion,
          block.method_ft.miVersion, block.association_ft.ftVersion, block.association_ft.miVersion,
          block.indication_ft.ftVersion, block.indication_ft.miVersion}) {
        EXPECT_EQ(version, 100);
    }

    void* untouched = &block;
    cimple_cmpi_adapter(block, &fixture_registration, broker.get(), context, provider_name, 'x',
                        untouched);
    EXPECT_EQ(untouched, &block);
    EXPECT_EQ(block.adapter.load()->load_count(), 5u);
}

TEST_F(Lifecycle_Test, LongProviderNamesAreCut) {
    const std::string name(300, 'x');
    void* mi = nullptr;
    cimple_cmpi_adapter(block, &fixture_registration, broker.get(), context, name.c_str(), 'I', mi);
    EXPECT_EQ(std::strlen(block.instance_ft.miName), 255u);
    EXPECT_EQ(std::strlen(block.association_ft.miName), 255u);
}

TEST_F(Lifecycle_Test, StatusOfLoadAndUnloadIsNotLookedAt) {
    script.status = {{OPERATION_LOAD, LOAD_FAILED}, {OPERATION_UNLOAD, UNLOAD_FAILED}};
    CMPIInstanceMI* mi = instance_mi();
    ASSERT_NE(mi, nullptr);
    EXPECT_EQ(mi->ft->enumerateInstances(mi, context, result, class_path(), nullptr).rc,
              CMPI_RC_OK);
    EXPECT_EQ(cleanup('I').rc, CMPI_RC_OK);
    EXPECT_EQ(script.alive, 0);
}

TEST_F(Lifecycle_Test, ThrowingLoadLeavesNothing) {
    script.hook = [](int) { throw std::runtime_error("load"); };
    void* mi = nullptr;
    EXPECT_EQ(cimple_cmpi_adapter(block, &fixture_registration, broker.get(), context,
                                  provider_name, 'I', mi),
              -1);
    EXPECT_EQ(mi, nullptr);
    EXPECT_EQ(block.adapter.load(), nullptr);
    EXPECT_EQ(script.alive, 0);
    EXPECT_EQ(Thread_Context::top(), nullptr);

    script.hook = nullptr;
    EXPECT_NE(load('I'), nullptr);
}

TEST_F(Lifecycle_Test, ThrowingUnloadStillEndsTheAdapter) {
    load('I');
    script.hook = [](int) { throw 1; };
    EXPECT_EQ(cleanup('I').rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(block.adapter.load(), nullptr);
    EXPECT_EQ(script.alive, 0);
    EXPECT_EQ(Thread_Context::top(), nullptr);
}

TEST_F(Lifecycle_Test, UnloadMayBeForbiddenUntilTermination) {
    load('I');
    block.adapter.load()->set_allow_unload(false);
    EXPECT_EQ(cleanup('I', false).rc, CMPI_RC_DO_NOT_UNLOAD);
    EXPECT_EQ(block.adapter.load()->load_count(), 1u);
    EXPECT_EQ(cleanup('I', true).rc, CMPI_RC_OK);
    EXPECT_EQ(unloads(), 1);
}

TEST_F(Lifecycle_Test, ProviderRunsUnderTheContextOfItsCall) {
    std::vector<const CMPIContext*> seen;
    script.hook = [&](int) {
        const CMPI_Thread_Context* top = CMPI_Thread_Context::top();
        ASSERT_NE(top, nullptr);
        EXPECT_EQ(top->broker(), broker.get());
        seen.push_back(top->context());
    };
    CMPIInstanceMI* mi = instance_mi();
    CMPIContext* other = broker.context();
    mi->ft->enumerateInstances(mi, other, result, class_path(), nullptr);
    cleanup('I');
    EXPECT_THAT(seen, ::testing::ElementsAre(context, other, context));
    EXPECT_EQ(Thread_Context::top(), nullptr);
}

TEST_F(Lifecycle_Test, EntriesOfAnEndedAdapterFail) {
    CMPIInstanceMI* mi = instance_mi();
    cleanup('I');
    EXPECT_EQ(mi->ft->enumerateInstances(mi, context, result, class_path(), nullptr).rc,
              CMPI_RC_ERR_FAILED);
    EXPECT_EQ(cleanup('I').rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(unloads(), 1);
}

TEST_F(Lifecycle_Test, ExceptionsBecomeFailuresAndUnwindTheFrame) {
    const Runtime_Log log;
    CMPIInstanceMI* mi = instance_mi();
    script.hook = [](int) { throw std::runtime_error("provider gave up"); };
    EXPECT_EQ(mi->ft->enumerateInstances(mi, context, result, class_path(), nullptr).rc,
              CMPI_RC_ERR_FAILED);
    EXPECT_EQ(Thread_Context::top(), nullptr);
    EXPECT_TRUE(log.has("exception: enumInstances(): provider gave up"));
    EXPECT_TRUE(log.has("return: enumInstances(): CMPI_RC_ERR_FAILED"));

    script.hook = nullptr;
    std::thread([&] { // the mutex is free
        EXPECT_EQ(mi->ft->enumerateInstances(mi, context, result, class_path(), nullptr).rc,
                  CMPI_RC_OK);
    })
        .join();
}

TEST_F(Lifecycle_Test, EntriesLogEnterAndReturn) {
    const Runtime_Log log;
    CMPIInstanceMI* mi = instance_mi();
    mi->ft->getInstance(mi, context, result, class_path("Nobody"), nullptr);
    script.status[OPERATION_ENUM_INSTANCES] = ENUM_INSTANCES_ACCESS_DENIED;
    mi->ft->enumerateInstanceNames(mi, context, result, class_path());
    cleanup('I');
    const std::string text = log.text();
    std::size_t at = 0;
    for (const char* line :
         {"enter: CMPI_Adapter()", "return: CMPI_Adapter(): CMPI_RC_OK",
          "DBG: cmpi_instance_entries.cpp(", "enter: getInstance()",
          "return: getInstance(): CMPI_RC_ERR_FAILED", "enter: enumInstanceNames()",
          "return: enumInstanceNames(): CMPI_RC_ERR_ACCESS_DENIED", "enter: cleanup()",
          "cleanup unload", "return: cleanup(): CMPI_RC_OK"}) {
        at = text.find(line, at);
        ASSERT_NE(at, std::string::npos) << line << " in\n" << text;
    }
}

TEST_F(Lifecycle_Test, RequestsOfOneClassAreSerialised) {
    CMPIInstanceMI* mi = instance_mi();
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    script.hook = [&](int) {
        const int now = ++inside;
        most = std::max(most.load(), now);
        std::this_thread::yield();
        --inside;
    };
    CMPIObjectPath* path = class_path();
    std::barrier start(4);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            CMPIContext* own = broker.context();
            start.arrive_and_wait();
            for (int n = 0; n < 50; ++n) {
                CMPIResult* to = broker.result();
                EXPECT_EQ(mi->ft->enumerateInstances(mi, own, to, path, nullptr).rc, CMPI_RC_OK);
                EXPECT_EQ(fake::Broker::of(to).done, 1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
    EXPECT_EQ(script.calls[OPERATION_ENUM_INSTANCES], 200);
}

TEST_F(Lifecycle_Test, ACallMayComeInAgainOnTheSameThread) {
    CMPIInstanceMI* mi = instance_mi();
    script.hook = [&](int operation) {
        if (operation == OPERATION_ENUM_INSTANCES) {
            const Thread_Context* outer = Thread_Context::top();
            EXPECT_EQ(mi->ft->deleteInstance(mi, context, result, widget_path("a")).rc, CMPI_RC_OK);
            EXPECT_EQ(Thread_Context::top(), outer);
        }
    };
    EXPECT_EQ(mi->ft->enumerateInstances(mi, context, result, class_path(), nullptr).rc,
              CMPI_RC_OK);
    EXPECT_EQ(script.calls[OPERATION_DELETE_INSTANCE], 1);
}

TEST_F(Lifecycle_Test, TraversalAndIndicationsAreNotSupported) {
    auto* association = static_cast<CMPIAssociationMI*>(load('A'));
    auto* indication = static_cast<CMPIIndicationMI*>(load('N'));
    CMPIObjectPath* path = widget_path("a");
    const CMPIAssociationMIFT& a = *association->ft;
    const CMPIIndicationMIFT& n = *indication->ft;
    const CMPIStatus answers[] = {
        a.associators(association, context, result, path, nullptr, nullptr, nullptr, nullptr,
                      nullptr),
        a.associatorNames(association, context, result, path, nullptr, nullptr, nullptr, nullptr),
        a.references(association, context, result, path, nullptr, nullptr, nullptr),
        a.referenceNames(association, context, result, path, nullptr, nullptr),
        n.authorizeFilter(indication, context, nullptr, nullptr, path, nullptr),
        n.mustPoll(indication, context, result, nullptr, nullptr, path),
        n.activateFilter(indication, context, nullptr, nullptr, path, 1),
        n.deActivateFilter(indication, context, nullptr, nullptr, path, 1),
        n.enableIndications(indication, context),
        n.disableIndications(indication, context),
    };
    for (const CMPIStatus& answer : answers) {
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(answer.msg, nullptr);
    }
    EXPECT_TRUE(fake::Broker::of(result).data.empty());
}

} // namespace
} // namespace cimple
