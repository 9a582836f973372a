// Files fetched from a URI, with libraries that lack functions, refuse options or fail, and from
// servers with the real one.
#include "tests/access/run_process.h"
#include "tests/common/session.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>

namespace cimple {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Uri_Fetch : public testing::Test {
protected:
    Uri_Fetch() {
        session.rename(directory.path(), "$DIR");
        session.rename(FAKE_CURL, "$CURL");
        // VARIANT URI [WHAT-FAILS]: the probe in the directory, with the library of that variant as
        // libcurl.so; its name, status and whether the file goes; then its log.
        session.on("fetch", [this](const auto& words, std::ostream& answer) {
            const std::string fail = words.size() > 2 ? words[2] : "";
            answer << runProcess("cd '" + directory.path() + "' && FAKE_CURL_FAIL='" + fail +
                                 "' LD_LIBRARY_PATH='" FAKE_CURL "/" + words.at(0) +
                                 "' " FETCH_PROBE " '" + words.at(1) + "' 1");
        });
        session.on("read", [this](const auto& words) { return directory.read(words.at(0)); });
        session.on("remove", [this](const auto& words) {
            std::filesystem::remove(directory.file(words.at(0)));
        });
        session.on("pipe", [this](const auto& words) {
            EXPECT_EQ(mkfifo(directory.file(words.at(0)).c_str(), 0600), 0);
        });
    }

    TempDir directory;
    Text_Session session;
};

TVR_SESSIONS(Uri_Fetch, "uri_fetch.txt");

TEST_F(Uri_Fetch, DoesNotWaitForAServerThatStalls) {
    // What the real library pulls in keeps what it sets up once: no leak of ours.
    directory.write(
        "steps", "export ASAN_OPTIONS=detect_leaks=0\n"
                 "ln -sf $(ldconfig -p | sed -n 's/.*libcurl.so.4 .*=> //p' | head -1) '" FAKE_CURL
                 "/real/libcurl.so'\n"
                 "python3 '" IMAGE_SERVER "' >port 2>/dev/null & server=$!\n"
                 "while [ ! -s port ]; do sleep 0.02; done\n"
                 "LD_LIBRARY_PATH='" FAKE_CURL "/real' " FETCH_PROBE
                 " http://127.0.0.1:$(cat port)/stall.fw 1\n"
                 "kill $server\n");
    const std::string out = runProcess("cd '" + directory.path() + "' && exec bash steps");
    EXPECT_THAT(out, StartsWith("stall.fw - remove\n"));
    EXPECT_THAT(out, HasSubstr("download failed 28\n")) << "timed out";
    EXPECT_EQ(directory.read("stall.fw").size(), 1000u);
}

} // namespace
} // namespace cimple
