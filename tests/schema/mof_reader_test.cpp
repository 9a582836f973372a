// What the reader makes of MOF, and how it refuses what it can't use.
#include "schema/model.h"
#include "schema/mof_reader.h"
#include "tests/common/session.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

using namespace tvrmof;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

template <class Read> std::string error_of(Read&& read) {
    try {
        read();
    } catch (const Error& error) {
        return error.what();
    }
    return "no error";
}

// What the texts of these tests use, in one line.
const std::string declarations =
    "Qualifier Abstract : boolean = false, Scope(class, association), Flavor(Restricted);"
    "Qualifier Association : boolean = false, Scope(association);"
    "Qualifier Indication : boolean = false, Scope(class, indication);"
    "Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride);"
    "Qualifier Description : string = NULL, Scope(any), Flavor(Translatable);"
    "Qualifier Level : sint8 = -1, Scope(any);"
    "Qualifier ValueMap : string[], Scope(property, method, parameter);"
    "Qualifier EmbeddedInstance : string, Scope(property, method, parameter);"
    "Qualifier In : boolean = true, Scope(parameter);"
    "Qualifier Out : boolean = false, Scope(parameter);";

Schema read(const std::string& text) {
    return read_text(declarations + text, "t.mof");
}

std::string error_in(const std::string& text) {
    return error_of([&] { read(text); });
}

std::vector<std::string> names(const std::vector<const Feature*>& features) {
    std::vector<std::string> result;
    result.reserve(features.size());
    for (const Feature* feature : features) {
        result.push_back(feature->name);
    }
    return result;
}

TEST(MofReader, ReadsEveryForm) {
    const Schema schema = read(R"(
        #pragma locale ("en_US")
        /* a comment
           of two lines */
        [Abstract, Description ("Some" " text \"quoted\" \x0041")]
        class A {
            [Key] string Id;                    // a comment
            [Level(3), ValueMap {"1", "2"} : ToSubclass] uint16 Level = 0x10;
            sint8 Low = -128; boolean On = TRUE; real32 Ratio = 2.5e-1;
            datetime When = "00000000000500.000000:000";
            string Names[];
            [EmbeddedInstance("A")] string Inner;
            [Description("x")] uint32 Run(A REF Who, [In(false), Out] uint8 Data[], [In, Out] string Text);
        };
    )");
    const Class& a = *schema.find("a");
    EXPECT_TRUE(a.is_abstract());
    EXPECT_EQ(a.qualifiers.text("description"), "Some text \"quoted\" A");
    EXPECT_EQ(std::get<std::uint64_t>(*a.find("level")->value), 16u);
    EXPECT_EQ(std::get<std::int64_t>(*a.find("Low")->value), -128);
    EXPECT_EQ(std::get<double>(*a.find("Ratio")->value), 0.25);
    EXPECT_TRUE(a.find("Names")->is_array);
    EXPECT_EQ(a.find("Inner")->target, "A");
    EXPECT_THAT(names(a.keys()), ElementsAre("Id"));
    const Feature& run = *a.find("RUN", Feature_Kind::method);
    ASSERT_EQ(run.parameters.size(), 3u);
    EXPECT_TRUE(!run.parameters[1].in() && run.parameters[1].out());
    EXPECT_TRUE(run.parameters[2].in() && run.parameters[2].out());
}

TEST(MofReader, InheritsFeaturesInTheirPlacesAndTheRole) {
    const Schema schema = read("class A { [Key] string K; uint16 P = 1; uint32 M(); };"
                               "class B : A { uint8 New; uint16 p = NULL; string k; };"
                               "[Association] class L { A REF X; A REF Y; }; class M : L {};"
                               "[Indication] class I {}; class J : I {};");
    const Class& b = *schema.find("B");
    EXPECT_THAT(names(b.features), ElementsAre("k", "p", "M", "New"));
    EXPECT_FALSE(b.find("P")->value.has_value());
    EXPECT_TRUE(b.find("P")->value_is_null);
    EXPECT_TRUE(b.find("K")->is_key()) << "a key stays one";
    EXPECT_TRUE(b.is_local(*b.find("P")));
    EXPECT_TRUE(schema.find("M")->is_association());
    EXPECT_TRUE(schema.find("J")->is_indication());
}

