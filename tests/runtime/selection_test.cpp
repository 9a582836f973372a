// What a map selects is what the selector accepts of its members one by one, in their order.
#include "runtime/instance_map.h"
#include "tests/runtime/random_instances.h"

#include <gtest/gtest.h>
#include <vector>

namespace cimple::sample {
namespace {

using Positions = std::vector<uint32>;

Positions one_by_one(const Instance_Map& map, const Instance_Selector& selector) {
    Positions positions;
    for (std::size_t i = 0; i < map.size(); ++i) {
        if (selector.accepts(map.get(i))) {
            positions.push_back(static_cast<uint32>(i));
        }
    }
    return positions;
}

// Lets a map grow and shrink, and asks it by many a probe on the way. Gives the number of hits.
template <class Make, class Probe>
std::size_t compare(const Meta_Class& meta_class, Random_Instances& random, Make make_instance,
                    Probe probe, bool by_key) {
    static const String roles[] = {"", "antecedent", "Dependent", "Others"};
    Instance_Map map(&meta_class);
    std::size_t hits = 0;
    for (int step = 0; step < 300; ++step) {
        Ref<Instance> instance = make_instance();
        if (map.insert(instance.get()) >= 0) {
            static_cast<void>(instance.release());
        } else if (random.below(4) == 0) {
            const std::size_t position = random.below(static_cast<uint32>(map.size()));
            const Ref<Instance> removed(map.get(position));
            map.remove(position);
        } else if (random.below(40) == 0) {
            map.clear();
        }
        for (int i = 0; i < 3; ++i) { // between two changes, too
            const Ref<Instance> source = probe();
            const String& role = roles[random.below(4)];
            const Instance_Selector selector = by_key ? Instance_Selector::by_key(*source)
                                                      : Instance_Selector::by_end(*source, role);
            const Positions expected = one_by_one(map, selector);
            const Positions selected = map.select(selector);
            EXPECT_EQ(selected, expected) << "step " << step;
            if (selected != expected) {
                return 0;
            }
            hits += selected.size();
        }
    }
    return hits;
}

TEST(Selection, finds_ends_and_instances_whatever_the_classes_and_keys) {
    for (unsigned seed = 0; seed < 4; ++seed) {
        SCOPED_TRACE(seed);
        Random_Instances random(seed);
        for (const bool odd : {false, true}) {
            const auto links = [&] { return random.link(odd); };
            const auto devices = [&] { return random.device(odd); };
            const auto elements = [&] { return Ref<Instance>(make<Element>().release()); };
            EXPECT_GT(compare(Link::static_meta_class, random, links, devices, false), 100u);
            EXPECT_GT(compare(Link::static_meta_class, random, links, elements, false), 100u)
                << "every antecedent equals a source without keys";
            compare(Link::static_meta_class, random, links, links, false);
            compare(Link::static_meta_class, random, links, links, true);
            for (const Meta_Class* meta_class :
                 {&Device::static_meta_class, &Port::static_meta_class,
                  &Element::static_meta_class}) {
                EXPECT_GT(compare(*meta_class, random, devices, devices, true), 50u);
            }
        }
        // An association whose end has a key of each type, reals among them.
        const auto keys = [&] { return random.keys(); };
        const auto codes = [&] { return random.codes(); };
        const auto links = [&] {
            Ref<Link> link = make_link(nullptr, make_device("host", random.below(50)).get());
            link->Antecedent = static_cast<Element*>(
                (random.below(2) == 0 ? random.keys() : random.codes()).release());
            return Ref<Instance>(link.release());
        };
        EXPECT_GT(compare(Link::static_meta_class, random, links, keys, false), 100u);
        EXPECT_GT(compare(Link::static_meta_class, random, links, codes, false), 100u);
        EXPECT_GT(compare(Keys::static_meta_class, random, keys, keys, true), 100u);
        EXPECT_GT(compare(Codes::static_meta_class, random, codes, codes, true), 50u);
    }
}

} // namespace
} // namespace cimple::sample
