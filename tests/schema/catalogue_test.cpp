// The generated metadata against the class catalogue, and against itself.
#include "catalogue.h"

#include "runtime/instance.h"
#include "schema/classes.h"
#include "schema/model.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <map>
#include <set>
#include <span>
#include <string>

using namespace cimple;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

std::span<const Meta_Class* const> all_classes() {
    return {meta_repository.meta_classes, meta_repository.num_meta_classes};
}

const Meta_Class& class_named(const char* name) {
    const Meta_Class* found = find_meta_class(&meta_repository, name);
    EXPECT_NE(found, nullptr) << name;
    return found != nullptr ? *found : Instance::static_meta_class;
}

std::vector<std::string> key_names(const Meta_Class& meta_class) {
    std::vector<std::string> names;
    for (const Meta_Feature* feature : meta_class) {
        if (feature->has(FLAG_KEY)) {
            names.emplace_back(feature->name);
        }
    }
    return names;
}

std::vector<std::string> method_names(const Meta_Class& meta_class) {
    std::vector<std::string> names;
    for (const Meta_Feature* feature : meta_class) {
        if (feature->has(FLAG_METHOD)) {
            names.emplace_back(feature->name);
        }
    }
    return names;
}

const char* parent_name(const Meta_Class& meta_class) {
    return meta_class.super_meta_class != nullptr ? meta_class.super_meta_class->name : nullptr;
}

std::size_t own_features(const Meta_Class& meta_class) {
    return static_cast<std::size_t>(
        std::count(meta_class.locals, meta_class.locals + meta_class.num_meta_features, 1));
}

TEST(Catalogue, HasTheClassesThatStandBeside) {
    std::size_t count = 0;
    for (const catalogue::Base_Class& expected : catalogue::base_classes) {
        SCOPED_TRACE(expected.name);
        const Meta_Class& meta_class = class_named(expected.name);
        EXPECT_STREQ(meta_class.name, expected.name);
        EXPECT_STREQ(parent_name(meta_class), expected.parent);
        EXPECT_EQ(meta_class.flags, expected.flags);
        EXPECT_EQ(meta_class.num_meta_features, expected.features);
        ++count;
    }
    EXPECT_EQ(count, 119u);
    EXPECT_EQ(meta_repository.num_meta_classes, 256u);
}

TEST(Catalogue, HasTheServedInstanceClasses) {
    std::map<char, std::vector<std::string>> key_sets;
    for (const catalogue::Key_Set& set : catalogue::key_sets) {
        key_sets[set.letter].assign(set.keys.begin(), set.keys.end());
    }
    for (const catalogue::Instance_Class& expected : catalogue::instance_classes) {
        SCOPED_TRACE(expected.name);
        const Meta_Class& meta_class = class_named(expected.name);
        EXPECT_STREQ(parent_name(meta_class), expected.parent);
        EXPECT_EQ(meta_class.flags, FLAG_CLASS);
        EXPECT_THAT(key_names(meta_class), ElementsAreArray(key_sets[expected.keys]));
        EXPECT_EQ(own_features(meta_class), expected.own);
    }
    EXPECT_EQ(std::size(catalogue::instance_classes), 48u);
}

TEST(Catalogue, HasTheServedAssociationsWithTheirEnds) {
    for (const catalogue::Association_Class& expected : catalogue::association_classes) {
        SCOPED_TRACE(expected.name);
        const Meta_Class& meta_class = class_named(expected.name);
        EXPECT_STREQ(parent_name(meta_class), expected.parent);
        const uint32 aggregation = expected.aggregation ? FLAG_AGGREGATION : 0u;
        EXPECT_EQ(meta_class.flags, FLAG_ASSOCIATION | aggregation);
        EXPECT_EQ(own_features(meta_class), expected.ends.size() + expected.properties.size());

        for (const catalogue::End& end : expected.ends) {
            const Meta_Feature* feature = find_feature(&meta_class, end.name, REFERENCES);
            ASSERT_NE(feature, nullptr) << end.name;
            EXPECT_EQ(feature->flags, FLAG_REFERENCE | FLAG_KEY | end.mark) << end.name;
            EXPECT_STREQ(as_reference(*feature).meta_class->name, end.target) << end.name;
        }
        EXPECT_EQ(meta_class.num_keys, expected.ends.size());
        for (const char* property : expected.properties) {
            EXPECT_NE(find_feature(&meta_class, property, PROPERTIES), nullptr) << property;
        }
    }
    EXPECT_EQ(std::size(catalogue::association_classes), 88u);
}

