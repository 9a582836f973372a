// Firmware and virtual ports as callers meet them.
#include "tests/sim/simulated_host.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include <sys/stat.h>

namespace {

using Numbers = std::vector<size_t>;

const char* const firmwareHost =
    R"({"scenario": {"adapters": [{"name": "A", "ports": [{"flash": {}}]}]}})";

class FirmwareTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(firmwareHost);
        m_directory = testing::TempDir() + "tvrsim-firmware-XXXXXX";
        ASSERT_NE(mkdtemp(m_directory.data()), nullptr);
    }
    void TearDown() override { std::filesystem::remove_all(m_directory); }

    std::string file(const std::string& content) {
        const std::string path = m_directory + "/image";
        std::ofstream(path, std::ios::trunc) << content;
        return path;
    }

    /// The statuses of import, verification and download.
    Numbers statuses(const char* path, const HBA_WWN& port = firstPort) {
        return {CALL(m_library, RM_ImportHBAFileA)(path),
                CALL(m_library, RM_VerifyFirmwareA)(HBA_WWN{}, port, path),
                CALL(m_library, LRM_DownloadFirmware)(port, path, 0)};
    }

    /// The running version, which all must tell alike, and the one in the flash.
    std::string versions() {
        HBA_ADAPTERATTRIBUTES adapter;
        const HBA_HANDLE handle = open("A");
        EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(handle, &adapter), HBA_STATUS_OK);
        CALL(m_library, HBA_CloseAdapter)(handle);
        char buffer[RM_HBA_ATTRIBUTES_SIZE];
        uint32_t size = sizeof buffer;
        EXPECT_EQ(CALL(m_library, LRM_GetHBAAttributes)(firstPort, buffer, &size), 0U);
        for (const uint16_t id : {RM_HA_ULP_FIRMWARE_VERSION, RM_HA_SP_FIRMWARE_VERSION}) {
            uint16_t length = 0;
            const void* const value =
                CALL(m_library, RM_GetAttributeValue)(buffer, id, &length, nullptr);
            EXPECT_EQ(std::string(static_cast<const char*>(value), length),
                      adapter.FirmwareVersion);
        }
        RM_LOADLIST list;
        EXPECT_EQ(CALL(m_library, LRM_DiagGetLoadListParams)(firstPort, &list), RM_STATUS_OK);
        return std::string(adapter.FirmwareVersion) + ' ' + list.entry[1].version;
    }

    std::string m_directory;
};

/// The first port has two virtual ports, the first of them targets and machines.
class VirtualPortsTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(R"({"scenario": {"adapters": [{"ports": [{"virtualPorts": {"entries": [{"name": ")" +
               std::string(256, 'n') + R"(", "targets": [{"luns": [{"copies": 3}]}], "machines": [
                {"server": "s", "machine": "m1"},
                {"server": "s", "machine": "m2", "memory": 77, "guestOs": "os"}]}, {}]}}]}]}})");
    }

    /// What a list call answers to a list with room: status, count word, entries written.
    template <class List, class Call> Numbers list(uint32_t room, Call call) {
        constexpr size_t head = offsetof(List, entry);
        constexpr size_t size = sizeof List::entry;
        std::vector<char> bytes(head + size * (room + 1), 'Z');
        std::memcpy(bytes.data(), &room, sizeof room);
        const RM_STATUS status = call(reinterpret_cast<List*>(bytes.data()));
        std::memcpy(&room, bytes.data(), sizeof room);
        while (bytes.size() > head && bytes.back() == 'Z') {
            bytes.pop_back();
        }
        return {status, room, (bytes.size() - head + size - 1) / size};
    }
    Numbers ports(uint32_t room) {
        return list<RM_VPORTLIST>(
            room, [&](auto* out) { return CALL(m_library, LRM_VPList)(firstPort, out); });
    }
    Numbers machines(uint32_t room) {
        return list<RM_VMLIST>(room, [&](auto* out) {
            const RM_VPORTENTRY entry = {busy, {}, 0, 0};
            return CALL(m_library, LRM_GetVMFromVPort)(&entry, out->entry);
        });
    }
    Numbers targets(uint32_t room) {
        return list<HBA_FCPTARGETMAPPING>(room, [&](auto* out) {
            return CALL(m_library, LRM_VPListTargets)(firstPort, busy, out);
        });
    }

    static constexpr HBA_WWN busy = {{0x20, 1, 2, 0x54, 0x56, 0, 0, 0}};
};

} // namespace

