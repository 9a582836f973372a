// Runs the built tvrcim in a directory of the test's own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

class Tvrcim : public ::testing::Test {
protected:
    Tvrcim() {
        std::string pattern = (fs::temp_directory_path() / "tvrcim-test-XXXXXX").string();
        directory = mkdtemp(pattern.data());
        fs::create_directories(directory / "tmp");
        fs::create_directories(directory / "etc");
    }
    ~Tvrcim() override { fs::remove_all(directory); }

    // Runs tvrcim with what the shell makes of `arguments`.
    Outcome run(const std::string& arguments, const std::string& input = {}) const {
        std::ofstream(directory / "in") << input;
        return script("env " + environment + " $T " + arguments + " <in");
    }

    // Runs a script for bash with the program's path in $T; the status is the script's. The
    // machine's own configuration is out of the way, and temporary files are made where the test
    // sees them.
    Outcome script(const std::string& text) const {
        std::ofstream(directory / "script")
            << "cd '" << directory.string()
            << "'\nexport TMPDIR=$PWD/tmp TAVRIN_FC_PREFIX=$PWD T='" TVRCIM "'\n"
            << text;
        const std::string command = "exec bash '" + (directory / "script").string() + "' >'" +
                                    (directory / "out").string() + "' 2>'" +
                                    (directory / "err").string() + "'";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read("out"), read("err")};
    }
    std::string scenario(const std::string& json) const {
        std::ofstream(directory / "host.json") << json;
        return (directory / "host.json").string();
    }

    // An error is one line, names the program, and leaves standard output alone.
    void expect_error(const std::string& arguments, int status, const std::string& text) const {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status) << arguments;
        EXPECT_THAT(outcome.err, testing::StartsWith("tvrcim: ")) << arguments;
        EXPECT_THAT(outcome.err, testing::HasSubstr(text)) << arguments;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_THAT(outcome.out, testing::IsEmpty()) << arguments;
    }

    std::string read(const char* file) const {
        std::ostringstream text;
        text << std::ifstream(directory / file).rdbuf();
        return text.str();
    }

    fs::path directory;
    std::string environment;
};

inline std::size_t lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}
