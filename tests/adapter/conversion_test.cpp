// Values and objects between CMPI and the runtime, in both directions.
#include "runtime/cmpi_container.h"
#include "runtime/cmpi_conversion.h"
#include "tests/adapter/fixture.h"

#include <string>

namespace cimple {
namespace {

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
    // A widget from a CMPI instance.
    Ref<Widget> in(fake::Inst inst) {
        Instance* made = nullptr;
        CMPIObjectPath* path = broker.path({"root/test", "Widget", {}});
        EXPECT_EQ(make_cimple_instance(broker.get(), &Widget::static_meta_class, path,
                                       broker.instance(std::move(inst)), made),
                  CMPI_RC_OK);
        return Ref<Widget>(static_cast<Widget*>(made));
    }
    Ref<Widget> in(const char* name, fake::Datum datum) {
        fake::Inst inst{{"root/test", "Widget", {}}, {}};
        inst.properties.set("Text", fake::string("beside"));
        inst.properties.set(name, std::move(datum));
        Ref<Widget> made = in(std::move(inst));
        EXPECT_EQ(made->Text.null, 0); // what stands beside comes through
        return made;
    }
    // A widget from the keys of a path.
    Ref<Widget> keys(const char* name, fake::Datum datum) {
        fake::Path path{"root/test", "Widget", {}};
        path.keys.set(name, std::move(datum));
        Instance* made = nullptr;
        EXPECT_EQ(make_cimple_reference(broker.get(), &Widget::static_meta_class, broker.path(path),
                                        made),
                  CMPI_RC_OK);
        return Ref<Widget>(static_cast<Widget*>(made));
    }

