// What the reader makes of MOF, and how it refuses what it can't use.
#include "schema/model.h"
#include "schema/mof_reader.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

using namespace tvrmof;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string error_of(std::string_view text) {
    try {
        read_text(text, "t.mof");
    } catch (const Error& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        return error.what();
    }
    return "no error";
}

std::vector<std::string> names(const std::vector<const Feature*>& features) {
    std::vector<std::string> result;
    for (const Feature* feature : features) {
        result.push_back(feature->name);
    }
    return result;
}

TEST(MofReader, ReadsEveryForm) {
    const Schema schema = read_text(R"(
        #pragma locale ("en_US")
        /* a comment
           of two lines */
        [Abstract, Description ("Some" " text \"quoted\" \x0041")]
        class A {
            [Key] string Id;                    // a comment
            [Required, ValueMap {"1", "2"} : ToSubclass] uint16 Level = 0x10;
            sint8 Low = -128;
            boolean On = TRUE;
            real32 Ratio = 2.5e-1;
            datetime When = "00000000000500.000000:000";
            char16 Letter = 'x';
            string Names[];
            [EmbeddedInstance("A")] string Inner;
            [Static] uint32 Run([In] A REF Who, [Out] uint8 Data[], [In, Out] string Text);
            uint32 Stop();
        };
    )");
    ASSERT_EQ(schema.classes().size(), 1u);
    const Class& a = *schema.find("a");
    EXPECT_EQ(a.name, "A");
    EXPECT_TRUE(a.is_abstract());
    EXPECT_EQ(a.qualifiers.text("description"), "Some text \"quoted\" A");
    EXPECT_EQ(a.position.line, 6u);

    EXPECT_EQ(std::get<std::uint64_t>(*a.find("level")->value), 16u);
    EXPECT_EQ(std::get<std::int64_t>(*a.find("Low")->value), -128);
    EXPECT_TRUE(std::get<bool>(*a.find("On")->value));
    EXPECT_EQ(std::get<double>(*a.find("Ratio")->value), 0.25);
    EXPECT_EQ(std::get<std::string>(*a.find("When")->value), "00000000000500.000000:000");
    EXPECT_EQ(std::get<std::string>(*a.find("Letter")->value), "x");
    EXPECT_FALSE(a.find("Id")->value.has_value());
    EXPECT_TRUE(a.find("Names")->is_array);
    EXPECT_TRUE(a.find("Inner")->is_embedded_instance());
    EXPECT_EQ(a.find("Inner")->target, "A");
    EXPECT_THAT(names(a.keys()), ElementsAre("Id"));
    EXPECT_THAT(names(a.methods()), ElementsAre("Run", "Stop"));

    const Feature& run = *a.find("RUN", Feature_Kind::method);
    ASSERT_EQ(run.parameters.size(), 3u);
    EXPECT_TRUE(run.parameters[0].is_reference);
    EXPECT_TRUE(run.parameters[0].in() && !run.parameters[0].out());
    EXPECT_TRUE(!run.parameters[1].in() && run.parameters[1].out());
    EXPECT_TRUE(run.parameters[2].in() && run.parameters[2].out());
    EXPECT_EQ(run.parameter("data"), &run.parameters[1]);
    EXPECT_EQ(a.find("Id", Feature_Kind::method), nullptr);
}

TEST(MofReader, RedeclaredFeaturesKeepTheirPlace) {
    const Schema schema = read_text("class A { [Key] string K; uint16 P = 1; uint32 M(); };"
                                    "class B : A { uint8 New; uint16 p = NULL; string k; };");
    const Class& b = *schema.find("B");
    EXPECT_THAT(names(b.features), ElementsAre("k", "p", "M", "New"));
    EXPECT_FALSE(b.find("P")->value.has_value());
    EXPECT_TRUE(b.find("P")->value_is_null);
    EXPECT_TRUE(b.find("K")->is_key()) << "a key stays one";
    EXPECT_TRUE(b.is_local(*b.find("P")));
    EXPECT_FALSE(b.is_local(*b.find("M")));
    EXPECT_EQ(b.find("M")->origin, "A");
    EXPECT_TRUE(schema.is_a("b", "a"));
    EXPECT_FALSE(schema.is_a("A", "B"));
    EXPECT_FALSE(schema.is_a("A", "nothing"));
}

TEST(MofReader, InheritsTheRole) {
    const Schema schema = read_text("class E {};"
                                    "[Association] class L { E REF X; E REF Y; };"
                                    "class M : L {};"
                                    "[Indication] class I {}; class J : I {};");
    EXPECT_TRUE(schema.find("M")->is_association());
    EXPECT_TRUE(schema.find("J")->is_indication());
    EXPECT_EQ(schema.find("E")->role, Role::plain);
}

struct Bad {
    const char* text;
    const char* message;
};

