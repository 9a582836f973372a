// The name and the address that the host goes by.
#ifndef TVR_AGENT_HOST_NAME_H
#define TVR_AGENT_HOST_NAME_H

#include <cstddef>
#include <string>

namespace cimple {

struct Host_Name {
    std::string name;
    std::string address; // first IPv4 address, as "192.0.2.7"
};

// What is asked for them; tests put functions of their own in place. The resolver gives up by its
// own time limits ("/etc/resolv.conf"), so that no lookup lasts for ever.
struct Host_Lookup {
    // As gethostname: 0, or another value with errno set.
    int (*host_name)(char* out, std::size_t size);
    // Official name and first IPv4 address of a host name; false if it can't be resolved.
    bool (*resolve)(const char* name, Host_Name& found);
};

// Null puts the system's functions back. The caller keeps the object alive and sets it while no
// refresh runs.
void set_host_lookup(const Host_Lookup* lookup) noexcept;

// The host's official name and address; "unknown" for what can't be found.
Host_Name find_host_name();

} // namespace cimple

#endif
