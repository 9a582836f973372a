// Import, verification and download of firmware images.
#include "sim/firmware.h"

#include "sim/host.h"
#include "sim/restart.h"
#include "sim/rm_behaviour.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace tvrsim {

namespace {

constexpr std::string_view imageMagic = "TVRFW ";
constexpr size_t longestHeader = 512;
constexpr size_t longestVersion = 64;

struct FirmwareImage {
    std::string model;
    std::string version;
};

/// A file that is closed again.
class OpenFile {
public:
    explicit OpenFile(const char* path)
        : m_descriptor(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)) {}
    ~OpenFile() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool isRegular() const {
        struct stat facts;
        return m_descriptor >= 0 && fstat(m_descriptor, &facts) == 0 && S_ISREG(facts.st_mode);
    }

    /// Its first bytes; empty when there are none or they can't be read.
    std::string start(size_t most) const {
        std::string bytes(most, '\0');
        const ssize_t got = pread(m_descriptor, bytes.data(), bytes.size(), 0);
        bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
        return bytes;
    }

private:
    int m_descriptor;
};

std::optional<FirmwareImage> parseHeader(std::string_view line) {
    const bool isText =
        std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; });
    if (!isText || !line.starts_with(imageMagic)) {
        return std::nullopt;
    }
    line.remove_prefix(imageMagic.size());
    const size_t blank = line.rfind(' ');
    if (blank == std::string_view::npos || blank == 0) {
        return std::nullopt;
    }
    const std::string_view version = line.substr(blank + 1);
    if (version.empty() || version.size() > longestVersion) {
        return std::nullopt;
    }
    return FirmwareImage{std::string(line.substr(0, blank)), std::string(version)};
}

/// Reads the header of an image. Not for work under the lock: disks can be slow.
RM_STATUS readImageFile(const char* path, FirmwareImage& image) {
    if (path == nullptr) {
        return RM_STATUS_ERROR;
    }
    const OpenFile file(path);
    if (!file.isRegular()) {
        return firmwareFileUnreadable;
    }
    const std::string start = file.start(longestHeader);
    if (start.empty()) {
        return firmwareFileUnreadable;
    }
    const size_t end = start.find('\n');
    if (end == std::string::npos) {
        return firmwareFileMalformed;
    }
    const auto parsed = parseHeader(std::string_view(start).substr(0, end));
    if (!parsed) {
        return firmwareFileMalformed;
    }
    image = *parsed;
    return RM_STATUS_OK;
}

template <size_t size> void replaceText(char (&out)[size], std::string_view text) {
    std::fill_n(out, size, '\0');
    text.copy(out, size);
}

/// The version of the firmware in each port's flash.
void writeFlash(Adapter& adapter, const std::string& version) {
    for (Port& port : adapter.ports) {
        if (!port.inventory.flash) {
            continue;
        }
        for (RM_LOADENTRY& image : port.inventory.flash->images) {
            if (textIn(image.programType) == "Firmware") {
                replaceText(image.version, version);
            }
        }
    }
}

void startFirmware(Adapter& adapter, const std::string& version) {
    replaceText(adapter.hba.FirmwareVersion, version);
    for (const uint16_t attribute : {RM_HA_SP_FIRMWARE_VERSION, RM_HA_ULP_FIRMWARE_VERSION}) {
        const auto found = adapter.attributes.find(attribute);
        if (found != adapter.attributes.end()) {
            found->second = version;
        }
    }
    adapter.hasChanged = true;
}

/// Calls work(adapter, image) for an image that fits the adapter.
template <class Work> RM_STATUS withImage(const HBA_WWN& port, const char* path, Work work) {
    FirmwareImage image;
    const RM_STATUS status = readImageFile(path, image);
    return Host::instance().withPort(port, [&](Adapter& adapter, Port&) -> RM_STATUS {
        if (status != RM_STATUS_OK) {
            return status;
        }
        return image.model == textIn(adapter.hba.Model) ? work(adapter, image)
                                                        : firmwareOfOtherModel;
    });
}

} // namespace

void activateFirmware(Adapter& adapter, Restart how) {
    FirmwareUpdate& firmware = adapter.firmware;
    if (firmware.waitingVersion && (how != Restart::reset || !firmware.needsReboot)) {
        startFirmware(adapter, *firmware.waitingVersion);
        firmware.waitingVersion.reset();
    }
}

namespace behaviour {

RM_STATUS ImportHBAFile(const char* path) {
    FirmwareImage image;
    return readImageFile(path, image);
}

RM_STATUS VerifyFirmware(const HBA_WWN& port, const char* path) {
    return withImage(port, path, [](Adapter&, const FirmwareImage&) { return RM_STATUS_OK; });
}

RM_STATUS DownloadFirmware(HBA_WWN port, const char* path, uint32_t flags) {
    if (flags != 0) {
        return RM_STATUS_ERROR;
    }
    return withImage(port, path, [](Adapter& adapter, const FirmwareImage& image) -> RM_STATUS {
        writeFlash(adapter, image.version);
        adapter.firmware.waitingVersion = image.version;
        if (adapter.firmware.needsReboot) {
            return firmwareNeedsReboot;
        }
        if (!adapter.firmware.needsReset) {
            activateFirmware(adapter, Restart::reset);
        }
        return RM_STATUS_OK;
    });
}

} // namespace behaviour

} // namespace tvrsim