TEST(Catalogue, HasOneServedIndication) {
    const Meta_Class& alert = class_named("TVRHBA_AlertIndication");
    EXPECT_STREQ(parent_name(alert), "CIM_AlertIndication");
    EXPECT_EQ(alert.flags, FLAG_INDICATION);
    EXPECT_EQ(alert.num_keys, 0u);
    EXPECT_EQ(own_features(alert), 0u);
}

// Words of the catalogue's facts that no table above carries.
TEST(Catalogue, StatesParametersAndMarks) {
    const Meta_Class& service = class_named("TVRHBA_FCHBAWWNService");
    const auto& read = as_method(*find_feature(&service, "ReadWWN", METHODS));
    std::vector<std::string> words;
    for (const Meta_Feature* parameter : read) {
        words.push_back(std::string(parameter->name) + (parameter->has(FLAG_IN) ? " in" : "") +
                        (parameter->has(FLAG_OUT) ? " out" : ""));
    }
    EXPECT_THAT(words, ElementsAre("Target in", "Type in", "WWPN in out", "WWNN in out",
                                   "WWNOperationStatus in out", "return_value out"));
    EXPECT_STREQ(as_reference(*read.meta_features[0]).meta_class->name, "TVRHBA_FCPort");

    const auto flags = [](const char* name, const char* feature) {
        return find_feature(&class_named(name), feature, ALL_FEATURES)->flags;
    };
    constexpr uint32 property = FLAG_PROPERTY | FLAG_READ;
    EXPECT_EQ(flags("TVRHBA_FCPort", "LocationIndicator"),
              property | FLAG_WRITE | FLAG_EXPERIMENTAL);
    EXPECT_EQ(flags("TVRHBA_DumpData", "RetentionCount"), property | FLAG_WRITE);
    EXPECT_EQ(flags("TVRHBA_ProviderConfigSetting", "current"), property | FLAG_WRITE);
    EXPECT_EQ(flags("TVRHBA_FCPort", "DeviceID"), property | FLAG_KEY);
    EXPECT_EQ(flags("CIM_FCPortStatistics", "LIPCount"), property | FLAG_COUNTER);
    EXPECT_EQ(flags("CIM_Log", "CurrentNumberOfRecords"), property | FLAG_GAUGE);
}

// Texts that carry instances are held as references.
TEST(Catalogue, HoldsEmbeddedInstancesAsReferences) {
    const auto& settings = as_reference(
        *find_feature(&class_named("TVRHBA_DiagnosticSettingDataRecord"), "Settings", REFERENCES));
    EXPECT_EQ(settings.flags, FLAG_REFERENCE | FLAG_EMBEDDED_INSTANCE);
    EXPECT_EQ(settings.meta_class, &CIM_DiagnosticSettingData::static_meta_class);

    const auto& parameters =
        as_reference(*find_feature(&class_named("CIM_ConcreteJob"), "JobInParameters", REFERENCES));
    EXPECT_EQ(parameters.flags, FLAG_REFERENCE | FLAG_EMBEDDED_OBJECT);
    EXPECT_EQ(parameters.meta_class, &Instance::static_meta_class);

    const auto& get_errors =
        as_method(*find_feature(&class_named("CIM_ConcreteJob"), "GetErrors", METHODS));
    const auto& errors = as_reference(*get_errors.meta_features[0]);
    EXPECT_EQ(errors.flags, FLAG_REFERENCE | FLAG_IN | FLAG_OUT | FLAG_EMBEDDED_INSTANCE);
    EXPECT_TRUE(errors.is_array());
    EXPECT_EQ(errors.meta_class, &CIM_Error::static_meta_class);
}

