#include "access/method_wrapper.h"
#include "tests/access/fake_fixture.h"
#include "tests/access/run_process.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <future>
#include <optional>
#include <semaphore.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;

const std::string initName = "/TVR_RM_INIT_LIB_" + std::to_string(getpid());
const std::string doneName = "/TVR_RM_INIT_LIB_DONE_" + std::to_string(getpid());

bool exists(const std::string& name) {
    sem_t* semaphore = sem_open(name.c_str(), 0);
    if (semaphore == SEM_FAILED) {
        return false;
    }
    sem_close(semaphore);
    return true;
}

// What a dead process with the same id left.
void leave(const std::string& name, unsigned value) {
    sem_unlink(name.c_str());
    sem_t* semaphore = sem_open(name.c_str(), O_CREAT | O_EXCL, 0644, value);
    ASSERT_NE(semaphore, SEM_FAILED);
    sem_close(semaphore);
}

class MethodWrapper : public WithFakeLibraries {
protected:
    void SetUp() override {
        WithFakeLibraries::SetUp();
        libraries->initLib = nullptr;
        libraries->calls.clear();
    }
    int initCalls() { return libraries->calls["LRM_InitLib"]; }
};

TEST_F(MethodWrapper, InitialisesTheLibrary) {
    {
        const TVR_MethodWrapper wrapper;
        EXPECT_EQ(initCalls(), 1);
        EXPECT_TRUE(exists(initName));
        EXPECT_TRUE(exists(doneName));
    }
    EXPECT_FALSE(exists(initName));
    EXPECT_TRUE(exists(doneName)) << "goes with the module";
    EXPECT_THAT(log.take(),
                ElementsAre("Constructor", "Setting Up for FIFO.. ",
                            "Aquired Semaphore.. Running RM_InitLib " + initName + " ",
                            "Aquired Completed Semaphore.. Running RM_InitLib " + doneName,
                            "Signalling Completed Semaphore.. Running RM_InitLib",
                            "Signaled Completed Semaphore.. Running RM_InitLib",
                            "RMLIB initialized", "Destructor", "Value of Sem in destructor=3",
                            "RMLIB uninitialzed"));
}

TEST_F(MethodWrapper, AFailureLeavesTheWayFreeForAnotherTry) {
    libraries->initLib = [] { return 17; };
    EXPECT_THROW(TVR_MethodWrapper(), std::exception);
    EXPECT_FALSE(exists(initName));
    EXPECT_EQ(log.take().back(), "Error : Initialization of RMLib:: RM_InitLib failed with[17]");
    libraries->initLib = [] { return -1; };
    const TVR_MethodWrapper wrapper;
    EXPECT_EQ(initCalls(), 2);
}

TEST_F(MethodWrapper, TheSecondOfTwoInitialisesAgain) {
    const TVR_MethodWrapper first;
    const TVR_MethodWrapper second;
    EXPECT_EQ(initCalls(), 2);
}

TEST_F(MethodWrapper, EveryLifeInitialises) {
    for (int life = 1; life <= 3; ++life) {
        const TVR_MethodWrapper wrapper;
        EXPECT_EQ(initCalls(), life);
    }
    EXPECT_FALSE(exists(initName));
}

TEST_F(MethodWrapper, ASecondPartyWaitsForTheFirst) {
    std::promise<void> entered;
    std::promise<void> leave;
    std::atomic<bool> left{false};
    libraries->initLib = [&] {
        entered.set_value();
        leave.get_future().wait();
        left = true;
        return 0;
    };
    std::optional<TVR_MethodWrapper> first;
    std::optional<TVR_MethodWrapper> second;
    std::thread one([&] { first.emplace(); });
    entered.get_future().wait();
    std::thread two([&] {
        second.emplace();
        EXPECT_TRUE(left);
    });
    const std::string waiting =
        "Waiting on Completed Semaphore.. To issue RM Calls.." + initName + ".. sem = 1l";
    const auto waits = [&] {
        for (const LogCapture::Line& line : log.lines()) {
            if (line.text == waiting) {
                return true;
            }
        }
        return false;
    };
    while (!waits()) {
        std::this_thread::yield();
    }
    leave.set_value();
    one.join();
    two.join();
    EXPECT_EQ(initCalls(), 1);
    EXPECT_EQ(log.take().back(), "RMLIB initialized");
    first.reset();
    second.reset();
    EXPECT_FALSE(exists(initName));
}

