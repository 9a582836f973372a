// The host as people see it: adapters with their ports, and what is behind these. Read by a few
// enumerations, whatever the number of instances.
#ifndef TVR_HOST_TVRCIM_HOST_VIEW_H
#define TVR_HOST_TVRCIM_HOST_VIEW_H

#include "host/tvrcim/session.h"

#include <set>

namespace tvrcim {

// A logical unit of a target.
struct Unit_View {
    std::string number; // in the operating system
    std::string kind;   // as "Storage Volume"
    tvrhost::Cim_Instance device;

    std::uint64_t capacity() const; // bytes; 0 if the device tells none
    std::string os_name() const;
    std::string inquiry() const; // what the device says of itself
};

// A remote port.
struct Target_View {
    std::string wwpn;
    std::uint64_t fc_id = 0;
    std::vector<Unit_View> units;
};

struct Port_View {
    tvrhost::Cim_Instance port;
    std::vector<Target_View> targets;

    std::string wwpn() const { return port["DeviceID"].plain(); }
    std::string state() const { return port["StatusDescriptions"].plain(); } // the module's word
    std::string state_text() const;                                          // for people
    bool has_link() const;
    std::string speed() const; // in gigabits per second, "-" without a link
    std::string type() const;
    std::string firmware() const; // the version alone
    std::string os_name() const;
};

struct Adapter_View {
    tvrhost::Cim_Instance package; // without class where the module shows none
    std::vector<Port_View> ports;

    std::string model() const;
};

struct Host_View {
    std::string name;
    std::vector<Adapter_View> adapters;

    std::set<std::string> port_names() const;
};

// What is read of the units behind the ports.
enum class Units { counted, described };

// The host, or with a WWPN in any spelling, or the beginning of one, that of it which belongs to
// the ports so named. Throws Cim_Error where the module doesn't answer, and what the session has to
// say where it finds no port; Usage_Error if no port is named so.
Host_View read_host(Session& session, Units units, const std::string& port_name);

// The value of a property that is a number, 0 where it is none.
std::uint64_t number_of(const tvrhost::Cim_Value& value);

} // namespace tvrcim

#endif
