// Plain CIM values, and their text and JSON forms.
#include "host/cim_json.h"
#include "host/object_manager.h"
#include "tests/host/sample_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace tvrhost {
namespace {

using ::testing::HasSubstr;
using tvrtest::error_of;

TEST(Cim_Value, refuses_to_be_read_as_what_it_is_not) {
    EXPECT_NE(Cim_Value(std::uint8_t{7}), Cim_Value(std::uint16_t{7}));
    EXPECT_NE(Cim_Value::array(Cim_Type::string), Cim_Value::null(Cim_Type::string, true));
    EXPECT_THROW(Cim_Value(-1).as_uint(), Value_Error);
    EXPECT_THROW(Cim_Value::null(Cim_Type::string).as_string(), Value_Error);
    EXPECT_THROW(Cim_Value(UINT64_MAX).as_int(), Value_Error);
    EXPECT_THROW(Cim_Value::unsigned_of(Cim_Type::uint8, 256), Value_Error);
    EXPECT_THROW(Cim_Value::signed_of(Cim_Type::sint8, -129), Value_Error);
    EXPECT_THROW(Cim_Value::signed_of(Cim_Type::uint8, -1), Value_Error);
    EXPECT_THROW(Cim_Value::array(Cim_Type::uint8, {Cim_Value(1)}), Value_Error);
}

TEST(Cim_Value, literals_are_those_of_mof) {
    EXPECT_EQ(Cim_Value("a\"b\\c\n").literal(), R"("a\"b\\c\n")");
    EXPECT_EQ(Cim_Value("\x1b[31m").literal(), R"("\x001B[31m")");
    EXPECT_EQ(Cim_Value(2.0).literal(), "2.0");
    EXPECT_EQ(Cim_Value::array_of<const char*>({"a", "b"}).literal(), R"({"a", "b"})");
    EXPECT_EQ(Cim_Value::array(Cim_Type::uint8, {Cim_Value::null(Cim_Type::uint8)}).literal(),
              "{NULL}");
}

TEST(Cim_Datetime, converts_to_microseconds_and_back) {
    EXPECT_EQ(Cim_Datetime("20240229133059.000007+060").microseconds(), 1709209859000007u);
    EXPECT_EQ(Cim_Datetime::from_microseconds(1709209859000007u, false).text(),
              "20240229123059.000007+000");
    const Cim_Datetime interval("00000002030405.000006:000");
    EXPECT_EQ(interval.microseconds(), ((2 * 24 + 3) * 3600 + 4 * 60 + 5) * 1000000ull + 6);
    EXPECT_EQ(Cim_Datetime::from_microseconds(interval.microseconds(), true), interval);
    EXPECT_EQ(Cim_Datetime("19500101000000.000000+000").microseconds(), 0u);
    for (const char* text :
         {"", "2024", "20240229133059.000007+06", "20240229133059,000007+060",
          "20241329133059.000007+060", "20240229243059.000007+060", "2024022913305x.000007+060",
          "00000002030405.000006:001", "20240229133059.000007+0600"}) {
        EXPECT_THROW(Cim_Datetime{text}, Value_Error) << text;
    }
    EXPECT_NO_THROW(Cim_Datetime("2024**********.******+000"));
}

class Text : public ::testing::Test {
protected:
    std::shared_ptr<const tvrmof::Schema> schema = tvrtest::sample_model();

    Cim_Path path(const std::string& text) { return parse_path(text, schema.get(), "root/x"); }
    Cim_Value value(const char* class_name, const char* property, const std::string& text) {
        return parse_value(text, *schema->find(class_name)->find(property), schema.get(), "root/x");
    }
};

TEST_F(Text, paths_survive_the_way_through_text_and_take_what_people_type) {
    Cim_Path thing("root/x", "Test_Thing", {{"Name", "a\",b\\\x1b"}, {"Slot", std::uint16_t{7}}});
    EXPECT_EQ(thing.text(), R"(root/x:Test_Thing.Name="a\",b\\\x001B",Slot=7)");
    EXPECT_EQ(path(thing.text()), thing);
    const Cim_Path link("root/x", "Test_Link", {{"Left", thing}, {"Right", thing}});
    EXPECT_EQ(path(link.text()), link);
    const Cim_Path distant = path("//far.example/root/y:Test_Other.Id=\"1\"");
    EXPECT_EQ(distant.text(), "//far.example/root/y:Test_Other.Id=\"1\"");
    EXPECT_EQ(path("test_thing.NAME=abc, slot=0x10").text(),
              "root/x:Test_Thing.Name=\"abc\",Slot=16");
    EXPECT_EQ(path("Test_Other.Id=NULL").keys["Id"], Cim_Value("NULL"));
    // Without a class model the text alone tells the types.
    const Cim_Path foreign = parse_path("X.a=\"1\",b=1,c=-1,d=true", nullptr, "");
    EXPECT_EQ(foreign.keys["a"], Cim_Value("1"));
    EXPECT_EQ(foreign.keys["d"], Cim_Value(true));
}

TEST_F(Text, malformed_paths_tell_what_is_wrong) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "class name"},
        {"Test_Thing.Name=\"a", "quotation mark"},
        {"Test_Thing.Name=\"a\"b", "comma"},
        {"Test_Thing.Nope=1", "no key Nope"},
        {"Test_Thing.Name=a,Name=b", "twice"},
        {"Test_Thing.Slot=65536", "65535"},
        {"Test_Link.Left=\"Test_Thing.Nope=1\"", "no key Nope"},
    };
    for (const auto& [text, complaint] : cases) {
        EXPECT_THAT(error_of([&, &text = text] { path(text); }), HasSubstr(complaint)) << text;
    }
}