TEST(Catalogue, CountsTheDefaults) {
    std::map<uint16, unsigned> defaults;
    for (const Meta_Class* meta_class : all_classes()) {
        for (const Meta_Feature* feature : *meta_class) {
            if (feature->has(FLAG_PROPERTY) && as_property(*feature).value != nullptr) {
                EXPECT_FALSE(as_property(*feature).is_array()) << feature->name;
                ++defaults[as_property(*feature).type];
            }
        }
    }
    const std::map<uint16, unsigned> expected = {{UINT16, 256}, {BOOLEAN, 25}, {UINT32, 10},
                                                 {DATETIME, 6}, {UINT64, 2},   {STRING, 2}};
    EXPECT_EQ(defaults, expected);
}

TEST(Catalogue, GivesDefaultsToNewInstances) {
    const Ref<CIM_ComputerSystem> system(CIM_ComputerSystem::create(true));
    EXPECT_EQ(system->EnabledState.value, 5);
    EXPECT_EQ(system->EnabledState.null, 0);
    EXPECT_EQ(system->Name.null, 1);

    // A redeclared property has left its parent's default behind.
    const Ref<CIM_ProtocolEndpoint> endpoint(CIM_ProtocolEndpoint::create(true));
    EXPECT_EQ(endpoint->EnabledState.null, 1);
    const Ref<TVRHBA_ElementVPD> vpd(TVRHBA_ElementVPD::create(true));
    EXPECT_EQ(vpd->IsMinimum.null, 1);

    const Ref<TVRHBA_ResourcePool> pool(TVRHBA_ResourcePool::create(true));
    EXPECT_STREQ(pool->ConsumedResourceUnits.value.c_str(), "count");
    EXPECT_FALSE(pool->Primordial.value);
    EXPECT_EQ(pool->Primordial.null, 0);
    const Ref<TVRHBA_ConcreteJob> job(TVRHBA_ConcreteJob::create(true));
    EXPECT_STREQ(job->TimeBeforeRemoval.value.ascii().c_str(), "00000000000500.000000:000");
}

constexpr uint32 role_flags = FLAG_CLASS | FLAG_ASSOCIATION | FLAG_INDICATION;

TEST(Metadata, ClassWordsHaveOneRole) {
    const std::set<uint32> words = {0x8,  0x18,   0x8008, 0x80,    0x90,   0xc0,
                                    0xd0, 0x8080, 0x80c0, 0x80000, 0x80010};
    for (const Meta_Class* meta_class : all_classes()) {
        EXPECT_TRUE(words.contains(meta_class->flags)) << meta_class->name;
        EXPECT_EQ(std::popcount(meta_class->flags & role_flags), 1) << meta_class->name;
    }
}

TEST(Metadata, RecordsAreStaticAndSayTheirKind) {
    constexpr uint32 kinds = FLAG_PROPERTY | FLAG_REFERENCE | FLAG_METHOD;
    for (const Meta_Class* meta_class : all_classes()) {
        SCOPED_TRACE(meta_class->name);
        EXPECT_EQ(meta_class->refs, 0u);
        EXPECT_EQ(meta_class->meta_repository, &meta_repository);
        std::set<std::string> names;
        uint64 keys = 0;
        for (const Meta_Feature* feature : *meta_class) {
            EXPECT_TRUE(names.insert(feature->name).second) << feature->name;
            EXPECT_EQ(std::popcount(feature->flags & kinds), 1) << feature->name;
            EXPECT_EQ(feature->refs, 0u);
            EXPECT_EQ(feature->num_meta_qualifiers, 0u);
            if (feature->has(FLAG_PROPERTY)) {
                EXPECT_TRUE(feature->has(FLAG_READ)) << feature->name;
                EXPECT_LT(as_property(*feature).type, type_count);
            }
            keys += feature->has(FLAG_KEY);
        }
        EXPECT_EQ(meta_class->num_keys, keys);
    }
}