TEST_F(FirmwareTest, FilesAreImagesOfTheModelOrRefused) {
    const std::string pipe = m_directory + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {m_directory + "/none", m_directory, pipe, file("")}) {
        EXPECT_EQ(statuses(path.c_str()), (Numbers{240, 240, 240})) << path;
    }
    const std::string longVersion = "TVRFW TVR-F1601 " + std::string(65, '3') + "\n";
    for (const char* content :
         {"TVRFW TVR-F1601 3.0", "TVRFW TVR-F1601\n", "TVRFW  3.0\n", "TVRFW TVR-F1601 \n",
          "TVRFW TVR-F1601 3\x01\n", "tvrfw TVR-F1601 3.0\n", longVersion.c_str()}) {
        EXPECT_EQ(statuses(file(content).c_str()), (Numbers{241, 241, 241})) << content;
    }
    EXPECT_EQ(statuses(file("TVRFW TVR-F1602 3.0\n").c_str()), (Numbers{0, 242, 242}));
    const std::string good = file("TVRFW TVR-F1601 3.0\n\x7f\x45");
    EXPECT_EQ(statuses(good.c_str(), strangePort), (Numbers{0, 5, 5}));
    EXPECT_EQ(statuses(nullptr), (Numbers{1, 1, 1}));
    EXPECT_EQ(versions(), "2.82a4 2.82a4") << "nothing of all this was written";
}

TEST_F(FirmwareTest, TakesEffectAtOnceOrWhenItMay) {
    const std::string image = file("TVRFW TVR-F1601 3.0\n");
    for (const auto& [fields, expected] :
         {std::pair("{}", "0: 3.0 3.0, 3.0 3.0, 3.0 3.0"),
          {R"({"firmwareNeedsReset": true})", "0: 2.82a4 3.0, 3.0 3.0, 3.0 3.0"},
          {R"({"firmwareNeedsReboot": true})", "247: 2.82a4 3.0, 2.82a4 3.0, 3.0 3.0"}}) {
        change(firmwareHost);
        change(R"({"adapters": {"A": )" + std::string(fields) + "}}");
        std::string seen = std::to_string(statuses(image.c_str())[2]) + ": ";
        seen += versions();
        EXPECT_EQ(CALL(m_library, LRM_ResetHBA)(firstPort, 1), RM_STATUS_OK);
        seen += ", " + versions();
        change(R"({"reboot": true})");
        EXPECT_EQ(seen + ", " + versions(), expected);
    }
}

TEST_F(VirtualPortsTest, ListsTellTheirNeedAndCanLie) {
    EXPECT_EQ(ports(1), (Numbers{7, 2, 0}));
    EXPECT_EQ(ports(2), (Numbers{0, 2, 2}));
    EXPECT_EQ(machines(1), (Numbers{7, 2, 0}));
    EXPECT_EQ(machines(4), (Numbers{0, 2, 2}));
    EXPECT_EQ(targets(2), (Numbers{7, 3, 2}));
    EXPECT_EQ(targets(3), (Numbers{0, 3, 3}));
    changePort(R"({"virtualPorts": {"need": 9, "count": 1024}})");
    EXPECT_EQ(ports(1), (Numbers{7, 9, 0}));
    EXPECT_EQ(ports(2), (Numbers{0, 1024, 2}));
    changePort(R"({"virtualPorts": {"entries": [{"machines": [{}], "machineNeed": 0,
                   "machineCount": 4294967295, "mapping": {"rows": 5}}]}})");
    EXPECT_EQ(machines(0), (Numbers{7, 0, 0}));
    EXPECT_EQ(machines(1), (Numbers{0, 0xFFFFFFFF, 1}));
    EXPECT_EQ(targets(0), (Numbers{0, 5, 0}));
    changePort(R"({"virtualPorts": null})");
    EXPECT_EQ(ports(1), (Numbers{RM_STATUS_VPORT_NOT_SUPPORTED, 1, 0}));
}

TEST_F(VirtualPortsTest, RecordsOfPortsAndMachines) {
    RM_VPORTATTRIBUTES attributes = {};
    auto& describe = CALL(m_library, LRM_VPGetAttributes);
    EXPECT_EQ(describe(firstPort, busy, &attributes), RM_STATUS_ERROR) << "no version";
    attributes.version = RM_VPORT_ATTRIBUTES_VERSION;
    EXPECT_EQ(describe(firstPort, busy, &attributes), RM_STATUS_OK);
    EXPECT_EQ(std::string(attributes.name, 256), std::string(256, 'n')) << "no terminator";
    EXPECT_EQ(describe(firstPort, strangePort, &attributes), RM_STATUS_ILLEGAL_WWN);

    RM_VMENTRY machine = {"s", "m2"};
    RM_VMINFO info;
    EXPECT_EQ(CALL(m_library, LRM_GetVMInfo)(&machine, &info), RM_STATUS_OK);
    EXPECT_STREQ(info.guestOsName, "os");
    EXPECT_EQ(info.memorySize, 77U);
    machine.server[0] = 't';
    EXPECT_EQ(CALL(m_library, LRM_GetVMInfo)(&machine, &info), RM_STATUS_ERROR);
    EXPECT_EQ(CALL(m_library, LRM_GetVMFromVPort)(nullptr, &machine), RM_STATUS_ERROR);
}
