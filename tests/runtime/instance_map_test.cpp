#include "runtime/instance_map.h"

#include "tests/runtime/random_instances.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cimple::sample {
namespace {

// Runs one random course of changes and questions against a map and against its meaning: a list
// that is searched from its front. Gives the number of instances that were selected.
template <class Make, class Probe>
std::size_t compare(const Meta_Class& meta_class, Random_Instances& random, Make make_instance,
                    Probe make_source) {
    static const String roles[] = {"", "antecedent", "Dependent", "Others"};
    Instance_Map map(&meta_class);
    std::vector<Instance*> members;
    const auto position_of = [&](const Ref<Instance>& instance) {
        const auto found = std::find_if(members.begin(), members.end(), [&](const Instance* each) {
            return key_eq(each, instance.get());
        });
        return found == members.end() ? -1 : static_cast<long>(found - members.begin());
    };
    std::size_t hits = 0;
    const auto selects = [&](const Instance_Selector& selector) {
        std::vector<uint32> expected;
        for (uint32 i = 0; i < members.size(); ++i) {
            if (selector.accepts(members[i])) {
                expected.push_back(i);
            }
        }
        hits += expected.size();
        return map.select(selector) == expected;
    };
    for (int step = 0; step < 600; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        Ref<Instance> instance = make_instance();
        const long expected = position_of(instance);
        const uint32 action = random.below(16);
        if (action < 6) {
            const long inserted = expected < 0 ? static_cast<long>(members.size()) : -1;
            EXPECT_EQ(map.insert(instance.get()), inserted);
            if (inserted >= 0) {
                members.push_back(instance.release());
            }
        } else if (action < 11) {
            EXPECT_EQ(map.find(instance.get()), expected);
            EXPECT_EQ(map.lookup(instance.get()),
                      expected < 0 ? nullptr : members[static_cast<std::size_t>(expected)]);
        } else if (action < 15) {
            for (int i = 0; i < 3; ++i) { // between two changes, too
                EXPECT_TRUE(selects(Instance_Selector::by_key(*make_instance())));
                const Ref<Instance> source = make_source();
                for (const String& role : roles) {
                    EXPECT_TRUE(selects(Instance_Selector::by_end(*source, role)));
                }
            }
        } else if (random.below(20) == 0) {
            map.clear();
            members.clear();
        } else if (random.below(8) == 0) {
            std::vector<uint32> positions;
            std::vector<Instance*> left;
            for (uint32 i = 0; i < members.size(); ++i) {
                random.below(4) == 0 ? positions.push_back(i) : left.push_back(members[i]);
            }
            map.erase(positions);
            members = left;
        } else if (!members.empty()) {
            const uint32 position = random.below(static_cast<uint32>(members.size()));
            const Ref<Instance> removed(members[position]);
            members.erase(members.begin() + position);
            map.remove(position);
        }
        EXPECT_TRUE(std::equal(members.begin(), members.end(), map.instances().begin(),
                               map.instances().end()));
    }

    Instance_Map copy(&meta_class);
    std::size_t position = 0;
    EXPECT_EQ(copy.append_clones(map, position), static_cast<long>(map.size()));
    for (std::size_t i = 0; i < map.size(); ++i) {
        EXPECT_NE(copy.get(i), map.get(i));
        const Ref<Instance> probe = make_instance();
        EXPECT_EQ(copy.find(probe.get()), position_of(probe));
    }
    return hits;
}

TEST(Instance_Map, answers_as_a_linear_search_would) {
    for (unsigned seed = 0; seed < 10; ++seed) {
        SCOPED_TRACE(seed);
        Random_Instances random(seed);
        const Meta_Class& link_class = Link::static_meta_class;
        const auto keys = [&] { return random.keys(); };
        const auto codes = [&] { return random.codes(); };
        for (const bool odd : {false, true}) {
            const auto links = [&] { return random.link(odd); };
            const auto devices = [&] { return random.device(odd); };
            const auto elements = [&] { return Ref<Instance>(make<Element>().release()); };
            EXPECT_GT(compare(link_class, random, links, devices), 100u);
            EXPECT_GT(compare(link_class, random, links, elements), 100u)
                << "every antecedent equals a source without keys";
            compare(link_class, random, links, links);
            for (const Meta_Class* meta_class :
                 {&Device::static_meta_class, &Port::static_meta_class,
                  &Element::static_meta_class}) {
                EXPECT_GT(compare(*meta_class, random, devices, devices), 50u);
            }
        }
        EXPECT_GT(compare(Keys::static_meta_class, random, keys, keys), 50u);
        EXPECT_GT(compare(Codes::static_meta_class, random, codes, codes), 50u);
        // An association whose end has a key of each type, reals among them.
        const auto links = [&] {
            Ref<Link> link = make_link(nullptr, make_device("host", random.below(50)).get());
            link->Antecedent = static_cast<Element*>(
                (random.below(2) == 0 ? random.keys() : random.codes()).release());
            return Ref<Instance>(link.release());
        };
        EXPECT_GT(compare(link_class, random, links, keys), 100u);
        EXPECT_GT(compare(link_class, random, links, codes), 100u);
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
            map->erase({0, 1, 70, 99});
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
            const Ref<> first(given_up.next());
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

} // namespace
} // namespace cimple::sample
