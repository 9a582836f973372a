// The methods of the services, and what can be modified: codes, outputs, requests and lines in the
// log.
#include "tests/agent/agent_session.h"

#include "agent/locks.h"
#include "providers/TVRHBA_FCPort_Provider.h"
#include "providers/TVRHBA_SoftwareInstallationService_Provider.h"

#include <filesystem>
#include <sys/stat.h>
#include <thread>

namespace cimple {
namespace {

class Services : public With_Session {
protected:
    Services() {
        directory.write("image.fw", "firmware");
        EXPECT_EQ(mkfifo(directory.file("pipe").c_str(), 0600), 0);
        libraries.dumpDirectory = "/dumps";
        libraries.number = 7;
        libraries.adapters[0].attributes[RM_HA_BOOT_CODE_ENABLED] = fake::valueOf(uint32{1});
        session.on("number", [this](const auto& words) {
            libraries.number = static_cast<uint32>(std::stoul(words.at(0)));
        });
        session.on("dump-files", [this](const auto& words) { libraries.dumpFiles = words; });
        session.on("exists", [](const auto& words) {
            return std::filesystem::exists(words.at(0)) ? "yes" : "no";
        });
        // Of an adapter, by the last byte of their names.
        session.on("virtual-ports", [this](const auto& words) {
            auto& ports = libraries.adapters[std::stoul(words.at(0))].ports[0].virtualPorts;
            ports.clear();
            for (std::size_t i = 1; i < words.size(); ++i) {
                const auto byte = static_cast<uint8>(std::stoul(words[i]));
                const HBA_WWN node{{0x10, 0, 0, 0, 0, 0, 0xEE, 9}};
                ports.push_back({{{0x10, 0, 0, 0, 0, 0, 0xEE, byte}}, node, 0x10202u + byte, 0});
            }
        });
        load();
        refresh();
    }
    uint32 install() {
        const Collected ports = all("FCPort");
        const Collected services = all("SoftwareInstallationService");
        CIM_ConcreteJob* job = nullptr;
        Property<String> URI{};
        URI.set(directory.file("image.fw"));
        Property<uint32> code{};
        TVRHBA_SoftwareInstallationService_Provider().InstallFromURI(
            static_cast<const TVRHBA_SoftwareInstallationService*>(services[0]), job, URI,
            reinterpret_cast<const CIM_ManagedElement*>(ports[0]), {}, {}, code);
        return code.value;
    }
};

TVR_SESSIONS(Services, "services.txt");

TEST_F(Services, InstallationHoldsOffEnumerationsAndRefreshes) {
    Gate gate;
    stop_at(gate, "LRM_DownloadFirmware");
    std::thread installing([this] { EXPECT_EQ(install(), 0u); });
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

TEST_F(Services, InstallationGivesItsLocksBackWhenALibraryThrows) {
    libraries.entered = [](const std::string& entered) {
        if (entered == "LRM_DownloadFirmware") {
            throw std::runtime_error("library");
        }
    };
    EXPECT_THROW(install(), std::runtime_error);
    libraries.entered = nullptr;
    std::thread other([this] { const Full_Guard guard(*agent); });
    other.join();
    EXPECT_EQ(install(), 0u);
}

TEST_F(Services, AModificationOfNothingIsRefused) {
    TVRHBA_FCPort_Provider provider;
    EXPECT_EQ(provider.modify_instance(nullptr, nullptr), MODIFY_INSTANCE_INVALID_PARAMETER);
}

} // namespace
} // namespace cimple
