#include "runtime/log.h"

#include "tests/runtime/test_clock.h"
#include "tests/runtime/test_log.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::MatchesRegex;

void log_each_level() {
    for (const Log_Level level : {LL_FATAL, LL_ERR, LL_WARN, LL_INFO, LL_DBG}) {
        log(level, "source.cpp", 12, "level %d", static_cast<int>(level));
    }
}

// Number of lines that a configuration lets through, of one a level.
std::size_t lines_with(const char* config) {
    Test_Log test(config);
    log_each_level();
    return test.lines().size();
}

TEST(Log, level_is_the_first_line_with_the_key) {
    EXPECT_EQ(lines_with("LOG_LEVEL\t \t=  dBg  \r\n"), 5u);
    EXPECT_EQ(lines_with("# LOG_LEVEL=DBG\n\n \t\nOTHER = 1\nLOG_LEVEL = INFO\nLOG_LEVEL=DBG\n"),
              4u);
    EXPECT_EQ(lines_with("LOG_LEVEL\nLOG_LEVELS=DBG\nLOG_LEVEL = ERR\n"), 2u);
    EXPECT_EQ(lines_with((std::string(1500, 'x') + "\nLOG_LEVEL=ERR\n").c_str()), 2u);

    EXPECT_EQ(lines_with(""), 0u);
    EXPECT_EQ(lines_with("LOG_LEVEL=debug\nLOG_LEVEL=DBG\n"), 0u);
    EXPECT_EQ(lines_with("LOG_LEVEL=WARN ING\n"), 0u);
    EXPECT_EQ(lines_with("log_level=WARN\n"), 0u);
    EXPECT_EQ(lines_with(" LOG_LEVEL=WARN\n"), 0u);
}

TEST(Log, a_line_has_one_form) {
    Test_Clock clock(uint64{1704110400} * 1000000 + 999999);
    Test_Log test("LOG_LEVEL=DBG\n");
    log(LL_WARN, "a.cpp", 7, "plain");
    log(LL_FATAL, "b.cpp", 123456, "ends already: %s\n", "yes");
    const std::string long_text(5000, 'y');
    log(LL_INFO, "d.cpp", 1, "%s|", long_text.c_str());

    const std::string time = "[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} ";
    EXPECT_THAT(test.lines(),
                ElementsAre(MatchesRegex(time + "WARN: a\\.cpp\\(7\\): plain"),
                            MatchesRegex(time + "FATAL: b\\.cpp\\(123456\\): ends already: yes"),
                            EndsWith("INFO: d.cpp(1): " + long_text + "|")));
}

TEST(Log, files_that_cannot_be_opened_leave_it_off) {
    {
        Test_Log test("LOG_LEVEL=DBG\n");
        std::ofstream(test.home() / ".cimple") << "a file where the directory should be";
        log_each_level();
        EXPECT_THAT(test.lines(), IsEmpty());
    }
    EXPECT_EQ(lines_with(nullptr), 0u);
    Test_Log test("LOG_LEVEL=DBG\n");
    std::filesystem::create_directories(test.file());
    errno = 77;
    log_each_level();
    EXPECT_EQ(errno, 77) << "the caller's errno";
}

TEST(Log, lines_of_threads_and_processes_stay_whole) {
    Test_Log test("LOG_LEVEL=DBG\n");
    constexpr int count = 100;
    const auto write = [](char mark) {
        const std::string text(200, mark);
        for (int i = 0; i < count; ++i) {
            log(LL_INFO, "f.cpp", i, "%s", text.c_str());
        }
    };
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        write('c');
        ::_exit(0);
    }
    std::thread a(write, 'a');
    std::thread b(write, 'b');
    a.join();
    b.join();
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);

    const std::vector<std::string> lines = test.lines();
    EXPECT_EQ(lines.size(), 3u * count);
    for (const std::string& line : lines) {
        EXPECT_THAT(line, MatchesRegex(".* INFO: f\\.cpp\\([0-9]+\\): (a+|b+|c+)"));
    }
}

TEST(Log, a_cancelled_thread_ends_behind_its_lines) {
    Test_Log test("LOG_LEVEL=DBG\n");
    const auto body = [](void*) -> void* {
        ::pthread_cancel(::pthread_self());
        log(LL_INFO, "f.cpp", 1, "opens the log");
        log(LL_INFO, "f.cpp", 2, "goes on");
        ::pthread_testcancel();
        return nullptr;
    };
    pthread_t thread{};
    ASSERT_EQ(::pthread_create(&thread, nullptr, body, nullptr), 0);
    void* result = nullptr;
    ASSERT_EQ(::pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_THAT(test.lines(), ElementsAre(EndsWith("opens the log"), EndsWith("goes on")));
    log(LL_INFO, "f.cpp", 3, "the log is free again");
    EXPECT_EQ(test.lines().size(), 3u);
}

} // namespace
} // namespace cimple
