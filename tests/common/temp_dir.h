// A directory that lives as long as the object, and small files in it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace cimple {

class TempDir {
public:
    TempDir() {
        std::string name = (std::filesystem::temp_directory_path() / "tvrXXXXXX").string();
        m_path = mkdtemp(name.data()) == nullptr ? std::string() : name;
        EXPECT_FALSE(m_path.empty());
    }
    ~TempDir() { std::filesystem::remove_all(m_path); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

    // Writes the file, with its directories.
    std::string write(const std::string& name, const std::string& text) const {
        std::string path = file(name);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    std::string read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(file(name), std::ios::binary).rdbuf();
        return text.str();
    }

private:
    std::string m_path;
};

} // namespace cimple
