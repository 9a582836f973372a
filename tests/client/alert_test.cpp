// Alerts of the shipped module, from the simulated library's thread to subscriptions.
#include "tests/client/client.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace client {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using tvrhost::Indication;
using tvrhost::Subscription;

constexpr const char* alert_class = "TVRHBA_AlertIndication";

class Alerts : public Client {
protected:
    Subscription subscribe(const char* to, std::vector<std::string>* heard = nullptr) {
        Subscription subscription =
            manager().subscribe(to, alert_class, [heard](const Indication& each) {
                if (heard != nullptr) {
                    heard->push_back(each.name_space + " " + each.instance["EventID"].plain() +
                                     " " + each.instance["Description"].plain());
                }
            });
        EXPECT_TRUE(subscription.is_active()) << subscription.answer().message;
        return subscription;
    }
    // The descriptions of the next alerts.
    std::vector<std::string> next(std::size_t count) {
        std::vector<std::string> texts;
        while (texts.size() < count) {
            const auto alert = manager().next_indication(20s);
            if (!alert) {
                ADD_FAILURE() << "only " << texts.size() << " alerts came";
                break;
            }
            texts.push_back(alert->instance["Description"].plain());
        }
        return texts;
    }
    static void flap(long times) {
        control(R"({"linkEvents": {"port": "10000254564A1020", "type": "offline", "times": )" +
                std::to_string(times) + R"(, "alternate": true}})");
    }
};

TEST_F(Alerts, ReachEachNamespaceOnceWhileItHasASubscription) {
    const std::string down = "Port WWN 10000254564A1020 status changed to LINK_DOWN.";
    const std::string up = "Port WWN 10000254564A1020 status changed to LINK_UP.";
    std::vector<std::string> heard;
    Subscription here = subscribe(name_space, &heard);
    Subscription again = subscribe(name_space);
    Subscription there = subscribe(interop, &heard);
    control(R"({"ports": {"10000254564A1020": {"state": "linkDown"}}})");
    EXPECT_THAT(next(2), ElementsAre(down, down));
    EXPECT_TRUE(there.end().ok());
    control(R"({"ports": {"10000254564A1020": {"state": "online"}}})");
    EXPECT_THAT(next(1), ElementsAre(up));
    EXPECT_TRUE(here.end().ok());
    flap(1);
    EXPECT_THAT(next(1), ElementsAre(down));
    EXPECT_TRUE(again.end().ok());
    flap(10);
    EXPECT_FALSE(manager().next_indication(50ms)) << "nobody has asked";
    EXPECT_THAT(heard, ElementsAre(std::string(name_space) + " 0 " + down,
                                   std::string(interop) + " 0 " + down,
                                   std::string(name_space) + " 1 " + up));

    // The numbers go on; a reset takes the link down and up.
    heard.clear();
    again = subscribe(interop, &heard);
    control(R"({"reboot": true})");
    next(4);
    EXPECT_TRUE(again.end().ok()) << "no callback goes on behind it";
    EXPECT_TRUE(heard.at(0).starts_with(std::string(interop) + " 3 Port WWN "));
    EXPECT_EQ(heard.size(), 4u) << "of the ports that are up";
}

TEST_F(Alerts, EndWithTheClass) {
    Subscription subscription = subscribe(name_space);
    flap(1000);
    EXPECT_EQ(manager().unload(alert_class), 1) << "it is in use";
    EXPECT_EQ(manager().unload(alert_class, true), 0);
    EXPECT_FALSE(subscription.is_active());
    manager().take_indications();
    flap(10);
    EXPECT_FALSE(manager().next_indication(50ms));
    control(R"({"entryPoints": {"HBA_RemoveCallback": {"failCall": 1}}})");
    subscription = subscribe(name_space);
    EXPECT_FALSE(subscription.end().ok()) << "the library keeps its registration";
    flap(10);
    EXPECT_FALSE(manager().next_indication(50ms));
    control(R"({"entryPoints": {"HBA_RegisterForAdapterPortEvents": {"status": 1}}})");
    EXPECT_EQ(manager().subscribe(name_space, alert_class, [](const Indication&) {}).answer().rc,
              1);
}

// Subscriptions come and go while links flap, maps are rebuilt and read, and the class is unloaded
// under them: each end waits for the delivery that runs, and for nothing else.
TEST_F(Alerts, SubscriptionsComeAndGoAtAnyTime) {
    constexpr int rounds = 2000;
    std::atomic<bool> done{false};
    std::atomic<long> alerts{0};
    manager();
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        while (!done) {
            flap(20);
            std::this_thread::sleep_for(200us);
        }
    });
    threads.emplace_back([&] {
        while (!done) {
            enumerate("TVRHBA_FCPort");
            control(R"({"reboot": true})");
            std::this_thread::sleep_for(1ms);
        }
    });
    threads.emplace_back([&] {
        while (!done) {
            manager().unload(alert_class, true);
            std::this_thread::sleep_for(5ms);
        }
    });
    for (int i = 0; i < rounds || alerts == 0; ++i) {
        Subscription subscription = manager().subscribe(
            i % 2 == 0 ? name_space : interop, alert_class, [&](const Indication&) { ++alerts; });
        std::this_thread::sleep_for(i % 50 == 0 ? 2ms : 0ms);
        subscription.end();
    }
    const Subscription last =
        manager().subscribe(name_space, alert_class, [&](const Indication&) { ++alerts; });
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    flap(1000);
    stop();
}

} // namespace
} // namespace client