    fake::Broker broker;
    const Runtime_Log log;
};

TEST_F(Conversion_Test, EveryTypeGoesOutUnderItsCode) {
    constexpr struct {
        const char* name;
        CMPIType scalar;
    } types[] = {{"Flag", 0x02}, {"U8", 0x80},  {"S8", 0xC0},     {"U16", 0x90},   {"S16", 0xD0},
                 {"U32", 0xA0},  {"S32", 0xE0}, {"U64", 0xB0},    {"S64", 0xF0},   {"R32", 0x08},
                 {"R64", 0x0C},  {"C16", 0x03}, {"Text", 0x1600}, {"When", 0x1800}};
    const fake::Inst inst = out(full_widget().get());
    EXPECT_EQ(inst.properties.size(), 34u);
    for (const auto& type : types) {
        const fake::Datum* one = inst.properties.find(type.name);
        const fake::Datum* many = inst.properties.find(std::string(type.name) + "s");
        ASSERT_TRUE(one != nullptr && many != nullptr) << type.name;
        EXPECT_EQ(one->type, type.scalar) << type.name;
        EXPECT_EQ(many->type, type.scalar | 0x2000) << type.name;
        EXPECT_EQ(many->as<fake::List>()->type, type.scalar) << type.name;
    }
    EXPECT_EQ(inst.properties.find("Owner")->type, 0x1100);
    EXPECT_EQ(inst.properties.find("Owners")->type, 0x3100);
    EXPECT_EQ(inst.properties.find("Inner")->type, 0x1000);
    EXPECT_EQ(inst.properties.find("Inners")->type, 0x3000);
    EXPECT_EQ(inst.properties.find("S64")->scalar.sint64, -9000000000000000000);
    EXPECT_EQ(inst.properties.find("When")->text().substr(21), "+060");
    EXPECT_EQ(inst.properties.find("Flag")->scalar.boolean, 1);

    const fake::Path& owner = *inst.properties.find("Owner")->as<fake::Path>();
    EXPECT_EQ(owner.name_space, "root/test");
    EXPECT_EQ(owner.keys.size(), 1u); // keys alone
    const fake::Inst& inner = *inst.properties.find("Inner")->as<fake::Inst>();
    EXPECT_EQ(inner.properties.size(), 2u);
}

TEST_F(Conversion_Test, EveryValueSurvivesTheRoundTrip) {
    const Ref<Widget> sent = full_widget();
    const fake::Inst first = out(sent.get());
    const Ref<Widget> back = in(first);
    const fake::Inst second = out(back.get());
    for (const fake::Entry& entry : first.properties) {
        const fake::Datum* again = second.properties.find(entry.name);
        ASSERT_NE(again, nullptr) << entry.name;
        EXPECT_EQ(again->scalar.uint64, entry.datum.scalar.uint64) << entry.name;
        EXPECT_EQ(again->text(), entry.datum.text()) << entry.name;
    }
    EXPECT_TRUE(back->Flags.value == sent->Flags.value);
    EXPECT_TRUE(back->U8s.value == sent->U8s.value);
    EXPECT_TRUE(back->S8s.value == sent->S8s.value);
    EXPECT_TRUE(back->U16s.value == sent->U16s.value);
    EXPECT_TRUE(back->S16s.value == sent->S16s.value);
    EXPECT_TRUE(back->U32s.value == sent->U32s.value);
    EXPECT_TRUE(back->S32s.value == sent->S32s.value);
    EXPECT_TRUE(back->U64s.value == sent->U64s.value);
    EXPECT_TRUE(back->S64s.value == sent->S64s.value);
    EXPECT_TRUE(back->R32s.value == sent->R32s.value);
    EXPECT_TRUE(back->R64s.value == sent->R64s.value);
    EXPECT_TRUE(back->C16s.value == sent->C16s.value);
    EXPECT_TRUE(back->Texts.value == sent->Texts.value);
    EXPECT_TRUE(back->Whens.value == sent->Whens.value);
    EXPECT_TRUE(back->Owner->Id.value.equal("owner"));
    EXPECT_EQ(back->Owner->Slot.null, 1); // a reference has keys alone
    EXPECT_EQ(back->Inner->Slot.value, 2u);
    ASSERT_EQ(back->Owners.value.size(), 2u);
    EXPECT_TRUE(static_cast<Part*>(back->Owners.value[1])->Id.value.equal("o2"));
    EXPECT_EQ(static_cast<Part*>(back->Inners.value[0])->Slot.value, 11u);
    EXPECT_TRUE(back->__name_space.equal("root/test"));
    EXPECT_EQ(log.text(), "");
}

TEST_F(Conversion_Test, NullFeaturesAreAbsentAndEmptyArraysPresent) {
    Ref<Widget> w = widget("a");
    w->Texts.set(Array<String>());
    w->Owners.null = 1;
    w->Inners.null = 0;
    const fake::Inst inst = out(w.get());
    ASSERT_EQ(inst.properties.size(), 4u);
    EXPECT_EQ(inst.properties.find("Text"), nullptr);
    EXPECT_EQ(inst.properties.find("Texts")->type, CMPI_stringA);
    EXPECT_TRUE(inst.properties.find("Texts")->as<fake::List>()->elements.empty());
    EXPECT_EQ(inst.properties.find("Inners")->type, CMPI_instanceA);
}

TEST_F(Conversion_Test, PathsAreBuiltWhereNoneIsGiven) {
    CMPIInstance* made = nullptr;
    const Ref<Widget> w = widget("a");
    EXPECT_EQ(make_CMPI_instance(broker.get(), w.get(), "root/test", nullptr, nullptr, made),
              CMPI_RC_OK);
    EXPECT_TRUE(log.has("No ObjectPath built before call to make_CMPI_instance"));
    EXPECT_EQ(fake::Broker::of(made).path.keys.size(), 2u);
    EXPECT_EQ(broker.live(), 1u);
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
    EXPECT_NE(without.properties.find("Name"), nullptr);
    EXPECT_TRUE(log.has("WARN: Converter("));
    EXPECT_TRUE(log.has("null namespace"));
    EXPECT_TRUE(log.has("conversion error: Widget.Owner"));
}

TEST_F(Conversion_Test, NullInstancesInArraysKeepTheFeatureFromGoingOut) {
    Ref<Widget> w = widget("a");
    w->Owners.value.append(nullptr);
    w->Owners.null = 0;
    EXPECT_EQ(out(w.get()).properties.find("Owners"), nullptr);
    EXPECT_TRUE(log.has("null instance argument"));
    EXPECT_TRUE(log.has("element conversion failed"));
}

TEST_F(Conversion_Test, UnknownAndMismatchingPropertiesAreLeftOut) {
    in("Nonsense", fake::uint32(1));
    EXPECT_TRUE(log.has("WARN: Container("));
    EXPECT_TRUE(log.has("unknown feature: Widget.Nonsense"));
    in("Turn", fake::uint32(1)); // a method
    EXPECT_TRUE(log.has("unknown feature: Widget.Turn"));

    EXPECT_EQ(in("U16", fake::uint32(1))->U16.null, 1);
    EXPECT_TRUE(log.has("WARN: CMPI_Containers("));
    EXPECT_TRUE(log.has("type mismatch on U16: uint32/uint16"));
    EXPECT_TRUE(log.has("conversion error: Widget.U16"));
    in("Texts", fake::string("one"));
    EXPECT_TRUE(log.has("type mismatch on Texts: string/string_array"));
    in("Owner", fake::list(CMPI_instance, {}));
    EXPECT_TRUE(log.has("type mismatch on Owner: instance_array/instance"));
}

TEST_F(Conversion_Test, NullDataOfEveryTypeAreNull) {
    fake::Inst inst{{"root/test", "Widget", {}}, {}};
    const fake::Inst full = out(full_widget().get());
    for (const fake::Entry& entry : full.properties) {
        inst.properties.set(entry.name, fake::null_of(entry.datum.type));
    }
    const Ref<Widget> made = in(inst);
    for (const Meta_Feature* feature : Widget::static_meta_class) {
        if (feature->has(FLAG_PROPERTY)) {
            EXPECT_EQ(null_flag(made.get(), as_property(*feature)), 1) << feature->name;
        }
    }
    EXPECT_EQ(made->Owner, nullptr);
    EXPECT_EQ(log.text(), "");

    EXPECT_EQ(in("U8", fake::null_of(CMPI_null))->U8.null, 1);
    EXPECT_TRUE(log.has("unknown type"));
}

TEST_F(Conversion_Test, DataOfForeignTypesAndStatesAreRefused) {
    EXPECT_EQ(in("Text2", fake::uint32(1))->Texts.null, 1);
    for (const int type : {CMPI_null, CMPI_args, CMPI_chars, CMPI_ptr, CMPI_class, 0x70}) {
        EXPECT_EQ(in("U8", {static_cast<CMPIType>(type), CMPI_goodValue, {}, {}})->U8.null, 1)
            << type;
    }
    EXPECT_EQ(log.count("unreachable"), 6);
    fake::Datum bad = fake::scalar(CMPI_uint8, &CMPIValue::uint8, CMPIUint8{1});
    bad.state = CMPI_badValue;
    EXPECT_EQ(in("U8", bad)->U8.null, 1);
}

TEST_F(Conversion_Test, BooleansAreNormalised) {
    EXPECT_TRUE(
        in("Flag", fake::scalar(CMPI_boolean, &CMPIValue::boolean, CMPIBoolean{7}))->Flag.value);
}

TEST_F(Conversion_Test, UnreadableStringsAreEmpty) {
    Ref<Widget> made = in("Texts", {CMPI_string, CMPI_goodValue, {}, {}});
    fake::Inst inst{{"root/test", "Widget", {}}, {}};
    inst.properties.set("Text", {CMPI_string, CMPI_goodValue, {}, {}});
    made = in(inst);
    EXPECT_EQ(made->Text.null, 0);
    EXPECT_TRUE(made->Text.value.empty());
    EXPECT_TRUE(log.has("INFO: Converter("));
    EXPECT_TRUE(log.has("ignored null CMPI string"));

    fake::Datum unreadable = fake::string("x");
    unreadable.as<fake::Text>()->unreadable = true;
    made = in("Texts",
              fake::list(CMPI_string,
                         {fake::string("a"), unreadable, {CMPI_string, CMPI_goodValue, {}, {}}}));
    ASSERT_EQ(made->Texts.value.size(), 3u);
    EXPECT_TRUE(made->Texts.value[0].equal("a"));
    EXPECT_TRUE(made->Texts.value[1].empty());
    EXPECT_TRUE(log.has("CMGetCharsPtr() failed"));
}

TEST_F(Conversion_Test, DatetimesMustParse) {
    EXPECT_EQ(in("When", fake::datetime("yesterday"))->When.null, 1);
    EXPECT_TRUE(log.has("Converter"));
    EXPECT_TRUE(log.has("conversion error"));
    EXPECT_EQ(in("Whens", fake::list(CMPI_dateTime, {fake::datetime("00000001020304.000005:000"),
                                                     fake::datetime("")}))
                  ->Whens.null,
              1);
    EXPECT_EQ(in("When", {CMPI_dateTime, CMPI_goodValue, {}, {}})->When.null, 1);
    EXPECT_TRUE(log.has("CMGetStringFormat() failed"));
}

TEST_F(Conversion_Test, ArraysAreWholeOrNull) {
    EXPECT_EQ(in("U32s", fake::list(CMPI_uint32, {fake::uint32(1), fake::null_of(CMPI_uint32)}))
                  ->U32s.null,
              1);
    EXPECT_TRUE(log.has("encountered null array element"));
    EXPECT_EQ(in("U32s", fake::list(CMPI_uint32, {fake::uint32(1), fake::uint16(2)}))->U32s.null,
              1);
    EXPECT_EQ(log.count(": type mismatch"), 1);
    EXPECT_EQ(in("U32s", {CMPI_uint32A, CMPI_goodValue, {}, {}})->U32s.null, 1); // null array
    EXPECT_EQ(in("U32s", fake::list(CMPI_uint32, {}))->U32s.null, 0);
}

TEST_F(Conversion_Test, InstanceArraysTakeNullStatesButNoNullPointers) {
    fake::Path p{"root/test", "Part", {}};
    p.keys.set("Id", fake::string("p"));
    Ref<Widget> made =
        in("Owners", fake::list(CMPI_ref, {fake::reference(p), fake::null_of(CMPI_ref)}));
    ASSERT_EQ(made->Owners.value.size(), 2u);
    EXPECT_NE(made->Owners.value[0], nullptr);
    EXPECT_EQ(made->Owners.value[1], nullptr);

    const fake::Datum pointer{CMPI_ref, CMPI_goodValue, {}, {}};
    EXPECT_EQ(in("Owners", fake::list(CMPI_ref, {fake::reference(p), pointer}))->Owners.null, 1);
    EXPECT_TRUE(log.has("encountered null instance element"));
    EXPECT_EQ(
        in("Owners", fake::list(CMPI_ref, {fake::reference(p), fake::uint32(1)}))->Owners.null, 1);
    EXPECT_TRUE(log.has("array element type mismatch"));
    p.class_name = "Nobody";
    EXPECT_EQ(in("Owners", fake::list(CMPI_ref, {fake::reference(p)}))->Owners.null, 1);
    EXPECT_TRUE(log.has("failed to find meta class: Nobody"));
    EXPECT_TRUE(log.has("failed to create CIMPLE instance"));
    EXPECT_EQ(in("Owners", {CMPI_refA, CMPI_goodValue, {}, {}})->Owners.null, 1);

    const Ref<Widget> empty = in("Owners", fake::list(CMPI_ref, {}));
    EXPECT_EQ(empty->Owners.null, 0);
    EXPECT_TRUE(empty->Owners.value.empty());
}

TEST_F(Conversion_Test, NestedInstancesNeedAPathAndAClass) {
    EXPECT_EQ(in("Inner", {CMPI_instance, CMPI_goodValue, {}, {}})->Inner, nullptr);
    EXPECT_EQ(log.text(), ""); // a null pointer is a plain NULL

    fake::Inst nested{{"root/own", "Special_Part", {}}, {}};
    nested.properties.set("Slot", fake::uint32(4));
    const Ref<Widget> made = in("Inner", fake::instance(nested));
    ASSERT_NE(made->Inner, nullptr);
    EXPECT_EQ(class_of(made->Inner), &Special_Part::static_meta_class);
    EXPECT_TRUE(made->Inner->__name_space.equal("root/own"));

    nested.pathless = true;
    EXPECT_EQ(in("Inner", fake::instance(nested))->Inner, nullptr);
    EXPECT_TRUE(log.has("CMGetObjectPath() failed"));
    nested.pathless = false;
    nested.path.unset_names = true;
    EXPECT_EQ(in("Inner", fake::instance(nested))->Inner, nullptr);
    EXPECT_TRUE(log.has("CMGetClassName() failed"));
    EXPECT_EQ(in("Inner", fake::instance({{"root/test", "Widget", {}}, {}}))->Inner, nullptr);
    EXPECT_TRUE(log.has("failed to assign instance of Widget to Widget.Inner"));
}

TEST_F(Conversion_Test, KeysOfPathsAreNarrowed) {
    EXPECT_EQ(keys("Index", fake::uint64(77))->Index.value, 77u);
    EXPECT_EQ(keys("Index", fake::uint64(0x100000005))->Index.value, 5u);
    EXPECT_EQ(keys("iNDEX", fake::sint64(-1))->Index.value, 4294967295u);
    const Ref<Widget> null = keys("Index", [] {
        fake::Datum datum = fake::uint64(5);
        datum.state = CMPI_nullValue;
        return datum;
    }());
    EXPECT_EQ(null->Index.null, 1);
    EXPECT_EQ(log.text(), "");

    EXPECT_EQ(keys("Name", fake::uint64(77))->Name.null, 1);
    EXPECT_TRUE(log.has("type mismatch on Name: uint64/string"));
    EXPECT_EQ(keys("Index", fake::uint16(77))->Index.null, 1);
    EXPECT_EQ(keys("Flag", fake::boolean(true))->Flag.null, 1); // no key: passed over silently
    EXPECT_EQ(log.count("Flag"), 0);
}

TEST_F(Conversion_Test, EveryIntegerKindIsNarrowed) {
    for (const sint32 kind : {UINT8, SINT8, UINT16, SINT16, UINT32, SINT32, SINT64}) {
        fake::Path path{"n", "Widget", {}};
        path.keys.set("K", fake::uint64(0xFFFFFFFFFFFFFFFE));
        const CMPIObjectPath_Container container(&fixture_repository, broker.get(), "n",
                                                 broker.path(path));
        Value value;
        ASSERT_EQ(container.get_value(0, kind, value), 0) << kind;
        EXPECT_EQ(value.type(), kind);
        if (kind == SINT8) {
            EXPECT_EQ(*value.get<sint8>(), -2);
        } else if (kind == UINT16) {
            EXPECT_EQ(*value.get<uint16>(), 0xFFFE);
        } else if (kind == SINT64) {
            EXPECT_EQ(*value.get<sint64>(), -2);
        }
    }
}

TEST_F(Conversion_Test, ContainersCheckTheirBounds) {
    const CMPIObjectPath_Container path(nullptr, broker.get(), "n",
                                        broker.path({"n", "Widget", {}}));
    const CMPIArgs_Container args(nullptr, broker.get(), "n", nullptr);
    const CMPIInstance_Container instance(nullptr, broker.get(), "n", nullptr);
    String name = "kept";
    Value value;
    for (const Container* container :
         std::initializer_list<const Container*>{&path, &args, &instance}) {
        EXPECT_EQ(container->get_size(), 0u);
        EXPECT_EQ(container->get_name(0, name), -1);
        EXPECT_EQ(container->get_value(7, UINT8, value), -1);
    }
    EXPECT_TRUE(name.equal("kept"));
    EXPECT_EQ(log.count("bounds error"), 6);
}

TEST_F(Conversion_Test, ThrowingObjectManagersAreBorne) {
    fake::Inst inst{{"root/test", "Widget", {}}, {}};
    inst.properties.set("U8", fake::uint32(1));
    inst.throws = true;
    EXPECT_EQ(in(inst)->U8.null, 1);
    EXPECT_TRUE(log.has("CMGetPropertyAt() threw exception: index=0 size=1"));
    EXPECT_TRUE(log.has("get_name() failed: class=Widget, index=0"));
}

TEST_F(Conversion_Test, StringsAreMadeOnceForEqualTexts) {
    {
        CMPI_Strings strings(broker.get());
        const CMPIString* host = strings.get("host");
        ASSERT_NE(host, nullptr);
        EXPECT_EQ(strings.get(std::string("host")), host);
        EXPECT_EQ(broker.live(), 1u);
        for (int i = 0; i < 1000; ++i) { // more than there is room for
            const std::string text = "text " + std::to_string(i);
            const CMPIString* string = strings.get(text);
            ASSERT_NE(string, nullptr);
            EXPECT_EQ(string->ft->getCharPtr(string, nullptr), text);
        }
        EXPECT_LE(broker.live(), 64u);
        EXPECT_STREQ(strings.get("")->ft->getCharPtr(strings.get(""), nullptr), "");

        broker.failing = {"newString"};
        EXPECT_EQ(strings.get("never seen"), nullptr);
        broker.failing.clear();
        EXPECT_NE(strings.get("never seen"), nullptr);
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
