#include "common/config_file.h"
#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

#include <ostream>
#include <thread>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ConfigCase {
    const char* what;
    std::string text;
    sint32 timeout;
    bool adapter;
    bool san;
    friend void PrintTo(const ConfigCase& c, std::ostream* out) { *out << c.what; }
};

std::string lines(std::size_t count, const std::string& line) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += line + "\n";
    }
    return text;
}

const std::string timeout = "TVR_PROVIDER_CACHE_TIMEOUT";
const std::string adapter = "TVR_PROVIDER_REFRESH_ADAPTERDATA";
const std::string san = "TVR_PROVIDER_REFRESH_SANDATA";

class ConfigFile : public testing::TestWithParam<ConfigCase> {};

TEST_P(ConfigFile, TakesWhatIsAllowed) {
    const TempDir dir;
    const std::string path = dir.write("conf", GetParam().text);
    LogCapture log;
    TvrConfigFile config;
    config.load(path.c_str());
    EXPECT_EQ(config.getCacheTimeout(), GetParam().timeout);
    EXPECT_EQ(config.getRefreshAdapterData(), GetParam().adapter);
    EXPECT_EQ(config.getRefreshSANData(), GetParam().san);
    EXPECT_THAT(log.take(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Files, ConfigFile,
    testing::Values(
        ConfigCase{"empty", "", 10, false, true},
        ConfigCase{"all", timeout + "=5\n" + adapter + " = TRUE\n" + san + "\t=\tFALSE\r\n", 5,
                   true, false},
        ConfigCase{"no_line_end", "  " + timeout + " = 7", 7, false, true},
        ConfigCase{"zero", timeout + " = 0\n", 10, false, true},
        ConfigCase{"thirty", timeout + " = 30\n", 30, false, true},
        ConfigCase{"thirty_one", timeout + " = 31\n", 10, false, true},
        ConfigCase{"negative", timeout + " = -5\n", 10, false, true},
        ConfigCase{"overflow", timeout + " = 18446744073709551621\n", 10, false, true},
        ConfigCase{"digits_and_text", timeout + " = 5min\n", 5, false, true},
        ConfigCase{"no_digits", timeout + " = five\n", 10, false, true},
        ConfigCase{"no_value", timeout + " =\n", 10, false, true},
        ConfigCase{"lower_case_value", adapter + " = true\n" + san + " = False\n", 10, false, true},
        ConfigCase{"lower_case_key", "tvr_provider_cache_timeout = 5\n", 10, false, true},
        ConfigCase{"longer_value", adapter + " = TRUE!\n", 10, false, true},
        ConfigCase{"first_good_wins", timeout + "=3\n" + timeout + "=4\n", 3, false, true},
        ConfigCase{"bad_then_good", san + "=no\n" + san + "=FALSE\n" + san + "=TRUE\n", 10, false,
                   false},
        ConfigCase{"comments", "#" + timeout + "=3\n  # " + adapter + "=TRUE\n", 10, false, true},
        ConfigCase{"unknown_key", "OTHER = 3\n= 4\nno equals sign\n" + timeout + "=6\n", 6, false,
                   true},
        ConfigCase{"second_equals", timeout + "= =6\n", 10, false, true},
        ConfigCase{"line_1000", lines(999, "#") + timeout + "=3\n", 3, false, true},
        ConfigCase{"line_1001", lines(1000, "") + timeout + "=3\n", 10, false, true},
        ConfigCase{"long_line", std::string(5000, 'x') + timeout + "=3\n" + timeout + "=4\n", 4,
                   false, true},
        ConfigCase{"zero_bytes", std::string("\0\0=\0\n", 5) + timeout + "=4\n", 4, false, true}),
    [](const auto& test) { return std::string(test.param.what); });

constexpr char writtenDefaults[] = "##################################################\n"
                                   "# Tavrin HBA CIM Provider Configuration Settings #\n"
                                   "##################################################\n"
                                   "TVR_PROVIDER_CACHE_TIMEOUT = 10\n"
                                   "TVR_PROVIDER_REFRESH_ADAPTERDATA = FALSE\n"
                                   "TVR_PROVIDER_REFRESH_SANDATA = TRUE\n";

TEST(ConfigFileLife, IsCreatedAtTheEnd) {
    const TempDir dir;
    LogCapture log;
    {
        TvrConfigFile config;
        config.load(dir.file("conf").c_str());
        config.load(nullptr);
        EXPECT_FALSE(std::filesystem::exists(dir.file("conf")));
    }
    EXPECT_EQ(dir.read("conf"), writtenDefaults);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ConfigFileLife, ChangesSurvive) {
    const TempDir dir;
    const std::string path = dir.write("conf", "# mine\n" + timeout + "=5\nOTHER=1\n");
    {
        TvrConfigFile config;
        config.load(path.c_str());
        EXPECT_EQ(config.setCacheTimeout(30), 0);
        EXPECT_EQ(config.setCacheTimeout(31), -1);
        EXPECT_EQ(config.setCacheTimeout(0), -1);
        EXPECT_EQ(config.setRefreshAdapterData(1), 0);
        EXPECT_EQ(config.setRefreshAdapterData(2), -1);
        EXPECT_EQ(config.setRefreshSANData(0), 0);
        EXPECT_EQ(config.setRefreshSANData(7), -1);
    }
    TvrConfigFile again;
    again.load(path.c_str());
    EXPECT_EQ(again.getCacheTimeout(), 30);
    EXPECT_TRUE(again.getRefreshAdapterData());
    EXPECT_FALSE(again.getRefreshSANData());
}

TEST(ConfigFileLife, WhatCannotBeReadOrWrittenDoesNoHarm) {
    const TempDir dir;
    LogCapture log;
    {
        TvrConfigFile config;
        config.load(dir.path().c_str());
        EXPECT_THAT(log.take(),
                    ElementsAre("Unable to open provider config setting file - " + dir.path()));
        EXPECT_EQ(config.getCacheTimeout(), 10);
    }
    { TvrConfigFile never; }
    {
        TvrConfigFile nowhere;
        nowhere.load((dir.path() + "/no/such/dir").c_str());
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ConfigFileLife, SettersAndGettersFromSeveralThreads) {
    TvrConfigFile config;
    std::thread writer([&] {
        for (sint32 i = 0; i < 300; ++i) {
            config.setCacheTimeout(i % 30 + 1);
            config.setRefreshSANData(static_cast<uint32>(i % 2));
        }
    });
    for (int i = 0; i < 300; ++i) {
        const sint32 minutes = config.getCacheTimeout();
        EXPECT_TRUE(minutes >= 1 && minutes <= 30);
        config.getRefreshSANData();
    }
    writer.join();
}

} // namespace
} // namespace cimple
