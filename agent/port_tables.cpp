#include "agent/port_tables.h"

#include <algorithm>
#include <iterator>

namespace cimple {

namespace {

struct Type_Row {
    uint32 from;
    Port_Type to;
};
constexpr Type_Row port_types[] = {
    {2, {1, "Other"}},   {5, {10, nullptr}},        {6, {11, nullptr}},
    {7, {16, nullptr}},  {8, {15, nullptr}},        {9, {14, nullptr}},
    {10, {18, nullptr}}, {20, {1, "Private Loop"}}, {21, {1, "Point to Point"}},
};
constexpr Port_Type unknown_type{0, nullptr};

// States without a CIM value of their own stand at 0x8000 and above.
struct Status_Row {
    uint32 from;
    Port_Status to;
};
constexpr Status_Row port_statuses[] = {
    {1, {0, "Unknown"}},
    {2, {2, "OK"}},
    {3, {10, "Stopped"}},
    {4, {1, "Other"}},
    {5, {11, "InService"}},
    {6, {1, "Other"}},
    {7, {6, "Error"}},
    {8, {0x8008, "InService"}},
    {20, {0x8014, "Operational. Need RESET"}},
    {21, {0x8015, "Link down. Need RESET"}},
    {22, {0x8016, "Disable"}},
};
constexpr Status_Row controller_statuses[] = {
    {1, {0, "Unknown"}},    {2, {2, "OK"}},    {3, {10, "Stopped"}}, {4, {1, "Other"}},
    {5, {11, "InService"}}, {6, {1, "Other"}}, {7, {6, "Error"}},    {8, {11, "InService"}},
};
constexpr Port_Status unknown_status{0, "Unknown"};

template <class Row, std::size_t size, class To>
To look_up(const Row (&rows)[size], uint32 from, To otherwise) noexcept {
    const Row* row = std::find_if(rows, rows + size,
                                  [from](const Row& candidate) { return candidate.from == from; });
    return row != rows + size ? row->to : otherwise;
}

struct Mask_Row {
    uint32 mask;
    uint16 value;
};
constexpr Mask_Row service_classes[] = {
    {0x01, 7}, {0x02, 1}, {0x04, 2}, {0x08, 3}, {0x10, 4}, {0x40, 5},
};

struct FC4_Row {
    uint8 entry;
    uint8 mask;
    uint16 value;
};
constexpr FC4_Row fc4_rows[] = {
    {3, 0x10, 4},  {3, 0x20, 5},  {2, 0x01, 8},  {2, 0x02, 9},  {1, 0x02, 17},  {1, 0x04, 18},
    {1, 0x08, 19}, {1, 0x20, 21}, {1, 0x40, 22}, {1, 0x80, 23}, {0, 0x02, 25},  {0, 0x04, 26},
    {0, 0x08, 27}, {0, 0x10, 28}, {7, 0x01, 32}, {7, 0x04, 34}, {7, 0x10, 36},  {11, 0x01, 64},
    {9, 0x01, 80}, {9, 0x02, 81}, {9, 0x04, 82}, {8, 0x01, 88}, {15, 0x01, 96},
};
constexpr uint16 fc4_unknown = 0;
constexpr uint16 fc4_other = 1;

// Bits of each entry that stand for a type without a value of its own.
constexpr std::array<uint8, 32> other_fc4_bits = {
    0xE1, 0x11, 0xFC, 0xCF, 0xFF, 0xFF, 0xFF, 0xEA, 0xFF, 0xF8, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFE,
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
};

struct Speed_Row {
    uint32 mask;
    uint64 speed;
};
constexpr uint64 gigabit = 1'000'000'000;
// Fastest first.
constexpr Speed_Row speeds[] = {
    {0x20, 16 * gigabit}, {0x04, 10 * gigabit}, {0x10, 8 * gigabit},
    {0x08, 4 * gigabit},  {0x02, 2 * gigabit},  {0x01, gigabit},
};

} // namespace

Port_Type port_type(uint32 type) noexcept {
    return look_up(port_types, type, unknown_type);
}

Port_Status port_status(uint32 state) noexcept {
    return look_up(port_statuses, state, unknown_status);
}

Port_Status controller_status(uint32 state) noexcept {
    return look_up(controller_statuses, state, unknown_status);
}

Array<uint16> classes_of_service(uint32 mask) {
    Array<uint16> classes;
    for (const Mask_Row& row : service_classes) {
        if ((mask & row.mask) != 0) {
            classes.append(row.value);
        }
    }
    if (classes.empty()) {
        classes.append(0);
    }
    return classes;
}

Array<uint16> fc4_types(const std::array<uint32, 32>& entries) {
    Array<uint16> types;
    if (std::all_of(entries.begin(), entries.end(), [](uint32 entry) { return entry == 0; })) {
        types.append(fc4_unknown);
        return types;
    }
    for (const FC4_Row& row : fc4_rows) {
        if ((entries[row.entry] & row.mask) != 0) {
            types.append(row.value);
        }
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if ((entries[i] & other_fc4_bits[i]) != 0) {
            types.append(fc4_other);
            break;
        }
    }
    return types;
}

uint64 port_speed(uint32 speed) noexcept {
    for (const Speed_Row& row : speeds) {
        if (speed == row.mask) {
            return row.speed;
        }
    }
    return 0;
}

uint64 highest_speed(uint32 mask) noexcept {
    for (const Speed_Row& row : speeds) {
        if ((mask & row.mask) != 0) {
            return row.speed;
        }
    }
    return 0;
}

} // namespace cimple