TEST_F(Text, values_are_read_by_their_declaration) {
    EXPECT_EQ(value("Test_Thing", "Offset", "-128"), Cim_Value(std::int8_t{-128}));
    EXPECT_EQ(value("Test_Thing", "Words", "[\"a\", \"b\"]"),
              Cim_Value::array_of<const char*>({"a", "b"}));
    EXPECT_EQ(value("Test_Thing", "Words", "a, b"), value("Test_Thing", "Words", "[\"a\", \"b\"]"));
    EXPECT_EQ(value("Test_Thing", "Words", ""), Cim_Value::array(Cim_Type::string));
    EXPECT_EQ(value("Test_Thing", "Ready", "On"), Cim_Value(true));
    EXPECT_EQ(value("Test_Thing", "Count", "NULL"), Cim_Value::null(Cim_Type::uint32));
    EXPECT_EQ(value("Test_Link", "Left", "Test_Thing.Name=a").as_path().keys["Name"],
              Cim_Value("a"));
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"Count", "-1", "below uint32"},      {"Count", "4294967296", "at most 4294967295"},
        {"Count", "1 2", "takes a number"},   {"Count", "99999999999999999999", "takes a number"},
        {"Offset", "128", "at most 127"},     {"Ready", "2", "true or false"},
        {"Since", "now", "yyyymmdd"},         {"Words", "[a", "an array such as"},
        {"Words", "a,", "ends with a comma"}, {"Words", "[1]", "takes string"},
    };
    for (const auto& [property, text, complaint] : cases) {
        EXPECT_THAT(error_of([&, &property = property, &text = text] {
                        value("Test_Thing", property, text);
                    }),
                    HasSubstr(complaint))
            << property << '=' << text;
    }
}

TEST_F(Text, json_shows_each_type) {
    const Cim_Path path("root/x", "Test_Thing", {{"Name", "a"}, {"Slot", std::uint16_t{7}}});
    const Cim_Instance thing(path, {{"Name", "a\xff"}, // a byte that is no UTF-8 is replaced
                                    {"Count", UINT64_MAX},
                                    {"Offset", std::int8_t{-3}},
                                    {"Words", Cim_Value::array_of<const char*>({"x"})},
                                    {"Since", Cim_Datetime("20240229133059.000007+060")},
                                    {"None", Cim_Value::null(Cim_Type::string)},
                                    {"Other", path}});
    const Json json = Json::parse(to_json(thing).text());
    EXPECT_EQ(json.find("path")->as_string(), path.text());
    EXPECT_EQ(json.find("properties")->text(), Json::parse(R"({"Name": "a\ufffd",
        "Count": 18446744073709551615, "Offset": -3, "Words": ["x"],
        "Since": "20240229133059.000007+060", "None": null,
        "Other": "root/x:Test_Thing.Name=\"a\",Slot=7"})")
                                                   .text());
}

TEST_F(Text, an_instance_file_gives_instances_or_one_line) {
    const std::string file = ::testing::TempDir() + "instances.json";
    const auto read = [&](const std::string& text) {
        std::ofstream(file) << text;
        return read_instances(file, schema.get());
    };
    const auto instances = read(R"({"instances": [
        {"class": "test_thing", "namespace": "root/y",
         "properties": {"name": "a", "Slot": 3, "Words": ["x", null]}},
        {"class": "Test_Other", "properties": {"Id": "1"}}]})");
    ASSERT_EQ(instances.size(), 2u);
    EXPECT_EQ(instances[0].path,
              Cim_Path("root/y", "Test_Thing", {{"Name", "a"}, {"Slot", std::uint16_t{3}}}));
    EXPECT_EQ(instances[0]["Words"].elements()[1], Cim_Value::null(Cim_Type::string));

    const std::pair<std::string, const char*> cases[] = {
        {"{", "parse error at line 1, column 2"},
        {R"([{"class": "Test_Other", "class": "Test_Thing"}])", "the name \"class\" stands twice"},
        {std::string(1'000'000, '['), "nested deeper than 200 levels"},
        {R"([{"properties": {}}])", "[0]: an instance is an object"},
        {R"([{"class": "Test_Other", "properties": {}}])", "none of its keys"},
        {R"([{"class": "Test_Other", "properties": {"Id": 5}}])", "Test_Other.Id: takes string"},
        {R"([{"class": "Test_Thing", "properties": {"Slot": 70000}}])", "at most 65535"},
        {R"([{"class": "Test_Thing", "properties": {"Turn": 1}}])", "no such property"},
        {R"([{"class": "Test_Other", "properties": {"Id": "1"}},
             {"class": "test_other", "properties": {"id": "1"}}])",
         "[1]: root/tavrin:Test_Other.Id=\"1\" is there already"},
    };
    for (const auto& [text, complaint] : cases) {
        const std::string error = error_of([&, &text = text] { read(text); });
        EXPECT_THAT(error, HasSubstr(complaint)) << text;
        EXPECT_THAT(error, ::testing::Not(HasSubstr("\n"))) << text;
    }
    EXPECT_THAT(error_of([&] { read_instances("/nonexistent", schema.get()); }),
                HasSubstr("cannot be read"));
    std::remove(file.c_str());
}

} // namespace
} // namespace tvrhost
