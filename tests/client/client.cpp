#include "tests/client/client.h"

#include "sim/tvrsim.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace client {

namespace {

template <class Function> Function simulator(const char* name) {
    static void* const library = dlopen("liblrmapi.so", RTLD_NOW | RTLD_LOCAL);
    void* symbol = library == nullptr ? nullptr : dlsym(library, name);
    if (symbol == nullptr) {
        ADD_FAILURE() << "the simulated library has no " << name;
        std::abort();
    }
    return reinterpret_cast<Function>(symbol);
}

std::shared_ptr<const tvrmof::Schema> class_model() {
    static const auto schema = std::make_shared<const tvrmof::Schema>(tvrmof::read_file(TVR_MOF));
    return schema;
}

} // namespace

Sections::Sections(const char* file) {
    std::ifstream lines(file);
    Properties* section = nullptr;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            _names.push_back(line.substr(1, line.size() - 2));
            section = &_sections[_names.back()];
        } else if (line.starts_with('+')) {
            const Properties& group = _sections.at(line.substr(1));
            section->insert(group.begin(), group.end());
        } else if (equals != std::string::npos && !line.starts_with('#')) {
            section->emplace(line.substr(0, equals), line.substr(equals + 1));
        }
    }
}

const Sections& default_host() {
    static const Sections sections(TVR_DEFAULT_HOST);
    return sections;
}

void control(const std::string& request) {
    char message[256] = "";
    const auto call = simulator<tvrsim_control_fn>("tvrsim_control");
    ASSERT_EQ(call(request.c_str(), message, sizeof message), 0) << message;
}

long calls(const char* entry_point) {
    return simulator<tvrsim_calls_fn>("tvrsim_calls")(entry_point);
}

Cim_Instance computer_system(const std::string& host_name) {
    Named_Values keys;
    keys.set("CreationClassName", "IBMSD_ComputerSystem");
    keys.set("Name", host_name);
    Named_Values properties = keys;
    properties.set("ElementName", "A server of another provider");
    properties.set("UUID", "0f4e5d6c");
    return {Cim_Path("root/ibmse", "IBMSD_ComputerSystem", keys), properties};
}

Cim_Instance base_server_profile() {
    Named_Values keys;
    keys.set("InstanceID", "SRV:Base Server");
    Named_Values properties = keys;
    properties.set("RegisteredName", "base server");
    properties.set("RegisteredOrganization", std::uint16_t{2});
    properties.set("RegisteredVersion", "1.0.0");
    return {Cim_Path(interop, "CIM_RegisteredProfile", keys), properties};
}

std::vector<std::string> plain(const Answer& answer, const char* property) {
    std::vector<std::string> out;
    for (const Cim_Instance& instance : answer.instances) {
        out.push_back(instance[property].plain());
    }
    return out;
}

std::map<std::string, std::string> literals(const Cim_Instance& instance) {
    std::map<std::string, std::string> out;
    for (const tvrhost::Named_Value& property : instance.properties) {
        out[property.name] = property.value.literal();
    }
    return out;
}

Client::Client() {
    std::filesystem::create_directory(directory.file("etc"));
    setenv("TAVRIN_FC_PREFIX", directory.path().c_str(), 1);
    std::ostringstream scenario;
    scenario << std::ifstream(TVR_SCENARIO).rdbuf();
    control(R"({"clear": true, "resetCounts": true, "scenario": )" + scenario.str() + "}");
}

Client::~Client() {
    stop();
}

tvrhost::Object_Manager& Client::start(std::vector<Cim_Instance> instances) {
    stop();
    tvrhost::Options options;
    options.module = TVR_MODULE;
    options.schema = class_model();
    options.instances = std::move(instances);
    _manager = std::make_unique<tvrhost::Object_Manager>(std::move(options));
    return *_manager;
}

tvrhost::Object_Manager& Client::manager() {
    return _manager ? *_manager : start();
}

void Client::stop() {
    if (!_manager) {
        return;
    }
    _manager->shutdown();
    for (const tvrhost::Fault& fault : _manager->take_faults()) {
        ADD_FAILURE() << fault.text;
    }
    EXPECT_EQ(_manager->live_objects(), 0u);
    _manager.reset();
}

Cim_Instance Client::only(const std::string& class_name) {
    const Answer answer = enumerate(class_name);
    EXPECT_EQ(answer.rc, 0) << class_name;
    EXPECT_EQ(answer.instances.size(), 1u) << class_name;
    return answer.instances.empty() ? Cim_Instance() : answer.instances.front();
}

} // namespace client
