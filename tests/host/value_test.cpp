// Plain CIM values, and their text and JSON forms.
#include "host/cim_json.h"
#include "host/object_manager.h"
#include "tests/common/session.h"
#include "tests/common/temp_dir.h"
#include "tests/host/sample_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace tvrhost {
namespace {

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
    EXPECT_EQ(Cim_Datetime::from_microseconds(1709209859000007u, false).text(),
              "20240229123059.000007+000");
    const Cim_Datetime interval("00000002030405.000006:000");
    EXPECT_EQ(Cim_Datetime::from_microseconds(interval.microseconds(), true), interval);
}

// Each command answers with what it makes of its text, or with the error's.
class Text : public ::testing::Test {
protected:
    Text() {
        session.rename(directory.path(), "$DIR");
        on("datetime", [this](std::ostream& answer) {
            const Cim_Datetime datetime(session.rest());
            answer << datetime.text() << ", " << datetime.microseconds() << " microseconds";
        });
        on("path", [this](std::ostream& answer) {
            const Cim_Path path = parse_path(session.rest(), schema.get(), "root/x");
            EXPECT_EQ(parse_path(path.text(), schema.get(), "root/x"), path);
            answer << path.text();
        });
        // Without a class model the text alone tells the types.
        on("foreign-path", [this](std::ostream& answer) {
            answer << parse_path(session.rest(), nullptr, "").text();
        });
        on("value", [this](std::ostream& answer) {
            std::istringstream rest(session.rest());
            std::string class_name, property, text;
            rest >> class_name >> property >> std::ws;
            std::getline(rest, text);
            const Cim_Value value = parse_value(text, *schema->find(class_name)->find(property),
                                                schema.get(), "root/x");
            answer << type_name(value.type()) << ' ' << value.literal();
        });
        on("nested", [this](std::ostream& answer) {
            read(std::string(std::stoul(session.rest()), '['), answer);
        });
        on("instances", [this](std::ostream& answer) { read(session.rest(), answer); });
        on("file", [this](std::ostream&) { read_instances(session.rest(), schema.get()); });
    }

    std::shared_ptr<const tvrmof::Schema> schema = tvrtest::sample_model();
    Text_Session session;

private:
    template <class Work> void on(const char* name, Work work) {
        session.on(name, [work](const auto&, std::ostream& answer) {
            const std::string error = error_of([&] { work(answer); });
            answer << (error == "no error" ? "\n" : error + '\n');
        });
    }
    void read(const std::string& text, std::ostream& answer) {
        const std::string file = directory.write("instances.json", text);
        for (const Cim_Instance& instance : read_instances(file, schema.get())) {
            answer << to_json(instance).text(-1);
        }
    }

    cimple::TempDir directory;
};

TVR_SESSIONS(Text, "value.txt");

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

} // namespace
} // namespace tvrhost
