#include "tests/agent/agent_fixture.h"

#include "access/libraries.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>

namespace cimple {

bool host_has_name = true;
bool host_is_resolved = true;

namespace {

int fake_host_name(char* out, std::size_t size) {
    if (!host_has_name) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::strncpy(out, "host", size);
    return 0;
}

bool fake_resolve(const char* name, Host_Name& found) {
    if (!host_is_resolved) {
        return false;
    }
    found = {std::string(name) + ".example", "192.0.2.7"};
    return true;
}

constexpr Host_Lookup fake_lookup{&fake_host_name, &fake_resolve};

std::string value_text(Type type, const void* value) {
    uint64 bits = 0; // of an integer
    switch (type) {
    case BOOLEAN:
        return *static_cast<const bool*>(value) ? "true" : "false";
    case STRING:
        return static_cast<const String*>(value)->c_str();
    case REAL32:
        return std::to_string(*static_cast<const real32*>(value));
    case DATETIME:
        return static_cast<const Datetime*>(value)->ascii().c_str();
    case SINT32:
        return std::to_string(*static_cast<const sint32*>(value));
    default:
        std::memcpy(&bits, value, traits_of(type).size);
        return std::to_string(bits);
    }
}

std::string property_text(const Meta_Property& property, const Instance* instance) {
    const Type type = static_cast<Type>(property.type);
    const void* at = field(instance, property.offset);
    if (!property.is_array()) {
        return value_text(type, at);
    }
    const auto& array = *static_cast<const Array_Base*>(at);
    std::string text = "{";
    for (std::size_t i = 0; i < array.size(); ++i) {
        text += (i == 0 ? "" : ", ") + value_text(type, array.at(i));
    }
    return text + "}";
}

bool collect(Instance* instance, int, void* client_data) {
    static_cast<Collected*>(client_data)->_instances.emplace_back(instance);
    return true;
}

HBA_WWN wwn(uint8 kind, uint32 adapter, uint32 port) {
    return {
        {kind, 0, 0xAA, 0xBB, 0xCC, 0xDD, static_cast<uint8>(adapter), static_cast<uint8>(port)}};
}

} // namespace

std::map<std::string, std::string> describe(const Instance* instance) {
    std::map<std::string, std::string> texts;
    if (!instance->__name_space.empty()) {
        texts[""] = instance->__name_space.c_str();
    }
    for (const Meta_Feature* feature : *instance->__meta_class) {
        if (feature->has(FLAG_PROPERTY)) {
            const auto& property = as_property(*feature);
            if (null_flag(instance, property) == 0) {
                texts[property.name] = property_text(property, instance);
            }
        } else if (feature->has(FLAG_REFERENCE)) {
            if (const Instance* target = reference_field(instance, as_reference(*feature))) {
                String path;
                EXPECT_EQ(instance_to_model_path(target, path), 0);
                texts[feature->name] = path.c_str();
            }
        }
    }
    return texts;
}

Enum_Instances_Handler Collected::handler() {
    return {&collect, this};
}

std::vector<std::string> Collected::texts(const std::string& property) const {
    std::vector<std::string> texts;
    for (const Ref<Instance>& instance : _instances) {
        texts.push_back(describe(instance.get())[property]);
    }
    return texts;
}

fake::Libraries& With_Host::find_libraries() {
    void* library = dlopen(FAKE_FC "/liblrmapi.so", RTLD_NOW | RTLD_GLOBAL);
    void* address = library == nullptr ? nullptr : dlsym(library, fake::accessName);
    if (address == nullptr) {
        ADD_FAILURE() << dlerror();
        std::abort();
    }
    return *reinterpret_cast<fake::Access>(address)();
}

With_Host::With_Host() : libraries(find_libraries()), _settings_before(settings()) {
    libraries = {};
    settings() = Settings(directory.path());
    directory.write("etc/issue", "Testix 7\n");
    directory.write("proc/version", "Linux version 7.0 (test)\n");
    host_has_name = true;
    host_is_resolved = true;
    set_host_lookup(&fake_lookup);
}

With_Host::~With_Host() {
    set_host_lookup(nullptr);
    settings() = _settings_before;
    libraries = {};
}

void With_Host::open_libraries() {
    libraryHandles[HBAAPI_LIBRARY] = dlopen(FAKE_FC "/libHBAAPI.so", RTLD_NOW | RTLD_GLOBAL);
    libraryHandles[LRMAPI_LIBRARY] = dlopen(FAKE_FC "/liblrmapi.so", RTLD_NOW | RTLD_GLOBAL);
}

fake::Adapter With_Host::adapter(uint32 index, uint32 ports) {
    const std::string digits = std::to_string(index);
    fake::Adapter adapter;
    adapter.name = "Tavrin-F" + digits;
    fake::put(adapter.record.Manufacturer, "Tavrin Corporation");
    fake::put(adapter.record.SerialNumber, "SN" + digits);
    fake::put(adapter.record.Model, "TV" + digits);
    fake::put(adapter.record.ModelDescription, "Tavrin TV" + digits + " 16Gb");
    fake::put(adapter.record.NodeSymbolicName, "TV" + digits + " node");
    fake::put(adapter.record.DriverVersion, "1.2.3");
    fake::put(adapter.record.FirmwareVersion, "2.82a4");
    fake::put(adapter.record.DriverName, "tvfc");
    adapter.record.NodeWWN = wwn(0x20, index, 0);
    adapter.record.NumberOfPorts = ports;
    adapter.driverType = 3;
    adapter.attributes = {{RM_HA_OPERATIONAL_FIRMWARE, {"Overlay 3"}},
                          {RM_HA_IEEE_ADDRESS, {std::string("\x00\x11\x22\x33\x44\x55", 6)}},
                          {RM_HA_DIAG_VERSION, fake::valueOf(uint32{5})},
                          {RM_HA_PORT_NUMBER, fake::valueOf(index)}};
    for (uint32 i = 0; i < ports; ++i) {
        fake::Port port;
        port.record.NodeWWN = adapter.record.NodeWWN;
        port.record.PortWWN = wwn(0x10, index, i);
        port.record.PortFcId = 0x010200 + i;
        port.record.PortType = HBA_PORTTYPE_NPORT;
        port.record.PortSupportedClassofService = 0x08;
        port.record.PortSupportedFc4Types.bits[2] = 0x01;
        port.record.PortActiveFc4Types.bits[2] = 0x01;
        fake::put(port.record.OSDeviceName, "/sys/host" + digits);
        port.record.PortSupportedSpeed = 0x38;
        port.record.PortSpeed = 0x10;
        port.record.PortMaxFrameSize = 2112;
        port.record.FabricName = wwn(0x30, index, i);
        port.record.NumberofDiscoveredPorts = 4;
        port.attributes = {{RM_PA_PHYSICAL_STATE, fake::valueOf<uint32>(HBA_PORTSTATE_ONLINE)}};
        adapter.ports.push_back(port);
    }
    return adapter;
}

With_Agent::With_Agent() {
    CLogger::getInstance().enable();
    libraries.adapters = {adapter(1), adapter(2), adapter(3)};
}

With_Agent::~With_Agent() {
    unload();
    CLogger::getInstance().disable();
}

void With_Agent::load() {
    open_libraries();
    ASSERT_EQ(load_agent(), LOAD_OK);
    _loaded = true;
    agent = ProviderAgent::instance();
    CLogger::getInstance().addLogger(&log);
}

void With_Agent::unload() {
    if (std::exchange(_loaded, false)) {
        unload_agent();
        agent = nullptr;
    }
}

void With_Agent::refresh() {
    agent->m_bForceAdapterRefresh = true;
    agent->BuildCimpleInfo();
    wait_for_end();
}

// Its last stage done, the thread needs nothing but m_ThreadMutex to end.
void With_Agent::wait_for_end() {
    for (bool running = true; running; std::this_thread::yield()) {
        const Lock lock(agent->m_ThreadMutex);
        running = agent->m_bIsThreadRunning;
    }
}

void With_Agent::stop_at(Gate& gate, const std::string& entry_point) {
    libraries.entered = [&gate, entry_point](const std::string& entered) {
        if (entered == entry_point) {
            gate.pass();
        }
    };
}

int With_Agent::calls(const char* entry_point) {
    return libraries.calls[entry_point];
}

std::size_t With_Agent::logged(const std::string& text) {
    const auto lines = log.lines();
    return static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(),
                      [&](const LogCapture::Line& line) { return line.text == text; }));
}

std::vector<std::string> With_Agent::sequence(const std::vector<std::string>& lines) {
    std::vector<std::string> found;
    for (const LogCapture::Line& line : log.lines()) {
        if (std::find(lines.begin(), lines.end(), line.text) != lines.end()) {
            found.push_back(line.text);
        }
        if (line.text == lines.back()) {
            break;
        }
    }
    return found;
}

} // namespace cimple