TEST(Metadata, InheritedFeaturesShareTheirParentsRecord) {
    for (const Meta_Class* meta_class : all_classes()) {
        SCOPED_TRACE(meta_class->name);
        const Meta_Class* parent = meta_class->super_meta_class;
        const uint64 inherited = parent != nullptr ? parent->num_meta_features : 0;
        ASSERT_GE(meta_class->num_meta_features, inherited);
        for (uint64 i = 0; i < meta_class->num_meta_features; ++i) {
            const Meta_Feature* feature = meta_class->meta_features[i];
            const Meta_Feature* above = i < inherited ? parent->meta_features[i] : nullptr;
            EXPECT_EQ(meta_class->locals[i] == 0, feature == above) << feature->name;
            if (above != nullptr) {
                EXPECT_STREQ(feature->name, above->name);
                EXPECT_EQ(feature->flags & ALL_FEATURES, above->flags & ALL_FEATURES);
            }
        }
    }
}

TEST(Metadata, RedeclaredReferencesNarrowTheirTarget) {
    unsigned redeclared = 0;
    for (const Meta_Class* meta_class : all_classes()) {
        const Meta_Class* parent = meta_class->super_meta_class;
        for (uint64 i = 0; parent != nullptr && i < parent->num_meta_features; ++i) {
            const Meta_Feature& feature = *meta_class->meta_features[i];
            if (feature.has(FLAG_REFERENCE) && meta_class->locals[i] == 1) {
                EXPECT_TRUE(is_subclass(as_reference(*parent->meta_features[i]).meta_class,
                                        as_reference(feature).meta_class))
                    << meta_class->name << '.' << feature.name;
                ++redeclared;
            }
        }
    }
    EXPECT_GE(redeclared, 2u * 88u);
}

// Where a field lies when each takes the next place of its alignment, told without the compiler.
class Layout {
public:
    uint32 place(const Meta_Feature& feature) {
        if (feature.has(FLAG_REFERENCE)) {
            return as_reference(feature).is_array() ? place(8, 16) : place(8, 8);
        }
        const Meta_Property& property = as_property(feature);
        const auto width = property.is_array()
                               ? 8u
                               : static_cast<uint32>(type_width(static_cast<Type>(property.type)));
        return place(width, 2 * width); // the null flag, filled up to the alignment
    }
    uint32 size() { return place(8, 0); }

private:
    uint32 place(uint32 alignment, uint32 size) {
        const uint32 at = (_end + alignment - 1) / alignment * alignment;
        _end = at + size;
        return at;
    }
    uint32 _end = 24; // behind the header
};

void expect_layout(const Meta_Structure& structure) {
    SCOPED_TRACE(structure.name);
    Layout layout;
    for (const Meta_Feature* feature : structure) {
        if (feature->has(FLAG_PROPERTY)) {
            EXPECT_EQ(as_property(*feature).offset, layout.place(*feature)) << feature->name;
        } else if (feature->has(FLAG_REFERENCE)) {
            EXPECT_EQ(as_reference(*feature).offset, layout.place(*feature)) << feature->name;
        }
    }
    EXPECT_EQ(structure.size, layout.size());
}

TEST(Metadata, FieldsLieWhereTheRecordsSay) {
    for (const Meta_Class* meta_class : all_classes()) {
        expect_layout(*meta_class);
        for (const Meta_Feature* feature : *meta_class) {
            if (feature->has(FLAG_METHOD)) {
                expect_layout(as_method(*feature));
            }
        }
    }
}

// The named field of a structure, and the one that metadata finds, are one.
TEST(Metadata, NamedFieldsAreTheRecordsFields) {
    const Ref<TVRHBA_FCPort> port(TVRHBA_FCPort::create(true));
    const auto property = [&](const char* name) -> const Meta_Property& {
        return as_property(*find_feature(class_of(port.get()), name, PROPERTIES));
    };
    EXPECT_EQ(field(port.get(), property("DeviceID").offset), &port->DeviceID);
    EXPECT_EQ(field(port.get(), property("NumberOfDiscoveredPorts").offset),
              &port->NumberOfDiscoveredPorts);
    EXPECT_EQ(&null_flag(port.get(), property("FullDuplex")), &port->FullDuplex.null);
    EXPECT_EQ(&null_flag(port.get(), property("Speed")), &port->Speed.null);
    EXPECT_EQ(&null_flag(port.get(), property("ActiveCOS")), &port->ActiveCOS.null);
    EXPECT_EQ(&null_flag(port.get(), property("LocationIndicator")), &port->LocationIndicator.null);
}

