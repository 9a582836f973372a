// Subscriptions, and what a module delivers to them.
#include "tests/host/host_fixture.h"

#include <thread>

namespace tvrtest {
namespace {

using enum tvrhost::Fault_Kind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Words = std::vector<std::string>;

class Indications : public Host_Fixture {
protected:
    Indications() {
        const auto note = [this](Script& script, const std::string& name) {
            script = [this, name](Request& r) {
                calls.push_back(name + (r.edge ? "!" : ""));
                if (r.filter != nullptr) {
                    expressions.insert(r.filter);
                    CMPIString* const query = r.filter->ft->getString(r.filter, nullptr);
                    EXPECT_STREQ(CMGetCharPtr(query), "SELECT * FROM Test_Alert");
                }
                return name == failing ? CMPI_RC_ERR_FAILED : CMPI_RC_OK;
            };
        };
        note(alert.authorize, "authorize");
        note(alert.must_poll, "poll");
        note(alert.activate, "activate");
        note(alert.deactivate, "deactivate");
        note(alert.enable, "enable");
        note(alert.disable, "disable");
    }

    Subscription subscribe(const char* name_space, const std::string& query = {}) {
        return om().subscribe(
            name_space, "Test_Alert",
            [this, name_space](const Indication& each) {
                EXPECT_EQ(each.name_space, name_space);
                heard.push_back(each.instance["Description"].plain());
            },
            query);
    }
    CMPIInstance* new_alert(const char* text) {
        CMPIObjectPath* const path = CMNewObjectPath(alert.broker, "root/x", "Test_Alert", nullptr);
        CMPIInstance* const instance = CMNewInstance(alert.broker, path, nullptr);
        CMSetProperty(instance, "Description", text, CMPI_chars);
        return instance;
    }
    // As a module's own thread does.
    CMPIrc deliver(const char* name_space, const char* text = "a", bool attached = true) {
        Object_Manager::Scope scope(om());
        CMPIrc rc = CMPI_RC_OK;
        CMPIContext* const prepared = CBPrepareAttachThread(alert.broker, scope.context());
        CMPIInstance* const made = new_alert(text);
        std::thread([&] {
            if (!attached) {
                rc = CBDeliverIndication(alert.broker, prepared, name_space, made).rc;
                return;
            }
            CBAttachThread(alert.broker, prepared);
            CMPIInstance* const instance = new_alert(text);
            rc = CBDeliverIndication(alert.broker, prepared, name_space, instance).rc;
            CMRelease(instance);
            CBDetachThread(alert.broker, prepared);
        }).join();
        if (!attached) {
            CMRelease(prepared);
        }
        return rc;
    }

