// Where entry points are found, in processes of their own with real libraries.

#include "tests/access/run_process.h"
#include "tests/common/temp_dir.h"

namespace cimple {
namespace {

// A file that is empty can't be opened, even if the machine has a real library of its name. One
// whose fixture is marked with '+' is empty until the probe is told its name.
void install(const TempDir& dir, std::string file, std::string fixture) {
    if (fixture.empty() || fixture[0] == '+') {
        dir.write(file, "");
        file += ".later";
    }
    fixture.erase(0, fixture.starts_with("+") ? 1 : 0);
    std::filesystem::create_symlink(FIXTURES "/libfixture_" + fixture + ".so", dir.file(file));
}

TEST(Binding, FindsTheEntryPoint) {
    const std::string none = "count=0 init=1 stats=1/0 local=1 ";
    const struct {
        const char* hba;
        const char* lrm;
        const char* rm;
        const char* commands;
        std::string output;
    } cases[] = {
        {"", "", "", "load calls", "load=0 missing=111 open=000 " + none},
        {"hba", "", "", "calls", none},
        {"", "", "rm_both", "load calls",
         "load=1 missing=110 open=001 count=0 init=0 stats=33/119 local=1 "},
        {"hba", "", "rm", "load calls",
         "load=1 missing=010 open=101 count=11 closed5:11 init=0 stats=31/119 local=32 "},
        {"hba", "", "", "load calls",
         "load=0 missing=011 open=100 count=11 closed5:11 init=1 stats=1/0 local=1 "},
        {"hba_bare", "lrm_bare", "", "load calls calls",
         "load=0 missing=000 open=110 count=0 init=0 stats=1/0 local=1 "
         "count=0 init=0 stats=1/0 local=1 "},
        // A library that lacks a short name has no second chance for it elsewhere.
        {"", "rm", "", "load calls",
         "load=0 missing=100 open=010 count=13 closed5:13 init=1 stats=1/0 local=32 "},
        // Opened once, the third not at all, and nothing is used after the unload.
        {"hba", "lrm", "rm", "load load calls unload calls unload",
         "load=0 missing=000 open=110 load=0 missing=000 open=110 count=11 closed5:11 init=0 "
         "stats=21/119 local=22 unload=0 open=000 " +
             none + "unload=0 open=000 "},
        // A library that is missing in the first life is looked for again in the second. The
        // dynamic linker keeps open what answered a lookup among all global symbols.
        {"+hba", "lrm_hba", "", "load calls unload libHBAAPI.so load calls unload",
         "load=0 missing=100 open=010 count=12 closed5:12 init=0 stats=23/119 local=1 "
         "unload=0 open=010 "
         "load=0 missing=000 open=110 count=11 closed5:11 init=0 stats=23/119 local=1 "
         "unload=0 open=010 "},
        {"", "+lrm", "+rm",
         "load calls unload librmapi.so load calls unload liblrmapi.so load calls",
         "load=0 missing=111 open=000 " + none +
             "unload=0 open=000 "
             "load=1 missing=110 open=001 count=13 closed5:13 init=0 stats=31/119 local=32 "
             "unload=0 open=000 load=0 missing=100 open=010 count=0 init=0 stats=21/119 local=22 "},
    };
    for (const auto& c : cases) {
        const TempDir dir;
        install(dir, "libHBAAPI.so", c.hba);
        install(dir, "liblrmapi.so", c.lrm);
        install(dir, "librmapi.so", c.rm);
        EXPECT_EQ(runProcess("cd " + dir.path() + " && LD_LIBRARY_PATH=. " PROBE " " + c.commands),
                  c.output)
            << c.hba << "," << c.lrm << "," << c.rm;
    }
}

} // namespace
} // namespace cimple
