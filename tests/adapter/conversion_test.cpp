// Values and objects between CMPI and the runtime, in both directions.
#include "runtime/cmpi_container.h"
#include "runtime/cmpi_conversion.h"
#include "tests/adapter/fixture.h"
#include "tests/common/session.h"

#include <string>

namespace cimple {
namespace {

using fake::Datum;

class Conversion_Test : public ::testing::Test {
protected:
    Conversion_Test() {
        const auto on = [this](const char* name, auto make) {
            session.on(name, [this, make](const auto& words, std::ostream& answer) {
                answer << told(make(words.at(0).c_str(), datum(words.at(1))).get()) << '\n'
                       << told(log, position);
            });
        };
        // A property beside another, and a key alone: what becomes of them.
        on("in", [this](const char* name, const Datum& datum) { return in(name, datum); });
        on("key", [this](const char* name, const Datum& datum) { return keys(name, datum); });
        session.on("failing", [this](const auto& words) {
            broker.failing = {words.begin(), words.end()};
        });
    }

    // The CMPI form of an instance.
    fake::Inst out(const Instance* instance, const char* name_space = "root/test") {
        CMPIObjectPath* path = nullptr;
        EXPECT_EQ(make_CMPI_object_path(broker.get(), instance, name_space, path), CMPI_RC_OK);
        CMPIInstance* made = nullptr;
        EXPECT_EQ(make_CMPI_instance(broker.get(), instance, name_space, path, nullptr, made),
                  CMPI_RC_OK);
        return fake::Broker::of(made);
    }
    // A widget from a CMPI instance, of one property and another beside it, which comes through.
    Ref<Widget> in(fake::Inst inst) {
        Instance* made = nullptr;
        CMPIObjectPath* path = broker.path({"root/test", "Widget", {}});
        EXPECT_EQ(make_cimple_instance(broker.get(), &Widget::static_meta_class, path,
                                       broker.instance(std::move(inst)), made),
                  CMPI_RC_OK);
        return Ref<Widget>(static_cast<Widget*>(made));
    }
    Ref<Widget> in(const char* name, Datum datum) {
        fake::Inst inst{{"root/test", "Widget", {}}, {{{"Name", fake::string("beside")}}}};
        inst.properties.set(name, std::move(datum));
        Ref<Widget> made = in(std::move(inst));
        EXPECT_TRUE(made->Name.value.equal("beside"));
        return made;
    }
    // A widget from the keys of a path.
    Ref<Widget> keys(const char* name, Datum datum) {
        fake::Path path{"root/test", "Widget", {{{name, std::move(datum)}}}};
        Instance* made = nullptr;
        EXPECT_EQ(make_cimple_reference(broker.get(), &Widget::static_meta_class,
                                        broker.path(std::move(path)), made),
                  CMPI_RC_OK);
        return Ref<Widget>(static_cast<Widget*>(made));
    }

