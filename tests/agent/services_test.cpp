// The methods of the services, and what can be modified: codes, outputs and lines in the log.
#include "tests/agent/agent_fixture.h"

#include "agent/locks.h"
#include "providers/TVRHBA_BootBIOSService_Provider.h"
#include "providers/TVRHBA_DumpData_Provider.h"
#include "providers/TVRHBA_DumpService_Provider.h"
#include "providers/TVRHBA_FCHBADriverParamService_Provider.h"
#include "providers/TVRHBA_FCHBAWWNService_Provider.h"
#include "providers/TVRHBA_FCPort_Provider.h"
#include "providers/TVRHBA_ProviderConfigSetting_Provider.h"
#include "providers/TVRHBA_SoftwareInstallationService_Provider.h"

#include <filesystem>
#include <thread>

namespace cimple {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

constexpr char first_port[] = "1000AABBCCDD0100";

template <class T> Property<T> null_of() {
    Property<T> property{};
    property.null = 1;
    return property;
}
template <class T> Property<T> of(const T& value) {
    Property<T> property{};
    property.set(value);
    return property;
}

class Services : public With_Agent {
protected:
    Services() {
        image = directory.write("image.fw", "firmware");
        libraries.dumpDirectory = "/dumps";
        libraries.number = 7;
        load();
        refresh();
        libraries.calls.clear();
    }

    template <class C> Class_Map<C>& map() { return agent->maps.*map_of<C>; }
    template <class C> Ref<C> first() { return Ref<C>(clone_of(map<C>().get(0))); }
    // One that isn't there.
    template <class C> Ref<C> foreign() {
        Ref<C> service = first<C>();
        service->Name.set("another");
        return service;
    }
    // What the providers logged since the last call, but for how they waited.
    std::vector<std::string> provider_lines() {
        std::vector<std::string> lines;
        for (const LogCapture::Line& line : log.lines()) {
            const bool is_method = line.file.find("_Provider.cpp") != std::string::npos ||
                                   line.text.ends_with("::str2HBAName failed") ||
                                   line.file.find("image_file.cpp") != std::string::npos;
            if (is_method) {
                lines.push_back(line.text);
            }
        }
        log.take();
        return lines;
    }
    bool wants_rebuild() {
        wait_for_end();
        return std::exchange(libraries.calls["HBA_GetNumberOfAdapters"], 0) != 0;
    }

    std::string image;
};

// One method with what its answers look like.
struct Method {
    const char* name;
    const char* entry_point; // whose failure is the method's
    // With the service that is there, or another; code and outputs.
    std::function<uint32(bool own, const TVRHBA_FCPort* target)> call;
    std::vector<std::string> begin; // lines before all else
    const char* not_this_service;
    const char* no_target;
    const char* no_port;
    std::string prefix; // of the lines for names that can't be converted
    std::vector<std::string> failed;
    std::vector<std::string> done;
    bool rebuilds = false;
    uint32 no_target_code = 32968;
    uint32 no_name_code = 32968;
    bool only_first = false; // of the service's instances
};

class Methods : public Services {
protected:
    template <class Provider, class Work> auto calls_of(Work work) {
        return [this, work](bool own, const TVRHBA_FCPort* target) {
            using C = typename Provider::Class;
            Provider provider;
            const Ref<C> self = own ? first<C>() : foreign<C>();
            Property<uint32> code = null_of<uint32>();
            EXPECT_EQ(work(provider, self.get(), target, code), INVOKE_METHOD_OK);
            EXPECT_FALSE(code.is_null());
            return code.value;
        };
    }
    std::vector<Method> methods();

