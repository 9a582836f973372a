#include "runtime/string.h"

#include <gtest/gtest.h>
#include <string>

namespace cimple {
namespace {

TEST(String, capacity_is_the_least_power_of_two_from_32) {
    EXPECT_EQ(String(std::string(32, 'x')).capacity(), 32u);
    EXPECT_EQ(String(std::string(33, 'x')).capacity(), 64u);
    String s(std::string(32, 'a'));
    s.append('b');
    EXPECT_EQ(s.capacity(), 64u);
    s.append(std::string(100, 'c').c_str());
    EXPECT_EQ(s.capacity(), 256u);
    EXPECT_EQ(s, std::string(32, 'a') + "b" + std::string(100, 'c'));
}

TEST(String, a_write_leaves_other_holders_alone) {
    const String original("original");
    String assigned(original);
    String grown(original);
    EXPECT_TRUE(assigned.same_block(original));

    assigned.assign("new");
    grown.append('?');

    EXPECT_EQ(original, "original");
    EXPECT_EQ(assigned, "new");
    EXPECT_EQ(grown, "original?");
    EXPECT_EQ(grown.capacity(), 64u) << "a character into a shared block doubles it";
}

TEST(String, its_own_text_may_be_the_argument) {
    String s("abcdef");
    s.assign(s.c_str() + 2);
    EXPECT_EQ(s, "cdef");
    s.append(s.c_str());
    EXPECT_EQ(s, "cdefcdef");
    String other(s);
    s.assign(s.c_str() + 6, 2); // out of a shared block
    EXPECT_EQ(s, "ef");
    const String& alias = s;
    s = alias;
    EXPECT_EQ(s, "ef");
    EXPECT_EQ(other, "cdefcdef");
    String full(std::string(32, 'y'));
    full.append(full.c_str(), 32);
    EXPECT_EQ(full, std::string(64, 'y'));
}

TEST(String, compares_and_searches_by_size_and_bytes) {
    const String with_nul("a\0b", 3);
    EXPECT_EQ(with_nul.size(), 3u);
    EXPECT_FALSE(with_nul == "a");
    EXPECT_FALSE(with_nul.equali("a"));
    EXPECT_TRUE(String("abc").equali("aBC"));
    EXPECT_TRUE(String().equali(nullptr));
    EXPECT_FALSE(eqi("[", "{")) << "only letters are folded";
    EXPECT_FALSE(eqi("name", "names"));
    const String s("name=value=x");
    EXPECT_EQ(s.find('=', 5), 10);
    EXPECT_EQ(s.find("value", 6), -1);
    EXPECT_EQ(s.find('n', 1000), -1);
}

} // namespace
} // namespace cimple
