// Files fetched from a URI, with libraries that lack functions, refuse options or fail, and from
// servers with the real one.
#include "tests/access/run_process.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace cimple {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Uri_Fetch : public testing::Test {
protected:
    // Runs the probe in the directory, with the library of that variant as libcurl.so.
    std::string fetch(const std::string& variant, const std::string& uri,
                      const std::string& fail = {}, const std::string& before = {}) const {
        return runProcess("cd '" + directory.path() + "' && " + before + " FAKE_CURL_FAIL='" +
                          fail + "' LD_LIBRARY_PATH='" FAKE_CURL "/" + variant +
                          "' " FETCH_PROBE " '" + uri + "' 1");
    }
    std::string content(const char* name) const {
        std::ostringstream text;
        text << std::ifstream(directory.path() + "/" + name).rdbuf();
        return text.str();
    }

    TempDir directory;
};

TEST_F(Uri_Fetch, EndsAsTheLibraryLetsIt) {
    struct Row {
        const char* variant;
        const char* fail;
        const char* outcome;
        std::vector<std::string> lines;
    };
    const char set_file[] = "Error Sending the CURLOPT_FILE to the Curl library 48";
    const Row rows[] = {
        {"all",
         "",
         "x.fw - remove",
         {"Found curl_version function\nCurl version = fake\nexecute function curl_global_init in "
          "curl so\ninitialized the curl library to download from internet\nSending the URI "
          "h://a/x.fw "
          "to the Curl library\nCURL Error Code: 0 \n",
          "CURLOPT_SSL_VERIFYPEER return code = 0\nCURLOPT_SSL_VERIFYHOST return code = 0\nFound "
          "the "
          "function curl_easy_cleanup in curl so\nSuccessfully closed curl so\n"}},
        {"all", "perform", "x.fw - remove", {"download failed 23"}},
        {"all", "url", "h://a/x.fw - remove", {"download failed 3"}},
        {"all", "init", "x.fw - keep", {"ERROR: Could not initialise the curl"}},
        {"all", "global", "x.fw 4 remove", {"unable to initalize curl"}},
        {"all", "10002", "x.fw 4 keep", {"Error Sending the URI to the Curl library 48"}},
        {"all", "20011", "x.fw 4 keep", {set_file}},
        {"all", "10001", "x.fw 4 keep", {set_file}},
        {"all",
         "10010",
         "x.fw 4 keep",
         {"Error Sending the CURLOPT_ERRORBUFFER to the Curl library 48"}},
        {"all",
         "64",
         "x.fw 4 keep",
         {"Error setting CURLOPT_SSL_VERIFYPEER in the Curl library 48"}},
        {"all",
         "81",
         "x.fw 4 keep",
         {"Error setting CURLOPT_SSL_VERIFYHOST in the Curl library 48"}},
        {"VERSION", "", "x.fw - remove", {}},
        {"GLOBAL_INIT",
         "",
         "x.fw 4 keep",
         {"unable to locate function curl_global_init in curl so\nunable to locate function "
          "curl_easy_init in curl so"}},
        {"EASY_INIT",
         "",
         "x.fw 4 keep",
         {"A dynamic linking error occurred:(",
          "unable to locate function curl_easy_init in curl so"}},
        {"EASY_SETOPT",
         "",
         "x.fw 4 keep",
         {"unable to locate function curl_easy_setopt in curl so"}},
        {"EASY_PERFORM", "", "x.fw 4 keep", {}},
        {"EASY_CLEANUP",
         "",
         "x.fw 4 remove",
         {"unable to locate function curl_easy_cleanup in curl so"}},
        {"GLOBAL_CLEANUP",
         "",
         "x.fw - remove",
         {"could not locate curl_global_cleanup in libcurl\nSuccessfully closed curl so"}},
        {"none",
         "",
         "h://a/x.fw - keep",
         {"Searching for /lib Curl on the machine\nSearching for /usr/lib/ Curl on the "
          "machine\nChecking with libcurl.so system location for libcurl\nChecking with curl.dll "
          "windows system location for libcurl\nERROR: Could not load the curl library to download "
          "from internet"}},
    };
    for (const Row& row : rows) {
        const std::string out = fetch(row.variant, "h://a/x.fw", row.fail);
        EXPECT_THAT(out, StartsWith(std::string(row.outcome) +
                                    "\nInside "
                                    "TVR_MethodWrapper::downloadFileUsingCurl\n"
                                    "File not found on local file system. Trying libcURL...\n"))
            << row.variant << ' ' << row.fail;
        for (const std::string& line : row.lines) {
            EXPECT_THAT(out, HasSubstr(line)) << row.variant << ' ' << row.fail;
        }
        std::filesystem::remove(directory.path() + "/x.fw");
    }
}

TEST_F(Uri_Fetch, NeedsANameThatCanBeWritten) {
    EXPECT_THAT(fetch("all", "x.fw"),
                HasSubstr("ERROR: Could not parse the URI to get the firmware file name"));
    for (const char* uri : {"h://a/", "h://a/.", "h://a/pipe"}) {
        EXPECT_THAT(fetch("all", uri, {}, "{ [ -p pipe ] || mkfifo pipe; } && "),
                    HasSubstr("ERROR: Could not open the file for writing"))
            << uri;
    }
    EXPECT_THAT(fetch("all", "h://a/x.fw"), StartsWith("x.fw - remove\n"));
    EXPECT_EQ(content("x.fw"), "image");
    EXPECT_EQ(fetch("all", directory.path() + "/x.fw"),
              directory.path() + "/x.fw - keep\nInside "
                                 "TVR_MethodWrapper::downloadFileUsingCurl\n")
        << "a local file is used in place";
}

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
    EXPECT_EQ(content("stall.fw").size(), 1000u);
}

} // namespace
} // namespace cimple
