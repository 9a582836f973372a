// Where entry points are found, in processes of their own with real libraries.

#include "tests/access/run_process.h"
#include "tests/common/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <ostream>

namespace cimple {
namespace {

// Which fixture stands under which file name. An empty one is an empty file: that library can't be
// opened, even if the machine has a real one.
using Libraries = std::map<std::string, std::string>;

std::string linkTo(const std::string& fixture) {
    return std::string(FIXTURES) + "/lib" + fixture + ".so";
}

struct BindingCase {
    const char* what;
    Libraries libraries;
    const char* commands;
    const char* output;
    friend void PrintTo(const BindingCase& c, std::ostream* out) { *out << c.what; }
};

class Binding : public testing::TestWithParam<BindingCase> {
protected:
    void install(const std::string& file, const std::string& fixture) {
        if (fixture.empty()) {
            dir.write(file, "");
        } else {
            std::filesystem::create_symlink(linkTo(fixture), dir.file(file));
        }
    }

    std::string probe(const std::string& commands) {
        return runProcess("LD_LIBRARY_PATH=" + dir.path() + " " PROBE " " + commands);
    }

    TempDir dir;
};

TEST_P(Binding, FindsTheEntryPoint) {
    Libraries libraries{{"libHBAAPI.so", ""}, {"liblrmapi.so", ""}, {"librmapi.so", ""}};
    for (const auto& [file, fixture] : GetParam().libraries) {
        libraries[file] = fixture;
    }
    for (const auto& [file, fixture] : libraries) {
        install(file, fixture);
    }
    EXPECT_EQ(probe(GetParam().commands), GetParam().output);
}

constexpr char all[] = "load count close init stats local";

INSTANTIATE_TEST_SUITE_P(
    Constellations, Binding,
    testing::Values(
        BindingCase{
            "nothing", {}, all, "load=0 missing=111 count=0 init=1 stats=1 size=0 local=1 "},
        BindingCase{"before_the_load",
                    {{"libHBAAPI.so", "fixture_hba"}},
                    "count init stats",
                    "count=0 init=1 stats=1 size=0 "},
        BindingCase{"everything",
                    {{"libHBAAPI.so", "fixture_hba"},
                     {"liblrmapi.so", "fixture_lrm"},
                     {"librmapi.so", "fixture_rm"}},
                    "load count close init stats local open? librmapi.so",
                    "load=0 missing=000 count=11 closed5:11 init=0 stats=21 size=119 local=22 "
                    "librmapi.so=0 "},
        BindingCase{"lrm_only_with_hba",
                    {{"liblrmapi.so", "fixture_lrm_hba"}, {"librmapi.so", "fixture_rm"}},
                    "load count close stats open? librmapi.so",
                    "load=0 missing=100 count=12 closed5:12 stats=23 size=119 librmapi.so=0 "},
        BindingCase{"lrm_only_without_hba",
                    {{"liblrmapi.so", "fixture_lrm"}},
                    "load count close stats",
                    "load=0 missing=100 count=0 stats=21 size=119 "},
        BindingCase{"rm_only_short_names",
                    {{"librmapi.so", "fixture_rm"}},
                    all,
                    "load=1 missing=110 count=13 closed5:13 init=0 stats=31 size=119 local=32 "},
        BindingCase{"rm_only_long_names_first",
                    {{"librmapi.so", "fixture_rm_both"}},
                    "load init stats count",
                    "load=1 missing=110 init=0 stats=33 size=119 count=0 "},
        BindingCase{"hba_and_rm",
                    {{"libHBAAPI.so", "fixture_hba"}, {"librmapi.so", "fixture_rm"}},
                    all,
                    "load=1 missing=010 count=11 closed5:11 init=0 stats=31 size=119 local=32 "},
        BindingCase{"hba_alone",
                    {{"libHBAAPI.so", "fixture_hba"}},
                    all,
                    "load=0 missing=011 count=11 closed5:11 init=1 stats=1 size=0 local=1 "},
        BindingCase{"symbols_missing",
                    {{"libHBAAPI.so", "fixture_hba_bare"}, {"liblrmapi.so", "fixture_lrm_bare"}},
                    "load count close init stats stats local",
                    "load=0 missing=000 count=0 init=0 stats=1 size=0 stats=1 size=0 local=1 "},
        // A library that lacks a short name has no second chance for it elsewhere.
        BindingCase{"short_names_do_not_count_in_lrm",
                    {{"liblrmapi.so", "fixture_rm"}},
                    "load init stats local count",
                    "load=0 missing=100 init=1 stats=1 size=0 local=32 count=13 "},
        BindingCase{"opened_once",
                    {{"liblrmapi.so", "fixture_lrm"}},
                    "load twice unload open? liblrmapi.so",
                    "load=0 missing=100 twice=1 same=1 unload=0 liblrmapi.so=0 "},
        BindingCase{"nothing_after_the_unload",
                    {{"libHBAAPI.so", "fixture_hba"}, {"liblrmapi.so", "fixture_lrm"}},
                    "load count stats unload count close init stats local unload",
                    "load=0 missing=000 count=11 stats=21 size=119 unload=0 count=0 init=1 "
                    "stats=1 size=0 local=1 unload=0 "}),
    [](const auto& test) { return std::string(test.param.what); });

// The HBA API library is missing in the first life, where its entry points come from another
// library, and there in the second.
TEST_F(Binding, ASecondLifeStartsAfresh) {
    install("libHBAAPI.so", "");
    install("libHBAAPI.so.later", "fixture_hba");
    install("liblrmapi.so", "fixture_lrm_hba");
    install("librmapi.so", "");
    EXPECT_EQ(probe("load count stats unload install " + dir.file("libHBAAPI.so") +
                    " load count stats unload"),
              "load=0 missing=100 count=12 stats=23 size=119 unload=0 "
              "load=0 missing=000 count=11 stats=23 size=119 unload=0 ");
}

// The other way round: the RM library comes late, under both of its names in turn.
TEST_F(Binding, ALibraryThatWasMissingIsLookedForAgain) {
    install("libHBAAPI.so", "fixture_hba");
    install("liblrmapi.so", "");
    install("liblrmapi.so.later", "fixture_lrm");
    install("librmapi.so", "");
    install("librmapi.so.later", "fixture_rm");
    EXPECT_EQ(probe("load stats unload install " + dir.file("librmapi.so") +
                    " load stats unload install " + dir.file("liblrmapi.so") + " load stats"),
              "load=0 missing=011 stats=1 size=0 unload=0 "
              "load=1 missing=010 stats=31 size=119 unload=0 "
              "load=0 missing=000 stats=21 size=119 ");
}

} // namespace
} // namespace cimple