TEST(Metadata, MethodsEndWithTheirReturnValue) {
    constexpr uint32 allowed = FLAG_PROPERTY | FLAG_REFERENCE | FLAG_IN | FLAG_OUT | FLAG_REQUIRED |
                               FLAG_OCTET_STRING | FLAG_EMBEDDED_INSTANCE;
    for (const Meta_Class* meta_class : all_classes()) {
        for (const Meta_Feature* feature : *meta_class) {
            if (!feature->has(FLAG_METHOD)) {
                continue;
            }
            SCOPED_TRACE(std::string(meta_class->name) + "." + feature->name);
            const Meta_Method& method = as_method(*feature);
            ASSERT_GE(method.num_meta_features, 1u);
            const Meta_Feature& last = *method.meta_features[method.num_meta_features - 1];
            EXPECT_STREQ(last.name, "return_value");
            EXPECT_EQ(last.flags, FLAG_PROPERTY | FLAG_OUT);
            EXPECT_EQ(as_property(last).type, method.return_type);
            for (const Meta_Feature* parameter : method) {
                EXPECT_TRUE(parameter->has(FLAG_IN | FLAG_OUT)) << parameter->name;
                EXPECT_EQ(parameter->flags & ~allowed, 0u) << parameter->name;
            }
        }
    }
}

TEST(Metadata, EveryStructureIsMadeCopiedAndEnded) {
    for (const Meta_Class* meta_class : all_classes()) {
        SCOPED_TRACE(meta_class->name);
        const Ref<> instance(create(meta_class, true));
        const Ref<> copy(clone(instance.get()));
        for (const Meta_Feature* feature : *meta_class) {
            if (feature->has(FLAG_PROPERTY)) {
                const Meta_Property& property = as_property(*feature);
                EXPECT_EQ(null_flag(copy.get(), property), property.value == nullptr)
                    << feature->name;
            } else if (feature->has(FLAG_METHOD)) {
                unref(create(&as_method(*feature), false));
            }
        }
    }
}

TEST(Family, HasItsMembersAndMethods) {
    const tvrmof::Schema schema = tvrmof::read_file(TVR_MOF);
    std::map<std::string, std::vector<std::string>> members; // by their methods
    std::size_t family = 0, own = 0, methods = 0, with_methods = 0;
    for (const tvrgen::Provider& provider : tvrgen::read_providers(TVR_PROVIDERS, schema)) {
        (provider.is_own ? own : family) += 1;
        const auto names = method_names(class_named(provider.served->name.c_str()));
        if (!provider.is_own && !names.empty()) {
            std::string joined;
            for (const std::string& name : names) {
                joined += name + ' ';
            }
            members[joined].push_back(provider.served->name.substr(std::strlen("TVRHBA_")));
            methods += names.size();
            ++with_methods;
        }
    }
    EXPECT_EQ(family, 116u);
    EXPECT_EQ(own, 21u);
    EXPECT_EQ(with_methods, 17u);
    EXPECT_EQ(methods, 87u);

    const std::string device = "RequestStateChange SetPowerState Reset EnableDevice OnlineDevice "
                               "QuiesceDevice SaveProperties RestoreProperties ";
    const auto expect = [&](const std::string& names, std::vector<std::string> classes) {
        EXPECT_THAT(members[names], testing::UnorderedElementsAreArray(classes)) << names;
    };
    expect(device, {"LogicalDisk", "PortController", "SCSIArbitraryLogicalUnit",
                    "SCSIProtocolController", "StorageExtent", "StorageVolume", "VirtualFCPort"});
    expect(device + "BISTExecution ", {"PCIDevice"});
    expect(device + "LockMedia ", {"TapeDrive"});
    expect("CreateGoalSettings ",
           {"EnabledRecordLogCapabilities", "FCHBADiagnosticServiceCapabilities",
            "SoftwareInstallationServiceCapabilities"});
    expect("RequestStateChange BroadcastReset ",
           {"SCSIProtocolEndpoint", "SCSIProtocolInitiatorEndpoint"});
    expect("KillJob RequestStateChange GetError GetErrors ", {"ConcreteJob"});
    expect("IsCompatible ", {"PhysicalPackage"});
    expect("RequestStateChange ", {"RemoteServiceAccessPoint"});
}

} // namespace
