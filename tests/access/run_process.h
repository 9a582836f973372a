// Starts other programs, or the test program itself again with the libraries that it needs.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace cimple {

// Standard output of a shell command, which must succeed.
inline std::string runProcess(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    EXPECT_NE(pipe, nullptr);
    std::string output;
    for (int c = getc(pipe); c != EOF; c = getc(pipe)) {
        output.push_back(static_cast<char>(c));
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

// Starts the running program again with `directory` first in the search path of libraries, which
// counts only from a process's start. Returns in the process where it stands there.
inline void restartWithLibraries(const std::string& directory, char** argv) {
    constexpr char variable[] = "LD_LIBRARY_PATH";
    const char* present = std::getenv(variable);
    const std::string old = present == nullptr ? "" : present;
    if (old == directory || old.starts_with(directory + ":")) {
        return;
    }
    setenv(variable, (old.empty() ? directory : directory + ":" + old).c_str(), 1);
    execv("/proc/self/exe", argv);
    perror("execv");
    std::_Exit(1);
}

} // namespace cimple
