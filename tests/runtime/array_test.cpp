#include "runtime/array.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace cimple {
namespace {

TEST(Array, grows_to_powers_of_two_from_8) {
    Array<uint32> array;
    EXPECT_EQ(array.capacity(), 8u);
    for (uint32 i = 0; i < 9; ++i) {
        array.append(i);
    }
    EXPECT_EQ(array.capacity(), 16u);
    const uint32 many[24] = {};
    array.append(many, 24);
    EXPECT_EQ(array.capacity(), 64u);

    Array<uint32> copy(array);
    EXPECT_EQ(copy.capacity(), 33u) << "a copy holds what it needs";
    copy.append(1);
    EXPECT_EQ(copy.capacity(), 64u);
}

TEST(Array, inserts_and_removes_in_order) {
    Array<String> array{"b", "c"};
    const String first[] = {"x", "a"};
    array.insert(0, first, 2);
    array.insert(99, first, 1);
    EXPECT_TRUE((array == Array<String>{"x", "a", "b", "c", "x"}));
    array.remove(0, 1);
    array.remove(3, 100);
    array.remove(3);
    EXPECT_TRUE((array == Array<String>{"a", "b", "c"}));
    EXPECT_EQ(array.find("c"), 2);
}

TEST(Array, an_element_of_its_own_may_be_appended) {
    Array<String> array;
    for (int i = 0; i < 8; ++i) {
        array.append(String(std::string(40, static_cast<char>('a' + i))));
    }
    array.append(array[0]); // which moves when the block grows
    EXPECT_EQ(array[8], std::string(40, 'a'));
    const Array<String>& alias = array;
    array = alias;
    EXPECT_EQ(array.size(), 9u);
}

TEST(Array, equality_is_the_element_types) {
    const real64 nan = std::numeric_limits<real64>::quiet_NaN();
    EXPECT_TRUE((Array<real64>{0.0} == Array<real64>{-0.0}));
    EXPECT_FALSE((Array<real64>{nan} == Array<real64>{nan}));
    EXPECT_FALSE((Array<Datetime>{Datetime::interval(5)} == Array<Datetime>{Datetime(5)}));
    const Array<uint8> bytes{1};
    const Array<sint8> other{1};
    EXPECT_FALSE(bytes.equal(other)) << "arrays of two types are never equal";
    EXPECT_EQ((Array<real32>{1.0f, 0.0f}.find(-0.0f)), 1);
}

TEST(Array, size_beyond_memory_leaves_it_unchanged) {
    Array<uint64> array{1, 2};
    const uint64 element = 3;
    EXPECT_THROW(array.append(&element, std::numeric_limits<std::size_t>::max() - 1),
                 std::bad_alloc);
    EXPECT_THROW(array.reserve(std::numeric_limits<std::size_t>::max() / 8), std::bad_alloc);
    EXPECT_TRUE((array == Array<uint64>{1, 2}));
}

} // namespace
} // namespace cimple