class MofErrors : public testing::Test {
protected:
    MofErrors() {
        session.on("read", [this](const auto&, std::ostream& answer) {
            std::string text = session.rest();
            for (std::size_t at = 0; (at = text.find("\\n", at)) != text.npos;) {
                text.replace(at, 2, "\n");
            }
            answer << error_in(text) << '\n';
        });
    }

    Text_Session session;
};

TVR_SESSIONS(MofErrors, "mof_reader.txt");

std::string text_of(const char* file) {
    std::ifstream stream(std::filesystem::path(TVR_MOF).parent_path() / file);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

// Object managers' compilers want a class to be known before it is referred to, and a schema that a
// namespace has already is not to be enriched by qualifiers that nobody uses.
TEST(MofReader, FindsTheClassModelInOrder) {
    const Schema schema = read_file(TVR_MOF);
    std::istringstream qualifiers(text_of("cim_qualifiers.mof"));
    const std::string classes = text_of("cim_base.mof") + text_of("tavrin_fc.mof");
    unsigned declared_qualifiers = 0;
    for (std::string word, name; qualifiers >> word;) {
        if (word == "Qualifier" && qualifiers >> name) {
            ++declared_qualifiers;
            EXPECT_NE(classes.find(name), std::string::npos) << name;
        }
    }
    EXPECT_EQ(declared_qualifiers, 17u);
    std::set<std::string> known = {""};
    for (const auto& declared : schema.classes()) {
        known.insert(declared->name);
        for (const auto& feature : declared->own) {
            EXPECT_TRUE(known.contains(feature->target)) << declared->name << '.' << feature->name;
            for (const Parameter& parameter : feature->parameters) {
                EXPECT_TRUE(known.contains(parameter.target)) << feature->name;
            }
        }
    }
}

// Whatever the text is cut to, there is one error or none, and no harm.
TEST(MofReader, BearsAnyCut) {
    const std::string qualifiers = text_of("cim_qualifiers.mof");
    for (std::size_t size = 0; size < qualifiers.size(); ++size) {
        error_of([&] { read_text(qualifiers.substr(0, size)); });
    }
    const std::string text = text_of("cim_base.mof");
    ASSERT_GT(text.size(), 30000u);
    for (std::size_t size = 0; size < text.size(); size += size < 2000 ? 1 : 997) {
        error_of([&] { read_text(qualifiers + text.substr(0, size)); });
    }
    error_in(std::string("class A {\0 };", 13));
}

TEST(MofFiles, AreReadWithWhatTheyInclude) {
    std::string name = (std::filesystem::temp_directory_path() / "tvr_mof_XXXXXX").string();
    const std::filesystem::path directory = mkdtemp(name.data());
    const auto write = [&](const char* file, const char* text) -> std::string {
        std::ofstream(directory / file) << text;
        return directory / file;
    };
    const auto error = [](const std::string& path) { return error_of([&] { read_file(path); }); };
    write("base.mof", "class A {};");
    const std::string both =
        write("both.mof", "#pragma include (\"base.mof\")\nclass B : A { integer P; };");
    EXPECT_EQ(error(both), both + ":2: \"integer\" is not a type");
    EXPECT_THAT(error(write("self.mof", "#pragma include (\"self.mof\")")),
                HasSubstr("files include one another more than 16 deep"));
    // The table of providers has rules of its own.
    const Schema schema = read("class C {}; [Indication] class I {};");
    const std::pair<const char*, const char*> cases[] = {
        {"# classes\n\nC IM own # a comment\nI MN own\n", "no error"},
        {"C IM own\nX IM own", "providers.txt:2: class X is not"},
        {"C AIM own", ":1: class C needs the kinds IM"},
    };
    for (const auto& [table, message] : cases) {
        const std::string path = write("providers.txt", table);
        EXPECT_THAT(error_of([&] { tvrgen::read_providers(path, schema); }), HasSubstr(message));
    }
    std::filesystem::remove_all(directory);
}

} // namespace