TEST_F(MethodWrapper, ASemaphoreOfADeadProcessDoesNotBlock) {
    for (const unsigned value : {0u, 1u, 2u, 3u, 100u}) {
        libraries->calls.clear();
        leave(initName, value);
        leave(doneName, value);
        const TVR_MethodWrapper wrapper;
        EXPECT_EQ(initCalls(), 1) << value;
    }
    EXPECT_FALSE(exists(initName));
}

// Somebody else in this process has taken all there is and never gives it back.
TEST_F(MethodWrapper, AWaitHasALimit) {
    const uint32 usual = setInitLibWait(20);
    {
        const TVR_MethodWrapper first;
        sem_t* semaphore = sem_open(initName.c_str(), 0);
        ASSERT_NE(semaphore, SEM_FAILED);
        sem_wait(semaphore);
        EXPECT_THROW(TVR_MethodWrapper(), std::runtime_error);
        sem_wait(semaphore);
        EXPECT_THROW(TVR_MethodWrapper(), std::runtime_error);
        EXPECT_EQ(initCalls(), 1);
        sem_post(semaphore);
        sem_post(semaphore);
        const TVR_MethodWrapper second;
        EXPECT_EQ(initCalls(), 2);
        sem_close(semaphore);
    }
    EXPECT_FALSE(exists(initName));
    EXPECT_EQ(setInitLibWait(usual), 20u);
    EXPECT_EQ(usual, 60'000u);
}

TEST_F(MethodWrapper, AForkedProcessLeavesTheSemaphoreOfItsParentAlone) {
    std::optional<TVR_MethodWrapper> wrapper(std::in_place);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        wrapper.reset();
        _exit(0);
    }
    int ended = -1;
    ASSERT_EQ(waitpid(child, &ended, 0), child);
    EXPECT_EQ(ended, 0);
    sem_t* semaphore = sem_open(initName.c_str(), 0);
    ASSERT_NE(semaphore, SEM_FAILED);
    int value = 0;
    EXPECT_EQ(sem_getvalue(semaphore, &value), 0);
    EXPECT_EQ(value, 2);
    sem_close(semaphore);
}

// Also what is never destroyed, and the second name, go with the process.
TEST_F(MethodWrapper, NothingIsLeftAtTheEnd) {
    const std::string output =
        runProcess("LD_LIBRARY_PATH=" FAKE_FC " " PROBE " load wrapper init");
    unsigned long pid = 0;
    ASSERT_EQ(sscanf(output.c_str(), "load=0 missing=000 pid=%lu init=0", &pid), 1) << output;
    EXPECT_FALSE(exists("/TVR_RM_INIT_LIB_" + std::to_string(pid)));
    EXPECT_FALSE(exists("/TVR_RM_INIT_LIB_DONE_" + std::to_string(pid)));
}

TEST_F(MethodWrapper, ValidatesLocalPorts) {
    constexpr HBA_WWN port{{0x10, 0, 0, 0, 0, 0, 0, 1}};
    EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(port), 1u);
    EXPECT_THAT(log.take(), ElementsAre("Entering TVR_MethodWrapper::Validatewwpn()",
                                        "RM_IsLocalHBA: status=0", "HBA IS NOT LOCAL"));
    libraries->localPorts["1000000000000001"] = true;
    EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(port), 0u);
    EXPECT_THAT(log.take(), ElementsAre("Entering TVR_MethodWrapper::Validatewwpn()",
                                        "RM_IsLocalHBA: status=0"));
    libraries->statuses["RM_IsLocalHBA"] = {5};
    EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(port), 1u);
    unloadManagementLibraries();
    log.take();
    EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(port), 1u);
    EXPECT_THAT(log.take(), Contains("RM_IsLocalHBA: status=1"));
}

TEST_F(MethodWrapper, LogsStatusTexts) {
    libraries->statusTexts = {{89, "bank not supported"}, {90, std::string(400, 'x')}};
    TVR_MethodWrapper::logRMStatus(89);
    TVR_MethodWrapper::logRMStatus(12345);
    TVR_MethodWrapper::logRMStatus(90);
    EXPECT_THAT(log.take(), ElementsAre("Status: <89>:bank not supported", "Status: <12345>",
                                        "Status: <90>:" + std::string(256, 'x')));
}

TEST(MethodWrapperWithoutLibrary, CannotBeMade) {
    LogCapture log;
    EXPECT_THROW(TVR_MethodWrapper(), std::exception);
    EXPECT_EQ(log.take().back(), "Error : Initialization of RMLib:: RM_InitLib failed with[1]");
    EXPECT_FALSE(exists(initName));
}

} // namespace
} // namespace cimple

int main(int argc, char** argv) {
    cimple::restartWithLibraries(FAKE_FC, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
