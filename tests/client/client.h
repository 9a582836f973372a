// A client of the shipped module: the object manager with the module loaded from its file, over the
// simulated adapters, with a directory of the test's own before the module's fixed paths.
#pragma once

#include "host/object_manager.h"
#include "tests/common/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace client {

using tvrhost::Answer;
using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;
using tvrhost::Cim_Type;
using tvrhost::Cim_Value;
using tvrhost::Named_Values;

constexpr const char* name_space = "root/tavrin";
constexpr const char* interop = "root/pg_interop";

// Changes the simulated host; the request is the simulator's.
void control(const std::string& request);
// How often an entry point of the libraries was called.
long calls(const char* entry_point);

// Instances of other providers.
Cim_Instance computer_system(const std::string& host_name);
Cim_Instance base_server_profile();

// One property of every instance.
std::vector<std::string> plain(const Answer& answer, const char* property);
// Literals of all properties that the instance has, by name.
std::map<std::string, std::string> literals(const Cim_Instance& instance);

// A file in sections: lines of NAME=VALUE, "+" and a section that goes in, and comments.
class Sections {
public:
    using Properties = std::map<std::string, std::string>;

    explicit Sections(const char* file);
    const std::vector<std::string>& names() const { return _names; }
    const Properties& operator[](const std::string& name) const { return _sections.at(name); }

private:
    std::vector<std::string> _names; // in the order of the file
    std::map<std::string, Properties> _sections;
};
// What default_host.txt expects of the default host with the computer system "server-7".
const Sections& default_host();

class Client : public testing::Test {
protected:
    Client();
    // Tells broken ownership rules, and what the module left behind.
    ~Client() override;

    // Starts the object manager; the first use does it as well.
    tvrhost::Object_Manager& start(std::vector<Cim_Instance> instances = {});
    tvrhost::Object_Manager& manager();
    // Cleans up, closes the module, and expects that no rule was broken.
    void stop();

    Answer enumerate(const std::string& class_name) {
        return manager().enumerate_instances(name_space, class_name);
    }
    // The only instance of a class.
    Cim_Instance only(const std::string& class_name);

    cimple::TempDir directory;

private:
    std::unique_ptr<tvrhost::Object_Manager> _manager;
};

} // namespace client