    Property<uint32> number = null_of<uint32>();
    Property<uint16> state = null_of<uint16>();
    Property<String> wwpn = null_of<String>();
    Property<String> wwnn = null_of<String>();
    Property<Array<String>> files = null_of<Array<String>>();
};

std::vector<Method> Methods::methods() {
    using Boot = TVRHBA_BootBIOSService_Provider;
    using Params = TVRHBA_FCHBADriverParamService_Provider;
    using Names = TVRHBA_FCHBAWWNService_Provider;
    using Dumps = TVRHBA_DumpService_Provider;
    using Install = TVRHBA_SoftwareInstallationService_Provider;
    const std::string boot = "TVRHBA_BootBIOSService_Provider";
    const std::string param = "TVRHBA_FCHBADriverParamService_Provider";
    const std::string dump = "TVRHBA_DumpService";
    const std::string install = "TVRHBA_SoftwareInstallationService_Provider";
    static constexpr char no_boot[] = "Invalid instance of Boot BIOS Service";
    static constexpr char no_boot_port[] =
        "TVRHBA_BootBIOSService_Provider invald fc port ...return";
    static constexpr char no_names[] = "Invalid instance of HBA WWN Management Service";
    static constexpr char no_names_port[] = "TVRHBA_FCHBAWWNService_Provider invald port ...return";
    static constexpr char no_dump[] = "Invalid instance of TVRHBA_DumpService";
    static constexpr char no_dump_port[] = "TVRHBA_DumpService invald port ...return";
    static constexpr char no_install[] = "Invalid instance of Software Installation Service";
    static constexpr char no_install_port[] =
        "TVRHBA_SoftwareInstallationService_Provider invald port ...return";
    const std::string done_for = std::string("FC download functionality complete for target ");
    const auto options = of(Array<uint16>{4, 11});
    const auto no_values = null_of<Array<String>>();
    const std::string stream = directory.path() + "/stream.fw";
    return {
        {"EnableBootBIOS",
         "LRM_SetBootBiosState",
         calls_of<Boot>([](auto& p, auto* self, auto* t, auto& code) {
             return p.EnableBootBIOS(self, t, code);
         }),
         {boot + "::EnableBootBIOS()"},
         no_boot,
         "TVRHBA_BootBIOSService_Provider EnableBootBIOS invald fc port ...return",
         no_boot_port,
         boot + "::",
         {"Entering " + boot + "::EnableBootBIOS(): tvrcimSetBootBiosState",
          boot + "::tvrcimSetBootBiosState failed"},
         {"Entering " + boot + "::EnableBootBIOS(): tvrcimSetBootBiosState",
          boot + "::tvrcimSetBootBiosState o.k."},
         false,
         32968,
         32968,
         true},
        {"DisableBootBIOS",
         "LRM_SetBootBiosState",
         calls_of<Boot>([](auto& p, auto* self, auto* t, auto& code) {
             return p.DisableBootBIOS(self, t, code);
         }),
         {boot + "::DisableBootBIOS()"},
         no_boot,
         "TVRHBA_BootBIOSService_Provider DisableBooTBIOSinvald fc port ...return",
         no_boot_port,
         boot + "::",
         {"Entering " + boot + "::DisableBootBIOS(): tvrcimSetBootBiosState",
          boot + "::tvrcimSetBootBiosState failed"},
         {"Entering " + boot + "::DisableBootBIOS(): tvrcimSetBootBiosState",
          boot + "::tvrcimSetBootBiosState O.K."},
         false,
         32968,
         32968,
         true},
        {"SetDriverParameter",
         "LRM_SetDriverParam",
         calls_of<Params>([](auto& p, auto* self, auto* t, auto& code) {
             return p.SetDriverParameter(self, t, of(true), of(false), of(String("a")),
                                         of(String("1")), code);
         }),
         {param + "::SetDriverParameter()"},
         "Invalid instance of HBA Driver Parameter Service",
         "TVRHBA_FCHBADriverParamService_Provider SetDriverParameter invald fc port ...return",
         "TVRHBA_FCHBADriverParamService_Provider invald fc port ...return",
         param + "::",
         {first_port, "Entering " + param + "::SetDriverParam(): tvrcimSetDriverParam",
          param + "::tvrcimSetDriverParam failed"},
         {first_port, "Entering " + param + "::SetDriverParam(): tvrcimSetDriverParam",
          param + "::tvrcimSetDriverParam Succeeded"},
         false,
         32968,
         32968,
         true},
        {"ChangeWWN",
         "LRM_ChangeWWN",
         calls_of<Names>([this](auto& p, auto* self, auto* t, auto& code) {
             return p.ChangeWWN(self, t, of(String("10000000000000AA")),
                                of(String("20000000000000BB")), of(uint16{1}), state, code);
         }),
         {"Entering ChangeWWN"},
         no_names,
         no_names_port,
         no_names_port,
         "TVRHBA_FCHBAWWNService_Provider::",
         {"Writing Non-Volatile World Wide Name."},
         {"Writing Non-Volatile World Wide Name.",
          "ChangeWWN operation completed. Please restart the CIMOM to use Tavrin CIM provider"},
         true,
         32968,
         32968,
         true},
        {"RestoreWWN",
         "LRM_RestoreWWN",
         calls_of<Names>([this](auto& p, auto* self, auto* t, auto& code) {
             return p.RestoreWWN(self, t, of(uint16{0}), state, code);
         }),
         {"Entering RestoreWWN"},
         no_names,
         no_names_port,
         no_names_port,
         "TVRHBA_FCHBAWWNService_Provider::",
         {"Restoring Factory Default World Wide Name..."},
         {"Restoring Factory Default World Wide Name..."},
         true,
         32968,
         32968,
         true},
        {"ReadWWN",
         "LRM_ReadWWN",
         calls_of<Names>([this](auto& p, auto* self, auto* t, auto& code) {
             return p.ReadWWN(self, t, of(uint16{4}), wwpn, wwnn, state, code);
         }),
         {"Entering ReadWWN"},
         no_names,
         no_names_port,
         no_names_port,
         "TVRHBA_FCHBAWWNService_Provider::",
         {"Reading configured WWNs."},
         {"Reading configured WWNs."},
         false,
         32968,
         32968,
         true},
        {"GetWWNCapability",
         "LRM_GetWWNCapability",
         calls_of<Names>([this](auto& p, auto* self, auto* t, auto& code) {
             return p.GetWWNCapability(self, t, number, code);
         }),
         {"Entering GetWWNCapability"},
         no_names,
         no_names_port,
         no_names_port,
         "TVRHBA_FCHBAWWNService_Provider::",
         {},
         {},
         false,
         32968,
         32968,
         true},
        {"GenerateDump",
         "LRM_GenerateDump",
         calls_of<Dumps>([](auto& p, auto* self, auto* t, auto& code) {
             return p.GenerateDump(self, t, code);
         }),
         {"Entering GenerateDump"},
         no_dump,
         no_dump_port,
         no_dump_port,
         dump + "::",
         {dump + "::tvrcimDumpDiagnostic failed"},
         {dump + "::tvrcimDumpDiagnostic Succesful", "returning from " + dump + "::GenerateDump"}},
        {"DeleteDump",
         "LRM_DeleteDumpFiles",
         calls_of<Dumps>(
             [](auto& p, auto* self, auto* t, auto& code) { return p.DeleteDump(self, t, code); }),
         {"Entering DeleteDump"},
         no_dump,
         no_dump_port,
         no_dump_port,
         dump + "::",
         {dump + "::tvrcimDeleteDumpFiles failed"},
         {dump + "::tvrcimDeleteDumpFiles Succesful", "returning from " + dump + "::DeleteDump"}},
        {"ResetHBA",
         "LRM_ResetHBA",
         calls_of<Install>(
             [](auto& p, auto* self, auto* t, auto& code) { return p.ResetHBA(self, t, code); }),
         {"Entering ResetHBA"},
         no_install,
         no_install_port,
         no_install_port,
         install + "::",
         {install + "::tvrcimResetHBA failed for target " + first_port},
         {install + "::tvrcimResetHBA for target " + first_port +
          " is Successful.. Updating the Provider Data"},
         true},
        {"SetPortEnabled",
         "LRM_SetPortEnabled",
         calls_of<Install>([](auto& p, auto* self, auto* t, auto& code) {
             return p.SetPortEnabled(self, t, of(true), code);
         }),
         {},
         no_install,
         "Invalid Port is passed",
         "TVRHBA_SoftwareInstallationService_Provider invalid port passed",
         "",
         {"Input PortEnable : 1", install + "::SetPortEnabled failed for target " + first_port},
         {"Input PortEnable : 1",
          install + "::SetPortEnabled for target " + first_port + " is Successful. "}},
        {"InstallFromURI",
         "LRM_DownloadFirmware",
         calls_of<Install>([=, this](auto& p, auto* self, auto* t, auto& code) {
             CIM_ConcreteJob* job = nullptr;
             const auto* target = reinterpret_cast<const CIM_ManagedElement*>(t);
             return p.InstallFromURI(self, job, of(String(image)), target, options, no_values,
                                     code);
         }),
         {"entering InstallFromURI"},
         no_install,
         "Target has a null pointer",
         no_install_port,
         install + "::",
         {"size of InstallOptions array = 2, first member 4", "filename is : " + image,
          "Error - in the firmware download functionality"},
         {"size of InstallOptions array = 2, first member 4", "filename is : " + image,
          done_for + first_port, "tvrcimDownloadFW: Removing the FW file from CIMOM's repository "},
         true,
         4097,
         4097},
        {"InstallFromByteStream",
         "LRM_DownloadFirmware",
         calls_of<Install>([=](auto& p, auto* self, auto* t, auto& code) {
             CIM_ConcreteJob* job = nullptr;
             const auto* target = reinterpret_cast<const CIM_ManagedElement*>(t);
             return p.InstallFromByteStream(self, job, of(Array<uint8>{1, 2, 3}), target,
                                            of(Array<uint16>{32768, 5}),
                                            of(Array<String>{String(stream)}), code);
         }),
         {"Entering InstallFromByteStream"},
         no_install,
         "Target has a null pointer",
         "TVRHBA_SoftwareInstallationService_Provider::Wrong DeviceID passed",
         install + "::",
         {"size of InstallOptions array = 2, first member 32768", "filename is : " + stream,
          "tvrcimDownloadFW: FW file " + stream + " removed successfully",
          "Error - in the firmware download functionality"},
         {"size of InstallOptions array = 2, first member 32768", "filename is : " + stream,
          "tvrcimDownloadFW: FW file " + stream + " removed successfully", done_for + first_port},
         true,
         4097,
         4097},
    };
}

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST_F(Methods, AnswerWithTheirCodesAndLines) {
    const Ref<TVRHBA_FCPort> port = first<TVRHBA_FCPort>();
    const Ref<TVRHBA_FCPort> unknown(clone_of(port.get()));
    unknown->DeviceID.set("1000AABBCCDD0101");
    for (const Method& method : methods()) {
        SCOPED_TRACE(method.name);
        log.take();
        state = null_of<uint16>();
        EXPECT_EQ(method.call(false, port.get()), 33068u);
        EXPECT_EQ(provider_lines(),
                  method.begin + std::vector<std::string>{method.not_this_service});
        EXPECT_EQ(method.call(true, nullptr), method.no_target_code);
        EXPECT_EQ(provider_lines(), method.begin + std::vector<std::string>{method.no_target});
        EXPECT_EQ(method.call(true, unknown.get()), 32968u);
        EXPECT_EQ(provider_lines(), method.begin + std::vector<std::string>{method.no_port});
        EXPECT_TRUE(state.is_null() || state.value == 65535);

        libraries.statuses[method.entry_point] = {9};
        EXPECT_EQ(method.call(true, port.get()), 40009u);
        EXPECT_EQ(provider_lines(), method.begin + method.failed);
        EXPECT_FALSE(wants_rebuild());
        log.take();
        EXPECT_EQ(method.call(true, port.get()), 0u);
        const auto lines = provider_lines();
        EXPECT_EQ(lines, method.begin + method.done);
        EXPECT_EQ(wants_rebuild(), method.rebuilds);
    }
}

// The maps keep what is put there until the next rebuild, so this comes without one.
TEST_F(Methods, CheckServiceAndNameOfThePort) {
    const Ref<TVRHBA_FCPort> port = first<TVRHBA_FCPort>();
    Ref<TVRHBA_FCPort> nameless(clone_of(port.get()));
    nameless->DeviceID.set("no name");
    map<TVRHBA_FCPort>().insert(Ref<TVRHBA_FCPort>(nameless).release());
    for (const Method& method : methods()) {
        SCOPED_TRACE(method.name);
        if (!method.prefix.empty()) {
            log.take();
            EXPECT_EQ(method.call(true, nameless.get()), method.no_name_code);
            EXPECT_THAT(provider_lines(), Contains(method.prefix + "str2HBAName failed"));
        }
    }
    // A second instance counts where any does.
    map<TVRHBA_DumpService>().insert(foreign<TVRHBA_DumpService>().release());
    map<TVRHBA_SoftwareInstallationService>().insert(
        foreign<TVRHBA_SoftwareInstallationService>().release());
    map<TVRHBA_BootBIOSService>().insert(foreign<TVRHBA_BootBIOSService>().release());
    map<TVRHBA_FCHBAWWNService>().insert(foreign<TVRHBA_FCHBAWWNService>().release());
    map<TVRHBA_FCHBADriverParamService>().insert(
        foreign<TVRHBA_FCHBADriverParamService>().release());
    for (const Method& method : methods()) {
        const std::string name = method.name;
        const uint32 code = method.call(false, nullptr);
        EXPECT_EQ(code == 33068, method.only_first) << name;
    }
    // Without any instance all are welcome; of an installation service the kind counts.
    TVRHBA_SoftwareInstallationService_Provider install;
    const auto self = foreign<TVRHBA_SoftwareInstallationService>();
    map<TVRHBA_SoftwareInstallationService>().clear();
    Property<uint32> code{};
    CIM_ConcreteJob* job = nullptr;
    const auto* target = reinterpret_cast<const CIM_ManagedElement*>(port.get());
    libraries.requests.clear();
    install.InstallFromURI(self.get(), job, of(String(image)), target, {}, {}, code);
    EXPECT_EQ(code.value, 4u);
    EXPECT_THAT(libraries.requests, IsEmpty());
    self->Name.set("tvrxcna_SoftwareInstallationService");
    install.ResetHBA(self.get(), nullptr, code);
    EXPECT_EQ(code.value, 40002u);
}

TEST_F(Methods, HaveOutputsOnSuccessAlone) {
    const Ref<TVRHBA_FCPort> port = first<TVRHBA_FCPort>();
    TVRHBA_BootBIOSService_Provider boot;
    const auto boot_service = first<TVRHBA_BootBIOSService>();
    Property<uint32> code{};
    libraries.adapters[0].attributes[RM_HA_BOOT_CODE_ENABLED] = fake::valueOf(uint32{1});
    libraries.statuses["LRM_GetHBAAttributes"] = {9};
    boot.GetBootBIOSStatus(boot_service.get(), port.get(), number, code);
    EXPECT_EQ(code.value, 40001u);
    EXPECT_TRUE(number.is_null());
    boot.GetBootBIOSStatus(boot_service.get(), port.get(), number, code);
    EXPECT_EQ(code.value, 0u);
    EXPECT_EQ(number.value, 1u);
    EXPECT_EQ(number.is_null(), false);

    TVRHBA_DumpService_Provider dumps;
    const auto dump_service = first<TVRHBA_DumpService>();
    const auto list = [&] {
        files = null_of<Array<String>>();
        libraries.requests.clear();
        dumps.GetDumpFileNames(dump_service.get(), port.get(), files, code);
        return code.value;
    };
    libraries.number = 0;
    EXPECT_EQ(list(), 0u);
    EXPECT_TRUE(files.is_null());
    EXPECT_THAT(provider_lines(), Contains(" NumberOfEntries = 0"));
    libraries.dumpFiles = {"a", "b", "c", "d", std::string(300, 'e')};
    EXPECT_EQ(list(), 0u);
    EXPECT_THAT(libraries.requests,
                ElementsAre("LRM_GetDumpFileNames 4", "LRM_GetDumpFileNames 5"));
    ASSERT_EQ(files.value.size(), 5u);
    EXPECT_EQ(files.value[4], std::string(256, 'e'));
    libraries.statuses["LRM_GetDumpFileNames"] = {191};
    libraries.number = 0xFFFFFFFF;
    EXPECT_EQ(list(), 40191u) << "no such list is asked for";
    EXPECT_TRUE(files.is_null());

    TVRHBA_FCHBAWWNService_Provider names;
    const auto name_service = first<TVRHBA_FCHBAWWNService>();
    struct Row {
        const char* wwpn;
        const char* wwnn;
        uint16 type;
        uint32 code;
        const char* line;
    };
    const Row rows[] = {
        {"", "2", 9, 32969, "New WWPN has a null pointer"},
        {"10000000000000AA", "", 9, 32969, "New WWNN has a null pointer"},
        {"10000000", "", 9, 32968, "TVRHBA_FCHBAWWNService_Provider::str2HBAName failed"},
        {"10000000000000AA", "20000000000000BB", 2, 32968, "ChangeWWN: Type 2 not recognized..."},
    };
    for (const Row& row : rows) {
        names.ChangeWWN(name_service.get(), port.get(), of(String(row.wwpn)), of(String(row.wwnn)),
                        of(row.type), state, code);
        EXPECT_EQ(code.value, row.code) << row.line;
        EXPECT_EQ(provider_lines().back(), row.line);
        EXPECT_EQ(state.value, 65535u);
    }
    names.ReadWWN(name_service.get(), port.get(), of(uint16{5}), wwpn, wwnn, state, code);
    EXPECT_EQ(code.value, 32968u);
    EXPECT_EQ(provider_lines().back(), "ReadWWN: Type 5 not recognized...");
    EXPECT_TRUE(wwpn.is_null() && wwnn.is_null() && !state.is_null() && state.value == 65535);
    names.RestoreWWN(name_service.get(), port.get(), of(uint16{2}), state, code);
    EXPECT_EQ(provider_lines().back(), "RestoreWWN: Type 2 not recognized...");

    // Global before permanent, though they come the other way round; texts may be missing.
    TVRHBA_FCHBADriverParamService_Provider params;
    const auto param_service = first<TVRHBA_FCHBADriverParamService>();
    libraries.requests.clear();
    for (const bool global : {false, true}) {
        params.SetDriverParameter(param_service.get(), port.get(), of(!global), of(global),
                                  of(String("a")), of(String("1")), code);
    }
    EXPECT_THAT(libraries.requests,
                ElementsAre("LRM_SetDriverParam a=1 1", "LRM_SetDriverParam a=1 2"));
    params.SetDriverParameter(param_service.get(), port.get(), of(true), of(true),
                              null_of<String>(), of(String("1")), code);
    EXPECT_EQ(code.value, 40001u);
}

// ---- firmware

class Installation : public Services {
protected:
    uint32 from_URI(const std::string& uri, const Array<uint16>& options = {}) {
        Property<uint32> code{};
        log.take();
        TVRHBA_SoftwareInstallationService_Provider().InstallFromURI(
            service.get(), job, of(String(uri)), target(), of(options), {}, code);
        return code.value;
    }
    uint32 from_bytes(const Array<uint16>& options, const Array<String>& values) {
        Property<uint32> code{};
        log.take();
        TVRHBA_SoftwareInstallationService_Provider().InstallFromByteStream(
            service.get(), job, of(Array<uint8>{'a', 'b', 'c'}), target(), of(options), of(values),
            code);
        return code.value;
    }
    const CIM_ManagedElement* target() {
        return reinterpret_cast<const CIM_ManagedElement*>(port.get());
    }

