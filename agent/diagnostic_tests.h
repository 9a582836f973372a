// The diagnostic tests that adapters carry out: what each is called, is for, and takes.
#ifndef TVR_AGENT_DIAGNOSTIC_TESTS_H
#define TVR_AGENT_DIAGNOSTIC_TESTS_H

#include "runtime/type.h"

#include <array>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace cimple {

// Names of the tests, which are also the keys of all that a test is published with.
inline constexpr char BEACON_TEST[] = "TVR:FCHBA Beacon Test";
inline constexpr char ECHO_TEST[] = "TVR:FCHBA Echo Test";
inline constexpr char EXTERNAL_LOOPBACK_TEST[] = "TVR:FCHBA External Loopback Test";
inline constexpr char HOST_LOOPBACK_TEST[] = "TVR:FCHBA Host Loopback Test";
inline constexpr char INTERNAL_LOOPBACK_TEST[] = "TVR:FCHBA Internal Loopback Test";
inline constexpr char PING_TEST[] = "TVR:FCHBA Ping Test";
inline constexpr char RESET_TEST[] = "TVR:FCHBA Reset Test";
inline constexpr char SELF_TEST[] = "TVR:FCHBA Self Test";
inline constexpr char STATUS_TEST[] = "TVR:FCHBA Status Test";

enum class Diagnostic_Id : uint32 {
    beacon = 1,
    echo = 2,
    external_loopback = 3,
    host_loopback = 4,
    internal_loopback = 5,
    ping = 6,
    reset = 7,
    self = 8,
    status = 9,
};

// A few constant values, at most `capacity`.
template <class T, std::size_t capacity> class Few {
public:
    constexpr Few() = default;
    constexpr Few(std::initializer_list<T> values) {
        for (const T& value : values) {
            _values.at(_size++) = value;
        }
    }
    constexpr const T* begin() const { return _values.data(); }
    constexpr const T* end() const { return begin() + _size; }
    constexpr bool empty() const { return _size == 0; }

private:
    std::array<T, capacity> _values{};
    std::size_t _size = 0;
};

// How often a test goes round by default: the kind of limit, as 3 for a count, and the limit.
struct Loop_Control {
    uint16 control;
    const char* parameter;
};

// Numbers are those of the value maps of the properties.
struct Diagnostic_Test {
    Diagnostic_Id id;
    const char* name;
    uint16 type;
    const char* description;
    Few<uint16, 4> test_types;
    Few<uint16, 4> characteristics;
    Few<Loop_Control, 4> loop_control;
    Few<uint16, 4> supported_loop_control;
    Few<uint16, 4> supported_execution_controls;
    Few<const char*, 8> other_execution_controls;
    std::optional<bool> halt_on_error = false;

    // Sends data of a pattern that the client can choose.
    constexpr bool has_data() const noexcept {
        return id >= Diagnostic_Id::echo && id <= Diagnostic_Id::ping;
    }
    // Sends them to another port.
    constexpr bool has_target() const noexcept {
        return id == Diagnostic_Id::echo || id == Diagnostic_Id::ping;
    }
    // Runs in the adapter, which counts what it has done.
    constexpr bool has_counts() const noexcept { return has_data() || id == Diagnostic_Id::self; }
};

// In the order in which they are published.
extern const std::array<Diagnostic_Test, 9> diagnostic_tests;

// The test of that name, to the letter; null if there is none.
const Diagnostic_Test* find_diagnostic_test(std::string_view name) noexcept;

} // namespace cimple

#endif
