#include "runtime/instance_map.h"

#include "tests/runtime/random_instances.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace cimple::sample {
namespace {

// The meaning of a map: a list that is searched from its front.
class Linear_Map {
public:
    long find(const Instance* instance) const {
        for (std::size_t i = 0; i < members.size(); ++i) {
            if (key_eq(members[i], instance)) {
                return static_cast<long>(i);
            }
        }
        return -1;
    }
    long insert(Instance* instance) {
        if (find(instance) >= 0) {
            return -1;
        }
        members.push_back(instance);
        return static_cast<long>(members.size() - 1);
    }

    std::vector<Instance*> members;
};

// Runs one random course of inserts, finds and removals against a map and against its meaning.
template <class Make>
void compare(const Meta_Class& meta_class, Random_Instances& random, Make make_instance) {
    Instance_Map map(&meta_class);
    Linear_Map linear;
    for (int step = 0; step < 600; ++step) {
        const uint32 action = random.below(12);
        if (action < 6) {
            Ref<Instance> instance = make_instance();
            const long expected = linear.insert(instance.get());
            ASSERT_EQ(map.insert(instance.get()), expected);
            if (expected >= 0) {
                static_cast<void>(instance.release());
            }
        } else if (action < 11) {
            const Ref<Instance> probe = make_instance();
            const long expected = linear.find(probe.get());
            ASSERT_EQ(map.find(probe.get()), expected);
            ASSERT_EQ(map.lookup(probe.get()),
                      expected < 0 ? nullptr : linear.members[static_cast<std::size_t>(expected)]);
        } else if (!linear.members.empty()) {
            const uint32 position = random.below(static_cast<uint32>(linear.members.size()));
            destroy(linear.members[position]);
            linear.members.erase(linear.members.begin() + position);
            map.remove(position);
        }
        ASSERT_EQ(map.size(), linear.members.size());
        for (std::size_t i = 0; i < map.size(); ++i) {
            ASSERT_EQ(map.get(i), linear.members[i]) << i;
        }
    }

    Instance_Map copy(&meta_class);
    std::size_t position = 0;
    const long count = copy.append_clones(map, position);
    ASSERT_EQ(count, static_cast<long>(map.size()));
    for (std::size_t i = 0; i < map.size(); ++i) {
        ASSERT_NE(copy.get(i), map.get(i));
        const Ref<Instance> probe = make_instance();
        ASSERT_EQ(copy.find(probe.get()), linear.find(probe.get()));
    }
}

TEST(Instance_Map, answers_as_a_linear_search_would) {
    for (unsigned seed = 0; seed < 15; ++seed) {
        SCOPED_TRACE(seed);
        Random_Instances random(seed);
        for (const bool odd : {false, true}) {
            compare(Device::static_meta_class, random, [&] { return random.device(odd); });
            compare(Link::static_meta_class, random, [&] { return random.link(odd); });
        }
        compare(Port::static_meta_class, random, [&] { return random.device(false); });
        compare(Keys::static_meta_class, random, [&] { return random.keys(); });
        compare(Codes::static_meta_class, random, [&] { return random.codes(); });
        compare(Element::static_meta_class, random, [&] { return random.device(false); });
    }
}

TEST(Instance_Map, takes_over_what_it_inserts_and_nothing_else) {
    Class_Map<Device> map;
    EXPECT_EQ(map.insert(make_device("host", 1).release()), 0);
    const Ref<Device> same = make_device("host", 1);
    EXPECT_EQ(map.insert(same.get()), -1);
    EXPECT_EQ(same->__refs, 1u);
    EXPECT_EQ(map.find(nullptr), -1);
    EXPECT_EQ(map.insert(nullptr), -1);
    map.remove(1000);
    EXPECT_EQ(map.size(), 1u);
}

TEST(Instance_Map, clones_stop_at_a_key_that_is_there) {
    Class_Map<Device> from;
    for (uint32 number = 0; number < 5; ++number) {
        from.insert(make_device("host", number).release());
    }
    Class_Map<Device> to;
    to.insert(make_device("host", 2).release());
    std::size_t position = 99;
    EXPECT_EQ(to.append_clones(from, position), -1);
    EXPECT_EQ(position, 2u);
    EXPECT_EQ(to.size(), 3u);
    EXPECT_EQ(from.append_clones(from, position), -1);
    EXPECT_EQ(position, 0u);
    from.get(0)->Label.set("changed");
    EXPECT_EQ(to.get(1)->Label.value, "unnamed");
}

TEST(Instance_Map, a_cursor_reads_the_map_as_it_was_whatever_becomes_of_it) {
    constexpr uint32 count = 100;
    using Change = void (*)(std::optional<Class_Map<Device>> & map);
    const Change changes[] = {
        [](auto&) {},
        [](auto& map) { map->clear(); },
        [](auto& map) { map.reset(); },
        [](auto& map) { map->insert(make_device("host", count).release()); },
        [](auto& map) {
            const Ref<Device> removed(map->get(70));
            map->remove(70);
        },
        [](auto& map) {
            for (Instance* member : map->release()) {
                unref(member);
            }
        },
    };
    for (const Change change : changes) {
        for (const uint32 read_before : {0u, 5u, 32u, 100u}) {
            std::optional<Class_Map<Device>> map(std::in_place);
            for (uint32 number = 0; number < count; ++number) {
                map->insert(make_device("host", number).release());
            }
            const auto cursor = std::make_unique<Instance_Cursor>(*map);
            Instance_Cursor given_up(*map);
            given_up.next();
            const auto read = [&](uint32 from, uint32 to) {
                for (uint32 number = from; number < to; ++number) {
                    const Ref<Device> next(static_cast<Device*>(cursor->next()));
                    ASSERT_TRUE(next);
                    EXPECT_EQ(next->Number.value, number);
                    EXPECT_EQ(next->__refs, 1u);
                }
            };
            read(0, read_before);
            change(map);
            read(read_before, count);
            EXPECT_EQ(cursor->next(), nullptr);
        }
    }
}

TEST(Instance_Map, one_irregular_member_does_not_outlast_a_clear) {
    Class_Map<Device> map;
    map.insert(make_device("host", 1).release());
    const Ref<Odd> odd = make_device<Odd>("other", 1);
    EXPECT_EQ(map.insert(clone_of(odd.get())), 1);
    EXPECT_EQ(map.find(make_device("other", 55).get()), 1) << "Number is no key of Odd";
    map.clear();
    EXPECT_EQ(map.insert(make_device("other", 1).release()), 0);
    EXPECT_EQ(map.find(make_device("other", 55).get()), -1);
}

} // namespace
} // namespace cimple::sample
