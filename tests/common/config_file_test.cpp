#include "common/config_file.h"
#include "tests/common/log_capture.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>

namespace cimple {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string timeout = "TVR_PROVIDER_CACHE_TIMEOUT";
const std::string adapter = "TVR_PROVIDER_REFRESH_ADAPTERDATA";
const std::string san = "TVR_PROVIDER_REFRESH_SANDATA";

TEST(ConfigFile, TakesWhatIsAllowed) {
    const struct {
        std::string text;
        sint32 timeout;
        bool adapter = false;
        bool san = true;
    } cases[] = {
        {"", 10},
        {timeout + "=5\n" + adapter + " = TRUE\n" + san + "\t=\tFALSE\r\n", 5, true, false},
        {"  " + timeout + " = 7", 7},
        {timeout + " = 31\n", 10},
        {timeout + " = -5\n", 10},
        {timeout + " = 18446744073709551621\n", 10},
        {timeout + " = 5min\n", 5},
        {adapter + " = TRUE!\n" + san + " = False\n", 10},
        {timeout + "=3\n" + timeout + "=4\n", 3},
        {san + "=no\n" + san + "=FALSE\n" + san + "=TRUE\n", 10, false, false},
        {"#" + timeout + "=3\n  # " + adapter + "=TRUE\n", 10},
        {"OTHER = 3\n= 4\nno equals sign\n" + timeout + "=6\n", 6},
        {std::string(999, '\n') + timeout + "=3\n", 3},
        {std::string(1000, '\n') + timeout + "=3\n", 10},
        {std::string(5000, 'x') + timeout + "=3\n" + timeout + "=4\n", 4},
        {std::string("\0\0=\0\n", 5) + timeout + "=4\n", 4},
    };
    const TempDir dir;
    LogCapture log;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 200));
        TvrConfigFile config;
        config.load(dir.write("conf", c.text).c_str());
        EXPECT_EQ(config.getCacheTimeout(), c.timeout);
        EXPECT_EQ(config.getRefreshAdapterData(), c.adapter);
        EXPECT_EQ(config.getRefreshSANData(), c.san);
        EXPECT_EQ(config.setCacheTimeout(31) + config.setCacheTimeout(0), -2);
        EXPECT_EQ(config.setRefreshAdapterData(2) + config.setRefreshSANData(7), -2);
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ConfigFile, WhatCannotBeReadOrWrittenDoesNoHarm) {
    const TempDir dir;
    LogCapture log;
    {
        TvrConfigFile config;
        config.load(dir.path().c_str());
        EXPECT_THAT(log.take(),
                    ElementsAre("Unable to open provider config setting file - " + dir.path()));
        TvrConfigFile nowhere;
        nowhere.load(dir.file("no/such/dir").c_str());
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

} // namespace
} // namespace cimple
