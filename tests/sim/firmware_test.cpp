#include "tests/sim/simulated_host.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include <sys/stat.h>

namespace {

class FirmwareTest : public SimulatedHost {
protected:
    void SetUp() override {
        change(R"({"scenario": {"adapters": [{"name": "A", "ports": [{"flash": {}}],
                                              "attributes": {"spFirmwareVersion": null}}]}})");
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
    std::vector<RM_STATUS> statuses(const char* path, const HBA_WWN& port = firstPort) {
        return {CALL(m_library, RM_ImportHBAFileA)(path),
                CALL(m_library, RM_VerifyFirmwareA)(HBA_WWN{}, port, path),
                CALL(m_library, LRM_DownloadFirmware)(port, path, 0)};
    }

    /// The running version, as far as all that tell it agree, and the one in the flash.
    std::string versions() {
        HBA_ADAPTERATTRIBUTES adapter;
        const HBA_HANDLE handle = open("A");
        EXPECT_EQ(CALL(m_library, HBA_GetAdapterAttributes)(handle, &adapter), HBA_STATUS_OK);
        CALL(m_library, HBA_CloseAdapter)(handle);
        char buffer[RM_HBA_ATTRIBUTES_SIZE];
        uint32_t size = sizeof buffer;
        EXPECT_EQ(CALL(m_library, LRM_GetHBAAttributes)(firstPort, buffer, &size), 0U);
        uint16_t length = 0;
        RM_STATUS status = 0;
        auto& value = CALL(m_library, RM_GetAttributeValue);
        const auto* const text =
            static_cast<char*>(value(buffer, RM_HA_ULP_FIRMWARE_VERSION, &length, &status));
        EXPECT_EQ(std::string(text, length), adapter.FirmwareVersion);
        EXPECT_EQ(value(buffer, RM_HA_SP_FIRMWARE_VERSION, &length, &status), nullptr);
        RM_LOADLIST list;
        EXPECT_EQ(CALL(m_library, LRM_DiagGetLoadListParams)(firstPort, &list), RM_STATUS_OK);
        return std::string(adapter.FirmwareVersion) + ' ' + list.entry[1].version;
    }

    std::string m_directory;
};

} // namespace

TEST_F(FirmwareTest, FilesAreImagesOfTheModelOrRefused) {
    using Statuses = std::vector<RM_STATUS>;
    const std::pair<std::string, Statuses> cases[] = {
        {"", {240, 240, 240}},
        {"TVRFW TVR-F1601 3.0", {241, 241, 241}},
        {"TVRFW TVR-F1601\n", {241, 241, 241}},
        {"TVRFW  3.0\n", {241, 241, 241}},
        {"TVRFW TVR-F1601 \n", {241, 241, 241}},
        {"TVRFW TVR-F1601 " + std::string(65, '3') + "\n", {241, 241, 241}},
        {"TVRFW TVR-F1601 3\x01\n", {241, 241, 241}},
        {"tvrfw TVR-F1601 3.0\n", {241, 241, 241}},
        {std::string(100000, 'T'), {241, 241, 241}},
        {"TVRFW TVR-F1602 3.0\n", {0, 242, 242}},
    };
    for (const auto& [content, expected] : cases) {
        EXPECT_EQ(statuses(file(content).c_str()), expected) << content.substr(0, 40);
    }
    EXPECT_EQ(statuses((m_directory + "/none").c_str()), (Statuses{240, 240, 240}));
    EXPECT_EQ(statuses(m_directory.c_str()), (Statuses{240, 240, 240}));
    const std::string pipe = m_directory + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(statuses(pipe.c_str()), (Statuses{240, 240, 240}));
    EXPECT_EQ(statuses(nullptr), (Statuses{1, 1, 1}));
    const std::string good = file("TVRFW TVR-F1601 3.0\n\x7f\x45");
    EXPECT_EQ(statuses(good.c_str(), strangePort), (Statuses{0, 5, 5}));
    EXPECT_EQ(versions(), "2.82a4 2.82a4") << "nothing of all this was written";
}

TEST_F(FirmwareTest, TakesEffectAtOnceOrWithAReset) {
    const struct {
        const char* fields;
        RM_STATUS status;
        const char* atOnce;
        const char* afterReset;
        const char* afterReboot;
    } cases[] = {
        {"{}", 0, "3.0 3.0", "3.0 3.0", "3.0 3.0"},
        {R"({"firmwareNeedsReset": true})", 0, "2.82a4 3.0", "3.0 3.0", "3.0 3.0"},
        {R"({"firmwareNeedsReboot": true})", 247, "2.82a4 3.0", "2.82a4 3.0", "3.0 3.0"},
    };
    const std::string image = file("TVRFW TVR-F1601 3.0\n");
    for (const auto& each : cases) {
        change(R"({"scenario": {"adapters": [{"name": "A", "ports": [{"flash": {}}],
                                              "attributes": {"spFirmwareVersion": null}}]},
                   "adapters": {"A": )" +
               std::string(each.fields) + "}}");
        EXPECT_EQ(statuses(image.c_str()), (std::vector<RM_STATUS>{0, 0, each.status}));
        EXPECT_EQ(versions(), each.atOnce) << each.fields;
        EXPECT_EQ(CALL(m_library, LRM_ResetHBA)(firstPort, 1), RM_STATUS_OK);
        EXPECT_EQ(versions(), each.afterReset) << each.fields;
        change(R"({"reboot": true})");
        EXPECT_EQ(versions(), each.afterReboot) << each.fields;
    }
    for (const RM_STATUS status : {148U, 149U, 150U, 221U, 240U, 241U, 242U, 247U}) {
        char text[RM_STATUS_TEXT_SIZE] = "";
        EXPECT_EQ(CALL(m_library, RM_StatusString)(status, text, sizeof text), RM_STATUS_OK);
        EXPECT_STRNE(text, "") << status;
    }
}
