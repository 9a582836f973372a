// Every allocation of an operation fails once, in turn: nothing is lost, changed or leaked. The
// leak check is that of AddressSanitizer, and the balance of the counting operators here.
#include "runtime/instance_map.h"
#include "runtime/log.h"
#include "runtime/thread.h"
#include "runtime/value.h"
#include "tests/runtime/failing_allocations.h"
#include "tests/runtime/plain_context.h"
#include "tests/runtime/sample_classes.h"

#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <optional>

namespace cimple::sample {
namespace {

// At its end as many blocks live as at its start.
class Balance {
public:
    Balance() = default;
    Balance(const Balance&) = delete;
    Balance& operator=(const Balance&) = delete;
    ~Balance() { EXPECT_EQ(live, _start); }

private:
    long _start = live;
};

// Runs `operation` with the first, second, ... allocation failing until it succeeds; after each
// failure `check` sees that all is as before. Returns the number of failures.
template <class Operation, class Check>
long fail_each_allocation(Operation operation, Check check) {
    for (long n = 0;; ++n) {
        allocations_left = n;
        bool failed = false;
        try {
            operation();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        allocations_left = -1;
        if (!failed) {
            return n;
        }
        check();
    }
}

Ref<Device> rich_device() {
    Ref<Device> device = make_device("a name of some length", 1);
    device->Peer = make_device<Port>("peer", 2).release();
    device->Members.value.append(make_device("member", 3).release());
    device->Members.value.append(make_device("member", 4).release());
    return device;
}

TEST(Allocation, failure_in_create_and_clone_leaves_nothing) {
    const Balance balance;
    Ref<Instance> made;
    EXPECT_GT(
        fail_each_allocation([&] { made.reset(create(&Device::static_meta_class, true)); }, [] {}),
        8);
    const Ref<Device> device = rich_device();
    Ref<Device> copy;
    EXPECT_GT(fail_each_allocation([&] { copy.reset(clone_of(device.get())); }, [] {}), 15);
    EXPECT_TRUE(key_eq(copy.get(), device.get()));
}

TEST(Allocation, failure_leaves_texts_and_arrays_unchanged) {
    const Balance balance;
    const String original(std::string(32, 'x'));
    String text(original);
    const auto unchanged = [&] { EXPECT_EQ(text, original); };
    EXPECT_EQ(fail_each_allocation([&] { text.append("yy"); }, unchanged), 1);
    text = original;
    EXPECT_EQ(fail_each_allocation([&] { text.assign("other"); }, unchanged), 1);

    Array<String> array;
    for (int i = 0; i < 8; ++i) {
        array.append("element");
    }
    const Array<String> before(array);
    EXPECT_EQ(fail_each_allocation([&] { array.append(before[0]); },
                                   [&] { EXPECT_TRUE(array == before); }),
              1);
    array.remove(8);
    Array<String> target{"kept"};
    EXPECT_EQ(fail_each_allocation([&] { target = array; },
                                   [&] { EXPECT_TRUE((target == Array<String>{"kept"})); }),
              1);
}

TEST(Allocation, failure_in_the_copy_of_a_map_leaves_a_map) {
    const Balance balance;
    Class_Map<Device> from;
    for (uint32 number = 0; number < 10; ++number) {
        from.insert(make_device("host", number).release());
    }
    std::optional<Class_Map<Device>> to(std::in_place);
    std::size_t position = 0;
    const auto a_map = [&] {
        EXPECT_EQ(position, to->size());
        for (uint32 number = 0; number < 10; ++number) {
            EXPECT_EQ(to->find(from.get(number)),
                      number < to->size() ? static_cast<long>(number) : -1);
        }
        to.emplace();
    };
    EXPECT_GT(fail_each_allocation([&] { to->append_clones(from, position); }, a_map), 10);
    EXPECT_EQ(to->size(), 10u);
}

TEST(Allocation, failure_leaves_fields_and_values_unchanged) {
    const Balance balance;
    const Ref<Device> device = rich_device();
    for (const Meta_Feature* feature : Device::static_meta_class) {
        if (feature->has(FLAG_METHOD)) {
            continue;
        }
        Value value;
        value.set(uint8{7});
        fail_each_allocation([&] { Value::get(value, device.get(), feature); },
                             [&] { EXPECT_EQ(value.type(), UINT8); });
        EXPECT_EQ(value.type(), Value::kind_of(*feature));
        const Ref<Device> target = rich_device();
        fail_each_allocation([&] { EXPECT_EQ(Value::set(value, target.get(), feature), 0); },
                             [&] { EXPECT_TRUE(key_eq(target.get(), device.get())); });
        Value copy;
        fail_each_allocation([&] { copy = value; }, [&] { EXPECT_EQ(copy.type(), Value::NONE); });
    }
}

TEST(Allocation, failure_never_reaches_the_caller_of_the_log_or_of_a_thread) {
    const Balance balance;
    close_log();
    ::setenv("CIMPLE_HOME", "/a/directory/that/no/machine/has/and/with/some/length", 1);
    allocations_left = 0;
    log(LL_FATAL, "f.cpp", 1, "lost");
    allocations_left = -1;
    ::unsetenv("CIMPLE_HOME");
    close_log();

    Plain_Context context;
    Thread_Context::push(&context);
    Thread thread;
    const auto body = [](void* arg) { return arg; };
    for (const long left : {0, 1}) { // the record of the start fails, then the thread's context
        allocations_left = left;
        const int error = Thread::create_joinable(thread, body, nullptr);
        allocations_left = -1;
        EXPECT_EQ(error, ENOMEM);
        EXPECT_EQ(Thread_Context::top(), &context);
    }
    Thread_Context::pop();
}

} // namespace
} // namespace cimple::sample