    Scripted_Class& alert = module.add("Test_Alert", "N");
    std::string failing;
    Words calls;
    Words heard;
    std::set<const CMPISelectExp*> expressions;
};

TEST_F(Indications, the_first_subscription_switches_on_and_the_last_off) {
    Subscription first = subscribe("root/x");
    EXPECT_THAT(calls, ElementsAre("authorize", "poll", "activate!", "enable"));
    calls.clear();
    Subscription second = subscribe("root/y");
    EXPECT_THAT(calls, ElementsAre("authorize", "poll", "activate"));
    calls.clear();
    EXPECT_TRUE(first.end().ok());
    EXPECT_THAT(calls, ElementsAre("deactivate"));
    EXPECT_FALSE(first.end().ok()) << "it has ended";
    calls.clear();
    EXPECT_TRUE(second.end().ok());
    EXPECT_THAT(calls, ElementsAre("disable", "deactivate!"));
    EXPECT_EQ(expressions.size(), 2u) << "all calls for a filter get the same one";
    EXPECT_EQ(om().live_objects(), 0u) << "expressions end with their filters";
}

TEST_F(Indications, a_request_that_fails_leaves_nothing_active) {
    const std::pair<const char*, Words> cases[] = {
        {"authorize", {"authorize"}},
        {"activate", {"authorize", "poll", "activate!"}},
        {"enable", {"authorize", "poll", "activate!", "enable", "disable", "deactivate!"}},
    };
    for (const auto& [step, made] : cases) {
        failing = step;
        calls.clear();
        const Subscription refused = subscribe("root/x");
        EXPECT_EQ(refused.answer().rc, CMPI_RC_ERR_FAILED);
        EXPECT_FALSE(refused.is_active());
        EXPECT_EQ(calls, made);
    }
    EXPECT_EQ(om().live_objects(), 0u);
    EXPECT_EQ(subscribe("root/x", "SELECT * FROM Test_Alert WHERE Description = 'a'").answer().rc,
              CMPI_RC_ERR_INVALID_QUERY);
    EXPECT_EQ(subscribe("root/x", "SELECT * FROM Test_Thing").answer().rc,
              CMPI_RC_ERR_INVALID_QUERY);
}

TEST_F(Indications, what_is_delivered_reaches_those_who_asked) {
    const Subscription x = subscribe("root/x");
    const Subscription again = subscribe("root/x");
    Subscription y = subscribe("root/y");
    EXPECT_EQ(deliver("root/x", "down"), CMPI_RC_OK);
    EXPECT_EQ(deliver("root/y", "up"), CMPI_RC_OK);
    EXPECT_THAT(heard, ElementsAre("down", "down", "up"));
    EXPECT_EQ(om().take_indications().size(), 2u) << "the client's queue has each once";
    EXPECT_EQ(deliver("root/x", "lost", false), CMPI_RC_ERR_FAILED);
    EXPECT_THAT(faults(), ElementsAre(outside_scope));
    y.end();
    EXPECT_EQ(deliver("root/y"), CMPI_RC_ERR_FAILED);
    EXPECT_THAT(faults(), ElementsAre(no_filter));
    EXPECT_EQ(heard.size(), 3u);
}

TEST_F(Indications, a_delivered_instance_stays_under_watch) {
    const Subscription subscription = subscribe("root/x");
    Object_Manager::Scope scope(om());
    CMPIInstance* const instance = new_alert("a");
    EXPECT_EQ(CBDeliverIndication(alert.broker, scope.context(), "root/x", instance).rc, 0);
    CMSetProperty(instance, "Description", "b", CMPI_chars);
    EXPECT_THAT(heard, ElementsAre("a"));
    CMRelease(instance);
    CBDeliverIndication(alert.broker, scope.context(), "root/x", instance);
    EXPECT_THAT(faults(), ElementsAre(use_after_release));
}

TEST_F(Indications, an_expression_is_the_object_managers_until_its_deactivation) {
    alert.activate = [](Request& r) {
        r.filter->ft->release(const_cast<CMPISelectExp*>(r.filter));
        return CMPI_RC_OK;
    };
    Subscription subscription = subscribe("root/x");
    EXPECT_THAT(faults(), ElementsAre(argument_release));
    EXPECT_TRUE(subscription.end().ok()) << "and it is alive all the same";
}

TEST_F(Indications, a_class_with_subscriptions_is_unloaded_at_its_end_alone) {
    Subscription subscription = subscribe("root/x");
    EXPECT_EQ(om().unload("test_alert"), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(alert.cleaned_up, 0);
    calls.clear();
    EXPECT_EQ(om().unload("Test_Alert", true), CMPI_RC_OK);
    EXPECT_THAT(calls, ElementsAre("disable", "deactivate!"));
    EXPECT_FALSE(subscription.is_active());
    EXPECT_EQ(subscription.end().rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(alert.made, 1) << "the class is not loaded for it";
    {
        Object_Manager::Scope scope(om());
        CBDeliverIndication(alert.broker, scope.context(), "root/x", nullptr);
    }
    EXPECT_THAT(faults(), ElementsAre(ended_broker));

    subscription = subscribe("root/x");
    EXPECT_TRUE(subscription.is_active());
    om().shutdown();
    EXPECT_FALSE(subscription.is_active());
    EXPECT_EQ(subscribe("root/x").answer().rc, CMPI_RC_ERR_FAILED);
    EXPECT_THAT(om().take_faults(), IsEmpty());
    manager.reset();
}

} // namespace
} // namespace tvrtest
