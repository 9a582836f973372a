#include "access/entry_points.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace cimple {
namespace {

struct Row {
    char family;
    std::string name;
};

#define ROW(family, name, failure) Row{#family[0], #name},
const Row rows[] = {TVR_ENTRY_POINTS(ROW)};
#undef ROW

TEST(EntryPoints, AreThoseThatTheSystemCalls) {
    std::map<char, int> perFamily;
    std::set<std::string> names;
    const std::map<char, std::string> prefixes{{'H', "HBA_"}, {'R', "RM_"}, {'L', "LRM_"}};
    for (const Row& row : rows) {
        ++perFamily[row.family];
        names.insert(row.name);
        EXPECT_TRUE(row.name.starts_with(prefixes.at(row.family))) << row.name;
    }
    EXPECT_EQ(names.size(), std::size(rows));
    EXPECT_EQ(perFamily['H'], 12);
    EXPECT_EQ(perFamily['R'], 9);
    EXPECT_EQ(perFamily['L'], 42);
}

// Calls an entry point with zeros for arguments; what it answers as text.
template <class Result, class... Arguments>
std::string answer(rm::EntryPoint<Result(Arguments...)>& entryPoint) {
    if constexpr (std::is_void_v<Result>) {
        entryPoint(Arguments{}...);
        return "nothing";
    } else if constexpr (std::is_pointer_v<Result>) {
        return entryPoint(Arguments{}...) == nullptr ? "null" : "pointer";
    } else {
        return std::to_string(entryPoint(Arguments{}...));
    }
}

TEST(EntryPoints, FailWithoutLibraries) {
    const std::map<std::string, std::string> others{
        {"HBA_GetNumberOfAdapters", "0"}, {"RM_GetNumberOfLocalAdapters", "0"},
        {"RM_GetAttributeValue", "null"}, {"RM_GetNextVpdEntry", "null"},
        {"HBA_CloseAdapter", "nothing"},  {"HBA_RefreshInformation", "nothing"},
    };
    const auto expected = [&](const std::string& name) {
        const auto found = others.find(name);
        return found == others.end() ? std::string("1") : found->second;
    };
#define CHECK_FAILURE(family, name, failure) EXPECT_EQ(answer(rm::name), expected(#name)) << #name;
    TVR_ENTRY_POINTS(CHECK_FAILURE)
#undef CHECK_FAILURE
}

TEST(EntryPoints, AMissingLibraryLeavesTheOutputsAlone) {
    uint16_t length = 17;
    RM_STATUS status = 99;
    char buffer[8] = {};
    EXPECT_EQ(rm::RM_GetAttributeValue(buffer, 526, &length, &status), nullptr);
    EXPECT_EQ(length, 17);
    EXPECT_EQ(status, 99u);
}

} // namespace
} // namespace cimple
