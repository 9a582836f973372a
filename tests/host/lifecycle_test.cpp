// Loading and cleaning up, with several threads.
#include "tests/host/host_fixture.h"

#include <future>
#include <thread>

namespace tvrtest {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class Lifecycle : public Host_Fixture {
protected:
    Lifecycle() { thing.enumerate = hand_out("a", 1); }
    Answer ask() { return om().enumerate_instances("root/x", "Test_Thing"); }
    Scripted_Class& thing = module.add("Test_Thing");
};

TEST_F(Lifecycle, an_mi_is_made_at_first_use_and_cleaned_up_once) {
    om();
    EXPECT_EQ(thing.made, 0);
    ask();
    ask();
    EXPECT_EQ(thing.made, 1);
    om().invoke_method(thing_path("a", 1), "Turn");
    EXPECT_EQ(thing.made, 2) << "one for each kind";
    EXPECT_EQ(om().unload("Test_Thing"), CMPI_RC_OK);
    EXPECT_EQ(thing.cleaned_up, 2);
    EXPECT_EQ(om().unload("Test_Thing"), CMPI_RC_OK) << "nothing is left to clean up";
    EXPECT_TRUE(ask().ok());
    om().shutdown();
    om().shutdown();
    EXPECT_EQ(thing.cleaned_up, 3);
    EXPECT_EQ(ask().rc, CMPI_RC_ERR_FAILED) << "nothing is loaded after the end";
    EXPECT_EQ(thing.made, 3);
}

TEST_F(Lifecycle, an_mi_may_refuse_to_be_made_and_to_go) {
    bool works = false;
    thing.make = [&] { return works; };
    EXPECT_THAT(ask().message, HasSubstr("made nothing"));
    works = true;
    EXPECT_TRUE(ask().ok());
    thing.cleanup = [](Request&) { return CMPI_RC_DO_NOT_UNLOAD; };
    EXPECT_EQ(om().unload("Test_Thing"), CMPI_RC_DO_NOT_UNLOAD);
    EXPECT_TRUE(ask().ok());
    EXPECT_EQ(thing.made, 1) << "it stayed";
    om().shutdown();
    EXPECT_THAT(faults(), ElementsAre(Fault_Kind::missing_cleanup));
}

TEST_F(Lifecycle, loading_has_a_scope_and_may_call_up_but_not_into_what_is_being_loaded) {
    Scripted_Class& other = module.add("Test_Other");
    other.enumerate = [](Request&) { return CMPI_RC_OK; };
    const auto call_up = [](Request& r, const char* class_name) {
        CMPIStatus rc;
        CBEnumInstances(r.broker, r.context,
                        CMNewObjectPath(r.broker, "root/x", class_name, nullptr), nullptr, &rc);
        return rc.rc;
    };
    thing.load = [&](Request& r) {
        EXPECT_EQ(call_up(r, "Test_Other"), CMPI_RC_OK);
        EXPECT_EQ(call_up(r, "Test_Thing"), CMPI_RC_ERR_FAILED);
        const CMPIData space = CMGetContextEntry(r.context, CMPIInitNameSpace, nullptr);
        EXPECT_STREQ(CMGetCharPtr(space.value.string), "root/x");
        return CMPI_RC_OK;
    };
    thing.cleanup = [](Request& r) {
        CMNewString(r.broker, "left", nullptr);
        return CMPI_RC_OK;
    };
    EXPECT_TRUE(ask().ok());
    EXPECT_EQ(other.made, 1);
    EXPECT_EQ(thing.made, 1);
    EXPECT_EQ(om().live_objects(), 0u);
}

TEST_F(Lifecycle, a_class_is_not_cleaned_up_while_a_request_is_in_it) {
    std::promise<void> entered;
    std::promise<void> go_on;
    std::atomic<bool> in_request{false};
    thing.enumerate = [&](Request& r) {
        in_request = true;
        entered.set_value();
        go_on.get_future().wait_for(std::chrono::seconds(20));
        // A nested request is still served, so that this one can end.
        CMPIStatus rc;
        CBGetInstance(r.broker, r.context, CMGetObjectPath(new_thing(r, "a", 1), nullptr), nullptr,
                      &rc);
        EXPECT_EQ(rc.rc, CMPI_RC_OK);
        in_request = false;
        return CMPI_RC_OK;
    };
    thing.get = hand_out("a", 1);
    thing.cleanup = [&](Request&) {
        EXPECT_FALSE(in_request);
        return CMPI_RC_OK;
    };
    om();
    std::thread request([&] { EXPECT_TRUE(ask().ok()); });
    entered.get_future().wait();
    std::thread cleaner([&] { EXPECT_EQ(om().unload("Test_Thing"), CMPI_RC_OK); });
    EXPECT_EQ(thing.cleaned_up, 0);
    go_on.set_value();
    request.join();
    cleaner.join();
    EXPECT_EQ(thing.cleaned_up, 1);
}

// Requests, unloads and up-calls at random: nothing is lost, nothing hangs.
TEST_F(Lifecycle, requests_and_unloads_from_many_threads) {
    Scripted_Class& other = module.add("Test_Other");
    other.enumerate = [](Request& r) {
        CMPIStatus rc;
        CMPIObjectPath* const path = CMNewObjectPath(r.broker, "root/x", "Test_Thing", nullptr);
        CBEnumInstances(r.broker, r.context, path, nullptr, &rc);
        return CMPI_RC_OK; // refused while the class is being cleaned up
    };
    om();
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                if (t == 0) {
                    om().unload("Test_Thing");
                } else if (t == 1) {
                    EXPECT_TRUE(om().enumerate_instances("root/x", "Test_Other").ok());
                } else {
                    EXPECT_THAT(names(ask()), ElementsAre("a"));
                }
            }
        });
    }
    threads.clear();
    om().shutdown();
    EXPECT_EQ(thing.made, thing.cleaned_up);
}

} // namespace
} // namespace tvrtest
