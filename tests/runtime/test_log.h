// A directory for the runtime's log, and the environment that points there.
#ifndef TVR_TESTS_RUNTIME_TEST_LOG_H
#define TVR_TESTS_RUNTIME_TEST_LOG_H

#include "runtime/log.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace cimple {

// While it lives, CIMPLE_HOME is a new directory, with a ".cimplerc" if `config` isn't null.
class Test_Log {
public:
    explicit Test_Log(const char* config) {
        std::string name = (std::filesystem::temp_directory_path() / "tvr-log-XXXXXX").string();
        _home = ::mkdtemp(name.data());
        if (config != nullptr) {
            std::ofstream(_home / ".cimplerc") << config;
        }
        close_log();
        ::setenv("CIMPLE_HOME", _home.c_str(), 1);
    }
    Test_Log(const Test_Log&) = delete;
    Test_Log& operator=(const Test_Log&) = delete;
    ~Test_Log() {
        close_log();
        ::unsetenv("CIMPLE_HOME");
        std::error_code error;
        std::filesystem::remove_all(_home, error);
    }

    const std::filesystem::path& home() const { return _home; }
    std::filesystem::path file() const { return _home / ".cimple" / "messages"; }

    std::vector<std::string> lines() const {
        std::vector<std::string> lines;
        std::ifstream in(file());
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line);
        }
        return lines;
    }

private:
    std::filesystem::path _home;
};

} // namespace cimple

#endif