    Ref<TVRHBA_FCPort> port = first<TVRHBA_FCPort>();
    Ref<TVRHBA_SoftwareInstallationService> service = first<TVRHBA_SoftwareInstallationService>();
    CIM_ConcreteJob* job = nullptr;
};

TEST_F(Installation, ChecksWhatItIsGiven) {
    EXPECT_EQ(from_URI(""), 4097u);
    EXPECT_EQ(provider_lines().back(), "Null sized URI..returning");
    EXPECT_EQ(from_URI(image, {2, 3}), 5u);
    EXPECT_EQ(provider_lines().back(), "invalid value of Install options");
    EXPECT_EQ(from_URI(image, {32768}), 5u);
    EXPECT_EQ(from_URI("missing"), 4107u);
    EXPECT_EQ(provider_lines().back(), "ERROR: tvrcimDownloadFW: FW file not found");
    EXPECT_EQ(from_URI(image + "/x"), 5u);
    EXPECT_EQ(provider_lines().back(), "ERROR: tvrcimDownloadFW: Can't stat FW file ");

    const std::string file = directory.path() + "/stream";
    EXPECT_EQ(from_bytes({2, 32768}, {}), 5u);
    EXPECT_THAT(provider_lines().back(), EndsWith("Returning Invalid Parameter"));
    EXPECT_EQ(from_bytes({3, 32768}, {file}), 5u);
    EXPECT_EQ(from_bytes({}, {file}), 5u);
    EXPECT_THAT(provider_lines(), ElementsAre("Entering InstallFromByteStream",
                                              "size of InstallOptions array = 0, first member 0",
                                              "InstallOptions does not have the value 32768"));
    EXPECT_EQ(from_bytes({2, 32768}, {file}), 5u) << "an option behind the values";
    for (const std::string& bad : {directory.path(), file + "/none", directory.path() + "/pipe"}) {
        if (bad.ends_with("/pipe")) {
            ASSERT_EQ(mkfifo(bad.c_str(), 0600), 0);
        }
        EXPECT_EQ(from_bytes({32768}, {bad}), 4u) << bad;
        EXPECT_EQ(provider_lines().back(),
                  "Could not open file to copy the firmware from ByteStream");
    }
    EXPECT_EQ(calls("LRM_DownloadFirmware"), 0);
    EXPECT_FALSE(wants_rebuild());
}

TEST_F(Installation, CountsAReboot) {
    libraries.statuses["LRM_DownloadFirmware"] = {247, 247};
    EXPECT_EQ(from_URI(image), 0u);
    EXPECT_THAT(provider_lines(),
                Contains("FC Firmware download completed for target " + std::string(first_port) +
                         " Please reboot system to activate new firmware."));
    EXPECT_TRUE(std::filesystem::exists(image)) << "a local file stays";
    EXPECT_EQ(from_bytes({32768}, {directory.path() + "/b"}), 40247u);
}

TEST_F(Installation, ResetsForEachSuchOption) {
    const std::string last = directory.path() + "/last";
    libraries.requests.clear();
    EXPECT_EQ(from_bytes({2, 32768, 2, 32768}, {"", "first", "", last}), 0u);
    EXPECT_EQ(calls("LRM_ResetHBA"), 2);
    EXPECT_THAT(provider_lines(), Contains("filename is : " + last));
    EXPECT_FALSE(std::filesystem::exists(last));
    EXPECT_FALSE(wants_rebuild()) << "the reset doesn't ask for one";
    libraries.statuses["LRM_ResetHBA"] = {190};
    EXPECT_EQ(from_URI(image, {2}), 40190u);
    EXPECT_EQ(provider_lines().back(),
              "TVRHBA_SoftwareInstallationService_Provider::tvrcimResetHBA failed");
}

TEST_F(Installation, HoldsOffEnumerationsAndRefreshes) {
    Gate gate;
    stop_at(gate, "LRM_DownloadFirmware");
    std::thread installing([this] { EXPECT_EQ(from_URI(image), 0u); });
    gate.wait_until_reached();
    agent->m_bForceAdapterRefresh = true;
    std::size_t ports = 0;
    std::thread enumerating([&] { ports = enumerated<TVRHBA_FCPort>().size(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(ports, 0u);
    gate.open();
    installing.join();
    enumerating.join();
    EXPECT_EQ(ports, 3u);
    wait_for_end();
}

TEST_F(Installation, GivesItsLocksBackWhenALibraryThrows) {
    libraries.entered = [](const std::string& entered) {
        if (entered == "LRM_DownloadFirmware") {
            throw std::runtime_error("library");
        }
    };
    EXPECT_THROW(from_URI(image), std::runtime_error);
    libraries.entered = nullptr;
    std::thread other([this] { const Full_Guard guard(*agent); });
    other.join();
    EXPECT_EQ(from_URI(image), 0u);
}

// ---- modifications

class Modifications : public Services {
protected:
    template <class Provider, class C>
    Modify_Instance_Status modify(const Ref<C>& instance, const char* const (&names)[2]) {
        const Ref<C> model(clone_of(instance.get()));
        filter_properties(model.get(), names, true);
        log.take();
        return Provider().modify_instance(model.get(), instance.get());
    }
};

TEST_F(Modifications, SwitchTheBeacon) {
    const auto port = first<TVRHBA_FCPort>();
    const auto set = [&](uint16 value) {
        port->LocationIndicator.set(value);
        return modify<TVRHBA_FCPort_Provider>(port, {"LocationIndicator", nullptr});
    };
    for (const uint16 bad : {uint16{0}, uint16{1}, uint16{4}}) {
        EXPECT_EQ(set(bad), MODIFY_INSTANCE_INVALID_PARAMETER);
        EXPECT_EQ(provider_lines().back(),
                  "Invalid LocationIndicator, Valid values are '2' or '3'");
    }
    EXPECT_EQ(modify<TVRHBA_FCPort_Provider>(port, {"Speed", nullptr}),
              MODIFY_INSTANCE_INVALID_PARAMETER);
    libraries.requests.clear();
    EXPECT_EQ(set(2), MODIFY_INSTANCE_OK);
    EXPECT_THAT(provider_lines(),
                ElementsAre("TVRHBA_FCPort_Provider::modify_instance", "Input BeaconState : 2",
                            "Beacon state modified successfully"));
    EXPECT_EQ(map<TVRHBA_FCPort>().get(0)->LocationIndicator.value, 2u);
    libraries.statuses["LRM_DiagBeacon"] = {0, 63};
    EXPECT_EQ(set(3), MODIFY_INSTANCE_OK);
    EXPECT_THAT(libraries.requests, ElementsAre("LRM_DiagBeacon 3", "LRM_DiagBeacon 2"));
    EXPECT_EQ(set(2), MODIFY_INSTANCE_FAILED);
    EXPECT_EQ(map<TVRHBA_FCPort>().get(0)->LocationIndicator.value, 3u);
    port->DeviceID.set("another");
    EXPECT_EQ(set(2), MODIFY_INSTANCE_INVALID_PARAMETER);
    map<TVRHBA_FCPort>().clear();
    EXPECT_EQ(set(2), MODIFY_INSTANCE_FAILED);
    EXPECT_EQ(provider_lines().back(), "TVRHBA_FCPort_Provider::::str2HBAName failed");
    TVRHBA_FCPort_Provider provider;
    EXPECT_EQ(provider.modify_instance(nullptr, nullptr), MODIFY_INSTANCE_INVALID_PARAMETER);
}

TEST_F(Modifications, KeepSettingsOverRebuildsAndRestarts) {
    const auto set = [&](std::size_t position, uint32 value) {
        const Ref<TVRHBA_ProviderConfigSetting> setting(
            clone_of(map<TVRHBA_ProviderConfigSetting>().get(position)));
        setting->current.set(value);
        return modify<TVRHBA_ProviderConfigSetting_Provider>(setting, {"current", nullptr});
    };
    struct Row {
        std::size_t position;
        uint32 value;
        Modify_Instance_Status status;
        const char* line;
    };
    const Row rows[] = {
        {0, 31, MODIFY_INSTANCE_INVALID_PARAMETER,
         "The value provided for cache time-out is out of range"},
        {0, 0xFFFFFFFF, MODIFY_INSTANCE_INVALID_PARAMETER,
         "The value provided for cache time-out is out of range"},
        {0, 30, MODIFY_INSTANCE_OK, "Cache time-out is modified successfully"},
        {0, 1, MODIFY_INSTANCE_OK, "Cache time-out is modified successfully"},
        {1, 2, MODIFY_INSTANCE_INVALID_PARAMETER,
         "The value provided for adapter refresh out is out of range"},
        {1, 1, MODIFY_INSTANCE_OK, "Adapter refresh is modified successfully"},
        {2, 2, MODIFY_INSTANCE_INVALID_PARAMETER,
         "The value provided for SAN refresh out is out of range"},
        {2, 0, MODIFY_INSTANCE_OK, "SAN refresh is modified successfully"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(set(row.position, row.value), row.status) << row.line;
        EXPECT_EQ(provider_lines().back(), row.line);
    }
    EXPECT_EQ(modify<TVRHBA_ProviderConfigSetting_Provider>(first<TVRHBA_ProviderConfigSetting>(),
                                                            {"def", nullptr}),
              MODIFY_INSTANCE_FAILED);
    EXPECT_EQ(provider_lines().back(), "Instance does not exist");
    EXPECT_EQ(agent->m_CacheTimeout, 1u);
    EXPECT_TRUE(agent->m_bRefreshAdapterData);
    EXPECT_FALSE(agent->m_bRefreshSANData);
    refresh();
    EXPECT_THAT(enumerated<TVRHBA_ProviderConfigSetting>().texts("current"),
                ElementsAre("1", "1", "0"));
    unload();
    load();
    EXPECT_EQ(agent->m_CacheTimeout, 1u);
    EXPECT_FALSE(agent->m_bRefreshSANData);
}

TEST_F(Modifications, SetHowManyDumpsAreKept) {
    const auto set = [&](uint32 count, const char* path, const char* name) {
        const auto data = first<TVRHBA_DumpData>();
        data->RetentionCount.set(count);
        data->DumpDirectory.set(path);
        data->ElementName.null = 1;
        const Ref<TVRHBA_DumpData> model(clone_of(data.get()));
        const char* const names[] = {name, "DumpDirectory", nullptr};
        filter_properties(model.get(), names, true);
        log.take();
        libraries.requests.clear();
        return TVRHBA_DumpData_Provider().modify_instance(model.get(), data.get());
    };
    EXPECT_EQ(set(9, "/other", "RetentionCount"), MODIFY_INSTANCE_UNSUPPORTED);
    EXPECT_EQ(provider_lines().back(), "tvrcimSetDumpDirectory is not supported");
    EXPECT_THAT(libraries.requests, IsEmpty());
    EXPECT_EQ(set(0, "/dumps", "RetentionCount"), MODIFY_INSTANCE_FAILED);
    libraries.number = 9; // what the adapter tells from here on
    EXPECT_EQ(set(9, "/dumps", "RetentionCount"), MODIFY_INSTANCE_OK);
    EXPECT_THAT(provider_lines(),
                ElementsAre("TVRHBA_DumpData_Provider::modify_instance()",
                            "found the key match for instance.", " For Non VMWARE",
                            "TVR_MethodWrapper::tvrcimSetRetentionCount succeded"));
    EXPECT_EQ(libraries.requests.front(), "LRM_SetDumpRetentionCount 9");
    EXPECT_THAT(enumerated<TVRHBA_DumpData>().texts("RetentionCount"), ElementsAre("9", "9", "9"));
    EXPECT_EQ(set(9, "", "RetentionCount"), MODIFY_INSTANCE_OK) << "no change, yet a rebuild";
    EXPECT_EQ(libraries.requests.front(), "LRM_GetDumpDirectoryA 256");
    map<TVRHBA_DumpData>().get(0)->ElementName.set("none");
    EXPECT_EQ(set(8, "", "RetentionCount"), MODIFY_INSTANCE_FAILED);
    map<TVRHBA_DumpService>().clear();
    map<TVRHBA_PortController>().clear();
    EXPECT_EQ(set(8, "", "Caption"), MODIFY_INSTANCE_FAILED);
}

// ---- what a rebuild makes

TEST_F(Services, HaveDumpInstancesForEachController) {
    libraries.statuses["LRM_GetDumpDirectoryA"] = {9};
    libraries.statuses["LRM_GetDumpRetentionCount"] = {0, 9};
    refresh();
    const Collected data = enumerated<TVRHBA_DumpData>();
    EXPECT_THAT(data.texts("InstanceID"), ElementsAre("TVRHBA_DumpData::1000AABBCCDD0100",
                                                      "TVRHBA_DumpData::1000AABBCCDD0200",
                                                      "TVRHBA_DumpData::1000AABBCCDD0300"));
    EXPECT_THAT(data.texts("DumpDirectory"), ElementsAre("", "/dumps", "/dumps"));
    EXPECT_THAT(data.texts("RetentionCount"), ElementsAre("7", "0", "7"));
    EXPECT_THAT(enumerated<TVRHBA_ElementDumpData>().texts("IsCurrent"),
                ElementsAre("1", "1", "1"));
    EXPECT_THAT(enumerated<TVRHBA_DumpServiceAffectsElement>().texts("AffectedElement"),
                ElementsAre(testing::HasSubstr("TVRHBA_PortController"), testing::_, testing::_));
    EXPECT_EQ(enumerated<TVRHBA_HostedDumpService>().size(), 1u);
    EXPECT_EQ(logged("FC_CreateDumpClasses succesful"), 2u);
}

TEST_F(Services, HaveVirtualPortsInPools) {
    const auto name = [](uint8 last) { return HBA_WWN{{0x10, 0, 0, 0, 0, 0, 0xEE, last}}; };
    libraries.adapters[0].ports[0].virtualPorts = {{name(1), name(9), 0x10203, 0},
                                                   {name(2), name(9), 0x10204, 0}};
    libraries.adapters[2].ports[0].virtualPorts = {{name(3), name(9), 7, 0}};
    libraries.statuses["LRM_VPList"] = {0, 0, 9}; // the first needs two calls, the second fails
    libraries.statuses["LRM_VPGetAttributes"] = {0, 9};
    log.take();
    refresh();
    EXPECT_THAT(
        enumerated<TVRHBA_ResourcePool>().texts("InstanceID"),
        ElementsAre("TVR:Resource Pool:1000AABBCCDD0100", "TVR:Resource Pool:1000AABBCCDD0300"));
    EXPECT_THAT(enumerated<TVRHBA_ResourcePool>().texts("Capacity"), ElementsAre("2", "1"));
    const Collected ports = enumerated<TVRHBA_VirtualFCPort>();
    EXPECT_THAT(ports.texts("DeviceID"),
                ElementsAre("100000000000EE01", "100000000000EE02", "100000000000EE03"));
    EXPECT_THAT(ports.texts("VPortName"),
                ElementsAre(std::string(256, 'b'), "", std::string(256, 'd')));
    EXPECT_THAT(ports.texts("PortFCId"), ElementsAre("66051", "66052", "7"));
    EXPECT_EQ(enumerated<TVRHBA_VPortHostedDependency>().size(), 3u);
    EXPECT_EQ(enumerated<TVRHBA_ElementAllocatedFromPool>().size(), 3u);
    EXPECT_EQ(enumerated<TVRHBA_HostedResourcePool>().size(), 2u);
    EXPECT_EQ(logged("CreatePortVirtualizationClasses failed: 40001"), 1u);
    EXPECT_EQ(logged("TVRXCNA_PortVirtualization::Failure in listing vports for port: "
                     "1000AABBCCDD0200, Rm Error: 1"),
              1u);

    // A name met before ends the work and leaves what was made.
    libraries.adapters[0].ports[0].virtualPorts[1] = libraries.adapters[0].ports[0].virtualPorts[0];
    refresh();
    EXPECT_EQ(enumerated<TVRHBA_VirtualFCPort>().size(), 1u);
    EXPECT_EQ(logged("CreatePortVirtualizationClasses failed: 32769"), 1u);
}

} // namespace
} // namespace cimple
