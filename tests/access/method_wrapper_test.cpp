#include "access/method_wrapper.h"
#include "tests/access/fake_fixture.h"
#include "tests/access/run_process.h"
#include "tests/common/session.h"

#include <gmock/gmock.h>

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
using testing::StartsWith;

const std::string initName = "/TVR_RM_INIT_LIB_" + std::to_string(getpid());
const std::string doneName = "/TVR_RM_INIT_LIB_DONE_" + std::to_string(getpid());

bool exists(const std::string& name) {
    sem_t* semaphore = sem_open(name.c_str(), 0);
    return semaphore != SEM_FAILED && sem_close(semaphore) == 0;
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
    int initCalls() { return libraries->calls["LRM_InitLib"]; }
};

TEST_F(MethodWrapper, InitialisesTheLibrary) {
    libraries->initLib = [] { return 17; };
    EXPECT_THROW(TVR_MethodWrapper(), std::exception);
    EXPECT_FALSE(exists(initName));
    EXPECT_EQ(log.take().back(), "Error : Initialization of RMLib:: RM_InitLib failed with[17]");
    libraries->initLib = [] { return -1; };
    {
        const TVR_MethodWrapper wrapper;
        const TVR_MethodWrapper second;
        EXPECT_EQ(initCalls(), 3) << "each initialises again";
        EXPECT_TRUE(exists(initName));
    }
    EXPECT_TRUE(exists(doneName)) << "goes with the module";
    unloadManagementLibraries();
    EXPECT_THROW(TVR_MethodWrapper(), std::exception);
    EXPECT_FALSE(exists(initName));
}

TEST_F(MethodWrapper, ASecondPartyWaitsForTheFirst) {
    std::promise<void> entered;
    std::promise<void> leave;
    libraries->initLib = [&] {
        entered.set_value();
        leave.get_future().wait();
        return 0;
    };
    std::optional<TVR_MethodWrapper> first;
    std::optional<TVR_MethodWrapper> second;
    std::thread one([&] { first.emplace(); });
    entered.get_future().wait();
    std::thread two([&] { second.emplace(); });
    while (!testing::Value(log.take(), Contains(StartsWith("Waiting on Completed")))) {
        std::this_thread::yield();
    }
    leave.set_value();
    one.join();
    two.join();
    EXPECT_EQ(initCalls(), 1);
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

// The name goes with any object, and the next construction has a life of its own.
TEST_F(MethodWrapper, ADestructionEndsTheLifeOfAll) {
    const uint32 usual = setInitLibWait(20);
    std::optional<TVR_MethodWrapper> wrappers[3];
    const auto isFresh = [this] { return std::exchange(libraries->calls["LRM_InitLib"], 0) == 1; };
    wrappers[0].emplace();
    wrappers[1].emplace();
    for (const int ended : {0, 2, 1, 0}) {
        isFresh();
        wrappers[ended].reset();
        EXPECT_FALSE(exists(initName)) << ended;
        wrappers[ended].emplace();
        EXPECT_TRUE(isFresh()) << ended;
        wrappers[2].emplace();
        EXPECT_TRUE(isFresh()) << ended;
    }
    setInitLibWait(usual);
}

// A dead process of another user has left a name, which this one can neither remove nor open.
TEST_F(MethodWrapper, ASemaphoreOfAnotherUserDoesNotKeepFromInitialising) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root to leave one";
    }
    constexpr uid_t nobody = 65534;
    const pid_t child = fork();
    if (child == 0) {
        const std::string name = "/TVR_RM_INIT_LIB_" + std::to_string(getpid());
        leave(name, 0);
        bool good = setresuid(nobody, nobody, 0) == 0;
        {
            const TVR_MethodWrapper wrapper;
            const TVR_MethodWrapper second;
            good = good && initCalls() == 2;
        }
        const TVR_MethodWrapper third;
        good = good && initCalls() == 3 && setresuid(0, 0, 0) == 0;
        sem_unlink(name.c_str());
        sem_unlink(("/TVR_RM_INIT_LIB_DONE_" + std::to_string(getpid())).c_str());
        _exit(good ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
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
        sem_post(semaphore);
        sem_post(semaphore);
        sem_close(semaphore);
    }
    EXPECT_FALSE(exists(initName));
    EXPECT_EQ(setInitLibWait(usual), 20u);
    EXPECT_EQ(usual, 60'000u);
}

// Also what is never destroyed, and the second name, go with the process.
TEST_F(MethodWrapper, NothingIsLeftAtTheEnd) {
    const std::string output = runProcess("LD_LIBRARY_PATH=" FAKE_FC " " PROBE " load wrapper");
    const std::string pid = std::to_string(std::stoi(output.substr(output.find("pid=") + 4)));
    EXPECT_FALSE(exists("/TVR_RM_INIT_LIB_" + pid));
    EXPECT_FALSE(exists("/TVR_RM_INIT_LIB_DONE_" + pid));
}

TEST_F(MethodWrapper, ValidatesLocalPorts) {
    EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(HBA_WWN{}), 1u);
    libraries->adapters.emplace_back().ports.resize(1);
    EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(HBA_WWN{}), 0u);
    libraries->statuses["RM_IsLocalHBA"] = {5};
    EXPECT_EQ(TVR_MethodWrapper::Validatewwpn(HBA_WWN{}), 1u);
}

// ---- names ----

class HBANames : public testing::Test {
protected:
    HBANames() {
        session.on("id", [this](const auto&, std::ostream& answer) {
            char out[W::hbaNameTextSize];
            answer << W::Id2HBAName(out, session.rest().c_str()) << ' ' << out << '\n';
        });
        session.on("name", [this](const auto& words, std::ostream& answer) {
            LogCapture log;
            char out[W::hbaNameTextSize] = "";
            const uint32 result = W::str2HBAName(&_name, words.at(0).c_str());
            W::hbaNameToText(out, _name);
            answer << result << ' ' << out << ", " << log.take().back() << '\n';
        });
    }

    using W = TVR_MethodWrapper;
    Text_Session session;

private:
    HBA_WWN _name{};
};

TVR_SESSIONS(HBANames, "names.txt");

TEST_F(HBANames, NeedATextAndAPlace) {
    char out[W::hbaNameTextSize];
    HBA_WWN name{};
    EXPECT_EQ(W::Id2HBAName(nullptr, "") + W::Id2HBAName(out, nullptr), 2u);
    EXPECT_EQ(W::str2HBAName(&name, nullptr) + W::str2HBAName(nullptr, ""), 2u);
}

} // namespace
} // namespace cimple

int main(int argc, char** argv) {
    cimple::restartWithLibraries(FAKE_FC, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