TEST(MofReader, RefusesWithPositionAndReason) {
    const Bad cases[] = {
        {"class A {", "t.mof:1: expected a type or a class and found the end of the file"},
        {"class A {\n uint16 }", "t.mof:2: expected the name of a property or method"},
        {"class A { uint16 P };", "t.mof:1: expected \";\" behind P and found \"}\""},
        {"\n\nclas A {};", "t.mof:3: expected a class declaration and found \"clas\""},
        {"class A {} class B {};", "t.mof:1: expected \";\" behind the class and found \"class\""},
        {"class A { integer P; };", "t.mof:1: \"integer\" is not a type"},
        {"class A { uint8 P = 256; };", "property P: \"256\" is not a value of type uint8"},
        {"class A { uint8 P = -1; };", "\"-1\" is not a value of type uint8"},
        {"class A { sint64 P = 9223372036854775808; };", "is not a value of type sint64"},
        {"class A { uint64 P = 99999999999999999999; };", "is not a value of type uint64"},
        {"class A { uint16 P = 12x; };", "\"12x\" is not a value of type uint16"},
        {"class A { boolean P = 1; };", "is not a value of type boolean"},
        {"class A { datetime P = \"today\"; };", "a string is not a value of type datetime"},
        {"class A { string P = 5; };", "is not a value of type string"},
        {"class A { string P[] = {\"x\"}; };", "array defaults are not supported"},
        {"class A { string P[4]; };", "arrays of a fixed size are not supported"},
        {"class A { uint8 P; uint16 p; };", "class A: p is declared twice"},
        {"class A { uint8 M(uint8 X, uint8 x); };", "parameter x is declared twice"},
        {"class A { [Key, key] uint8 P; };", "the qualifier key stands twice"},
        {"class A {};\nclass a {};", "t.mof:2: class a: already declared at t.mof:1"},
        {"class A : B {}; class B {};", "class A: parent B is not declared before it"},
        {"class A : A {};", "class A: parent A is not declared before it"},
        {"class A { uint8 P; };\nclass B : A {\n uint16 P; };",
         "t.mof:3: class B: P: differs in type from its declaration in A"},
        {"class A { uint8 P; }; class B : A { uint8 P(); };", "differs in type"},
        {"class A { uint8 P; }; class B : A { uint8 P[]; };", "differs in type"},
        {"[Association] class A { X REF L; A REF R; };", "class A: L: class X is not declared"},
        {"class A { uint8 M(X REF L); };", "class A: M: parameter L: class X is not declared"},
        {"class E {}; [Association] class A { E REF L; };", "an association needs two references"},
        {"class E {}; class A { E REF L; };", "only an association can have references"},
        {"[Association, Indication] class A {};", "an association and an indication"},
        {"class A {}; [Indication] class B : A {};", "is marked otherwise than its parent A"},
        {"class E {}; class F : E {};\n[Association] class A { F REF L; F REF R; };\n"
         "[Association] class B : A { E REF L; };",
         "t.mof:3: class B: L: E is not below F, the target in A"},
        {"class A { [EmbeddedInstance(\"X\")] string P; };", "class X is not declared"},
        {"class A { [EmbeddedInstance] string P; };", "EmbeddedInstance needs the name of a class"},
        {"class A { [EmbeddedObject] uint8 P; };", "is declared as a string"},
        {"class A { [Key] string P[]; };", "an array or a method cannot be a key"},
        {"class A { string P = \"x", "the string is not closed on its line"},
        {"class A { string P = \"\\q\"; };", "unknown escape"},
        {"class A { string P = \"\\x\"; };", "needs the code of a character"},
        {"class A {};\n/* no end", "t.mof:2: the comment is not closed"},
        {"class A { uint8 \xC3\xA4; };", "a character that is not part of MOF"},
        {"class A { uint8 P @ };", "\"@\" is not part of MOF"},
        {"#pragma", "needs \"pragma\" and its name"},
        {"# include (\"x\")", "needs \"pragma\" and its name"},
        {"#pragma include (x)", "expected a string and found \"x\""},
        {"#pragma include (\"\")", "the name of the included file is empty"},
        {"#pragma include (\"no/such.mof\")", "t.mof:1: cannot open the included file"},
        {"instance of A {};", "expected a class declaration and found \"instance\""},
    };
    for (const Bad& bad : cases) {
        EXPECT_THAT(error_of(bad.text),
                    testing::AllOf(StartsWith("t.mof:"), HasSubstr(bad.message)))
            << bad.text;
    }
}

