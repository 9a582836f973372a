#include "common/files.h"
#include "common/logger.h"
#include "common/settings.h"
#include "common/tvr_common.h"

#include <cstring>
#include <exception>
#include <utility>

namespace cimple {

uint32 getOSInformation(std::string& name, std::string& version) {
    name = "Unknown";
    version = "Unknown";
    TVR_LOG("Under _LINUX -- getting the os name and version");
    const File kernel = openToRead(settings().kernelVersion.c_str());
    if (!kernel) {
        return TVR_FAILURE;
    }
    constexpr std::size_t maxName = 255;
    std::string line;
    if (readLine(kernel.get(), maxName, line)) {
        name = line;
    }

    TVR_LOG("Under _LINUX -- Getting the OS Distribution Name");
    const File issue = openToRead(settings().issue.c_str());
    long size = -1;
    if (issue && fseek(issue.get(), 0, SEEK_END) == 0) {
        size = ftell(issue.get());
    }
    if (size < 0) {
        TVR_LOG("Unable to open the /etc/issue file to get OSDistribution Name");
        return TVR_FAILURE;
    }
    try {
        std::string text(static_cast<std::size_t>(size), '\0');
        rewind(issue.get());
        text.resize(fread(text.data(), 1, text.size(), issue.get()));
        text.resize(strnlen(text.data(), text.size()));
        version = std::move(text);
    } catch (const std::exception&) {
        TVR_LOG("Unable to allocate the memory to store OSDistributionName");
        return TVR_FAILURE;
    }
    return 0;
}

std::string readWebPortalURL() {
    const std::string& path = settings().webPortalFile;
    const File file = openToRead(path.c_str());
    if (!file) {
        TVR_LOG("WebPortal config file '%s' not found.", path.c_str());
        return {};
    }
    constexpr std::size_t maxLine = 255;
    std::string line;
    while (readLine(file.get(), maxLine, line)) {
        const std::size_t first = line.find_first_not_of(" \t\n\v\f\r");
        if (first != std::string::npos && line[first] != '#') {
            return line.substr(first);
        }
    }
    return {};
}

} // namespace cimple
