// Events of ports as those who register for them see them.
#include "tests/sim/simulated_host.h"

#include <atomic>
#include <thread>

namespace {

constexpr uint32_t farewell = 1000; ///< its callback removes itself

struct Listener {
    std::string seen; ///< - for offline, + for online, and the number of any other type
    std::atomic<bool> isHeld{false};
    std::atomic<uint32_t> last{0};
    HBA_CALLBACKHANDLE handle = nullptr;
    decltype(&HBA_RemoveCallback) removal = nullptr;

    HBA_STATUS remove() const { return removal(handle); }
    static void hear(void* data, HBA_WWN, HBA_UINT32 type, HBA_UINT32) {
        Listener& self = *static_cast<Listener*>(data);
        self.seen += type == 0x201 ? "-" : type == 0x202 ? "+" : std::to_string(type);
        EXPECT_EQ(type == farewell ? self.remove() : HBA_STATUS_OK, HBA_STATUS_OK);
        self.last = type;
        self.last.notify_all();
        self.isHeld.wait(true);
    }
};

class EventsTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(R"({"clear": true, "scenario": {"adapters": [
            {"name": "A", "attributes": {"bootCodeEnabled": null}, "ports": [{}, {}]}]}})");
    }
    void TearDown() override { CALL(m_library, HBA_FreeLibrary)(); }

    HBA_STATUS listen(Listener& listener, const HBA_WWN& port) {
        listener.removal = &CALL(m_library, HBA_RemoveCallback);
        return CALL(m_library, HBA_RegisterForAdapterPortEvents)(&Listener::hear, &listener,
                                                                 open("A"), port, &listener.handle);
    }
    void raise(const std::string& event) {
        change(R"({"linkEvents": {"port": "1000025456000000", "type": )" + event + "}}");
    }
    /// What was heard of all that was raised so far, and of one last event.
    std::string allSeen(Listener& listener, uint32_t end = 999) {
        raise(std::to_string(end));
        for (uint32_t last; (last = listener.last) != end;) {
            listener.last.wait(last);
        }
        return listener.seen;
    }
};

} // namespace

TEST_F(EventsTest, ChangesAreHeardByThoseWhoAreRegistered) {
    Listener listener;
    Listener other;
    EXPECT_EQ(listen(listener, strangePort), HBA_STATUS_ERROR_ILLEGAL_WWN);
    EXPECT_EQ(listen(listener, firstPort), HBA_STATUS_OK);
    EXPECT_EQ(listen(other, secondPort), HBA_STATUS_OK);
    for (uint8_t enable : {uint8_t{0}, uint8_t{0}, uint8_t{1}}) {
        EXPECT_EQ(CALL(m_library, LRM_SetPortEnabled)(firstPort, enable, &enable), RM_STATUS_OK);
    }
    for (const char* state : {R"({"state": "online"})", R"({"state": "linkDown"})"}) {
        changePort(state);
        CALL(m_library, LRM_ResetHBA)(firstPort, 1);
    }
    changePort(R"({"state": "needsReset"})");
    change(R"({"reboot": true})");
    raise(R"("online", "times": 3, "alternate": true)");
    EXPECT_NE(control(R"({"linkEvents": {"port": "1000025456000009", "type": 1}})"), "");
    change(R"({"entryPoints": {"*": {"where": "1000025456000000", "failCall": 1}}})");
    EXPECT_EQ(listener.remove(), HBA_STATUS_ERROR);
    EXPECT_EQ(allSeen(listener), "-+-+-+-++-+999");
    EXPECT_EQ(other.remove(), HBA_STATUS_OK);
    EXPECT_EQ(other.seen, "-+") << "the reboot alone";
    CALL(m_library, HBA_FreeLibrary)();
    EXPECT_EQ(listener.remove(), HBA_STATUS_ERROR_INVALID_HANDLE);
}

TEST_F(EventsTest, RemovalWaitsForTheCallbackAndIsFinal) {
    Listener slow;
    Listener quick;
    EXPECT_EQ(listen(slow, firstPort) + listen(quick, firstPort), HBA_STATUS_OK);
    slow.isHeld = true;
    raise(R"("offline", "times": 100000, "alternate": true)"); // doesn't wait for the slow one
    slow.last.wait(0);
    std::atomic<bool> isRemoved{false};
    std::thread remover([&] { isRemoved = slow.remove() == HBA_STATUS_OK; });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(isRemoved);
    slow.isHeld = false;
    slow.isHeld.notify_all();
    remover.join();
    EXPECT_TRUE(isRemoved);
    const std::string heard = slow.seen;
    const std::string all = allSeen(quick, farewell);
    EXPECT_EQ(all.size(), 100000U + 4U);
    EXPECT_EQ(std::min(all.find("--"), all.find("++")), std::string::npos);
    EXPECT_EQ(listen(slow, firstPort), HBA_STATUS_OK);
    EXPECT_EQ(allSeen(slow), heard + "999");
    EXPECT_EQ(quick.seen, all);
}
