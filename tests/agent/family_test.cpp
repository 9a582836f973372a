// All class providers through their dispatchers, as the module registers them.
#include "tests/agent/agent_fixture.h"

#include "runtime/provider.h"

#include <map>
#include <set>

namespace cimple {
namespace {

// One log line of the family, or written by hand, of a provider's own file.
bool has_line(const LogCapture& log, const std::string& file, const std::string& text) {
    for (const LogCapture::Line& line : log.lines()) {
        if (line.file == file && line.text == text) {
            return line.level == TVR_DBG;
        }
    }
    return false;
}

// Providers written by hand, and what they log: their load, unload and enumeration.
const std::map<std::string, std::string> by_hand = {{"FCPort", "unload enum"},
                                                    {"BootBIOSService", "load enum"},
                                                    {"DiagnosticsLog", "unload enum"},
                                                    {"DriverParamGlobal", "enum"},
                                                    {"DriverParams", "enum"},
                                                    {"DumpData", "enum"},
                                                    {"DumpService", "enum"},
                                                    {"FCDriverLogEntry", "unload enum"},
                                                    {"FCHBADiagnosticTest", "unload enum"},
                                                    {"FCHBADriverParamService", "enum"},
                                                    {"FCHBAWWNService", "enum"},
                                                    {"FCPortStatistics", ""},
                                                    {"HelpService", "unload enum"},
                                                    {"LogEntry", "enum"},
                                                    {"ProviderConfigSetting", "enum"},
                                                    {"RecordLog", "enum"},
                                                    {"RegisteredProfile", ""},
                                                    {"SoftwareInstallationService", "enum"},
                                                    {"DriverRecordLogManagesRecord", ""},
                                                    {"RecordLogManagesRecord", "enum"},
                                                    {"AlertIndication", ""}};

bool collect(Instance* instance, int, void* collected) {
    if (instance != nullptr) {
        static_cast<Collected*>(collected)->_instances.emplace_back(instance);
    }
    return true;
}

// Of the latter, what clients can change, and what the methods that they have come to without
// arguments.
const std::map<std::string, int> modifiable = {{"DumpData", MODIFY_INSTANCE_FAILED},
                                               {"FCPort", MODIFY_INSTANCE_INVALID_PARAMETER},
                                               {"ProviderConfigSetting", MODIFY_INSTANCE_FAILED}};
const std::set<std::string> callable = {"BootBIOSService.StartService",
                                        "BootBIOSService.EnableBootBIOS",
                                        "BootBIOSService.DisableBootBIOS",
                                        "BootBIOSService.GetBootBIOSStatus",
                                        "DiagnosticsLog.ClearLog",
                                        "DumpService.DeleteDump",
                                        "DumpService.GenerateDump",
                                        "DumpService.GetDumpFileNames",
                                        "FCHBADiagnosticTest.RunDiagnosticService",
                                        "FCHBADriverParamService.StartService",
                                        "FCHBADriverParamService.SetDriverParameter",
                                        "FCHBAWWNService.ChangeWWN",
                                        "FCHBAWWNService.GetWWNCapability",
                                        "FCHBAWWNService.ReadWWN",
                                        "FCHBAWWNService.RestoreWWN",
                                        "HelpService.GetHelp",
                                        "RecordLog.ClearLog",
                                        "RecordLog.RequestStateChange",
                                        "RecordLog.SetLogParams",
                                        "SoftwareInstallationService.StartService",
                                        "SoftwareInstallationService.InstallFromByteStream",
                                        "SoftwareInstallationService.InstallFromURI",
                                        "SoftwareInstallationService.ResetHBA",
                                        "SoftwareInstallationService.SetPortEnabled"};

class Providers : public With_Agent {};

TEST_F(Providers, LoadEnumerateRefuseAndUnload) {
    load();
    refresh();
    int family = 0;
    for (const Registration* at = cimple_module(); at != nullptr; at = at->next) {
        SCOPED_TRACE(at->provider_name);
        const std::string name = std::string(at->meta_class->name).substr(7);
        const auto found_own = by_hand.find(name);
        const bool own = found_own != by_hand.end();
        family += !own;
        const std::string told = own ? " " + found_own->second : " unload enum";
        const auto tells = [&](const char* call) { return told.find(call) != told.npos; };
        const std::string prefix = std::string(at->provider_name);
        const std::string file = (own ? "providers/" : "derivedObjects/") + prefix + ".cpp";
        log.take();

        const Provider_Handle provider(at);
        EXPECT_EQ(provider.call(OPERATION_LOAD), 0);
        EXPECT_EQ(has_line(log, file, prefix + "::load()"), tells(" load"));
        Collected found;
        EXPECT_EQ(provider.enum_instances(nullptr, &collect, &found), ENUM_INSTANCES_OK);
        EXPECT_EQ(has_line(log, file, prefix + "::enum_instances()"), tells(" enum"));
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_EQ(class_of(found[i]), at->meta_class);
        }

        Instance* instance = nullptr;
        const Ref<Instance> model(create(at->meta_class, true));
        EXPECT_EQ(provider.call(OPERATION_GET_INSTANCE, model.get(), &instance),
                  GET_INSTANCE_UNSUPPORTED);
        EXPECT_EQ(provider.call(OPERATION_CREATE_INSTANCE, model.get()),
                  CREATE_INSTANCE_UNSUPPORTED);
        EXPECT_EQ(provider.call(OPERATION_DELETE_INSTANCE, model.get()),
                  DELETE_INSTANCE_UNSUPPORTED);
        EXPECT_EQ(provider.call(OPERATION_MODIFY_INSTANCE, model.get(), model.get()),
                  modifiable.contains(name) ? modifiable.at(name)
                                            : int{MODIFY_INSTANCE_UNSUPPORTED});
        for (const Meta_Feature* feature : *at->meta_class) {
            if (feature->has(FLAG_METHOD)) {
                const Ref<Instance> call(create(&as_method(*feature), true));
                EXPECT_EQ(provider.call(OPERATION_INVOKE_METHOD, model.get(), call.get()),
                          callable.contains(name + "." + feature->name) ? INVOKE_METHOD_OK
                                                                        : INVOKE_METHOD_UNSUPPORTED)
                    << feature->name;
            }
        }
        if (at->meta_class->has(FLAG_ASSOCIATION)) {
            const String text;
            EXPECT_EQ(provider.call(OPERATION_ENUM_ASSOCIATOR_NAMES, model.get(), &text, &text,
                                    &text, reinterpret_cast<void*>(&collect), &found),
                      ENUM_ASSOCIATOR_NAMES_UNSUPPORTED);
            EXPECT_EQ(provider.call(OPERATION_ENUM_REFERENCES, model.get(), model.get(), &text,
                                    reinterpret_cast<void*>(&collect), &found),
                      ENUM_REFERENCES_UNSUPPORTED);
            EXPECT_EQ(provider.call(OPERATION_ENUM_ASSOCIATORS, model.get(), &text, &text, &text,
                                    reinterpret_cast<void*>(&collect), &found),
                      ENUM_ASSOCIATORS_UNSUPPORTED);
        }
        EXPECT_EQ(provider.call(OPERATION_UNLOAD), 0);
        EXPECT_EQ(has_line(log, file, prefix + "::unload()"), tells(" unload"));
    }
    EXPECT_EQ(family, 116);
    unload();
    EXPECT_EQ(ProviderAgent::instance(), nullptr) << "each unload has taken what its load added";
}

} // namespace
} // namespace cimple
