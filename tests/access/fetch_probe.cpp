// Fetches a URI and prints what came of it: name, status ("-" for one that was left alone), whether
// the file is to be removed, and then the log. `fetch_probe URI SECONDS`
#include "access/method_wrapper.h"
#include "tests/common/log_capture.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    using namespace cimple;
    if (argc != 3) {
        return 2;
    }
    setTransferPatience(static_cast<uint32>(std::atoi(argv[2])));
    CLogger::getInstance().enable();
    LogCapture log;
    Property<uint32> status{0, 1};
    bool removeFile = false;
    const std::string name = TVR_MethodWrapper::downloadFileUsingCurl(argv[1], status, removeFile);
    std::printf("%s %s %s\n", name.c_str(),
                status.is_null() ? "-" : std::to_string(status.value).c_str(),
                removeFile ? "remove" : "keep");
    for (const std::string& line : log.take()) {
        std::puts(line.c_str());
    }
    return 0;
}
