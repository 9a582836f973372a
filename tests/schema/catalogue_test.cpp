// The generated metadata against the class catalogue, and against itself.
#include "catalogue.h"

#include "runtime/instance.h"
#include "schema/classes.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <map>
#include <set>
#include <span>

using namespace cimple;
using catalogue::Words;

namespace {

std::span<const Meta_Class* const> all_classes() {
    return {meta_repository.meta_classes, meta_repository.num_meta_classes};
}

const Meta_Class& class_named(const std::string& name) {
    const Meta_Class* found = find_meta_class(&meta_repository, name.c_str());
    EXPECT_NE(found, nullptr) << name;
    return found != nullptr ? *found : Instance::static_meta_class;
}

// Flags and target of a feature, which must exist.
std::pair<uint32, const Meta_Class*> facts_of(const std::string& name, const std::string& feature) {
    const Meta_Feature* found = find_feature(&class_named(name), feature.c_str(), ALL_FEATURES);
    if (found == nullptr) {
        ADD_FAILURE() << name << " has no " << feature;
        return {};
    }
    return {found->flags, found->has(FLAG_REFERENCE) ? as_reference(*found).meta_class : nullptr};
}

Words names_with(const Meta_Structure& structure, uint32 flag) {
    Words names;
    for (const Meta_Feature* feature : structure) {
        if (feature->has(flag)) {
            names.emplace_back(feature->name);
        }
    }
    return names;
}

const Meta_Class& expect_class(const std::string& name, const std::string& parent, uint32 flags) {
    const Meta_Class& found = class_named(name);
    EXPECT_EQ(found.name, name);
    const Meta_Class* above = found.super_meta_class;
    EXPECT_EQ(above != nullptr ? above->name : "CIM_-", parent) << name;
    EXPECT_EQ(found.flags, flags) << name;
    return found;
}

auto own_features(const Meta_Class& meta_class) {
    return static_cast<std::size_t>(
        std::count(meta_class.locals, meta_class.locals + meta_class.num_meta_features, 1));
}

TEST(Catalogue, HasTheClassesThatStandBeside) {
    std::set<std::string> names;
    for (const auto& [group, words] : catalogue::entries("base_classes")) {
        const std::string name = catalogue::base(words.at(0));
        const auto flags = static_cast<uint32>(std::stoul(words.at(1), nullptr, 16));
        const Meta_Class& found = expect_class(name, catalogue::base(group.at(0)), flags);
        EXPECT_EQ(found.num_meta_features, std::stoul(words.at(2))) << name;
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 119u);
    EXPECT_EQ(meta_repository.num_meta_classes, 256u);
}

TEST(Catalogue, HasTheServedInstanceClasses) {
    std::set<std::string> names;
    for (const auto& [group, words] : catalogue::entries("instance_classes")) {
        const std::string name = catalogue::served(words.at(0));
        const std::string parent = catalogue::base(words.at(words.at(1) == "=" ? 0 : 1));
        const Meta_Class& found = expect_class(name, parent, FLAG_CLASS);
        EXPECT_EQ(names_with(found, FLAG_KEY), group) << name;
        EXPECT_EQ(own_features(found), std::stoul(words.at(2))) << name;
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 48u);
}

TEST(Catalogue, HasTheServedAssociationsWithTheirEnds) {
    std::set<std::string> names;
    for (const auto& [group, words] : catalogue::entries("association_classes")) {
        const bool aggregation = group.at(0)[0] == '+';
        const std::string name = catalogue::served(words.at(0));
        SCOPED_TRACE(name);
        const Meta_Class& found =
            expect_class(name, catalogue::base(group[0].substr(aggregation)),
                         FLAG_ASSOCIATION | (aggregation ? FLAG_AGGREGATION : 0u));
        EXPECT_EQ(own_features(found), group.size() - 1);
        EXPECT_EQ(found.num_keys, words.size() - 1);
        for (std::size_t i = 1; i < group.size(); ++i) {
            const std::string& end = group[i];
            if (end[0] == '.') {
                EXPECT_TRUE(facts_of(name, end.substr(1)).first & FLAG_PROPERTY) << end;
                continue;
            }
            const uint32 mark = end[0] == '@' ? FLAG_AGGREGATE : end[0] == '^' ? FLAG_WEAK : 0u;
            EXPECT_EQ(facts_of(name, end.substr(mark != 0)),
                      std::pair(FLAG_REFERENCE | FLAG_KEY | mark,
                                &class_named(catalogue::served(words.at(i)))));
        }
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 88u);
    EXPECT_EQ(own_features(
                  expect_class("TVRHBA_AlertIndication", "CIM_AlertIndication", FLAG_INDICATION)),
              0u);
}

// Words of the catalogue's facts that no table carries.
TEST(Catalogue, StatesParametersAndMarks) {
    const auto& read =
        as_method(*find_feature(&TVRHBA_FCHBAWWNService::static_meta_class, "ReadWWN", METHODS));
    EXPECT_EQ(names_with(read, FLAG_OUT),
              (Words{"WWPN", "WWNN", "WWNOperationStatus", "return_value"}));
    constexpr uint32 property = FLAG_PROPERTY | FLAG_READ;
    EXPECT_EQ(facts_of("TVRHBA_FCPort", "LocationIndicator").first,
              property | FLAG_WRITE | FLAG_EXPERIMENTAL);
    EXPECT_EQ(facts_of("CIM_FCPortStatistics", "LIPCount").first, property | FLAG_COUNTER);
    EXPECT_EQ(facts_of("CIM_Log", "CurrentNumberOfRecords").first, property | FLAG_GAUGE);

    // Texts that carry instances are held as references.
    EXPECT_EQ(facts_of("TVRHBA_DiagnosticSettingDataRecord", "Settings"),
              std::pair(FLAG_REFERENCE | FLAG_EMBEDDED_INSTANCE,
                        &CIM_DiagnosticSettingData::static_meta_class));
}

TEST(Catalogue, GivesDefaultsToNewInstances) {
    std::map<uint16, unsigned> defaults;
    for (const Meta_Class* meta_class : all_classes()) {
        for (const Meta_Feature* feature : *meta_class) {
            if (feature->has(FLAG_PROPERTY) && as_property(*feature).value != nullptr) {
                ++defaults[as_property(*feature).type];
            }
        }
    }
    const std::map<uint16, unsigned> expected = {{UINT16, 256}, {BOOLEAN, 25}, {UINT32, 10},
                                                 {DATETIME, 6}, {UINT64, 2},   {STRING, 2}};
    EXPECT_EQ(defaults, expected);

    const Ref<CIM_ComputerSystem> system(CIM_ComputerSystem::create(true));
    EXPECT_EQ(system->EnabledState.value, 5);
    // A redeclared property has left its parent's default behind.
    const Ref<CIM_ProtocolEndpoint> endpoint(CIM_ProtocolEndpoint::create(true));
    EXPECT_EQ(endpoint->EnabledState.null, 1);
    const Ref<TVRHBA_ConcreteJob> job(TVRHBA_ConcreteJob::create(true));
    EXPECT_STREQ(job->TimeBeforeRemoval.value.ascii().c_str(), "00000000000500.000000:000");
}

// Fields lie in the order of their records, each behind the one before, and inside the structure.
void expect_fields(const Meta_Structure& structure) {
    uint32 end = 24; // of the header
    for (const Meta_Feature* feature : structure) {
        if (!feature->has(FLAG_METHOD)) {
            const bool reference = feature->has(FLAG_REFERENCE);
            const uint32 at =
                reference ? as_reference(*feature).offset : as_property(*feature).offset;
            EXPECT_GE(at, end) << structure.name << '.' << feature->name;
            end = at + (reference ? 8 : 2);
        }
    }
    EXPECT_GE(structure.size, end) << structure.name;
}

TEST(Metadata, RecordsAgree) {
    for (const Meta_Class* meta_class : all_classes()) {
        SCOPED_TRACE(meta_class->name);
        EXPECT_EQ(meta_class->meta_repository, &meta_repository);
        expect_fields(*meta_class);
        EXPECT_EQ(meta_class->num_keys, names_with(*meta_class, FLAG_KEY).size());
        const Meta_Class* parent = meta_class->super_meta_class;
        const uint64 inherited = parent != nullptr ? parent->num_meta_features : 0;
        ASSERT_GE(meta_class->num_meta_features, inherited);
        std::set<std::string> names;
        for (uint64 i = 0; i < meta_class->num_meta_features; ++i) {
            const Meta_Feature* feature = meta_class->meta_features[i];
            const Meta_Feature* above = i < inherited ? parent->meta_features[i] : nullptr;
            EXPECT_EQ(meta_class->locals[i] == 0, feature == above) << feature->name;
            EXPECT_STREQ(feature->name, above != nullptr ? above->name : feature->name);
            EXPECT_EQ(std::popcount(feature->flags & ALL_FEATURES), 1) << feature->name;
            EXPECT_TRUE(names.insert(feature->name).second) << feature->name;
        }
    }
}

TEST(Metadata, MethodsEndWithTheirReturnValue) {
    for (const Meta_Class* meta_class : all_classes()) {
        for (const std::string& name : names_with(*meta_class, FLAG_METHOD)) {
            const auto& method = as_method(*find_feature(meta_class, name.c_str(), METHODS));
            expect_fields(method);
            ASSERT_GE(method.num_meta_features, 1u) << name;
            const Meta_Feature& last = *method.meta_features[method.num_meta_features - 1];
            EXPECT_STREQ(last.name, "return_value") << name;
            EXPECT_EQ(last.flags, FLAG_PROPERTY | FLAG_OUT) << name;
            EXPECT_EQ(as_property(last).type, method.return_type) << name;
        }
    }
}

} // namespace
