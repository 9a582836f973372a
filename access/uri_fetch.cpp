// Files from elsewhere, fetched with libcurl.
//
// Nothing of libcurl is known at build time: its functions are looked up in the library that is
// found, and called by what its manual promises of them.

#include "access/method_wrapper.h"

#include "access/transfer_library.h"
#include "common/logger.h"
#include "runtime/cancellation.h"

#include <atomic>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace cimple {

namespace {

std::atomic<uint32> transferPatience{60}; // seconds

constexpr uint32 transferFailed = 4;

// Of libcurl.
using CurlCode = int;
constexpr CurlCode curlMalformedUrl = 3;
constexpr long curlGlobalAll = 3;
constexpr std::size_t curlErrorSize = 256;
enum CurlOption : int {
    CURL_FILE = 10001,
    CURL_URL = 10002,
    CURL_ERROR_BUFFER = 10010,
    CURL_WRITE_FUNCTION = 20011,
    CURL_LOW_SPEED_LIMIT = 19, // bytes a second
    CURL_LOW_SPEED_TIME = 20,  // seconds
    CURL_VERIFY_PEER = 64,
    CURL_CONNECT_TIMEOUT = 78, // seconds
    CURL_VERIFY_HOST = 81,
    CURL_NO_SIGNAL = 99,
};
using CurlVersion = const char*();
using CurlGlobalInit = CurlCode(long flags);
using CurlGlobalCleanup = void();
using CurlEasyInit = void*();
using CurlEasySetopt = CurlCode(void* curl, int option, ...);
using CurlEasyPerform = CurlCode(void* curl);
using CurlEasyCleanup = void(void* curl);

std::size_t writeToFile(const char* data, std::size_t size, std::size_t count, void* file) {
    return std::fwrite(data, 1, size * count, static_cast<FILE*>(file));
}

struct FileCloser {
    void operator()(FILE* file) const noexcept { std::fclose(file); }
};
using OpenFile = std::unique_ptr<FILE, FileCloser>;

// A new file, or an old one emptied. Unbuffered, so that a full disk shows while the transfer runs.
OpenFile openForWriting(const std::string& name) {
    constexpr mode_t mode = 0644;
    const int descriptor = ::open(
        name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode);
    if (descriptor < 0) {
        return nullptr;
    }
    OpenFile file(::fdopen(descriptor, "wb"));
    if (!file) {
        ::close(descriptor);
        return nullptr;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return file;
}

// One use of the library, from its opening on. What a fetch that ended early has left open is
// closed without a word.
class TransferLibrary {
public:
    TransferLibrary() : m_library(openTransferLibrary()) {}
    TransferLibrary(const TransferLibrary&) = delete;
    TransferLibrary& operator=(const TransferLibrary&) = delete;
    ~TransferLibrary() {
        if (m_curl != nullptr) {
            if (auto* cleanUp = quietly<CurlEasyCleanup>("curl_easy_cleanup")) {
                cleanUp(m_curl);
            }
        }
        if (m_isInitialised) {
            if (auto* cleanUp = quietly<CurlGlobalCleanup>("curl_global_cleanup")) {
                cleanUp();
            }
        }
        if (m_library != nullptr) {
            dlclose(m_library);
        }
    }

    explicit operator bool() const noexcept { return m_library != nullptr; }

    // Tells the library's version in the log and prepares it. False, with the failure in the log
    // and `status` where it belongs, if it can't be used.
    bool begin(Property<uint32>& status);
    // Tells it what to fetch and where to. `url` stays as it is until the end.
    bool setOptions(const char* url, FILE* file, Property<uint32>& status);
    // False if it can't do that at all.
    bool perform(CurlCode& code, Property<uint32>& status);
    void end(Property<uint32>& status);

private:
    template <class Function> Function* quietly(const char* name) const {
        return m_library == nullptr ? nullptr : reinterpret_cast<Function*>(dlsym(m_library, name));
    }
    // With the loader's words in the log where there are any.
    template <class Function> Function* find(const char* name) const {
        dlerror();
        Function* function = quietly<Function>(name);
        if (const char* error = dlerror()) {
            TVR_LOG("A dynamic linking error occurred:(%s)", error);
        }
        return function;
    }
    static bool missing(const char* name, Property<uint32>& status) {
        TVR_LOG("unable to locate function %s in curl so", name);
        status.set(transferFailed);
        return false;
    }
    template <class Value>
    bool setOption(CurlOption option, Value value, const char* failure, Property<uint32>& status) {
        m_code = m_setopt(m_curl, option, value);
        if (m_code != 0) {
            TVR_LOG(failure, m_code);
            status.set(transferFailed);
        }
        return m_code == 0;
    }
    bool refused(const char* failure, Property<uint32>& status) const {
        TVR_LOG(failure, m_code);
        status.set(transferFailed);
        return false;
    }

    void* m_library;
    void* m_curl = nullptr;
    bool m_isInitialised = false;
    CurlEasySetopt* m_setopt = nullptr;
    CurlCode m_code = 0; // of the option set last
    char m_error[curlErrorSize] = {};
};

bool TransferLibrary::begin(Property<uint32>& status) {
    if (auto* version = quietly<CurlVersion>("curl_version")) {
        TVR_LOG("Found curl_version function");
        TVR_LOG("Curl version = %s", version());
    }
    auto* initialise = quietly<CurlGlobalInit>("curl_global_init");
    if (initialise == nullptr) {
        TVR_LOG("unable to locate function curl_global_init in curl so");
        status.set(transferFailed);
    } else {
        TVR_LOG("execute function curl_global_init in curl so");
        m_isInitialised = initialise(curlGlobalAll) == 0;
        if (!m_isInitialised) {
            TVR_LOG("unable to initalize curl");
            status.set(transferFailed);
        }
    }
    auto* make = find<CurlEasyInit>("curl_easy_init");
    if (make == nullptr || initialise == nullptr) {
        return missing("curl_easy_init", status);
    }
    m_curl = make();
    if (m_curl == nullptr) {
        TVR_LOG("ERROR: Could not initialise the curl");
        return false;
    }
    TVR_LOG("initialized the curl library to download from internet");
    m_setopt = find<CurlEasySetopt>("curl_easy_setopt");
    return m_setopt != nullptr || missing("curl_easy_setopt", status);
}

bool TransferLibrary::setOptions(const char* url, FILE* file, Property<uint32>& status) {
    constexpr char fileRefused[] = "Error Sending the CURLOPT_FILE to the Curl library %d";
    constexpr char fileSet[] = "Set CURLOPT_FILE :Successfully sent CURLOPT_FILE to curl Library ";
    TVR_LOG("Sending the URI %s to the Curl library", url);
    m_code = m_setopt(m_curl, CURL_URL, url);
    TVR_LOG("CURL Error Code: %d ", m_code);
    if (m_code != 0) {
        return refused("Error Sending the URI to the Curl library %d", status);
    }
    TVR_LOG("%s", fileSet);
    if (!setOption(CURL_WRITE_FUNCTION, &writeToFile, fileRefused, status)) {
        return false;
    }
    TVR_LOG("%s", fileSet);
    if (!setOption(CURL_FILE, file, fileRefused, status)) {
        return false;
    }
    m_code = m_setopt(m_curl, CURL_ERROR_BUFFER, m_error);
    TVR_LOG("CURL Error Code: %d ", m_code);
    if (m_code != 0) {
        return refused("Error Sending the CURLOPT_ERRORBUFFER to the Curl library %d", status);
    }
    TVR_LOG("CURLOPT_SSL_VERIFYPEER return code = %d", m_code);
    if (!setOption(CURL_VERIFY_PEER, 0L,
                   "Error setting CURLOPT_SSL_VERIFYPEER in the Curl library %d", status)) {
        return false;
    }
    TVR_LOG("CURLOPT_SSL_VERIFYHOST return code = %d", m_code);
    if (!setOption(CURL_VERIFY_HOST, 0L,
                   "Error setting CURLOPT_SSL_VERIFYHOST in the Curl library %d", status)) {
        return false;
    }
    // A library that doesn't know these goes on without.
    const long patience = transferPatience;
    m_setopt(m_curl, CURL_NO_SIGNAL, 1L);
    m_setopt(m_curl, CURL_CONNECT_TIMEOUT, patience);
    m_setopt(m_curl, CURL_LOW_SPEED_LIMIT, 1L);
    m_setopt(m_curl, CURL_LOW_SPEED_TIME, patience);
    return true;
}

bool TransferLibrary::perform(CurlCode& code, Property<uint32>& status) {
    auto* transfer = quietly<CurlEasyPerform>("curl_easy_perform");
    if (transfer == nullptr) {
        return missing("curl_easy_perform", status);
    }
    code = transfer(m_curl);
    return true;
}

void TransferLibrary::end(Property<uint32>& status) {
    auto* cleanUp = find<CurlEasyCleanup>("curl_easy_cleanup");
    TVR_LOG("Found the function curl_easy_cleanup in curl so");
    void* const curl = std::exchange(m_curl, nullptr);
    if (cleanUp == nullptr) {
        missing("curl_easy_cleanup", status);
        return;
    }
    cleanUp(curl);
    if (auto* cleanUpAll = quietly<CurlGlobalCleanup>("curl_global_cleanup")) {
        m_isInitialised = false;
        cleanUpAll();
    } else {
        TVR_LOG("could not locate curl_global_cleanup in libcurl");
    }
    const int closed = dlclose(std::exchange(m_library, nullptr));
    TVR_LOG("Successfully closed curl so");
    if (closed != 0) {
        TVR_LOG("UNABLE TO CLOSE DYNAMIC LIB");
    }
}

// Fetches into `name`, which begins as the URI and becomes the name of the file.
void fetch(const std::string& uri, std::string& name, Property<uint32>& status, bool& removeFile) {
    TransferLibrary library;
    if (!library) {
        TVR_LOG("ERROR: Could not load the curl library to download from internet");
        return;
    }
    const std::size_t slash = uri.rfind('/');
    if (slash == std::string::npos) {
        TVR_LOG("ERROR: Could not parse the URI to get the firmware file name");
        return;
    }
    name = uri.substr(slash + 1);
    const OpenFile file = openForWriting(name);
    if (!file) {
        TVR_LOG("ERROR: Could not open the file for writing");
        return;
    }
    TVR_LOG("OPENED the curl library to download from internet");
    CurlCode code = 0;
    if (!library.begin(status) || !library.setOptions(uri.c_str(), file.get(), status) ||
        !library.perform(code, status)) {
        return;
    }
    if (code != 0) {
        TVR_LOG("download failed %d", code);
        if (code == curlMalformedUrl) {
            name = uri;
        }
    }
    removeFile = true;
    library.end(status);
}

} // namespace

std::string TVR_MethodWrapper::downloadFileUsingCurl(const std::string& uri,
                                                     Property<uint32>& status, bool& removeFile) {
    TVR_LOG("Inside TVR_MethodWrapper::downloadFileUsingCurl");
    std::string name = uri;
    struct stat found {};
    if (::stat(uri.c_str(), &found) == 0) {
        return name;
    }
    TVR_LOG("File not found on local file system. Trying libcURL...");
    try {
        fetch(uri, name, status, removeFile);
    } catch (...) {
        pass_cancellation();
        TVR_LOG("ERROR: error caught in accessing Curl Library");
    }
    return name;
}

uint32 setTransferPatience(uint32 seconds) noexcept {
    return transferPatience.exchange(seconds);
}

} // namespace cimple