    fake::Broker broker;
    const Runtime_Log log;
    std::size_t position = 0; // in the log
    Text_Session session;
};

TEST_F(Conversion_Test, EveryTypeGoesOutUnderItsCode) {
    const std::pair<const char*, int> codes[] = {
        {"Flag", 0x02},   {"U8", 0x80},     {"S8", 0xC0},      {"U16", 0x90},
        {"S16", 0xD0},    {"U32", 0xA0},    {"S32", 0xE0},     {"U64", 0xB0},
        {"S64", 0xF0},    {"R32", 0x08},    {"R64", 0x0C},     {"C16", 0x03},
        {"Text", 0x1600}, {"When", 0x1800}, {"Owner", 0x1100}, {"Inner", 0x1000}};
    fake::Inst inst = out(full_widget().get());
    for (const auto& [name, code] : codes) {
        const Datum* one = inst.properties.find(name);
        const Datum* many = inst.properties.find(std::string(name) + "s");
        ASSERT_TRUE(one != nullptr && many != nullptr) << name;
        EXPECT_EQ(one->type, code) << name;
        EXPECT_EQ(many->type, code | 0x2000) << name;
        EXPECT_EQ(many->as<fake::List>()->type, code) << name;
    }
    EXPECT_EQ(inst.properties.find("When")->text().substr(21), "+060");
    EXPECT_EQ(inst.properties.find("Owner")->as<fake::Path>()->keys.size(), 1u); // keys alone

    // The same types without values are null again.
    for (fake::Entry& entry : inst.properties) {
        entry.datum = fake::null_of(entry.datum.type);
    }
    const Ref<Widget> made = in(inst);
    for (const Meta_Feature* feature : Widget::static_meta_class) {
        if (feature->has(FLAG_PROPERTY)) {
            EXPECT_EQ(null_flag(made.get(), as_property(*feature)), 1) << feature->name;
        }
    }
    EXPECT_EQ(made->Owner, nullptr);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(Conversion_Test, NullFeaturesAreAbsentAndEmptyArraysPresent) {
    Ref<Widget> w = widget("a");
    w->Texts.set(Array<String>());
    w->Owners.null = 1;
    w->Inners.null = 0;
    const fake::Inst inst = out(w.get());
    ASSERT_EQ(inst.properties.size(), 4u);
    EXPECT_TRUE(inst.properties.find("Texts")->as<fake::List>()->elements.empty());

    w->Owners.value.append(nullptr); // a null instance keeps the array from going out
    w->Owners.null = 0;
    EXPECT_EQ(out(w.get()).properties.find("Owners"), nullptr);
    EXPECT_TRUE(log.has("null instance argument"));
    EXPECT_TRUE(log.has("element conversion failed"));

    CMPIInstance* made = nullptr;
    make_CMPI_instance(broker.get(), w.get(), "root/test", nullptr, nullptr, made);
    EXPECT_TRUE(log.has("No ObjectPath built before call to make_CMPI_instance"));
    EXPECT_NE(made, nullptr);
}

TEST_F(Conversion_Test, NestedInstancesGoOutInTheirOwnNamespace) {
    Ref<Widget> w = widget("a");
    w->Owner = part("p").release();
    w->Inner = part("q").release();
    w->Inner->__name_space = "root/own";
    const fake::Inst with = out(w.get());
    EXPECT_EQ(with.properties.find("Owner")->as<fake::Path>()->name_space, "root/test");
    EXPECT_EQ(with.properties.find("Inner")->as<fake::Inst>()->path.name_space, "root/own");

    const fake::Inst without = out(w.get(), "");
    EXPECT_EQ(without.properties.find("Owner"), nullptr);
    EXPECT_NE(without.properties.find("Inner"), nullptr);
    EXPECT_TRUE(log.has("null namespace"));
    EXPECT_TRUE(log.has("conversion error: Widget.Owner"));
}

TVR_SESSIONS(Conversion_Test, "conversion.txt");

TEST_F(Conversion_Test, InstancesThatThrowLoseTheirProperty) {
    fake::Inst throwing{{"root/test", "Widget", {}}, {{{"U8", fake::uint32(1)}}}};
    throwing.throws = true;
    EXPECT_EQ(in(throwing)->U8.null, 1);
    EXPECT_TRUE(log.has("CMGetPropertyAt() threw exception: index=0 size=1"));
    EXPECT_TRUE(log.has("get_name() failed: class=Widget, index=0"));
}

TEST_F(Conversion_Test, KeysOfPathsAreNarrowed) {
    const CMPIObjectPath_Container container(
        &fixture_repository, broker.get(), "n",
        broker.path({"n", "Widget", {{{"K", fake::uint64(0xFFFFFFFFFFFFFFFE)}}}}));
    Value value;
    ASSERT_EQ(container.get_value(0, SINT8, value), 0);
    EXPECT_EQ(*value.get<sint8>(), -2);
    ASSERT_EQ(container.get_value(0, UINT16, value), 0);
    EXPECT_EQ(*value.get<uint16>(), 0xFFFE);
}

TEST_F(Conversion_Test, WhatWasMadeStaysUntilItsDeliveryEnds) {
    {
        CMPI_Made made(broker.get());
        const CMPIString* host = made.string("host");
        EXPECT_EQ(made.string(std::string("host")), host);
        EXPECT_EQ(broker.live(), 1u);
        std::vector<CMPIString*> strings;
        strings.reserve(1000);
        for (int i = 0; i < 1000; ++i) { // more than there is room for
            strings.push_back(made.string("text " + std::to_string(i)));
        }
        for (int i = 0; i < 1000; ++i) {
            const CMPIString* string = strings[static_cast<std::size_t>(i)];
            EXPECT_EQ(string->ft->getCharPtr(string, nullptr), "text " + std::to_string(i));
        }
        CMPIObjectPath* path = nullptr;
        const Ref<Widget> full = full_widget();
        EXPECT_EQ(make_CMPI_object_path(broker.get(), full.get(), "n", path, &made), CMPI_RC_OK);
        CMPIInstance* instance = nullptr;
        EXPECT_EQ(make_CMPI_instance(broker.get(), full.get(), "n", path, nullptr, instance, &made),
                  CMPI_RC_OK);
        made.release();
        EXPECT_LE(broker.live(), 256u);
        broker.failing = {"newString"};
        EXPECT_EQ(made.string("never seen"), nullptr);
        broker.failing.clear();
        EXPECT_NE(made.string("never seen"), nullptr);
    }
    EXPECT_EQ(broker.live(), 0u);
}

TEST_F(Conversion_Test, ObjectsThatReferToThemselvesEnd) {
    const auto path = std::make_shared<fake::Path>(fake::Path{"n", "Link", {}});
    path->keys.set("Next", {CMPI_ref, CMPI_goodValue, {}, path});
    Instance* made = nullptr;
    EXPECT_EQ(
        make_cimple_reference(broker.get(), &Link::static_meta_class, broker.path(*path), made),
        CMPI_RC_OK);
    int depth = 0;
    for (const Link* link = static_cast<Link*>(made); link != nullptr; link = link->Next) {
        ++depth;
    }
    EXPECT_EQ(depth, max_nesting + 1);
    unref(made);
    path->keys.clear();
}

} // namespace
} // namespace cimple
