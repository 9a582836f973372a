#include "tests/sim/layout.h"

#include <gtest/gtest.h>

TEST(HbaApiLayout, EqualsThePublishedHeader) {
    const Layout published = publishedLayout();
    if (published.empty()) {
        GTEST_SKIP() << "hbaapi.h is not installed";
    }
    EXPECT_EQ(ownLayout(), published);
}
