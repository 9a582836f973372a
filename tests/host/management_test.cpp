// Changes of adapters with the built tvrcim: the walk through the manual's commands, and firmware
// from servers, good and bad.
#include "tests/host/tvrcim_fixture.h"

namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

class Management : public Tvrcim {
protected:
    // Installs from a URI; the answer's line. libcurl is where the loader finds it by the name
    // without a version, as an administrator would have put it. What it pulls in keeps what it sets
    // up once, and is closed again: that is no leak of ours.
    std::string install(const std::string& uri, const std::string& before = {}) const {
        const Outcome outcome = script(
            "mkdir -p lib; ln -sf $(ldconfig -p | sed -n 's/.*libcurl.so.4 .*=> //p' | head -1) "
            "lib/libcurl.so\nexport LD_LIBRARY_PATH=$PWD/lib ASAN_OPTIONS=detect_leaks=0\n" +
            before +
            "\n$T --sim call TVRHBA_SoftwareInstallationService InstallFromURI "
            "Target=10000254564A1020 URI=" +
            uri + "; echo \"exit $?\"");
        return outcome.out;
    }
    bool exists(const char* name) const { return fs::exists(directory / name); }

    static constexpr char serve[] =
        "coproc python3 " TVR_IMAGE_SERVER "; read -r -u ${COPROC[0]} PORT\n"
        "trap 'kill $COPROC_PID' EXIT\n";
};

TEST_F(Management, walks_through_what_can_be_changed) {
    std::ofstream(directory / "image.fw") << "TVRFW TVR-F1602 2.90a3\n";
    const Outcome outcome = script("$T --sim shell <" TVR_WALK_THROUGH);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("LocationIndicator       = 2 (On)"));
    EXPECT_THAT(outcome.out, HasSubstr("WWNOperationStatus = 8 (takes effect"));
    EXPECT_THAT(outcome.out, ContainsRegex("\n1000025456AA0001  TVR-F1602  v2.82a4 "));
    EXPECT_THAT(outcome.out, ContainsRegex("\n1000025456AA0001  TVR-F1602  v2.90a3 "));
    EXPECT_THAT(outcome.out, HasSubstr("DumpFiles = {\"tvrdump_10000254564A1020_2.dmp\", "
                                       "\"tvrdump_1000025456AA0001_3.dmp\"}"));
    EXPECT_THAT(outcome.out, Not(ContainsRegex("returned [1-9]")));
    EXPECT_TRUE(exists("image.fw"));
    EXPECT_FALSE(exists("upload.fw"));
}

TEST_F(Management, installs_from_servers) {
    struct Row {
        const char* uri;
        const char* answer;
        const char* file; // that stays, or null
    };
    const Row rows[] = {
        {"http://127.0.0.1:$PORT/good.fw", "returned 0 (success)\nexit 0", nullptr},
        // What came is the adapter library's to refuse; the simulated one looks at the beginning.
        {"http://127.0.0.1:$PORT/cut.fw", "returned 0 ", nullptr},
        {"http://127.0.0.1:$PORT/missing.fw", "returned 40241 ", "missing.fw"},
        {"http://127.0.0.1:$PORT/", "returned 4107 ", nullptr},
        {"http://127.0.0.1:1/refused.fw", "returned 40240 ", "refused.fw"},
        {"file://$PWD/image/one.fw", "returned 0 (success)", nullptr},
        {"nothing", "returned 4107 ", nullptr},
        {"strange://host/part", "returned 40240 ", "part"},
    };
    fs::create_directories(directory / "image");
    std::ofstream(directory / "image/one.fw") << "TVRFW TVR-F1602 2.90a3\n";
    for (const Row& row : rows) {
        EXPECT_THAT(install(row.uri, serve), HasSubstr(row.answer)) << row.uri;
        const std::string name = fs::path(row.uri).filename();
        EXPECT_EQ(!name.empty() && exists(name.c_str()), row.file != nullptr) << row.uri;
    }
    EXPECT_TRUE(exists("image/one.fw"));
}

// Without libcurl where the loader looks there are local files only.
TEST_F(Management, needs_the_transfer_library_for_other_files) {
    const std::string none = "rm lib/libcurl.so; touch lib/libcurl.so";
    EXPECT_THAT(install("file:///etc/hostname", none), HasSubstr("returned 4107 "));
    EXPECT_FALSE(exists("hostname"));
}

TEST_F(Management, leaves_nothing_half_written_where_it_cannot_write) {
    if (geteuid() != 0 || std::system("unshare -m true 2>/dev/null") != 0) {
        GTEST_SKIP() << "no private mount namespaces here";
    }
    std::ofstream(directory / "image.fw") << "TVRFW TVR-F1602 2.90a3\n" << std::string(200000, 'x');
    // A disk of 64 KiB, and one that can't be written to.
    std::ofstream(directory / "steps")
        << "install() { $T --sim call TVRHBA_SoftwareInstallationService InstallFromByteStream "
           "Target=10000254564A1020 Image=@image.fw InstallOptions=32768 "
           "InstallOptionsValues=$1; ls -A small; }\n"
           "mount -t tmpfs -o size=64k none small && install $PWD/small/full.fw\n"
           "mount -o remount,ro small && install $PWD/small/../small/locked.fw\n";
    const Outcome outcome = script("mkdir small; unshare -m bash steps");
    const std::string meaning = "InstallFromByteStream returned 4 (";
    const std::size_t first_answer = outcome.out.find(meaning);
    EXPECT_NE(first_answer, outcome.out.rfind(meaning)) << outcome.out << outcome.err;
    EXPECT_EQ(lines(outcome.out), 2u) << "the disk is empty again";
}

} // namespace
