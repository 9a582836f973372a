#include "agent/host_name.h"

#include "common/logger.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <memory>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

namespace cimple {

namespace {

constexpr std::size_t name_buffer_size = 512;
constexpr char unknown[] = "unknown";

bool resolve_by_system(const char* name, Host_Name& found) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_CANONNAME;
    addrinfo* first = nullptr;
    if (::getaddrinfo(name, nullptr, &hints, &first) != 0) {
        return false;
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(first, &::freeaddrinfo);
    const auto* address = reinterpret_cast<const sockaddr_in*>(first->ai_addr);
    char text[INET_ADDRSTRLEN];
    if (::inet_ntop(AF_INET, &address->sin_addr, text, sizeof text) == nullptr) {
        return false;
    }
    found.name = first->ai_canonname != nullptr ? first->ai_canonname : name;
    found.address = text;
    return true;
}

constexpr Host_Lookup system_lookup{&::gethostname, &resolve_by_system};
constinit std::atomic<const Host_Lookup*> lookup_in_use{&system_lookup};

} // namespace

void set_host_lookup(const Host_Lookup* lookup) noexcept {
    lookup_in_use = lookup == nullptr ? &system_lookup : lookup;
}

Host_Name find_host_name() {
    const Host_Lookup& lookup = *lookup_in_use.load();
    char name[name_buffer_size] = {};
    if (lookup.host_name(name, sizeof name - 1) != 0) {
        TVR_LOG("Error! gethostname() failed err : %d , using 'unknown' for hostname and IP "
                "address",
                errno);
        return {unknown, unknown};
    }
    TVR_LOG("Host Name : %s", name);
    Host_Name found;
    if (!lookup.resolve(name, found)) {
        TVR_LOG("Error! gethostbyname() failed, using 'unknown' for IP address.");
        return {name, unknown};
    }
    TVR_LOG("Host ipAddress : %s", found.address.c_str());
    return found;
}

} // namespace cimple