// Object managers' compilers want a class to be known before it is referred to.
TEST(MofReader, FindsTheClassModelInOrder) {
    const Schema schema = read_file(TVR_MOF);
    std::set<std::string> known;
    for (const auto& declared : schema.classes()) {
        known.insert(declared->name);
        for (const auto& feature : declared->own) {
            EXPECT_TRUE(feature->target.empty() || known.contains(feature->target))
                << declared->name << '.' << feature->name;
            for (const Parameter& parameter : feature->parameters) {
                EXPECT_TRUE(parameter.target.empty() || known.contains(parameter.target))
                    << declared->name << '.' << feature->name;
            }
        }
    }
    EXPECT_EQ(known.size(), 256u);
}

// Whatever the text is cut to, there is one error or none, and no harm.
TEST(MofReader, BearsAnyCut) {
    std::ifstream file(std::filesystem::path(TVR_MOF).parent_path() / "cim_base.mof");
    std::string text(std::istreambuf_iterator<char>(file), {});
    ASSERT_GT(text.size(), 30000u);
    for (std::size_t size = 0; size < text.size(); size += size < 2000 ? 1 : 997) {
        error_of(std::string_view(text).substr(0, size));
    }
    error_of(std::string_view("class A {\0 };", 13));
}

class MofFiles : public testing::Test {
protected:
    MofFiles() {
        std::string name = (std::filesystem::temp_directory_path() / "tvr_mof_XXXXXX").string();
        directory = mkdtemp(name.data());
    }
    ~MofFiles() override { std::filesystem::remove_all(directory); }

    std::string write(const char* name, const char* text) const {
        std::ofstream(directory / name) << text;
        return directory / name;
    }
    static std::string error_of(const std::string& path) {
        try {
            read_file(path);
        } catch (const Error& error) {
            return error.what();
        }
        return "no error";
    }

    std::filesystem::path directory;
};

TEST_F(MofFiles, IncludesFromBesideTheFile) {
    write("base.mof", "class A {};");
    const std::string both =
        write("both.mof", "#pragma include (\"base.mof\")\nclass B : A { integer P; };");
    EXPECT_EQ(error_of(both), both + ":2: \"integer\" is not a type");
    write("both.mof", "#pragma include (\"base.mof\")\nclass B : A {};");
    EXPECT_TRUE(read_file(both).is_a("B", "A"));
    EXPECT_EQ(read_files({write("x.mof", "class X {};"), write("y.mof", "class Y : X {};")})
                  .classes()
                  .size(),
              2u);
}

TEST_F(MofFiles, RefusesWhatItCannotRead) {
    EXPECT_THAT(error_of(directory / "none.mof"), HasSubstr("cannot read the file"));
    EXPECT_THAT(error_of(directory), HasSubstr("cannot read the file"));
    const std::string self = write("self.mof", "#pragma include (\"self.mof\")");
    EXPECT_THAT(error_of(self), HasSubstr("files include one another more than 16 deep"));
    EXPECT_EQ(read_file(write("empty.mof", "")).classes().size(), 0u);
}

TEST_F(MofFiles, RefusesABadTableOfProviders) {
    const Schema schema = read_text("class C {}; class D {}; [Indication] class I {};"
                                    "[Association] class L { C REF X; D REF Y; };");
    const auto refusal = [&](const char* table) -> std::string {
        try {
            tvrgen::read_providers(write("providers.txt", table), schema);
        } catch (const Error& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_EQ(refusal("# classes\n\nC IM own\nL AIM map # a comment\nI MN own\n"), "no error");
    EXPECT_THAT(refusal("C IM own\nX IM own"), HasSubstr("providers.txt:2: class X is not"));
    EXPECT_THAT(refusal("C IM own\nc IM own"), HasSubstr(":2: class c stands twice"));
    EXPECT_THAT(refusal("C AIM own"), HasSubstr(":1: class C needs the kinds IM"));
    EXPECT_THAT(refusal("L IM own"), HasSubstr("needs the kinds AIM"));
    EXPECT_THAT(refusal("C IM family"), HasSubstr("expected \"map\" or \"own\" and found"));
    EXPECT_THAT(refusal("C IM"), HasSubstr("expected a class, its kinds"));
    EXPECT_THAT(refusal("C IM own more"), HasSubstr("expected a class, its kinds"));
}

TEST(Generator, RefusesNamesThatNoFieldCanHave) {
    const auto refusal = [](const char* text) -> std::string {
        try {
            tvrgen::check_names(read_text(text, "t.mof"));
        } catch (const Error& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_EQ(refusal("class A { uint8 dynamic; uint8 def; uint8 M(uint8 Type); };"), "no error");
    EXPECT_EQ(refusal("class A {\n uint8 export; };"),
              "t.mof:2: class A: \"export\" cannot be the name of a field in C++");
    EXPECT_THAT(refusal("class A { uint8 M(uint8 return_value); };"), HasSubstr("return_value"));
    EXPECT_THAT(refusal("class A { uint8 A; };"), HasSubstr("\"A\" cannot"));
    EXPECT_THAT(refusal("class A { uint8 a__b; };"), HasSubstr("a__b"));
}

} // namespace
