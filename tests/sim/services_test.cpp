// Firmware and virtual ports as callers meet them.
#include "tests/sim/simulated_host.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include <sys/stat.h>

namespace {

using Numbers = std::vector<size_t>;

class FirmwareTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(R"({"scenario": {"adapters": [{"name": "A", "ports": [{"flash": {}}]}]}})");
        session.rename("\x01", "$CONTROL");
        m_directory = testing::TempDir() + "tvrsim-firmware-XXXXXX";
        ASSERT_NE(mkdtemp(m_directory.data()), nullptr);
        // Of files of the directory; without a name, of none.
        session.on("statuses", [this](const auto& words) {
            return testing::PrintToString(
                statuses(words.empty() ? nullptr : (m_directory + '/' + words[0]).c_str(),
                         words.size() > 1 ? strangePort : firstPort));
        });
        // A file "image" of a first line and others, or of what has no end of a line.
        session.on("image", [this](const auto& words) {
            write(words.at(0) + '\n' + (words.size() > 1 ? words[1] : ""));
        });
        session.on("without-end", [this](const auto& words) { write(words.at(0)); });
        session.on("pipe", [this] { return mkfifo((m_directory + "/pipe").c_str(), 0600); });
        session.on("reset", [this] { return CALL(m_library, LRM_ResetHBA)(firstPort, 1); });
        session.on("versions", [this] { return versions(); });
    }
    void write(const std::string& content) {
        std::ofstream(m_directory + "/image", std::ios::trunc) << content;
    }
    void TearDown() override { std::filesystem::remove_all(m_directory); }

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
        const auto on = [this](const char* name, auto call) {
            session.on(name, [=, this](const auto& words) {
                return testing::PrintToString((this->*call)(number(words.at(0))));
            });
        };
        on("ports", &VirtualPortsTest::ports);
        on("machines", &VirtualPortsTest::machines);
        on("targets", &VirtualPortsTest::targets);
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

TVR_SESSIONS(FirmwareTest, "firmware.txt");
TVR_SESSIONS(VirtualPortsTest, "virtual_ports.txt");

} // namespace

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
