// Values and objects between CMPI and the runtime, in both directions.
#include "runtime/cmpi_container.h"
#include "runtime/cmpi_conversion.h"
#include "tests/adapter/fixture.h"

#include <string>

namespace cimple {
namespace {

using fake::Datum;

// A good value of an object type without content: a null pointer.
Datum null_pointer(int type) {
    return {static_cast<CMPIType>(type), CMPI_goodValue, {}, {}};
}

class Conversion_Test : public ::testing::Test {
protected:
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

TEST_F(Conversion_Test, UnknownForeignAndMismatchingDataAreLeftOut) {
    const std::tuple<const char*, Datum, const char*> cases[] = {
        {"Nonsense", fake::uint32(1), "unknown feature: Widget.Nonsense"},
        {"Turn", fake::uint32(1), "unknown feature: Widget.Turn"}, // a method
        {"U16", fake::uint32(1), "type mismatch on U16: uint32/uint16"},
        {"U16", fake::uint32(1), "conversion error: Widget.U16"},
        {"Texts", fake::string("one"), "type mismatch on Texts: string/string_array"},
        {"Owner", fake::list(CMPI_instance, {}), "type mismatch on Owner: instance_array/instance"},
        {"U8", fake::null_of(CMPI_null), "unknown type"},
        {"When", fake::datetime("yesterday"), "conversion error: Widget.When"},
        {"When", null_pointer(CMPI_dateTime), "CMGetStringFormat() failed"},
    };
    for (const auto& [name, datum, line] : cases) {
        const Ref<Widget> made = in(name, datum);
        EXPECT_TRUE(log.has(line)) << line;
        EXPECT_TRUE(made->U16.is_null() && made->Texts.is_null() && made->U8.is_null() &&
                    made->When.is_null() && made->Owner == nullptr)
            << name;
    }
    for (const int type : {CMPI_null, CMPI_args, CMPI_chars, CMPI_ptr, CMPI_class, 0x70}) {
        EXPECT_EQ(in("U8", null_pointer(type))->U8.null, 1) << type;
    }
    EXPECT_EQ(log.count("unreachable"), 6);
    Datum seven = fake::boolean(true);
    seven.scalar.boolean = 7;
    EXPECT_TRUE(in("Flag", seven)->Flag.value == true);
}

TEST_F(Conversion_Test, UnreadableStringsAreEmpty) {
    Ref<Widget> made = in("Text", null_pointer(CMPI_string));
    EXPECT_EQ(made->Text.null, 0);
    EXPECT_TRUE(made->Text.value.empty());
    EXPECT_TRUE(log.has("ignored null CMPI string"));

    made = in("Texts", fake::list(CMPI_string, {fake::string("a"), null_pointer(CMPI_string)}));
    EXPECT_TRUE((made->Texts.value == Array<String>{"a", ""}));
}

TEST_F(Conversion_Test, ArraysAreWholeOrNull) {
    fake::Path p{"root/test", "Part", {{{"Id", fake::string("p")}}}};
    const Datum one = fake::uint32(1);
    const Datum good = fake::reference(p);
    p.class_name = "Nobody";
    const std::tuple<const char*, Datum, const char*> cases[] = {
        {"U32s", fake::list(CMPI_uint32, {one, fake::null_of(CMPI_uint32)}),
         "encountered null array element"},
        {"U32s", fake::list(CMPI_uint32, {one, fake::uint16(2)}), ": type mismatch"},
        {"U32s", null_pointer(CMPI_uint32A), ""},
        {"Whens", fake::list(CMPI_dateTime, {fake::datetime("")}), ""},
        {"Owners", fake::list(CMPI_ref, {good, null_pointer(CMPI_ref)}),
         "encountered null instance element"},
        {"Owners", fake::list(CMPI_ref, {good, one}), "array element type mismatch"},
        {"Owners", fake::list(CMPI_ref, {fake::reference(p)}), "failed to find meta class: Nobody"},
        {"Owners", null_pointer(CMPI_refA), "failed to create CIMPLE instance"},
    };
    for (const auto& [name, datum, line] : cases) {
        Ref<Widget> made = in(name, datum);
        EXPECT_TRUE(made->U32s.null == 1 && made->Whens.null == 1 && made->Owners.null == 1)
            << line;
        EXPECT_TRUE(log.has(line)) << line;
    }
    EXPECT_EQ(in("U32s", fake::list(CMPI_uint32, {}))->U32s.null, 0);
    EXPECT_EQ(in("Owners", fake::list(CMPI_ref, {}))->Owners.null, 0);
    const Ref<Widget> made = in("Owners", fake::list(CMPI_ref, {good, fake::null_of(CMPI_ref)}));
    ASSERT_EQ(made->Owners.value.size(), 2u);
    EXPECT_NE(made->Owners.value[0], nullptr);
    EXPECT_EQ(made->Owners.value[1], nullptr);
}

TEST_F(Conversion_Test, NestedInstancesNeedAPathAndAClass) {
    fake::Inst nested{{"root/own", "Special_Part", {}}, {{{"Slot", fake::uint32(4)}}}};
    const Ref<Widget> made = in("Inner", fake::instance(nested));
    ASSERT_NE(made->Inner, nullptr);
    EXPECT_EQ(class_of(made->Inner), &Special_Part::static_meta_class);
    EXPECT_TRUE(made->Inner->__name_space.equal("root/own"));
    for (const char* call : {"getObjectPath", "getClassName"}) {
        broker.failing = {call};
        EXPECT_EQ(in("Inner", fake::instance(nested))->Inner, nullptr);
    }
    broker.failing.clear();
    EXPECT_TRUE(log.has("CMGetObjectPath() failed"));
    EXPECT_EQ(in("Inner", fake::instance({{"root/test", "Widget", {}}, {}}))->Inner, nullptr);
    EXPECT_TRUE(log.has("failed to assign instance of Widget to Widget.Inner"));

    fake::Inst throwing{{"root/test", "Widget", {}}, {{{"U8", fake::uint32(1)}}}};
    throwing.throws = true;
    EXPECT_EQ(in(throwing)->U8.null, 1);
    EXPECT_TRUE(log.has("CMGetPropertyAt() threw exception: index=0 size=1"));
    EXPECT_TRUE(log.has("get_name() failed: class=Widget, index=0"));
}

TEST_F(Conversion_Test, KeysOfPathsAreNarrowed) {
    EXPECT_EQ(keys("Index", fake::uint64(0x100000005))->Index.value, 5u);
    EXPECT_EQ(keys("iNDEX", fake::sint64(-1))->Index.value, 4294967295u);
    Datum null = fake::uint64(5);
    null.state = CMPI_nullValue;
    EXPECT_EQ(keys("Index", null)->Index.null, 1);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(keys("Name", fake::uint64(77))->Name.null, 1);
    EXPECT_TRUE(log.has("type mismatch on Name: uint64/string"));
    EXPECT_EQ(keys("Index", fake::uint16(77))->Index.null, 1);
    EXPECT_EQ(keys("Flag", fake::boolean(true))->Flag.null, 1); // no key: passed over silently
    EXPECT_EQ(log.count("Flag"), 0);

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
