#include "tests/runtime/test_log.h"

#include <cerrno>
#include <dlfcn.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <pthread.h>

namespace cimple {
namespace {

long open_files() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

TEST(Unload, leaves_neither_key_nor_file_behind) {
    Test_Log log("LOG_LEVEL=ERR\n");
    const long files_before = open_files();
    for (int round = 0; round < 3; ++round) {
        void* library = ::dlopen(UNLOAD_FIXTURE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << ::dlerror();
        const auto use = reinterpret_cast<int (*)()>(::dlsym(library, "use_runtime"));
        ASSERT_NE(use, nullptr);
        EXPECT_EQ(use(), 0);
        const auto* key = static_cast<pthread_key_t*>(::dlsym(library, "_thread_context_key"));
        ASSERT_NE(key, nullptr);
        const pthread_key_t key_value = *key;
        EXPECT_EQ(::pthread_setspecific(key_value, nullptr), 0);
        EXPECT_GT(open_files(), files_before);

        ASSERT_EQ(::dlclose(library), 0);
        EXPECT_EQ(::dlopen(UNLOAD_FIXTURE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "really gone";
        EXPECT_EQ(::pthread_setspecific(key_value, &log), EINVAL) << "the key was given back";
        EXPECT_EQ(open_files(), files_before);
    }
    EXPECT_THAT(log.lines(), testing::Each(testing::EndsWith("): loaded")));
    EXPECT_EQ(log.lines().size(), 3u);
}

} // namespace
} // namespace cimple
