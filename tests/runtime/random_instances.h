// Instances of the sample classes, for comparing a clever answer with its plain meaning.
#ifndef TVR_TESTS_RUNTIME_RANDOM_INSTANCES_H
#define TVR_TESTS_RUNTIME_RANDOM_INSTANCES_H

#include "tests/runtime/sample_classes.h"

#include <limits>
#include <random>

namespace cimple::sample {

// Instances with keys out of so small a range that equal ones are common.
class Random_Instances {
public:
    explicit Random_Instances(unsigned seed) : _random(seed) {}

    uint32 below(uint32 limit) {
        return std::uniform_int_distribution<uint32>(0, limit - 1)(_random);
    }

    // A Device or one of a class near it; `odd` lets in those that break the rule of their parent.
    Ref<Instance> device(bool odd) {
        Ref<Instance> instance;
        switch (below(odd ? 6 : 3)) {
        case 0:
            instance = filled<Port>();
            if (below(4) != 0) {
                static_cast<Port&>(*instance).Slot.set(below(3));
            }
            return instance;
        case 3:
            return filled<Odd>();
        case 4:
            return filled<Stranger>();
        case 5:
            return Ref<Instance>(make<Values>().release());
        default:
            return filled<Device>();
        }
    }

    Ref<Instance> link(bool odd) {
        Ref<Link> link = make<Link>();
        if (below(5) != 0) {
            link->Antecedent = static_cast<Element*>(device(odd).release());
        }
        if (below(5) != 0) {
            link->Dependent = static_cast<Device*>(device(odd).release());
        }
        if (below(3) == 0) {
            link->Others.value.append(device(odd).release());
        }
        return Ref<Instance>(link.release());
    }

    Ref<Instance> keys() {
        static const real64 reals[] = {0.0, -0.0, 1.0, std::numeric_limits<real64>::quiet_NaN()};
        Ref<Keys> keys = make<Keys>(below(2) == 0);
        keys->key_REAL64.set(reals[below(4)]);
        if (below(2) == 0) {
            keys->key_REAL32.set(below(2) == 0 ? 0.0f : -0.0f);
            keys->key_STRING.set(name());
            keys->key_DATETIME.set(below(2) == 0 ? Datetime::interval(below(2))
                                                 : Datetime(below(2)));
        }
        if (below(2) == 0) {
            keys->key_BOOLEAN.set(below(2) == 0);
            keys->key_CHAR16.set(static_cast<char16>(below(2)));
            keys->key_SINT64.set(-static_cast<sint64>(below(2)));
        }
        return Ref<Instance>(keys.release());
    }

    Ref<Instance> codes() {
        Ref<Codes> codes = make<Codes>();
        for (uint32 i = below(3); i > 0; --i) {
            codes->Code.value.append(below(2) == 0 ? -0.0f : static_cast<real32>(below(2)));
        }
        codes->Code.null = static_cast<uint8>(below(2));
        return Ref<Instance>(codes.release());
    }

private:
    const char* name() {
        static const char* const names[] = {"a", "A", "b", "", "a longer name"};
        return names[below(5)];
    }
    template <class C> Ref<Instance> filled() {
        Ref<C> instance = make<C>();
        if (below(6) != 0) {
            instance->SystemName.set(name());
        }
        if (below(6) != 0) {
            instance->Number.set(below(8));
        }
        return Ref<Instance>(instance.release());
    }

    std::mt19937 _random;
};

} // namespace cimple::sample

#endif
